#include "host/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <mutex>

namespace ny {

static_assert(std::endian::native == std::endian::little,
              "record files are little-endian and are read in place");

bool ReadWholeFile(const std::string& path, std::string* bytes) {
    // Plain system calls: the picker reads two small files per stock, and each call counts.
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat info {};
    bool ok = ::fstat(fd, &info) == 0 && info.st_size >= 0;
    if (ok) {
        bytes->resize(static_cast<size_t>(info.st_size));
        size_t got = 0;
        while (got < bytes->size()) {
            const ssize_t n = ::read(fd, bytes->data() + got, bytes->size() - got);
            if (n <= 0) break;
            got += static_cast<size_t>(n);
        }
        ok = got == bytes->size();
    }
    ::close(fd);
    return ok;
}

bool WriteFileAtomic(const std::string& path, const std::string& bytes, bool flushToDisk) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path target(path);
    if (target.has_parent_path()) fs::create_directories(target.parent_path(), error);
    const std::string temporary = path + ".tmp";
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return false;
    size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        written += static_cast<size_t>(n);
    }
    const bool complete = written == bytes.size() && (!flushToDisk || ::fsync(fd) == 0);
    if (::close(fd) != 0 || !complete || ::rename(temporary.c_str(), path.c_str()) != 0) {
        ::unlink(temporary.c_str());
        return false;
    }
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

std::vector<CHisDay> ReadBarFile(const std::string& path) {
    std::string bytes;
    size_t count = 0;
    std::vector<CHisDay> bars;
    if (!ReadRecordFile(path, sizeof(CHisDay), &bytes, &count)) return bars;
    bars.resize(count);
    if (count > 0) std::memcpy(bars.data(), bytes.data(), count * sizeof(CHisDay));
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
