#include "platform/file_system.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <time.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace ny {

int FileSystemCalls::Open(const char* path, int flags, mode_t mode) { return ::open(path, flags, mode); }
ssize_t FileSystemCalls::Write(int fd, const void* buffer, size_t bytes) { return ::write(fd, buffer, bytes); }
int FileSystemCalls::Fsync(int fd) { return ::fsync(fd); }
int FileSystemCalls::Close(int fd) { return ::close(fd); }
int FileSystemCalls::Rename(const char* from, const char* to) { return ::rename(from, to); }
int FileSystemCalls::Unlink(const char* path) { return ::unlink(path); }

namespace {
// <chrono> can't be compiled with a GBK execution character set: the monotonic clock directly.
long long NowMs() {
    timespec now {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000LL + now.tv_nsec / 1000000;
}
void SleepMs(int ms) {
    const timespec pause{0, ms * 1000000L};
    nanosleep(&pause, nullptr);
}

FileSystemCalls& Real() {
    static FileSystemCalls real;
    return real;
}
FileSystemCalls*& Installed() {
    static FileSystemCalls* installed = &Real();
    return installed;
}
}  // namespace

FileSystemCalls& FileSystem() { return *Installed(); }

void SetFileSystem(FileSystemCalls* calls) { Installed() = calls != nullptr ? calls : &Real(); }

bool FileLock::Acquire(const std::string& path, int timeoutMs, std::string* error) {
    Release();
    const std::string lockPath = path + ".lock";
    // A file written for the first time may lack its folder yet; the writer would make it too.
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(lockPath).parent_path(), ignored);
    const int fd = FileSystem().Open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644);
    if (fd < 0) {
        *error = FileErrorText("cannot make the lock file", lockPath, errno);
        return false;
    }
    const long long deadline = NowMs() + timeoutMs;
    while (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || NowMs() >= deadline) {
            *error = errno == EWOULDBLOCK ? path + " is in use by another program (waited " +
                                                std::to_string(timeoutMs / 1000) + " s for " + lockPath + ")"
                                          : FileErrorText("cannot lock", lockPath, errno);
            FileSystem().Close(fd);
            return false;
        }
        SleepMs(20);
    }
    m_fd = fd;
    return true;
}

void FileLock::Release() {
    if (m_fd < 0) return;
    FileSystem().Close(m_fd);  // closing the last descriptor releases the flock
    m_fd = -1;
}

std::string FileErrorText(const std::string& what, const std::string& path, int error) {
    return what + " " + path + ": " + std::strerror(error);
}

}  // namespace ny
