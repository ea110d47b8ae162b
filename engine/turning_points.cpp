// Turning points of a price series: the zigzag ZIG, the value of and distance to its latest peaks
// and troughs (PEAK, TROUGH, PEAKBARS, TROUGHBARS), and the stop-and-reverse line SAR with its
// turns SARTURN. The zigzag looks at the whole series: a new bar can move earlier results.

#include <algorithm>
#include <cstring>
#include <vector>

#include "engine/eval_context.h"
#include "engine/draw_record.h"
#include "engine/eval_code.h"
#include "engine/function_util.h"
#include "model/indicator.h"

namespace {

using ny::Operand;

// A constant K of the zigzag functions names a field of the bars: open, high, low, close.
char ResolvePriceField(const CHisDay* bars, short count, int field, Operand& k) {
    if (field < 0 || field > 3) return NY_EVAL_CONSTANT_ARGUMENT;
    const ny::BarSpan span(k.from, k.to, count);
    for (int i = span.first; i <= span.last; ++i) {
        const CHisDay& bar = bars[i];
        const float fields[4] = {bar.m_fOpen, bar.m_fHigh, bar.m_fLow, bar.m_fClose};
        k.values()[i] = fields[field];
    }
    k.isSeries = 1;
    return 0;
}

// The pivot search of the zigzag over x[from..to] with reversal fraction t. `pivot(bar, dir)` is
// called at each confirmed peak (dir 1) and trough (dir -1) in order, and last for the extreme of
// the open leg with its direction (0 if the series never left the band around x[from]).
template <typename OnPivot>
void FindPivots(const float* x, int from, int to, double t, OnPivot pivot) {
    float e = x[from];
    int last = from;
    int dir = 0;
    for (int i = from + 1; i <= to; ++i) {
        if (x[i] > (1 + t) * e) {
            if (dir == -1) pivot(last, -1);
            last = i, e = x[i], dir = 1;
        } else if (x[i] < (1 - t) * e) {
            if (dir == 1) pivot(last, 1);
            last = i, e = x[i], dir = -1;
        }
        if ((dir == 1 && x[i] > e) || (dir == -1 && x[i] < e)) last = i, e = x[i];
    }
    pivot(last, dir);
}

// Joins the positive pivots of out[from..to] by straight lines, a running float addition.
void JoinPivots(float* out, int from, int to) {
    int last = from;
    float v = out[from];
    for (int i = from + 1; i <= to; ++i) {
        if (!(out[i] > 0 && v > 0)) continue;
        const float d = (out[i] - v) / static_cast<float>(i - last);
        for (int j = last + 1; j < i; ++j) out[j] = static_cast<float>(d * 1.0 + out[j - 1]);
        v = out[i];
        last = i;
    }
}

// SAR states per bar: long, short, and each of them at the bar where the line turned.
enum SarState : char { kLong = 0, kShort = 1, kTurnedLong = 16, kTurnedShort = 17 };

bool IsLong(char state) { return state == kLong || state == kTurnedLong; }

SarState StartState(const CHisDay* bars, int f) {
    const float c0 = bars[f].m_fClose, c1 = bars[f - 1].m_fClose;
    if (f < 2) return c1 > c0 ? kShort : kLong;
    const float c2 = bars[f - 2].m_fClose;
    if (c1 < c0) return c2 <= c1 ? kLong : kTurnedLong;
    if (c1 == c0) return c2 < c1 ? kLong : c2 == c1 ? kTurnedLong : kShort;
    return c2 >= c1 ? kShort : kTurnedShort;
}

float LowestLow(const CHisDay* bars, int first, int last) {
    float low = bars[last].m_fLow;
    for (int j = std::max(first, 0); j < last; ++j) low = std::min(low, bars[j].m_fLow);
    return low;
}

float HighestHigh(const CHisDay* bars, int first, int last) {
    float high = bars[last].m_fHigh;
    for (int j = std::max(first, 0); j < last; ++j) high = std::max(high, bars[j].m_fHigh);
    return high;
}

// The stop line over bars f..to, out[f] the start value, states per bar; af starts at s and grows
// by s at every bar of a trend while the limit m is above it.
void RunSar(const CHisDay* bars, int f, int to, int n, float s, float m, float* out, char* state) {
    state[f] = StartState(bars, f);
    out[f] = IsLong(state[f]) ? LowestLow(bars, 0, f) : HighestHigh(bars, 0, f);
    float af = s;
    for (int i = f + 1; i <= to; ++i) {
        const double y = out[i - 1];
        const bool wasLong = IsLong(state[i - 1]);
        const double target = wasLong ? bars[i - 1].m_fHigh : bars[i - 1].m_fLow;
        out[i] = static_cast<float>((target - y) * af + y);
        const bool holds = wasLong ? out[i] <= bars[i].m_fClose : out[i] >= bars[i].m_fClose;
        if (holds) {
            state[i] = wasLong ? kLong : kShort;
            if (m > af) af += s;
        } else {
            out[i] = wasLong ? HighestHigh(bars, i - n + 1, i) : LowestLow(bars, i - n + 1, i);
            state[i] = wasLong ? kTurnedShort : kTurnedLong;
            af = s;
        }
    }
}

}  // namespace

