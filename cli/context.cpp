#include "cli/context.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "catalog/function_manager.h"
#include "host/clock.h"
#include "host/comm_data.h"
#include "host/encoding.h"
#include "host/global.h"
#include "host/ini.h"
#include "host/installation.h"
#include "model/library.h"
#include "net/asio_transport.h"

namespace nyind {
namespace {

std::vector<CString>& PendingMessages() {
    static std::vector<CString> messages;
    return messages;
}

bool IsDirectory(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// The market closes at 15:00: a run on the installation's trading date sees the whole day.
constexpr int kCloseTime = 150000;

}  // namespace

std::string HomeDirectory(const GlobalOptions& options) {
    if (!options.home.empty()) return options.home;
    if (const char* env = std::getenv("NYIND_HOME"); env != nullptr && *env != '\0') return env;
    return NY_DEFAULT_HOME;
}

int OpenHome(const GlobalOptions& options, bool needMarket) {
    g_MySetMessageHook([](const CString& text, const CString&, unsigned) {
        PendingMessages().push_back(text);
        return 1;
    });
    if (!options.clock.empty() && !ny::SetClockFromText(options.clock))
        return Fail(kExitUsage, "--clock: \"" + options.clock + "\" is not a date and time such as \"2021-06-30 14:30\"");
    const std::string home = HomeDirectory(options);
    if (!IsDirectory(home)) return Fail(kExitUsage, "no installation directory at " + home);
    const bool market = ny::OpenInstallation(home);
    if (options.clock.empty() && !options.now) CClockModule::SetClock(g_MyCurTradeDate, kCloseTime);
    if (needMarket && !market) return Fail(kExitRefused, "no stock list in " + home + " (data/stocks.csv)");
    static bool catalogLoaded = false;
    if (!catalogLoaded) {
        g_MyFunsMng.LoadFun();
        catalogLoaded = true;
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

void CloseHome() {
    g_MyChildView->m_ClientSocket.SetTransport(nullptr);
    g_MyRemoveIndicators();
    ny::CloseInstallation();
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

bool ReadInput(const std::string& path, std::string* bytes) {
    if (path == "-") {
        std::ostringstream in;
        in << std::cin.rdbuf();
        *bytes = in.str();
        return true;
    }
    std::ifstream file(path, std::ios::binary);
    if (!file || IsDirectory(path)) return false;
    bytes->assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    return !file.bad();
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
