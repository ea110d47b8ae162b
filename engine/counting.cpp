// Counts of a condition over windows, distances to the bars where it held, run lengths, and the
// bar-position functions: COUNT, EXIST, EVERY, BACKSET, BARSSINCEN, FILTER, LAST, BARSLAST,
// BARSSINCE, BARSLASTCOUNT, BARSCOUNT, CONST, TOPRANGE and LOWRANGE.

#include <algorithm>
#include <cstring>

#include "engine/eval_code.h"
#include "engine/eval_context.h"
#include "engine/eval_util.h"
#include "engine/function_util.h"
#include "model/indicator.h"

namespace {

enum class CountFunc { Count, Exist, Every, BackSet, BarsSinceN, Filter };

CountFunc FindCountFunc(const char* word) {
    if (std::strcmp(word, "COUNT") == 0) return CountFunc::Count;
    if (std::strcmp(word, "EXIST") == 0) return CountFunc::Exist;
    if (std::strcmp(word, "EVERY") == 0) return CountFunc::Every;
    if (std::strcmp(word, "BACKSET") == 0) return CountFunc::BackSet;
    if (std::strcmp(word, "BARSSINCEN") == 0) return CountFunc::BarsSinceN;
    return CountFunc::Filter;
}

// True bars of a condition from first to last inclusive; bars below 0 are not looked at.
int CountTrue(const char* x, int first, int last) {
    int count = 0;
    for (int j = std::max(first, 0); j <= last; ++j) count += x[j] != 0;
    return count;
}

// The condition and its valid bars, with the buffer's size for the loops' clamps.
struct Condition {
    const char* x;
    short first;
    short last;
    short bars;
};

// COUNT with a period per bar: the window of bar i holds N[i] + 1 bars, cut at the range's start.
void CountOverSeriesPeriod(const Condition& c, const float* period, float* out, short from, short to) {
    const ny::BarSpan span(from, to, c.bars);
    for (int i = span.first; i <= span.last; ++i) {
        const int start = std::max(ny::TruncToInt(static_cast<double>(i) - period[i]), static_cast<int>(from));
        out[i] = static_cast<float>(CountTrue(c.x, start, i));
    }
}

// COUNT with a constant period: 0 counts from the condition's first bar, n > 0 rolls a window of
// n bars. Returns 14 when no bar is left.
char CountOverConstantPeriod(const Condition& c, int n, float* out, short* from, short* to) {
    if (n == 0) {
        *from = std::max(*from, c.first);
        *to = c.last;
        if (*from > *to) return NY_EVAL_EMPTY_RANGE;
        int count = 0;
        const ny::BarSpan span(c.first, *to, c.bars);
        for (int i = span.first; i <= span.last; ++i) {
            count += c.x[i] != 0;
            if (i >= *from) out[i] = static_cast<float>(count);
        }
        return 0;
    }
    const int first = c.first + n - 1;
    if (first > c.last) return NY_EVAL_EMPTY_RANGE;
    *from = static_cast<short>(first);
    *to = c.last;
    const ny::BarSpan span(*from, *to, c.bars);
    if (span.first > span.last) return 0;
    int count = CountTrue(c.x, span.first - n + 1, span.first);
    out[span.first] = static_cast<float>(count);
    for (int i = span.first + 1; i <= span.last; ++i) {
        count += (c.x[i] != 0) - (c.x[i - n] != 0);
        out[i] = static_cast<float>(count);
    }
    return 0;
}

// EXIST and EVERY: whether any (all) of the n bars ending at i is true.
void TestWindows(const Condition& c, int n, bool every, float* out, short* from, short* to) {
    *from = ny::ClampBar(c.first + n - 1);
    *to = c.last;
    const ny::BarSpan span(*from, *to, c.bars);
    for (int i = span.first; i <= span.last; ++i) {
        const int first = std::max(i - n + 1, 0);
        const int trueBars = CountTrue(c.x, first, i);
        out[i] = (every ? trueBars == i - first + 1 : trueBars > 0) ? 1.0f : 0.0f;
    }
}

// BARSSINCEN: the distance to the earliest true bar among the n - 1 bars before i; bar 0 never
// takes part.
void DistanceToEarliest(const Condition& c, int n, float* out) {
    const ny::BarSpan span(c.first, c.last, c.bars);
    for (int i = span.first; i <= span.last; ++i) {
        const int start = i - n + 1;
        out[i] = 0.0f;
        if (start <= 0) continue;
        for (int j = start; j < i; ++j) {
            if (c.x[j]) {
                out[i] = static_cast<float>(i - j);
                break;
            }
        }
    }
}

// BACKSET: a true bar marks itself and the n - 1 bars before it; a false bar clears itself only,
// so a later mark overrides it.
void MarkBackwards(const Condition& c, int n, float* out) {
    const ny::BarSpan span(c.first, c.last, c.bars);
    for (int i = span.first; i <= span.last; ++i) {
        if (!c.x[i]) {
            out[i] = 0.0f;
            continue;
        }
        for (int j = std::max(i - n + 1, 0); j <= i; ++j) out[j] = 1.0f;
    }
}

// FILTER: a true bar passes and silences the next n bars, which are not examined.
void FilterSignals(const Condition& c, int n, float* out) {
    const ny::BarSpan span(c.first, c.last, c.bars);
    for (int i = span.first; i <= span.last;) {
        if (!c.x[i]) {
            out[i++] = 0.0f;
            continue;
        }
        out[i] = 1.0f;
        for (int k = 1; k <= n && i + k <= span.last; ++k) out[i + k] = 0.0f;
        i += n + 1;
    }
}

enum class BarsFunc { BarsLast, BarsSince, BarsLastCount };

BarsFunc FindBarsFunc(const char* word) {
    if (std::strcmp(word, "BARSLAST") == 0) return BarsFunc::BarsLast;
    if (std::strcmp(word, "BARSSINCE") == 0) return BarsFunc::BarsSince;
    return BarsFunc::BarsLastCount;
}

enum class RangeFunc { BarsCount, Const, TopRange, LowRange };

RangeFunc FindRangeFunc(const char* word) {
    if (std::strcmp(word, "BARSCOUNT") == 0) return RangeFunc::BarsCount;
    if (std::strcmp(word, "CONST") == 0) return RangeFunc::Const;
    if (std::strcmp(word, "TOPRANGE") == 0) return RangeFunc::TopRange;
    return RangeFunc::LowRange;
}

// TOPRANGE (LOWRANGE): how many bars before i, back to the first bar, stay below (above) x[i].
void CountRunBefore(const float* x, short first, short last, short bars, bool top, float* out) {
    const ny::BarSpan span(first, last, bars);
    if (span.first > span.last) return;
    out[span.first] = 0.0f;
    for (int i = span.first + 1; i <= span.last; ++i) {
        int count = 0;
        for (int j = i - 1; j >= span.first && (top ? x[j] < x[i] : x[j] > x[i]); --j) ++count;
        out[i] = static_cast<float>(count);
    }
}

}  // namespace

