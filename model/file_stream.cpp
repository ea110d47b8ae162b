#include "model/file_stream.h"

#include "host/files.h"

#include <algorithm>
#include <cstring>

namespace ny {

size_t MemoryStream::Read(void* buffer, size_t bytes) {
    const size_t count = std::min(bytes, m_bytes.size() - m_readPos);
    if (count > 0) std::memcpy(buffer, m_bytes.data() + m_readPos, count);
    m_readPos += count;
    if (count < bytes) m_shortRead = true;
    return count;
}

void MemoryStream::Write(const void* buffer, size_t bytes) {
    const auto* data = static_cast<const unsigned char*>(buffer);
    m_bytes.insert(m_bytes.end(), data, data + bytes);
}

bool WriteFileAtomically(const CString& path, const std::function<void(CBinStream&)>& write, std::string* error) {
    MemoryStream contents;
    write(contents);
    const std::vector<unsigned char>& bytes = contents.Bytes();
    return WriteFileAtomic(path, std::string(bytes.begin(), bytes.end()), error);
}

}  // namespace ny
