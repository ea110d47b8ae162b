#pragma once
// What every subcommand of nyind shares: the installation it works on, the clock, the exit
// statuses, and the edge between the GBK text inside the system and the UTF-8 of the terminal.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/types.h"

namespace nyind {

// Exit statuses of the tool.
enum ExitStatus : int {
    kExitOk = 0,
    kExitRefused = 1,  // the formula or the data was refused, with the system's message
    kExitUsage = 2,    // the command line was wrong
};

struct GlobalOptions {
    std::string home;   // --home; empty: $NYIND_HOME, else the installation built with nyind
    std::string clock;  // --clock "YYYY-MM-DD HH:MM"
    bool now = false;   // --now: follow the system clock
    std::string server; // --server HOST:PORT or "none"; empty: the installation's settings
};

// The installation directory that the options select.
std::string HomeDirectory(const GlobalOptions& options);

// Whether a command only reads the formula library or changes and saves it.
enum class LibraryUse { Read, Change };

// Sets the clock, opens the installation (stock list, quotes), fills the function catalog and
// loads the formula library. Messages the library shows go to stderr. With needMarket a missing
// stock list is refused. A command that changes the library first takes the lock of the user's
// file and keeps it until CloseHome, so that no other process changes the file between this
// read and the save. Returns an exit status; kExitOk when ready.
int OpenHome(const GlobalOptions& options, bool needMarket, LibraryUse use = LibraryUse::Read);

// Saves the user's formulas; a refusal or a failed write is reported. Returns an exit status.
int SaveLibrary();

// Takes the lock of a shared file of the installation for a read-modify-write, held until
// CloseHome. A lock that can't be had in a few seconds is reported. Returns an exit status.
int LockForChange(const std::string& path);

// Links the chart view's client socket to the quote server that the options or the
// installation's settings ([Server] Address= in config_main.ini) name, so that picks and single
// stocks are refreshed from it; "none", or no setting at all, leaves the socket offline and the
// stored data as they are. Call after OpenHome. Returns an exit status.
int ConnectServer(const GlobalOptions& options);

// Drops the formula library and the installation that OpenHome loaded.
void CloseHome();

// GBK text of the system to the terminal, with CR LF line ends made plain LF.
std::string ToTerminal(const CString& gbk);

// A line to stderr, prefixed "nyind: ". Returns the status so that callers can write
// `return Fail(kExitRefused, "...")`. The text is UTF-8.
int Fail(int status, const std::string& utf8);
// The same with a GBK message of the system.
int FailGbk(int status, const CString& gbk);

// The messages the library showed since the last call, forgotten afterwards (GBK).
std::vector<CString> TakeMessages();

// Reads a file, or standard input for "-", of at most maxBytes. A file that can't be read, is not
// a regular file (a folder, a FIFO, a device) or is longer is refused with a message naming it,
// without reading it whole. Returns an exit status.
int ReadInput(const std::string& path, std::string* bytes, size_t maxBytes = SIZE_MAX);

// The pieces of a list separated by `separator`; an empty text gives one empty piece.
std::vector<std::string> SplitList(const std::string& text, char separator);

// A UTF-8 argument converted to GBK; false (with a message) if it has no GBK form.
bool ArgumentToGbk(const std::string& utf8, CString* gbk);

}  // namespace nyind
