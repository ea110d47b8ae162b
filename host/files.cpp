#include "host/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <bit>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <random>

#include "host/clock.h"
#include "platform/file_system.h"

namespace ny {

std::string ProgramDirectory() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof(path) - 1);
    if (length <= 0) return {};
    const std::string program(path, static_cast<size_t>(length));
    return program.substr(0, program.rfind('/') + 1);
}

static_assert(std::endian::native == std::endian::little,
              "record files are little-endian and are read in place");

bool ReadWholeFile(const std::string& path, std::string* bytes, std::string* error, size_t maxBytes) {
    // Plain system calls: the picker reads two small files per stock, and each call counts. A FIFO
    // opened without O_NONBLOCK would wait for a writer.
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        if (error != nullptr) *error = FileErrorText("cannot read", path, errno);
        return false;
    }
    struct stat info {};
    std::string problem;
    if (::fstat(fd, &info) != 0) problem = FileErrorText("cannot read", path, errno);
    else if (!S_ISREG(info.st_mode)) problem = path + " is not a regular file";
    else if (static_cast<unsigned long long>(info.st_size) > maxBytes)
        problem = path + " is larger than " + std::to_string(maxBytes) + " bytes";
    if (problem.empty()) {
        bytes->resize(static_cast<size_t>(info.st_size));
        size_t got = 0;
        while (got < bytes->size()) {
            const ssize_t n = ::read(fd, bytes->data() + got, bytes->size() - got);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) break;
            got += static_cast<size_t>(n);
        }
        if (got != bytes->size()) problem = FileErrorText("cannot read", path, EIO);
    }
    ::close(fd);
    if (!problem.empty() && error != nullptr) *error = problem;
    return problem.empty();
}

namespace {

// Creates a new file with a name not taken yet: path + ".tmp-" + a random suffix. Returns the
// descriptor, or -1 with errno set.
int CreateTemporary(const std::string& path, std::string* temporary) {
    static std::atomic<unsigned> counter{0};
    thread_local std::mt19937 random(std::random_device{}() ^ static_cast<unsigned>(::getpid()));
    for (int attempt = 0; attempt < 100; ++attempt) {
        char suffix[32];
        std::snprintf(suffix, sizeof suffix, ".tmp-%d-%u-%08x", static_cast<int>(::getpid()), counter++,
                      static_cast<unsigned>(random()));
        *temporary = path + suffix;
        const int fd = FileSystem().Open(temporary->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
        if (fd >= 0 || errno != EEXIST) return fd;
    }
    return -1;
}

bool WriteAll(int fd, const std::string& bytes) {
    size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t n = FileSystem().Write(fd, bytes.data() + written, bytes.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n == 0) errno = ENOSPC;
        if (n <= 0) return false;
        written += static_cast<size_t>(n);
    }
    return true;
}

bool FlushFolder(const std::string& folder) {
    const int fd = FileSystem().Open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
    if (fd < 0) return false;
    const bool flushed = FileSystem().Fsync(fd) == 0;
    const int saved = errno;
    FileSystem().Close(fd);
    errno = saved;
    return flushed;
}

bool Failed(std::string* error, const std::string& text) {
    if (error != nullptr) *error = text;
    return false;
}

}  // namespace

bool WriteFileAtomic(const std::string& path, const std::string& bytes, std::string* error, bool flushToDisk) {
    namespace fs = std::filesystem;
    const fs::path target(path);
    const std::string folder = target.has_parent_path() ? target.parent_path().string() : ".";
    std::error_code made;
    fs::create_directories(folder, made);
    if (made) return Failed(error, FileErrorText("cannot make the folder", folder, made.value()));
    std::string temporary;
    const int fd = CreateTemporary(path, &temporary);
    if (fd < 0) return Failed(error, FileErrorText("cannot write", path, errno));
    bool ok = WriteAll(fd, bytes) && (!flushToDisk || FileSystem().Fsync(fd) == 0);
    int cause = errno;
    if (FileSystem().Close(fd) != 0 && ok) {
        ok = false;
        cause = errno;
    }
    if (ok && FileSystem().Rename(temporary.c_str(), path.c_str()) != 0) {
        ok = false;
        cause = errno;
    }
    if (!ok) {
        FileSystem().Unlink(temporary.c_str());
        return Failed(error, FileErrorText("cannot write", path, cause));
    }
    if (flushToDisk && !FlushFolder(folder))
        return Failed(error, FileErrorText("wrote " + path + " but cannot flush its folder", folder, errno));
    return true;
}

bool ReadRecordFile(const std::string& path, size_t recordSize, std::string* bytes, size_t* count) {
    *count = 0;
    if (!ReadWholeFile(path, bytes)) return false;
    *count = bytes->size() / recordSize;
    if (bytes->size() % recordSize != 0)
        ReportProblem(path + ": length " + std::to_string(bytes->size()) +
                      " is not a multiple of " + std::to_string(recordSize) +
                      ", trailing bytes ignored");
    return true;
}

