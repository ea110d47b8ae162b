#pragma once
// The one door to the file system for writing: the system calls of the careful writer behind an
// interface that tests replace to inject a full disk, a failed flush or a failed rename, and a
// lock that serialises read-modify-write of a shared file across processes.

#include <sys/types.h>

#include <string>

namespace ny {

// The system calls the writer and the lock use. Each returns what the system call returns and
// leaves errno set on failure.
class FileSystemCalls {
public:
    virtual ~FileSystemCalls() = default;
    virtual int Open(const char* path, int flags, mode_t mode);
    virtual ssize_t Write(int fd, const void* buffer, size_t bytes);
    virtual int Fsync(int fd);
    virtual int Close(int fd);
    virtual int Rename(const char* from, const char* to);
    virtual int Unlink(const char* path);
};

// The calls in use: the real ones unless a test installed others.
FileSystemCalls& FileSystem();
// Installs `calls` for the whole process; null restores the real ones. The caller keeps ownership.
void SetFileSystem(FileSystemCalls* calls);

// An exclusive lock on `path + ".lock"` (flock; missing folders are made), held by this object until it is destroyed or
// Release is called. Locks of several processes on one file exclude each other; the lock file
// stays behind, empty.
class FileLock {
public:
    FileLock() = default;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock() { Release(); }

    // Waits up to `timeoutMs` for the lock. False with a sentence in `error` if the lock file
    // can't be made or another process holds the lock all that time.
    bool Acquire(const std::string& path, int timeoutMs, std::string* error);
    void Release();
    bool Held() const { return m_fd >= 0; }

private:
    int m_fd = -1;
};

// How long a writer waits for the lock of a shared file before it gives up and changes nothing.
constexpr int kFileLockTimeoutMs = 5000;

// "what path: reason" with the text of errno, for messages about a failed file operation.
std::string FileErrorText(const std::string& what, const std::string& path, int error);

}  // namespace ny
