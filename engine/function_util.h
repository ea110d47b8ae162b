#pragma once
// Pieces shared by the function readers of the math, logic and date families: truncation through
// a 32-bit integer, whole-number periods, skipping an argument that is read later, and the
// moving-window covariance behind COVAR, RELATE, BETAEX and BETA.

#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/eval_context.h"
#include "engine/argument_scan.h"
#include "engine/eval_code.h"
#include "model/indicator.h"

namespace ny {

// Truncation toward zero as a float to 32-bit integer conversion; values beyond the integer's
// range saturate and NaN gives 0, so that no conversion is undefined.
inline int TruncToInt(double value) {
    if (std::isnan(value)) return 0;
    if (value >= 2147483647.0) return std::numeric_limits<int>::max();
    if (value <= -2147483648.0) return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

// Bar index clamped to a bar range limit, computed in int so that a long period cannot wrap a
// 16-bit bar number.
inline short ClampBar(int bar) {
    if (bar > std::numeric_limits<short>::max()) return std::numeric_limits<short>::max();
    if (bar < std::numeric_limits<short>::min()) return std::numeric_limits<short>::min();
    return static_cast<short>(bar);
}

// Truncation saturating at the limits of a 16-bit bar number or period.
inline short TruncToShort(double value) { return ClampBar(TruncToInt(value)); }

// Longest period worth holding: beyond it no window fits into 16-bit bar numbers anyway.
constexpr int kLongestPeriod = 32767;

// A period is read as trunc(v + 0.5); it is whole when v lies within 1e-6 of that.
inline int RoundedPeriod(float value) { return TruncToInt(static_cast<double>(value) + 0.5); }
inline bool IsWholeNumber(float value) {
    return std::fabs(static_cast<double>(value) - RoundedPeriod(value)) <= 0.000001;
}

// For a call whose first argument is read last: Skip steps over it (code 10 if the statement
// ends first), the caller reads the later arguments, ReturnToFirst goes back to it, and Finish
// leaves the cursor behind the call's ")", the furthest place reached.
class FirstArgumentLast {
public:
    explicit FirstArgumentLast(CIndicator& indicator) : m_indicator(indicator) {}

    char Skip() {
        m_first = m_indicator.Context().m_pCursor;
        char* comma = FindTopLevelComma(m_first);
        if (comma == nullptr) {
            while (*m_indicator.Context().m_pCursor != ';' && *m_indicator.Context().m_pCursor != '\0')
                ++m_indicator.Context().m_pCursor;
            return NY_EVAL_UNTERMINATED;
        }
        m_indicator.Context().m_pCursor = comma + 1;
        return 0;
    }
    void ReturnToFirst() {
        m_end = m_indicator.Context().m_pCursor;
        m_indicator.Context().m_pCursor = m_first;
    }
    void Finish() { m_indicator.Context().m_pCursor = m_end; }

private:
    CIndicator& m_indicator;
    char* m_first = nullptr;
    char* m_end = nullptr;
};

// Population figures of two series over the window of `n` bars ending at bar `last`, each a
// 32-bit float between steps: the means, the deviations of each series and the covariance.
struct WindowFigures {
    float meanA;
    float meanB;
    float deviationA;
    float deviationB;
    float varianceB;
    float covariance;
};

inline WindowFigures MeasureWindow(const float* a, const float* b, int last, int n) {
    const int first = last - n + 1;
    float sumA = 0, sumB = 0, sumAB = 0;
    for (int j = first; j <= last; ++j) {
        sumA += a[j];
        sumB += b[j];
        sumAB += a[j] * b[j];
    }
    WindowFigures f;
    f.meanA = static_cast<float>(static_cast<double>(sumA) / n);
    f.meanB = static_cast<float>(static_cast<double>(sumB) / n);
    float squaresA = 0, squaresB = 0;
    for (int j = first; j <= last; ++j) {
        const float da = a[j] - f.meanA;
        const float db = b[j] - f.meanB;
        squaresA += da * da;
        squaresB += db * db;
    }
    f.deviationA = static_cast<float>(std::sqrt(static_cast<double>(squaresA) / n));
    f.varianceB = static_cast<float>(static_cast<double>(squaresB) / n);
    f.deviationB = static_cast<float>(std::sqrt(static_cast<double>(squaresB) / n));
    const float meanAB = static_cast<float>(static_cast<double>(sumAB) / n);
    f.covariance = static_cast<float>(static_cast<double>(meanAB) -
                                      static_cast<double>(f.meanA) * f.meanB);
    return f;
}

}  // namespace ny
