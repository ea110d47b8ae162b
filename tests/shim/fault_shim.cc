// A preloaded library that makes one system call of the careful writer fail, chosen by the
// environment variable NY_FAULT: "create" (the temporary file can't be made: read-only folder),
// "write" (disk full), "fsync" (the flush fails) or "rename". Only the calls on the writer's
// temporary files are hit, so the program's other work goes on as usual.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

bool FaultIs(const char* name) {
    const char* fault = std::getenv("NY_FAULT");
    return fault != nullptr && std::strcmp(fault, name) == 0;
}

bool IsTemporary(const char* path) { return path != nullptr && std::strstr(path, ".tmp-") != nullptr; }

// Whether a descriptor is open on one of the writer's temporary files.
bool OnTemporary(int fd) {
    char link[64], target[4096];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    const ssize_t n = readlink(link, target, sizeof target - 1);
    if (n <= 0) return false;
    target[n] = '\0';
    return IsTemporary(target);
}

template <typename F>
F Next(const char* name) {
    return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

int OpenWith(const char* symbol, const char* path, int flags, mode_t mode) {
    if (FaultIs("create") && (flags & O_CREAT) != 0 && IsTemporary(path)) {
        errno = EROFS;
        return -1;
    }
    return Next<int (*)(const char*, int, ...)>(symbol)(path, flags, mode);
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list args;
    va_start(args, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? static_cast<mode_t>(va_arg(args, int)) : 0;
    va_end(args);
    return OpenWith("open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    va_list args;
    va_start(args, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? static_cast<mode_t>(va_arg(args, int)) : 0;
    va_end(args);
    return OpenWith("open64", path, flags, mode);
}

ssize_t write(int fd, const void* buffer, size_t bytes) {
    if (FaultIs("write") && OnTemporary(fd)) {
        errno = ENOSPC;
        return -1;
    }
    return Next<ssize_t (*)(int, const void*, size_t)>("write")(fd, buffer, bytes);
}

int fsync(int fd) {
    if (FaultIs("fsync") && OnTemporary(fd)) {
        errno = EIO;
        return -1;
    }
    return Next<int (*)(int)>("fsync")(fd);
}

int rename(const char* from, const char* to) {
    if (FaultIs("rename") && IsTemporary(from)) {
        errno = EIO;
        return -1;
    }
    return Next<int (*)(const char*, const char*)>("rename")(from, to);
}

}  // extern "C"