char CIndicator::ReadCOUNT(char* word, float* out, short* from, short* to, char, char*) {
    const CountFunc kind = FindCountFunc(word);
    char rc = BeginCall(2);
    if (rc != 0) return rc;
    ny::FirstArgumentLast order(*this);
    if ((rc = order.Skip()) != 0) return rc;
    ny::PooledBuffer periodBuffer(Context().pool, m_nBarCount);
    const float* period = periodBuffer.floats();
    short nFrom = *from, nTo = *to;
    char nSeries = 0;
    if ((rc = ReadValueArgument(periodBuffer.floats(), &nFrom, &nTo, &nSeries, 1, true)) != 0) return rc;
    const short n = ny::TruncToShort(static_cast<double>(period[0]) + 0.5);
    if (!nSeries && (n < 0 || !ny::IsWholeNumber(period[0]))) return NY_EVAL_BAD_PERIOD;

    order.ReturnToFirst();
    ny::PooledBuffer condition(Context().pool, m_nBarCount);
    short xFrom = *from, xTo = *to;
    char xSeries = 0;
    if ((rc = ReadConditionArgument(condition.bytes(), &xFrom, &xTo, &xSeries, 1, false)) != 0)
        return rc;
    order.Finish();
    if (!xSeries) return NY_EVAL_CONSTANT_ARGUMENT;
    const Condition c{condition.bytes(), xFrom, xTo, m_nBarCount};
    const int atLeastOne = std::max<int>(n, 1);

    switch (kind) {
        case CountFunc::Count:
            if (!nSeries) return CountOverConstantPeriod(c, n, out, from, to);
            *from = std::max(xFrom, nFrom);
            *to = std::min(xTo, nTo);
            if (*from > *to) return NY_EVAL_EMPTY_RANGE;
            CountOverSeriesPeriod(c, period, out, *from, *to);
            return 0;
        case CountFunc::Exist:
        case CountFunc::Every:
            TestWindows(c, atLeastOne, kind == CountFunc::Every, out, from, to);
            return 0;
        case CountFunc::BarsSinceN:
            DistanceToEarliest(c, atLeastOne, out);
            break;
        case CountFunc::BackSet:
            MarkBackwards(c, atLeastOne, out);
            break;
        case CountFunc::Filter:
            FilterSignals(c, std::max<int>(n, 0), out);
            break;
    }
    *from = xFrom;
    *to = xTo;
    return 0;
}

