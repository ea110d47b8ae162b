#pragma once
// The library of all formulas: one global array, sorted by the key name + kind ("%s%d"),
// compared byte by byte, so two formulas may share a name if their kinds differ.
//
// The host calls g_MyInitIndicator once at start, g_MySaveIndicator to store the user's own
// formulas and g_MyRemoveIndicators at the end. The array owns its objects.

#include <string>
#include <vector>

#include "model/indicator.h"

extern std::vector<CIndicator*> g_MyIndicatorArray;

// Builds the library from the formula files of the installation, in the order of the edition.
void g_MyInitIndicator();
// Writes the user's own formulas (editable, not system, not from a base set) to the user's file,
// silently; ny::SaveUserFormulas does the same and says what went wrong.
void g_MySaveIndicator();
// Deletes all formulas and empties the array.
void g_MyRemoveIndicators();

// Inserts at the sorted place and returns the position. If the key exists, returns that entry's
// position and changes nothing: `p` is not adopted and stays the caller's.
int g_MyAddIndicator(CIndicator* p);
// Position of a formula, or -1.
int g_MyGetIndicatorPos(const CString& name, short mainType);
// The formula, or null; the pointer stays the library's.
CIndicator* g_MyGetIndicator(const CString& name, short mainType);
// Deletes the formula of this name and kind, if there is one, and removes its entry.
void g_MyRemoveIndicatorByPos(const CString& name, short mainType);
// The number of a kind label ("技术指标" 0 ...) or a group label ("大盘指标" 0 ...), or -1.
short g_MyGetIndicatorType(const CString& label);
// Fills p->m_arPYCodes with the initials of the name, one string per combination of readings.
void g_MyMakeIndicatorPY(CIndicator* p);

namespace ny {

// A label of the formula tree and its number.
struct FormulaLabel {
    const char* label;
    short value;
};
// The kinds ("技术指标" 0 to "五彩K线" 3), the groups of indicators ("大盘指标" 0 to "自定指标" 7)
// and of conditions ("指标选股" 20 to "自定选股" 25), each in its order.
extern const std::vector<FormulaLabel> kKindLabels;
extern const std::vector<FormulaLabel> kIndicatorGroups;
extern const std::vector<FormulaLabel> kConditionGroups;

// Messages of the formula files.
extern const char* const MSG_INIT_BAD_FILE;    // a file of the start sequence has a bad magic
extern const char* const MSG_IMPORT_BAD_FILE;  // an import file has a bad magic or count
extern const char* const MSG_IMPORT_EXISTS;    // "%s 在同类型指标中已存在!"

// What g_MyInitIndicator made of the user's file. A file that is present but was not read
// completely (unreadable, not a regular file, a wrong magic or record count, bytes missing or left
// over, or not reached because an earlier set is damaged) is not complete, and `problem` says why.
struct UserFileStatus {
    bool complete = true;
    CString problem;
};
const UserFileStatus& UserFileLoadStatus();

// Writes the user's formulas through the careful writer. Refuses, and leaves the file as it is,
// when the user's file was not read completely: writing what was loaded of it would lose the
// rest. False with the reason (and a hint) in `error` on a refusal or a failed write. A process
// that changes the library holds the lock of the user's file (FileLock) from the start of the
// library to the save.
bool SaveUserFormulas(std::string* error);

// True if path is a file of the library's start sequence or lies in the installation's folder of
// formula sets: an export must not write over those.
bool IsLibraryFile(const CString& path);

enum class ImportStatus { Ok, CannotOpen, Invalid };

// Writes one formula for another machine: a header with 1 and 1, then the record in the short
// form (a source longer than 2,047 bytes keeps only that much). False, with the cause in `error`,
// if it can't be written; an existing file is then left as it was.
bool ExportFormula(const CIndicator& formula, const CString& path, std::string* error = nullptr);

// Reads an exported file into the library. A bad magic or a count above 1 shows
// MSG_IMPORT_BAD_FILE and adds nothing. A formula whose name and kind the library holds already
// shows MSG_IMPORT_EXISTS with its name and is dropped. `added` receives the number added.
ImportStatus ImportFormula(const CString& path, int* added = nullptr);

}  // namespace ny
