#pragma once
// The binary stream of the formula records over a block of memory, and the writer of formula
// files, which replaces a file only after the new contents are completely on disk.

#include <functional>
#include <string>
#include <vector>

#include "host/types.h"
#include "model/binstream.h"

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
    // True once a Read found fewer bytes than it asked for: a record ran past the end.
    bool ShortRead() const { return m_shortRead; }
    const std::vector<unsigned char>& Bytes() const { return m_bytes; }

private:
    std::vector<unsigned char> m_bytes;
    size_t m_readPos = 0;
    bool m_shortRead = false;
};

// Writes a file from a stream so that a crash or a failed write never leaves it half written:
// the contents are gathered in memory and written through WriteFileAtomic (host/files.h).
// False, the target as it was and the cause in `error` (if given), if anything fails.
bool WriteFileAtomically(const CString& path, const std::function<void(CBinStream&)>& write,
                         std::string* error = nullptr);

}  // namespace ny
