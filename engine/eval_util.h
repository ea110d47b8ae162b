#pragma once
// Small pieces shared by the levels of the evaluator: operator tokens at the cursor, spreading a
// constant over a bar range, and bar ranges clamped to the buffers. Every level also borrows its
// working buffers from the formula object's pool.

#include <algorithm>
#include <cmath>
#include <cstring>

#include "engine/series_pool.h"

// A loop over independent bars, built twice on x86-64 and chosen when the program starts: once for
// the processor's wide vectors and once for the baseline. Vector and scalar float steps round
// alike, and fused multiply-add stays off, so both give the same values.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)
#define NY_WIDE_VECTORS __attribute__((target_clones("avx2", "default"), flatten))
#else
#define NY_WIDE_VECTORS
#endif

namespace ny {

// Magnitude below (or not above) which a divisor or a condition value counts as zero.
constexpr double kZeroTolerance = 0.000001;

inline bool At(const char* p, const char* token) {
    return std::strncmp(p, token, std::strlen(token)) == 0;
}

// The words "AND " and "OR " are operators wherever they stand, the blank included.
inline bool AtAndWord(const char* p) { return At(p, "AND "); }
inline bool AtOrWord(const char* p) { return At(p, "OR "); }

// Bars from..to limited to the buffer of `count` elements; empty when from > to.
struct BarSpan {
    int first;
    int last;
    BarSpan(short from, short to, short count)
        : first(std::max<int>(from, 0)), last(std::min<int>(to, count - 1)) {}
};

// Writes element 0 of a constant's buffer over bars from..to.
template <typename T>
void Spread(T* buffer, short from, short to, short count) {
    const BarSpan span(from, to, count);
    for (int i = span.first; i <= span.last; ++i) buffer[i] = buffer[0];
}

// Brings a running value L (`out`, its is-series flag `lSeries`) and an operand R to a common
// form. Two constants stay constants: false, combine element 0 only. Otherwise the constant side
// is spread over from..to and L becomes a series: true, combine bar by bar.
template <typename T>
bool AlignOperands(T* out, char* lSeries, T* r, char rSeries, short from, short to, short count) {
    if (!*lSeries && !rSeries) return false;
    if (*lSeries && !rSeries) {
        Spread(r, from, to, count);
    } else if (!*lSeries) {
        Spread(out, from, to, count);
        *lSeries = 1;
    }
    return true;
}

inline bool IsZeroDivisor(float value) { return std::fabs(static_cast<double>(value)) <= kZeroTolerance; }
inline bool IsZeroConstantDivisor(float value) {
    return std::fabs(static_cast<double>(value)) < kZeroTolerance;
}
inline bool IsTrue(float value) { return std::fabs(static_cast<double>(value)) > kZeroTolerance; }

// Operators of the value grammar.
enum class Op { None, And, Or, Greater, GreaterEqual, Less, LessEqual, Equal, NotEqual, Add, Sub, Mul, Div };

inline float Apply(Op op, float l, float r) {
    switch (op) {
        case Op::And: return (l != 0.0f && r != 0.0f) ? 1.0f : 0.0f;
        case Op::Or: return (l == 0.0f && r == 0.0f) ? 0.0f : 1.0f;
        case Op::Greater: return l > r ? 1.0f : 0.0f;
        case Op::GreaterEqual: return l >= r ? 1.0f : 0.0f;
        case Op::Less: return l < r ? 1.0f : 0.0f;
        case Op::LessEqual: return l <= r ? 1.0f : 0.0f;
        case Op::Equal: return l == r ? 1.0f : 0.0f;
        case Op::NotEqual: return l != r ? 1.0f : 0.0f;
        case Op::Add: return l + r;
        case Op::Sub: return l - r;
        case Op::Mul: return l * r;
        case Op::Div: return l / r;
        case Op::None: return r;
    }
    return r;
}

}  // namespace ny