bool IsCalendarDay(int date) { return date >= 19000101 && WeekDay(date) != 0; }

namespace {

// A minute stamp YYMMDDHHMM: a day of 2000 to 2099 and a time of day.
bool IsMinuteStamp(int stamp) {
    const int hour = stamp / 100 % 100, minute = stamp % 100;
    return stamp > 0 && IsCalendarDay(20000000 + stamp / 10000) && hour < 24 && minute < 60;
}

bool IsAmount(float value) { return std::isfinite(value) && value >= 0; }

bool IsPrice(float value, bool strict) { return strict ? IsAmount(value) : std::isfinite(value); }

std::string BarDamage(const CHisDay& bar, bool minute, bool strict) {
    if (strict && !(minute ? IsMinuteStamp(bar.m_lTime) : IsCalendarDay(bar.m_lTime)))
        return "impossible " + std::string(minute ? "time " : "date ") + std::to_string(bar.m_lTime);
    if (!IsPrice(bar.m_fOpen, strict) || !IsPrice(bar.m_fHigh, strict) || !IsPrice(bar.m_fLow, strict) ||
        !IsPrice(bar.m_fClose, strict))
        return "a price is not a number or negative";
    if (bar.m_fHigh < bar.m_fLow) return "the high is below the low";
    if (!IsPrice(bar.m_fVolume, strict) || !IsPrice(bar.m_fAmount, strict))
        return "the volume or amount is not a number or negative";
    return {};
}

}  // namespace

std::string FindBarDamage(const CHisDay* bars, size_t count, bool minute, bool strict) {
    for (size_t i = 0; i < count; ++i)
        if (std::string what = BarDamage(bars[i], minute, strict); !what.empty())
            return "record " + std::to_string(i + 1) + ": " + what;
    return {};
}

MarketFileState ReadBars(const std::string& path, bool minute, std::vector<CHisDay>* bars, std::string* damage) {
    bars->clear();
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0 && errno == ENOENT) return MarketFileState::Missing;
    std::string bytes, problem;
    if (ReadWholeFile(path, &bytes, &problem)) {
        const size_t count = bytes.size() / sizeof(CHisDay);
        bars->resize(count);
        if (count > 0) std::memcpy(bars->data(), bytes.data(), count * sizeof(CHisDay));
        if (std::string found = FindBarDamage(bars->data(), count, minute); !found.empty())
            problem = path + ": " + found;
        else if (bytes.size() % sizeof(CHisDay) != 0)
            problem = path + ": length " + std::to_string(bytes.size()) + " is not a multiple of " +
                      std::to_string(sizeof(CHisDay)) + ", the last record is cut short";
    }
    if (problem.empty()) return MarketFileState::Whole;
    ReportProblem(problem);
    if (damage != nullptr) *damage = problem;
    return MarketFileState::Damaged;
}

std::vector<CHisDay> ReadBarFile(const std::string& path) {
    // Minute files are named .mn1 and .mn5: their records carry YYMMDDHHMM stamps.
    const bool minute = path.size() > 4 && path.compare(path.size() - 4, 3, ".mn") == 0;
    std::vector<CHisDay> bars;
    ReadBars(path, minute, &bars);
    return bars;
}

std::string EncodeBars(const std::vector<CHisDay>& bars) {
    std::string bytes(bars.size() * sizeof(CHisDay), '\0');
    if (!bars.empty()) std::memcpy(bytes.data(), bars.data(), bytes.size());
    return bytes;
}

namespace {
std::mutex& ProblemsLock() {
    static std::mutex lock;
    return lock;
}
std::vector<std::string>& Problems() {
    static std::vector<std::string> problems;
    return problems;
}
}  // namespace

const std::vector<std::string>& InstallationProblems() { return Problems(); }

void ReportProblem(const std::string& text) {
    std::lock_guard<std::mutex> guard(ProblemsLock());
    Problems().push_back(text);
}

void ClearProblems() {
    std::lock_guard<std::mutex> guard(ProblemsLock());
    Problems().clear();
}

int LoadInt(const char* at) {
    int32_t value;
    std::memcpy(&value, at, 4);
    return value;
}

float LoadFloat(const char* at) {
    float value;
    std::memcpy(&value, at, 4);
    return value;
}

void StoreInt(std::string* out, int value) {
    const int32_t v = value;
    out->append(reinterpret_cast<const char*>(&v), 4);
}

void StoreFloat(std::string* out, float value) { out->append(reinterpret_cast<const char*>(&value), 4); }

}  // namespace ny