char CIndicator::ReadZIG(char*, float* out, short* from, short* to, char, char*) {
    if (const char rc = BeginCall(2)) return rc;
    Operand k(*this, *from, *to), n(*this, *from, *to);
    char rc = ReadValueArgument(k.values(), &k.from, &k.to, &k.isSeries, 1, false);
    if (rc != 0) return rc;
    if (!k.isSeries) {
        const float field = k.values()[0];
        if (field != 0 && field != 1 && field != 2 && field != 3) return NY_EVAL_CONSTANT_ARGUMENT;
        if ((rc = ResolvePriceField(m_pHisDay, m_nBarCount, static_cast<int>(field), k)) != 0) return rc;
    }
    if ((rc = ReadValueArgument(n.values(), &n.from, &n.to, &n.isSeries, 1, true)) != 0) return rc;
    const float t = static_cast<float>(n.values()[0] / 100.0);
    if ((rc = MergeRange(from, to, k.from, k.to)) != 0) return rc;

    const float* x = k.values();
    out[*from] = x[*from];
    out[*to] = x[*to];
    FindPivots(x, *from, *to, t, [&](int bar, int) { out[bar] = x[bar]; });
    JoinPivots(out, *from, *to);
    return 0;
}

char CIndicator::ReadPEAK(char* word, float* out, short* from, short* to, char, char*) {
    const bool peaks = std::strncmp(word, "PEAK", 4) == 0;
    const bool distance = std::strstr(word, "BARS") != nullptr;
    if (const char rc = BeginCall(3)) return rc;
    ny::FirstArgumentLast order(*this);
    char rc = order.Skip();
    if (rc != 0) return rc;
    Operand n(*this, *from, *to), m(*this, *from, *to), k(*this, *from, *to);
    if ((rc = ReadValueArgument(n.values(), &n.from, &n.to, &n.isSeries, 1, false)) != 0) return rc;
    if ((rc = ReadValueArgument(m.values(), &m.from, &m.to, &m.isSeries, 1, true)) != 0) return rc;
    const double t = ny::TruncToInt(n.values()[0]) / 100.0;
    const int nth = ny::TruncToInt(m.values()[0]);
    if (nth < 1) return NY_EVAL_CONSTANT_ARGUMENT;
    order.ReturnToFirst();
    if ((rc = ReadValueArgument(k.values(), &k.from, &k.to, &k.isSeries, 1, false)) != 0) return rc;
    order.Finish();
    // K's own range does not apply: the caller's stands.
    k.from = *from;
    k.to = *to;
    if (!k.isSeries && (rc = ResolvePriceField(m_pHisDay, m_nBarCount, ny::TruncToInt(k.values()[0]), k)) != 0)
        return rc;
    if (*from > *to) return NY_EVAL_EMPTY_RANGE;

    const float* x = k.values();
    const int wanted = peaks ? 1 : -1;
    std::vector<int> pivots;  // bars of the wanted kind, oldest first
    FindPivots(x, *from, *to, t, [&](int bar, int dir) {
        if (dir == wanted) pivots.push_back(bar);
    });
    const int start = *from, last = *to;
    *from = ny::ClampBar(last + 1);
    size_t found = 0;
    int bar = 0;
    for (int i = start; i <= last; ++i) {
        if (found < pivots.size() && pivots[found] == i) {
            ++found;
            if (found >= static_cast<size_t>(nth)) bar = pivots[found - nth];
            if (found == static_cast<size_t>(nth)) *from = static_cast<short>(i);
        }
        out[i] = distance ? static_cast<float>(i - bar) : found >= static_cast<size_t>(nth) ? x[bar] : 0.0f;
    }
    return 0;
}

char CIndicator::ReadSAR(char* word, float* out, short* from, short* to, char, char*) {
    if (const char rc = BeginCall(3)) return rc;
    Operand n(*this, *from, *to), step(*this, *from, *to), limit(*this, *from, *to);
    char rc = ReadValueArgument(n.values(), &n.from, &n.to, &n.isSeries, 1, false);
    if (rc == 0) rc = ReadValueArgument(step.values(), &step.from, &step.to, &step.isSeries, 1, false);
    if (rc == 0) rc = ReadValueArgument(limit.values(), &limit.from, &limit.to, &limit.isSeries, 1, true);
    if (rc != 0) return rc;
    const int bars = ny::RoundedPeriod(n.values()[0]);
    const float s = static_cast<float>(step.values()[0] / 100.0);
    const float m = static_cast<float>(limit.values()[0] / 100.0);
    if (bars < 2 || s < 0 || m < s) return NY_EVAL_ZERO_DIVISOR;
    const int first = std::max({static_cast<int>(*from), static_cast<int>(Context().m_nCurFrom), 0}) + bars - 1;
    const int last = std::min({static_cast<int>(*to), Context().m_nCurTo - 1, m_nBarCount - 1});
    if (first > last) return NY_EVAL_ZERO_DIVISOR;
    *from = static_cast<short>(first);
    *to = static_cast<short>(last);

    std::vector<char> state(m_nBarCount, kLong);
    RunSar(m_pHisDay, first, last, bars, s, m, out, state.data());
    if (std::strcmp(word, "SARTURN") == 0) {
        std::fill(out, out + m_nBarCount, 0.0f);
        for (int i = first; i <= last; ++i)
            out[i] = state[i] == kTurnedLong ? 1.0f : state[i] == kTurnedShort ? -1.0f : 0.0f;
    }
    return 0;
}
