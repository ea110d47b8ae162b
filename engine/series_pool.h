#pragma once
#include <cstddef>
#include <memory>
#include <vector>

namespace ny {

// Hands out zero-filled working buffers of one evaluation's bar count and takes them back, so
// that the recursive descent does not allocate (and first-touch) fresh memory for every operand.
// Buffers are sized in floats; a byte buffer of the condition grammar uses the same blocks.
class SeriesPool {
public:
    float* Take(size_t floats);
    void Give(float* block, size_t capacity);
    size_t Capacity() const { return m_capacity; }

private:
    size_t m_capacity = 0;
    std::vector<std::unique_ptr<float[]>> m_free;
};

// A buffer borrowed from a pool for the life of one operand; returned on every path out.
class PooledBuffer {
public:
    PooledBuffer(SeriesPool& pool, size_t floats)
        : m_pool(pool), m_data(pool.Take(floats)), m_capacity(pool.Capacity()) {}
    ~PooledBuffer() { m_pool.Give(m_data, m_capacity); }
    PooledBuffer(const PooledBuffer&) = delete;
    PooledBuffer& operator=(const PooledBuffer&) = delete;

    float* floats() const { return m_data; }
    char* bytes() const { return reinterpret_cast<char*>(m_data); }

private:
    SeriesPool& m_pool;
    float* m_data;
    size_t m_capacity;
};

}  // namespace ny
