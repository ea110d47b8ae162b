#include "model/file_stream.h"

#include "host/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace ny {

size_t MemoryStream::Read(void* buffer, size_t bytes) {
    const size_t count = std::min(bytes, m_bytes.size() - m_readPos);
    if (count > 0) std::memcpy(buffer, m_bytes.data() + m_readPos, count);
    m_readPos += count;
    return count;
}

void MemoryStream::Write(const void* buffer, size_t bytes) {
    const auto* data = static_cast<const unsigned char*>(buffer);
    m_bytes.insert(m_bytes.end(), data, data + bytes);
}

FileStream::~FileStream() { Close(); }

bool FileStream::Open(const CString& path, Mode mode) {
    Close();
    m_file = std::fopen(path.c_str(), mode == Mode::Read ? "rb" : "wb");
    m_writing = mode == Mode::Write;
    m_writeFailed = false;
    // A folder opens for reading on this system but holds no bytes to read.
    struct stat info;
    if (m_file != nullptr && (::fstat(::fileno(m_file), &info) != 0 || !S_ISREG(info.st_mode))) Close();
    return m_file != nullptr;
}

bool FileStream::Close() {
    if (m_file == nullptr) return !m_writeFailed;
    bool ok = true;
    if (m_writing) ok = !m_writeFailed && std::fflush(m_file) == 0 && ::fsync(::fileno(m_file)) == 0;
    ok = std::fclose(m_file) == 0 && ok;
    m_file = nullptr;
    return ok;
}

size_t FileStream::Read(void* buffer, size_t bytes) {
    if (m_file == nullptr || bytes == 0) return 0;
    return std::fread(buffer, 1, bytes, m_file);
}

void FileStream::Write(const void* buffer, size_t bytes) {
    if (m_file == nullptr || std::fwrite(buffer, 1, bytes, m_file) != bytes) m_writeFailed = true;
}

long long FileStream::GetLength() const {
    struct stat info;
    if (m_file == nullptr || ::fstat(::fileno(m_file), &info) != 0) return 0;
    return static_cast<long long>(info.st_size);
}

long long FileStream::Remaining() const {
    if (m_file == nullptr) return 0;
    const long position = std::ftell(m_file);
    return position < 0 ? 0 : std::max(0LL, GetLength() - position);
}

bool WriteFileAtomically(const CString& path, const std::function<void(CBinStream&)>& write) {
    MemoryStream contents;
    write(contents);
    const std::vector<unsigned char>& bytes = contents.Bytes();
    return WriteFileAtomic(path, std::string(bytes.begin(), bytes.end()));
}

}  // namespace ny
