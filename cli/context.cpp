#include "cli/context.h"


#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "catalog/function_manager.h"
#include "host/clock.h"
#include "host/comm_data.h"
#include "host/encoding.h"
#include "host/files.h"
#include "host/global.h"
#include "host/ini.h"
#include "host/installation.h"
#include "model/library.h"
#include "net/asio_transport.h"
#include "platform/file_system.h"

namespace nyind {
namespace {

std::vector<CString>& PendingMessages() {
    static std::vector<CString> messages;
    return messages;
}

// The locks this run holds on shared files, released by CloseHome.
std::vector<std::unique_ptr<ny::FileLock>>& HeldLocks() {
    static std::vector<std::unique_ptr<ny::FileLock>> locks;
    return locks;
}

// Half an hour after the close at 15:00: a run on the installation's trading date sees the whole
// day, and a minute-based pick, refused while the market trades, may run.
constexpr int kAfterCloseTime = 153000;

}  // namespace

std::string HomeDirectory(const GlobalOptions& options) {
    if (!options.home.empty()) return options.home;
    if (const char* env = std::getenv("NYIND_HOME"); env != nullptr && *env != '\0') return env;
    // An installed nyind opens the sample installation installed with it; the build tree's nyind,
    // which has none beside it, the one the build made.
    return ny::DefaultInstallation(NY_INSTALLED_HOME, NY_DEFAULT_HOME);
}

int OpenHome(const GlobalOptions& options, bool needMarket, LibraryUse use) {
    g_MySetMessageHook([](const CString& text, const CString&, unsigned) {
        PendingMessages().push_back(text);
        return 1;
    });
    if (!options.clock.empty() && !ny::SetClockFromText(options.clock))
        return Fail(kExitUsage, "--clock: \"" + options.clock + "\" is not a date and time such as \"2021-06-30 14:30\"");
    const std::string home = HomeDirectory(options);
    if (!ny::IsDirectory(home)) return Fail(kExitUsage, "no installation directory at " + home);
    const bool market = ny::OpenInstallation(home);
    if (options.clock.empty() && !options.now) CClockModule::SetClock(g_MyCurTradeDate, kAfterCloseTime);
    if (needMarket && !market) return Fail(kExitRefused, "no stock list in " + home + " (data/stocks.csv)");
    static bool catalogLoaded = false;
    if (!catalogLoaded) {
        g_MyFunsMng.LoadFun();
        catalogLoaded = true;
    }
    if (use == LibraryUse::Change) {
        if (int status = LockForChange(g_MyGetFilePath(NY_FILE_USER_SET)); status != kExitOk) return status;
    }
    g_MyInitIndicator();
    for (const CString& message : TakeMessages()) FailGbk(kExitRefused, message);
    return kExitOk;
}

int ConnectServer(const GlobalOptions& options) {
    std::string address = options.server;
    if (address.empty()) ny::ReadIniValue(g_MyExePath + "config_main.ini", "Server", "Address", &address);
    if (address.empty() || address == "none") return kExitOk;
    std::string host;
    unsigned short port = 0;
    if (!ny::ParseServerAddress(address, &host, &port))
        return Fail(kExitUsage, "--server: \"" + address + "\" is not HOST:PORT (or none)");
    g_MyChildView->m_ClientSocket.SetTransport(ny::MakeAsioTransport(host, port));
    return kExitOk;
}

int SaveLibrary() {
    std::string error;
    return ny::SaveUserFormulas(&error) ? kExitOk : Fail(kExitRefused, "not saved: " + ToTerminal(error));
}

int LockForChange(const std::string& path) {
    auto lock = std::make_unique<ny::FileLock>();
    std::string error;
    if (!lock->Acquire(path, ny::kFileLockTimeoutMs, &error))
        return Fail(kExitRefused, ToTerminal(error) + "; nothing was changed");
    HeldLocks().push_back(std::move(lock));
    return kExitOk;
}

void CloseHome() {
    g_MyChildView->m_ClientSocket.SetTransport(nullptr);
    g_MyRemoveIndicators();
    ny::CloseInstallation();
    HeldLocks().clear();
}

std::string ToTerminal(const CString& gbk) {
    std::string text = ny::GbkToUtf8(gbk);
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i)
        if (!(text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')) out += text[i];
    return out;
}

int Fail(int status, const std::string& utf8) {
    std::cerr << "nyind: " << utf8 << (utf8.empty() || utf8.back() != '\n' ? "\n" : "");
    return status;
}

int FailGbk(int status, const CString& gbk) { return Fail(status, ToTerminal(gbk)); }

std::vector<CString> TakeMessages() {
    std::vector<CString> messages;
    messages.swap(PendingMessages());
    return messages;
}

int ReadInput(const std::string& path, std::string* bytes, size_t maxBytes) {
    if (path != "-") {
        std::string error;
        return ny::ReadWholeFile(path, bytes, &error, maxBytes) ? kExitOk : Fail(kExitRefused, ToTerminal(error));
    }
    bytes->clear();
    char buffer[65536];
    while (std::cin.read(buffer, sizeof buffer) || std::cin.gcount() > 0) {
        bytes->append(buffer, static_cast<size_t>(std::cin.gcount()));
        if (bytes->size() > maxBytes)
            return Fail(kExitRefused, "standard input is longer than " + std::to_string(maxBytes) + " bytes");
    }
    return kExitOk;
}

std::vector<std::string> SplitList(const std::string& text, char separator) {
    std::vector<std::string> pieces;
    size_t start = 0;
    for (size_t end = text.find(separator); end != std::string::npos; end = text.find(separator, start)) {
        pieces.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

bool ArgumentToGbk(const std::string& utf8, CString* gbk) {
    if (ny::TryUtf8ToGbk(utf8, gbk)) return true;
    Fail(kExitUsage, "\"" + utf8 + "\" is not UTF-8 text with a GBK form");
    return false;
}

}  // namespace nyind
