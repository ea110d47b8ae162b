#pragma once
// Concrete binary streams for the formula records: a file and a block of memory, and a writer
// that replaces a file only after the new contents are completely on disk.

#include <cstdio>
#include <functional>
#include <vector>

#include "model/binstream.h"
#include "model/types.h"

namespace ny {

// A stream over bytes in memory. Write appends; Read continues where the last Read stopped.
class MemoryStream : public CBinStream {
public:
    MemoryStream() = default;
    explicit MemoryStream(std::vector<unsigned char> bytes) : m_bytes(std::move(bytes)) {}

    size_t Read(void* buffer, size_t bytes) override;
    void Write(const void* buffer, size_t bytes) override;
    long long GetLength() const override { return static_cast<long long>(m_bytes.size()); }

    long long Remaining() const { return GetLength() - static_cast<long long>(m_readPos); }
    const std::vector<unsigned char>& Bytes() const { return m_bytes; }

private:
    std::vector<unsigned char> m_bytes;
    size_t m_readPos = 0;
};

// A stream over an open file. A stream opened for writing remembers whether any write failed,
// so that the caller can tell a complete file from a broken one.
class FileStream : public CBinStream {
public:
    enum class Mode { Read, Write };

    FileStream() = default;
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;
    ~FileStream() override;

    // Opens a file for reading, or creates (truncates) it for writing. False if that fails.
    bool Open(const CString& path, Mode mode);
    // Flushes the data to the disk and closes. False if any write, the flush or the close failed.
    bool Close();
    bool IsOpen() const { return m_file != nullptr; }

    size_t Read(void* buffer, size_t bytes) override;
    void Write(const void* buffer, size_t bytes) override;
    long long GetLength() const override;

    // Bytes between the read position and the end of the file.
    long long Remaining() const;
    bool WriteFailed() const { return m_writeFailed; }

private:
    std::FILE* m_file = nullptr;
    bool m_writing = false;
    bool m_writeFailed = false;
};

// Writes a file from a stream so that a crash or a failed write never leaves it half written:
// the contents are gathered in memory and written through WriteFileAtomic (host/files.h).
// False, and the target as it was, if anything fails.
bool WriteFileAtomically(const CString& path, const std::function<void(CBinStream&)>& write);

}  // namespace ny
