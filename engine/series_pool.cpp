#include "engine/series_pool.h"

#include <cstring>

namespace ny {

float* SeriesPool::Take(size_t floats) {
    if (floats == 0) floats = 1;
    if (floats > m_capacity) {
        m_free.clear();
        m_capacity = floats;
    }
    float* block;
    if (m_free.empty()) {
        block = new float[m_capacity];
    } else {
        block = m_free.back().release();
        m_free.pop_back();
    }
    std::memset(block, 0, m_capacity * sizeof(float));
    return block;
}

void SeriesPool::Give(float* block, size_t capacity) {
    if (capacity < m_capacity) {
        delete[] block;
        return;
    }
    m_free.emplace_back(block);
}

}  // namespace ny