char CIndicator::ReadLAST(char*, float* out, short* from, short* to, char, char*) {
    char rc = BeginCall(3);
    if (rc != 0) return rc;
    ny::FirstArgumentLast order(*this);
    if ((rc = order.Skip()) != 0) return rc;
    // The two offsets share one buffer, zeroed between them.
    ny::PooledBuffer offsetBuffer(Context().pool, m_nBarCount);
    float offsets[2];
    for (int k = 0; k < 2; ++k) {
        short f = *from, t = *to;
        char isSeries = 0;
        std::memset(offsetBuffer.floats(), 0, sizeof(float) * std::max<int>(m_nBarCount, 1));
        if ((rc = ReadValueArgument(offsetBuffer.floats(), &f, &t, &isSeries, 1, k == 1)) != 0) return rc;
        offsets[k] = offsetBuffer.floats()[0];
    }
    for (float v : offsets)
        if (!ny::IsWholeNumber(v) || ny::RoundedPeriod(v) < 0) return NY_EVAL_BAD_PERIOD;
    const int a = std::min(ny::RoundedPeriod(offsets[0]), ny::kLongestPeriod);
    const int b = std::min(ny::RoundedPeriod(offsets[1]), ny::kLongestPeriod);

    order.ReturnToFirst();
    ny::PooledBuffer condition(Context().pool, m_nBarCount);
    const char* x = condition.bytes();
    short xFrom = *from, xTo = *to;
    char xSeries = 0;
    if ((rc = ReadConditionArgument(condition.bytes(), &xFrom, &xTo, &xSeries, 1, false)) != 0)
        return rc;
    order.Finish();
    if (!xSeries) return NY_EVAL_CONSTANT_ARGUMENT;

    *from = ny::ClampBar(xFrom + std::max(a, b));
    *to = xTo;
    const ny::BarSpan span(*from, *to, m_nBarCount);
    for (int i = span.first; i <= span.last; ++i) {
        // An offset of 0 reaches back to the first bar (A) or stands on the current bar (B).
        const int start = a == 0 ? xFrom : i - a;
        const int end = b == 0 ? i : i - b;
        out[i] = (start <= end && CountTrue(x, start, end) == end - start + 1) ? 1.0f : 0.0f;
    }
    return 0;
}

char CIndicator::ReadLogicalFun(char* word, float* out, short* from, short* to, char, char*) {
    const BarsFunc kind = FindBarsFunc(word);
    ny::PooledBuffer condition(Context().pool, m_nBarCount);
    const char* x = condition.bytes();
    short xFrom = *from, xTo = *to;
    char xSeries = 0;
    if (const char rc = ReadSoleCondition(condition.bytes(), &xFrom, &xTo, &xSeries)) return rc;
    if (!xSeries) return NY_EVAL_CONSTANT_ARGUMENT;

    // BARSLAST and BARSSINCE are valid from the first true bar on; with none, only the last bar
    // is, holding the number of bars walked.
    const bool fromFirstTrue = kind != BarsFunc::BarsLastCount;
    *from = fromFirstTrue ? xTo : xFrom;
    *to = xTo;
    bool seenTrue = false;
    int count = 0;
    const ny::BarSpan span(xFrom, xTo, m_nBarCount);
    for (int i = span.first; i <= span.last; ++i) {
        const bool isTrue = x[i] != 0;
        switch (kind) {
            case BarsFunc::BarsLast:
                count = isTrue ? 0 : count + 1;
                break;
            case BarsFunc::BarsSince:
                count = (isTrue && !seenTrue) ? 0 : count + 1;
                break;
            case BarsFunc::BarsLastCount:
                count = isTrue ? count + 1 : 0;
                break;
        }
        if (fromFirstTrue && isTrue && !seenTrue) *from = static_cast<short>(i);
        seenTrue = seenTrue || isTrue;
        out[i] = static_cast<float>(count);
    }
    return 0;
}

char CIndicator::ReadBARSCOUNT(char* word, float* out, short* from, short* to, char, char*) {
    const RangeFunc kind = FindRangeFunc(word);
    ny::PooledBuffer value(Context().pool, m_nBarCount);
    const float* x = value.floats();
    short xFrom = *from, xTo = *to;
    char xSeries = 0;
    if (const char rc = ReadSoleArgument(value.floats(), &xFrom, &xTo, &xSeries, 1)) return rc;
    if (!xSeries) return NY_EVAL_CONSTANT_ARGUMENT;

    if (kind == RangeFunc::Const) {
        // The last valid value over the caller's whole range, bars before the argument's included.
        const float last = (xTo >= 0 && xTo < m_nBarCount) ? x[xTo] : 0.0f;
        const ny::BarSpan span(*from, *to, m_nBarCount);
        for (int i = span.first; i <= span.last; ++i) out[i] = last;
        return 0;
    }
    *from = xFrom;
    *to = xTo;
    if (kind == RangeFunc::BarsCount) {
        const ny::BarSpan span(*from, *to, m_nBarCount);
        for (int i = span.first; i <= span.last; ++i) out[i] = static_cast<float>(i);
        return 0;
    }
    CountRunBefore(x, xFrom, xTo, m_nBarCount, kind == RangeFunc::TopRange, out);
    return 0;
}
