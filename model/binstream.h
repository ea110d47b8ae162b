#pragma once
#include <cstddef>

// A binary stream as the formula records need it: read and write a number of bytes, and the
// total length for reading. Short reads return fewer bytes; the rest of the caller's buffer stays.
class CBinStream {
public:
    virtual ~CBinStream() = default;
    virtual size_t Read(void* buffer, size_t bytes) = 0;
    virtual void Write(const void* buffer, size_t bytes) = 0;
    virtual long long GetLength() const = 0;
};
