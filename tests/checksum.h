#pragma once
// FNV-1a over raw bytes, for tests that compare large results by a 64-bit sum: any changed bit of
// any value changes the sum.

#include <cstddef>
#include <cstdint>
#include <string>

namespace testcases {

class Checksum {
public:
    void Add(const void* data, size_t size) {
        const auto* bytes = static_cast<const unsigned char*>(data);
        for (size_t i = 0; i < size; ++i) m_value = (m_value ^ bytes[i]) * 1099511628211ULL;
    }
    void Add(const std::string& bytes) { Add(bytes.data(), bytes.size()); }
    template <typename T>
    void AddValue(const T& value) {
        Add(&value, sizeof value);
    }
    uint64_t Value() const { return m_value; }

private:
    uint64_t m_value = 1469598103934665603ULL;
};

}  // namespace testcases
