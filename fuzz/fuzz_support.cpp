#include "fuzz/fuzz_support.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "catalog/function_manager.h"
#include "host/clock.h"
#include "host/installation.h"

namespace fuzz {
namespace {

const char* const kStockList =
    "code,name,pinyin,kind,capital,total_capital\n"
    "SH000001,\xE6\xB2\xAA\xE5\xB8\x82\xE6\x8C\x87\xE6\x95\xB0,HSZS,INDEX+HAND\n"
    "SH600001,\xE6\xA0\xB7\xE6\x9C\xAC,YB,A,52000,80000\n";

// Memory-backed when the system has such a folder: a target writes files on every input.
std::filesystem::path TemporaryFolder() {
    std::error_code ec;
    return std::filesystem::is_directory("/dev/shm", ec) ? std::filesystem::path("/dev/shm")
                                                          : std::filesystem::temp_directory_path();
}

std::string MakeInstallation() {
    std::string pattern = (TemporaryFolder() / "nyfuzz-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    const std::string home = pattern + "/";
    WriteFile(home + "data/stocks.csv", kStockList);
    WriteFile(home + "data/quotes.csv", "date=20210630\ncode,close\nSH600001,10.5\n");
    ny::OpenInstallation(home);
    static std::string removed;  // constructed before the handler is registered: it outlives it
    removed = home;
    std::atexit([] {
        ny::CloseInstallation();
        std::error_code ignored;
        std::filesystem::remove_all(removed, ignored);
    });
    CClockModule::SetClock(20210630, 150000);
    g_MyFunsMng.LoadFun();
    return home;
}

}  // namespace

const std::string& Installation() {
    static const std::string home = MakeInstallation();
    return home;
}

ColorEditWnd& Editor() {
    Installation();
    static ColorEditWnd* editor = [] {
        auto* made = new ColorEditWnd;
        made->PrepareLanguage();
        return made;
    }();
    return *editor;
}

void WriteFile(const std::string& path, const uint8_t* data, size_t size) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) std::abort();
    if (size > 0 && ::write(fd, data, size) != static_cast<ssize_t>(size)) std::abort();
    ::close(fd);
}

void WriteFile(const std::string& path, const std::string& bytes) {
    WriteFile(path, reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

std::string Text(const uint8_t* data, size_t size, size_t limit) {
    std::string text(reinterpret_cast<const char*>(data), size < limit ? size : limit);
    return text.substr(0, text.find('\0'));
}

const std::vector<CHisDay>& FixedBars() {
    static const std::vector<CHisDay> bars = [] {
        std::vector<CHisDay> made(300);
        float close = 10;
        for (size_t i = 0; i < made.size(); ++i) {
            CHisDay& bar = made[i];
            const int day = static_cast<int>(i);
            bar.m_lTime = 20200000 + (1 + day / 28) * 100 + 1 + day % 28;  // 28 days a month
            const float step = static_cast<float>((day * 37 % 11) - 5) / 50;
            bar.m_fOpen = close;
            close = close + step > 1 ? close + step : close;
            bar.m_fClose = close;
            bar.m_fHigh = (bar.m_fOpen > close ? bar.m_fOpen : close) + 0.1f;
            bar.m_fLow = (bar.m_fOpen < close ? bar.m_fOpen : close) - 0.1f;
            bar.m_fVolume = 100000 + static_cast<float>(day * 977 % 5000);
            bar.m_fAmount = bar.m_fVolume * close;
        }
        return made;
    }();
    return bars;
}

}  // namespace fuzz
