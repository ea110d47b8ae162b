// Crossings of two series and the pairwise window statistics: CROSS, LONGCROSS, NDAY, COVAR,
// RELATE and BETAEX. The period (and for CROSS the second series) is read before the first
// series.

#include <algorithm>
#include <cstring>

#include "engine/eval_code.h"
#include "engine/eval_context.h"
#include "engine/eval_util.h"
#include "engine/function_util.h"
#include "model/indicator.h"

namespace {

enum class PairFunc { LongCross, NDay, Covar, Relate, BetaEx };

PairFunc FindPairFunc(const char* word) {
    if (std::strcmp(word, "LONGCROSS") == 0) return PairFunc::LongCross;
    if (std::strcmp(word, "NDAY") == 0) return PairFunc::NDay;
    if (std::strcmp(word, "COVAR") == 0) return PairFunc::Covar;
    if (std::strcmp(word, "RELATE") == 0) return PairFunc::Relate;
    return PairFunc::BetaEx;
}

// Whether a stays at or below b (or, with notBelow, at or above it) on every bar of first..last.
bool HoldsOnAll(const float* a, const float* b, int first, int last, bool notBelow) {
    for (int j = std::max(first, 0); j <= last; ++j)
        if (notBelow ? !(a[j] >= b[j]) : a[j] > b[j]) return false;
    return true;
}

float WindowStatistic(PairFunc kind, const float* a, const float* b, int last, int n) {
    const ny::WindowFigures f = ny::MeasureWindow(a, b, last, n);
    switch (kind) {
        case PairFunc::Covar:
            return f.covariance;
        case PairFunc::Relate:
            if (f.deviationA == 0.0f || f.deviationB == 0.0f) return 0.0f;
            return static_cast<float>(f.covariance /
                                      (static_cast<double>(f.deviationA) * f.deviationB));
        default:
            if (f.deviationB == 0.0f) return 0.0f;
            return static_cast<float>(f.covariance /
                                      (static_cast<double>(f.deviationB) * f.deviationB));
    }
}

}  // namespace

char CIndicator::ReadCROSS(char*, float* out, short* from, short* to, char, char*) {
    char rc = BeginCall(2);
    if (rc != 0) return rc;
    ny::FirstArgumentLast order(*this);
    if ((rc = order.Skip()) != 0) return rc;
    ny::PooledBuffer bufferA(Context().pool, m_nBarCount);
    ny::PooledBuffer bufferB(Context().pool, m_nBarCount);
    float* a = bufferA.floats();
    float* b = bufferB.floats();
    short aFrom = *from, aTo = *to, bFrom = *from, bTo = *to;
    char aSeries = 0, bSeries = 0;
    if ((rc = ReadValueArgument(b, &bFrom, &bTo, &bSeries, 1, true)) != 0) return rc;
    order.ReturnToFirst();
    if ((rc = ReadValueArgument(a, &aFrom, &aTo, &aSeries, 1, false)) != 0) return rc;
    order.Finish();
    if (!aSeries) ny::Spread(a, aFrom, aTo, m_nBarCount);
    if (!bSeries) ny::Spread(b, bFrom, bTo, m_nBarCount);
    if ((rc = MergeRange(from, to, bFrom, bTo)) != 0) return rc;
    if ((rc = MergeRange(from, to, aFrom, aTo)) != 0) return rc;

    // The first bar of the range has no bar before it: it is a value, 0.
    const ny::BarSpan span(static_cast<short>(std::max<int>(*from + 1, 1)), *to, m_nBarCount);
    for (int i = span.first; i <= span.last; ++i)
        out[i] = (a[i - 1] <= b[i - 1] && a[i] > b[i]) ? 1.0f : 0.0f;
    return 0;
}

char CIndicator::ReadLONGCROSS(char* word, float* out, short* from, short* to, char, char*) {
    const PairFunc kind = FindPairFunc(word);
    char rc = BeginCall(3);
    if (rc != 0) return rc;
    ny::FirstArgumentLast order(*this);
    if ((rc = order.Skip()) != 0) return rc;
    ny::PooledBuffer bufferA(Context().pool, m_nBarCount);
    ny::PooledBuffer bufferB(Context().pool, m_nBarCount);
    ny::PooledBuffer bufferN(Context().pool, m_nBarCount);
    float* a = bufferA.floats();
    float* b = bufferB.floats();
    short aFrom = *from, aTo = *to, bFrom = *from, bTo = *to, nFrom = *from, nTo = *to;
    char aSeries = 0, bSeries = 0, nSeries = 0;
    if ((rc = ReadValueArgument(b, &bFrom, &bTo, &bSeries, 1, false)) != 0) return rc;
    if ((rc = ReadValueArgument(bufferN.floats(), &nFrom, &nTo, &nSeries, 1, true)) != 0) return rc;
    order.ReturnToFirst();
    if ((rc = ReadValueArgument(a, &aFrom, &aTo, &aSeries, 1, false)) != 0) return rc;
    order.Finish();

    const float period = bufferN.floats()[0];
    if (!ny::IsWholeNumber(period) || ny::RoundedPeriod(period) < 1) return NY_EVAL_BAD_PERIOD;
    const int n = std::min(ny::RoundedPeriod(period), ny::kLongestPeriod);
    if (!aSeries) return NY_EVAL_CONSTANT_ARGUMENT;
    // A constant second argument is compared on every bar, as CROSS does.
    if (!bSeries) ny::Spread(b, bFrom, bTo, m_nBarCount);
    if ((rc = MergeRange(from, to, aFrom, aTo)) != 0) return rc;
    if ((rc = MergeRange(from, to, bFrom, bTo)) != 0) return rc;

    switch (kind) {
        case PairFunc::LongCross: {
            // Above now, and not above on any of the n bars before.
            const ny::BarSpan span(ny::ClampBar(*from + n), *to, m_nBarCount);
            for (int i = span.first; i <= span.last; ++i)
                out[i] = (a[i] > b[i] && HoldsOnAll(a, b, i - n, i - 1, false)) ? 1.0f : 0.0f;
            return 0;
        }
        case PairFunc::NDay: {
            const ny::BarSpan span(ny::ClampBar(*from + n - 1), *to, m_nBarCount);
            for (int i = span.first; i <= span.last; ++i)
                out[i] = HoldsOnAll(a, b, i - n + 1, i, true) ? 1.0f : 0.0f;
            return 0;
        }
        default: {
            *from = ny::ClampBar(*from + n - 1);
            const ny::BarSpan span(*from, *to, m_nBarCount);
            for (int i = std::max(span.first, n - 1); i <= span.last; ++i)
                out[i] = WindowStatistic(kind, a, b, i, n);
            return 0;
        }
    }
}
