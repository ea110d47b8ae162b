// The series functions of two arguments, X and a period: moving averages and sums, window
// statistics, references to other bars, and the smoothed average SMA with its sibling RANGE.
//
// The period argument is read before X, so the cursor goes forward over X, reads the period, and
// comes back for X. Values are 32-bit floats between steps: running sums and recursions are
// stored after every step, each step being computed in double, so the order of the operations
// below shows in the results and is kept exactly as it is.

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

#include "engine/eval_context.h"
#include "engine/argument_scan.h"
#include "engine/eval_code.h"
#include "engine/function_util.h"
#include "engine/eval_util.h"
#include "model/indicator.h"

namespace {

enum class Name {
    Ma, Sum, Mema, UpNDay, DownNDay, Hhv, Llv, HhvBars, LlvBars, AveDev, DevSq, Var, VarP,
    Forcast, Slope, Std, Ref, RefDate, SumBars, Ema, Dma
};

struct NamedFunction {
    const char* word;
    Name name;
};

constexpr NamedFunction kNames[] = {
    {"MA", Name::Ma},           {"SUM", Name::Sum},           {"MEMA", Name::Mema},
    {"EXPMEMA", Name::Mema},    {"UPNDAY", Name::UpNDay},     {"DOWNNDAY", Name::DownNDay},
    {"HHV", Name::Hhv},         {"LLV", Name::Llv},           {"HHVBARS", Name::HhvBars},
    {"LLVBARS", Name::LlvBars}, {"AVEDEV", Name::AveDev},     {"DEVSQ", Name::DevSq},
    {"VAR", Name::Var},         {"VARP", Name::VarP},         {"FORCAST", Name::Forcast},
    {"SLOPE", Name::Slope},     {"STD", Name::Std},           {"STDP", Name::Std},
    {"REF", Name::Ref},         {"REFDATE", Name::RefDate},   {"SUMBARS", Name::SumBars},
    {"EMA", Name::Ema},         {"EXPMA", Name::Ema},         {"DMA", Name::Dma},
};

Name NameOf(const char* word) {
    for (const NamedFunction& named : kNames)
        if (std::strcmp(named.word, word) == 0) return named.name;
    return Name::Std;  // the window names end in the standard deviation
}

// A period: the value rounded half up, so that a whole number stays itself on both sides of 0
// (-2 looks two bars ahead) and 2.5 is 3.
int RoundPeriod(float value) { return ny::TruncToInt(std::floor(static_cast<double>(value) + 0.5)); }

// A bar number computed in a wider type, held in the 16-bit range of the bar variables. A value
// beyond the series stays beyond it, so an empty range stays empty.
short ToBar(long long bar) {
    return static_cast<short>(std::clamp<long long>(bar, SHRT_MIN, SHRT_MAX));
}

// Element j of a series; positions outside the buffer read as 0.
float At(const float* series, long long j, short count) {
    return (j >= 0 && j < count) ? series[j] : 0.0f;
}

// One step of a running float sum: computed in double, stored as a float.
float Accumulate(float sum, double term) {
    return static_cast<float>(static_cast<double>(sum) + term);
}

struct Operand {
    const float* v;
    short from;
    short to;
    char isSeries;
};

// One call of the two-argument family: X, the period argument, its element 0 and the whole
// number made of it.
struct PeriodCall {
    Name name;
    Operand x;
    Operand period;
    float p;
    int n;
    short count;
    short span;  // bars between the first and the last bar of the evaluation

    float X(long long j) const { return At(x.v, j, count); }
    // First bar of the window that ends at bar i.
    long long WindowStart(int i) const { return static_cast<long long>(i) - n + 1; }
};

// ---- References ----

void Reference(const PeriodCall& c, float* out, short* from, short* to) {
    if (!c.period.isSeries) {
        // The range moves by the period: forward for a positive one, back for a look ahead.
        *from = ToBar(std::max<long long>(static_cast<long long>(c.x.from) + c.n, 0));
        *to = ToBar(std::min<long long>(static_cast<long long>(c.x.to) + c.n, c.count - 1));
        const ny::BarSpan bars(*from, *to, c.count);
        for (int i = bars.first; i <= bars.last; ++i) out[i] = c.X(static_cast<long long>(i) - c.n);
        return;
    }
    // A period per bar, truncated without rounding.
    *from = std::max(c.x.from, c.period.from);
    *to = std::min(c.x.to, c.period.to);
    const ny::BarSpan bars(*from, *to, c.count);
    for (int i = bars.first; i <= bars.last; ++i)
        out[i] = c.X(static_cast<long long>(i) - ny::TruncToInt(c.period.v[i]));
}

// The value of X on the bar whose date is the period (counted from 1900), over X's whole range.
char DateReference(const PeriodCall& c, const CHisDay* bars, short searchFrom, short searchTo,
                   float* out, short* from, short* to) {
    const long long sought = static_cast<long long>(c.n) + 19000000;
    const int first = std::max<int>(searchFrom, 0);
    const int end = std::min<int>(searchTo, c.count);
    int found = -1;
    for (int k = first; k < end && found < 0; ++k)
        if (bars[k].m_lTime == sought) found = k;
    if (found < 0) return NY_EVAL_PARENTHESES;
    const float value = c.X(found);
    *from = c.x.from;
    *to = c.x.to;
    const ny::BarSpan span(*from, *to, c.count);
    for (int i = span.first; i <= span.last; ++i) out[i] = value;
    return 0;
}

// How many bars back from each bar the sum of X first reaches the period; 99999 if it never does
// within the caller's range.
void SumBars(const PeriodCall& c, float* out, short from, short to) {
    const ny::BarSpan bars(from, to, c.count);
    for (int i = bars.first; i <= bars.last; ++i) {
        float sum = 0.0f;
        long long j = i;
        for (; j >= from; --j) {
            sum = Accumulate(sum, c.X(j));
            if (static_cast<double>(sum) >= c.n) break;
        }
        out[i] = j < from ? 99999.0f : static_cast<float>(i - j + 1);
    }
}

char CumulativeSum(const PeriodCall& c, float* out, short* from, short* to) {
    *from = std::max(*from, c.x.from);
    *to = c.x.to;
    if (*from > *to) return NY_EVAL_EMPTY_RANGE;
    float sum = 0.0f;
    for (long long j = c.x.from; j <= *from; ++j)
        sum = Accumulate(sum, c.X(j));
    const ny::BarSpan bars(*from, *to, c.count);
    for (int i = bars.first; i <= bars.last; ++i) {
        if (i > *from) sum = Accumulate(sum, c.X(i));
        out[i] = sum;
    }
    return 0;
}

// ---- Recursive averages: EMA, EXPMA, DMA ----

float ClampWeight(float a) { return a > 1.0f ? 1.0f : (a < 0.0f ? 0.0f : a); }

float RecursionStep(const PeriodCall& c, long long i, float y) {
    const double x = c.X(i);
    if (c.name == Name::Ema) return static_cast<float>(((c.n - 1.0) * y + 2.0 * x) / (c.n + 1.0));
    const double a = ClampWeight(c.period.isSeries ? At(c.period.v, i, c.count) : c.p);
    return static_cast<float>((1.0 - a) * y + x * a);
}

// Starts at the first value of X itself, runs through the bars before the range unseen, and
// stores from the range's first bar on.
char Recursive(const PeriodCall& c, float* out, short* from, short* to) {
    *from = std::max({*from, c.x.from, c.period.from});
    *to = std::min({*to, c.x.to, c.period.to});
    if (*from > *to) return NY_EVAL_EMPTY_RANGE;
    float r = c.X(c.x.from);
    for (long long i = c.x.from + 1LL; i <= *from; ++i) r = RecursionStep(c, i, r);
    const ny::BarSpan bars(*from, *to, c.count);
    for (int i = bars.first; i <= bars.last; ++i) {
        if (i > *from) r = RecursionStep(c, i, r);
        out[i] = r;
    }
    return 0;
}

// ---- Windows ----

// out[first] accumulates X from its first bar up to `first`, one stored float step at a time.
void SeedSum(const PeriodCall& c, float* out, int first) {
    for (long long j = c.x.from; j <= first; ++j)
        out[first] = Accumulate(out[first], c.X(j));
}

// MA and SUM: the sum rolls from bar to bar and is never recomputed; MA divides at the end.
void RollingSum(const PeriodCall& c, float* out, const ny::BarSpan& bars) {
    SeedSum(c, out, bars.first);
    for (int i = bars.first + 1; i <= bars.last; ++i) {
        const double leaving = i < c.n ? 0.0 : c.X(static_cast<long long>(i) - c.n);
        out[i] = static_cast<float>((static_cast<double>(out[i - 1]) - leaving) + c.X(i));
    }
    if (c.name != Name::Ma) return;
    for (int i = bars.first; i <= bars.last; ++i)
        out[i] = static_cast<float>(static_cast<double>(out[i]) / c.n);
}

void MovingMean(const PeriodCall& c, float* out, const ny::BarSpan& bars) {
    SeedSum(c, out, bars.first);
    out[bars.first] = static_cast<float>(static_cast<double>(out[bars.first]) / c.n);
    for (int i = bars.first + 1; i <= bars.last; ++i)
        out[i] = static_cast<float>(((c.n - 1.0) * out[i - 1] + c.X(i)) / c.n);
}

// 1 while no neighbour pair of the last N pairs turns the wrong way. Bar 0 has no neighbour
// before it and never breaks the run.
float Run(const PeriodCall& c, int i) {
    for (long long j = std::max<long long>(c.WindowStart(i), 1); j <= i; ++j) {
        const float before = c.X(j - 1);
        const float now = c.X(j);
        if (c.name == Name::UpNDay ? before > now : before < now) return 0.0f;
    }
    return 1.0f;
}

// HHV and its kin: a window that would start before bar 0 or after bar i starts at bar 0.
float Extreme(const PeriodCall& c, int i) {
    const long long w = c.WindowStart(i);
    const int s = (w < 0 || w > i) ? 0 : static_cast<int>(w);
    float best = c.X(s);
    short sinceBest = 0;
    for (int j = s + 1; j <= i; ++j) {
        const float v = c.X(j);
        switch (c.name) {
            case Name::Hhv: if (v > best) best = v; break;
            case Name::Llv: if (v < best) best = v; break;
            case Name::HhvBars:
                if (!(v < best)) best = v, sinceBest = 0; else ++sinceBest;
                break;
            default:  // LLVBARS
                if (!(v > best)) best = v, sinceBest = 0; else ++sinceBest;
                break;
        }
    }
    return (c.name == Name::Hhv || c.name == Name::Llv) ? best : static_cast<float>(sinceBest);
}

// The bars of the window that ends at bar i and exist in the series.
struct WindowBars {
    long long start;  // first bar of the window, possibly before bar 0
    int first;
    int last;
    WindowBars(const PeriodCall& c, int i)
        : start(c.WindowStart(i)),
          first(static_cast<int>(std::max<long long>(start, 0))),
          last(i) {}
};

float WindowMean(const PeriodCall& c, const WindowBars& w) {
    float sum = 0.0f;
    for (int j = w.first; j <= w.last; ++j) sum = Accumulate(sum, c.X(j));
    return static_cast<float>(static_cast<double>(sum) / c.n);
}

float AverageDeviation(const PeriodCall& c, const WindowBars& w) {
    const double mean = WindowMean(c, w);
    float result = 0.0f;
    for (int j = w.first; j <= w.last; ++j)
        result = Accumulate(result, std::fabs(c.X(j) - mean) / c.n);
    return result;
}

// Sum of squared deviations from the window's mean, the difference and the square each stored.
float SquaredDeviations(const PeriodCall& c, const WindowBars& w) {
    const double mean = WindowMean(c, w);
    float result = 0.0f;
    for (int j = w.first; j <= w.last; ++j) {
        const float difference = static_cast<float>(c.X(j) - mean);
        const float square = static_cast<float>(static_cast<double>(difference) * difference);
        result = Accumulate(result, square);
    }
    return result;
}

// Least-squares line over the window, the oldest bar at k = 1 and bar i at k = N, with float
// accumulators. Returns the slope b and the intercept a.
struct Fit {
    float b;
    float a;
};

Fit FitLine(const PeriodCall& c, const WindowBars& w) {
    float sx = 0.0f, sy = 0.0f, sxy = 0.0f, sxx = 0.0f;
    for (int j = w.first; j <= w.last; ++j) {
        const double k = static_cast<double>(j - w.start + 1);
        const double x = c.X(j);
        sx = Accumulate(sx, k);
        sy = Accumulate(sy, x);
        sxy = Accumulate(sxy, k * x);
        sxx = Accumulate(sxx, k * k);
    }
    const double n = c.n;
    const float b = static_cast<float>((n * sxy - static_cast<double>(sx) * sy) /
                                       (n * sxx - static_cast<double>(sx) * sx));
    const float a = static_cast<float>((sy - static_cast<double>(b) * sx) / n);
    return {b, a};
}

float Statistic(const PeriodCall& c, int i) {
    const WindowBars w(c, i);
    switch (c.name) {
        case Name::AveDev: return AverageDeviation(c, w);
        case Name::DevSq: return SquaredDeviations(c, w);
        case Name::Var: return static_cast<float>(SquaredDeviations(c, w) / (c.n - 1.0));
        case Name::VarP: return static_cast<float>(SquaredDeviations(c, w) / (c.n * 1.0));
        case Name::Forcast: {
            const Fit fit = FitLine(c, w);
            return static_cast<float>(static_cast<double>(c.n) * fit.b + fit.a);
        }
        case Name::Slope: return FitLine(c, w).b;
        default: {  // STD and STDP: the population deviation
            const float quotient =
                static_cast<float>(SquaredDeviations(c, w) / static_cast<double>(c.n));
            return static_cast<float>(std::sqrt(static_cast<double>(quotient)));
        }
    }
}

// ---- Windows of several bars at once ----
//
// The windows of neighbouring bars are independent, so kLanes of them run side by side: lane l
// takes the steps of bar i0 + l, in the same order and with the same float and double roundings
// as the bar-by-bar functions above, so every value is the same; the compiler turns the lanes into
// vector instructions, and the chains of float steps no longer wait on one another. Thirty-two
// lanes fill several vector registers, so that even the widest vectors keep more than one chain
// in flight.
constexpr int kLanes = 32;

struct LaneBlock {
    const float* x;  // X, read directly: every window of the block lies inside the buffer
    int i0;          // bar of lane 0
    int n;           // window length, at least 1

    // Element j of the window of lane l, j = 0 being the oldest bar.
    float X(int l, int j) const { return x[i0 + l - n + 1 + j]; }
};

void LaneMeans(const LaneBlock& b, double* means) {
    float sum[kLanes] = {};
    for (int j = 0; j < b.n; ++j)
        for (int l = 0; l < kLanes; ++l) sum[l] = Accumulate(sum[l], b.X(l, j));
    for (int l = 0; l < kLanes; ++l) means[l] = static_cast<float>(static_cast<double>(sum[l]) / b.n);
}

void LaneSquaredDeviations(const LaneBlock& b, float* result) {
    double mean[kLanes];
    LaneMeans(b, mean);
    for (int l = 0; l < kLanes; ++l) result[l] = 0.0f;
    for (int j = 0; j < b.n; ++j) {
        for (int l = 0; l < kLanes; ++l) {
            const float difference = static_cast<float>(b.X(l, j) - mean[l]);
            const float square = static_cast<float>(static_cast<double>(difference) * difference);
            result[l] = Accumulate(result[l], square);
        }
    }
}

void LaneAverageDeviations(const LaneBlock& b, float* result) {
    double mean[kLanes];
    LaneMeans(b, mean);
    for (int l = 0; l < kLanes; ++l) result[l] = 0.0f;
    for (int j = 0; j < b.n; ++j)
        for (int l = 0; l < kLanes; ++l)
            result[l] = Accumulate(result[l], std::fabs(b.X(l, j) - mean[l]) / b.n);
}

// HHV and LLV over full windows: the first bar of the window, then each later one that is
// strictly higher (lower), as in Extreme.
void LaneExtremes(const LaneBlock& b, bool highest, float* best) {
    for (int l = 0; l < kLanes; ++l) best[l] = b.X(l, 0);
    for (int j = 1; j < b.n; ++j) {
        for (int l = 0; l < kLanes; ++l) {
            const float v = b.X(l, j);
            best[l] = highest ? (v > best[l] ? v : best[l]) : (v < best[l] ? v : best[l]);
        }
    }
}

bool HasLaneForm(Name name) {
    switch (name) {
        case Name::Hhv: case Name::Llv: case Name::AveDev: case Name::DevSq: case Name::Var:
        case Name::VarP: case Name::Std:
            return true;
        default:
            return false;
    }
}

// The results of bars i0 .. i0 + kLanes - 1, each as Extreme or Statistic gives it.
NY_WIDE_VECTORS void LaneResults(const PeriodCall& c, int i0, float* out) {
    const LaneBlock b{c.x.v, i0, c.n};
    float r[kLanes];
    switch (c.name) {
        case Name::Hhv:
        case Name::Llv: LaneExtremes(b, c.name == Name::Hhv, out + i0); return;
        case Name::AveDev: LaneAverageDeviations(b, out + i0); return;
        default: LaneSquaredDeviations(b, r); break;
    }
    for (int l = 0; l < kLanes; ++l) {
        switch (c.name) {
            case Name::DevSq: out[i0 + l] = r[l]; break;
            case Name::Var: out[i0 + l] = static_cast<float>(r[l] / (c.n - 1.0)); break;
            case Name::VarP: out[i0 + l] = static_cast<float>(r[l] / (c.n * 1.0)); break;
            default: {  // STD and STDP
                const float quotient = static_cast<float>(r[l] / static_cast<double>(c.n));
                out[i0 + l] = static_cast<float>(std::sqrt(static_cast<double>(quotient)));
                break;
            }
        }
    }
}

// Whether bars i .. i + kLanes - 1 all have full windows inside the buffer and within `last`.
bool FitsLanes(const PeriodCall& c, int i, int last) {
    return HasLaneForm(c.name) && c.n >= 1 && static_cast<long long>(i) - c.n + 1 >= 0 &&
           i + kLanes - 1 <= last;
}

bool NeedsSpan(Name name) {
    return name == Name::Ma || name == Name::Sum || name == Name::UpNDay || name == Name::DownNDay;
}

char Window(const PeriodCall& c, float* out, short* from, short* to) {
    if (!c.period.isSeries) {
        *from = ToBar(static_cast<long long>(c.x.from) + c.n - 1);
        *to = c.x.to;
    } else {
        *from = std::max(c.x.from, c.period.from);
        *to = std::min(c.x.to, c.period.to);
    }
    if (*from < 0) *from = 0;
    if (NeedsSpan(c.name) && c.span < c.n) return NY_EVAL_BAD_PERIOD;
    const ny::BarSpan bars(*from, *to, c.count);
    if (bars.first > bars.last) return 0;  // an empty result: nothing is computed
    switch (c.name) {
        case Name::Ma:
        case Name::Sum: RollingSum(c, out, bars); return 0;
        case Name::Mema: MovingMean(c, out, bars); return 0;
        default: break;
    }
    if (c.name == Name::Forcast && c.n <= 2) {
        for (int i = bars.first; i <= bars.last; ++i) out[i] = c.X(i);
        return 0;
    }
    for (int i = bars.first; i <= bars.last; ++i) {
        if (FitsLanes(c, i, bars.last)) {
            LaneResults(c, i, out);
            i += kLanes - 1;
            continue;
        }
        switch (c.name) {
            case Name::UpNDay:
            case Name::DownNDay: out[i] = Run(c, i); break;
            case Name::Hhv:
            case Name::Llv:
            case Name::HhvBars:
            case Name::LlvBars: out[i] = Extreme(c, i); break;
            default: out[i] = Statistic(c, i); break;
        }
    }
    return 0;
}

// A result computed over a range of its own keeps only the bars from the caller's first bar on,
// so that what narrowed the statement before still holds. Only REF moves the range instead.
void KeepCallerBars(float* out, short* from, short callerFrom, short count) {
    if (*from >= callerFrom) return;
    const ny::BarSpan dropped(*from, static_cast<short>(callerFrom - 1), count);
    for (int i = dropped.first; i <= dropped.last; ++i) out[i] = 0.0f;
    *from = callerFrom;
}

}  // namespace

char CIndicator::ReadMA(char* word, float* out, short* from, short* to, char, char*) {
    char rc = BeginCall(2);
    if (rc != 0) return rc;
    char* xText = Context().m_pCursor;
    char* comma = ny::FindTopLevelComma(Context().m_pCursor);
    if (comma == nullptr) return NY_EVAL_UNTERMINATED;
    Context().m_pCursor = comma + 1;

    ny::PooledBuffer periodBuffer(Context().pool, m_nBarCount);
    Operand period{periodBuffer.floats(), 0, *to, 0};
    rc = ReadValueArgument(periodBuffer.floats(), &period.from, &period.to, &period.isSeries, 1,
                           true);
    if (rc != 0) return rc;

    PeriodCall call{NameOf(word), {}, period, periodBuffer.floats()[0], 0, m_nBarCount, Context().m_nCurSpan};
    call.n = RoundPeriod(call.p);
    if (call.name == Name::RefDate && (m_nPeriod != NY_PERIOD_DAY || call.n < 1)) return NY_EVAL_EMPTY_RANGE;
    if (call.name == Name::SumBars && call.n < 1) return NY_EVAL_EMPTY_RANGE;

    char* behindCall = Context().m_pCursor;
    Context().m_pCursor = xText;
    ny::PooledBuffer xBuffer(Context().pool, m_nBarCount);
    call.x = {xBuffer.floats(), 0, *to, 0};
    rc = ReadValueArgument(xBuffer.floats(), &call.x.from, &call.x.to, &call.x.isSeries, 1, false);
    if (rc != 0) return rc;
    if (!call.x.isSeries) return NY_EVAL_CONSTANT_ARGUMENT;

    const short callerFrom = *from;
    switch (call.name) {
        case Name::Ref: Reference(call, out, from, to); break;
        case Name::RefDate:
            rc = DateReference(call, m_pHisDay, Context().m_nCurFrom, Context().m_nCurTo, out, from, to);
            break;
        case Name::SumBars: SumBars(call, out, *from, *to); break;
        case Name::Ema:
        case Name::Dma: rc = Recursive(call, out, from, to); break;
        default:
            rc = (call.name == Name::Sum && call.n == 0) ? CumulativeSum(call, out, from, to)
                                                         : Window(call, out, from, to);
            break;
    }
    if (rc != 0) return rc;
    if (call.name != Name::Ref) KeepCallerBars(out, from, callerFrom, m_nBarCount);
    Context().m_pCursor = behindCall;
    return 0;
}

// SMA(X, N, M): the recursive average with weight M of N; RANGE(X, A, B): 1 where A < X < B.
char CIndicator::ReadSMA(char* word, float* out, short* from, short* to, char, char*) {
    char rc = BeginCall(3);
    if (rc != 0) return rc;
    char* xText = Context().m_pCursor;
    char* comma = ny::FindTopLevelComma(Context().m_pCursor);
    if (comma == nullptr) return NY_EVAL_UNTERMINATED;
    Context().m_pCursor = comma + 1;

    // One buffer serves the three arguments in turn; each argument starts from the caller's range.
    ny::PooledBuffer buffer(Context().pool, m_nBarCount);
    float* values = buffer.floats();
    short argFrom = *from, argTo = *to;
    char argSeries = 0;
    rc = ReadValueArgument(values, &argFrom, &argTo, &argSeries, 1, false);
    if (rc != 0) return rc;
    const int n = RoundPeriod(values[0]);

    std::fill(values, values + m_nBarCount, 0.0f);
    argFrom = *from, argTo = *to;
    rc = ReadValueArgument(values, &argFrom, &argTo, &argSeries, 0, true);
    if (rc != 0) return rc;
    const int m = RoundPeriod(values[0]);
    if (std::fabs(static_cast<double>(values[0]) - m) > ny::kZeroTolerance) return NY_EVAL_BAD_PERIOD;

    char* behindCall = Context().m_pCursor;
    Context().m_pCursor = xText;
    std::fill(values, values + m_nBarCount, 0.0f);
    short xFrom = *from, xTo = *to;
    char xSeries = 0;
    rc = ReadValueArgument(values, &xFrom, &xTo, &xSeries, 1, false);
    if (rc != 0) return rc;
    if (!xSeries) return NY_EVAL_CONSTANT_ARGUMENT;

    *from = std::max(*from, xFrom);
    *to = xTo;
    if (*from > *to) return NY_EVAL_EMPTY_RANGE;
    const ny::BarSpan bars(*from, *to, m_nBarCount);
    if (std::strcmp(word, "RANGE") == 0) {
        for (int i = bars.first; i <= bars.last; ++i)
            out[i] = (values[i] > n && values[i] < m) ? 1.0f : 0.0f;
    } else {
        if (n >= Context().m_nCurSpan || n <= -Context().m_nCurSpan) return NY_EVAL_EMPTY_RANGE;
        if (n < 2 || m < 1 || n <= m) return NY_EVAL_BAD_PERIOD;
        auto step = [&](long long i, float y) {
            return static_cast<float>((static_cast<double>(m) * At(values, i, m_nBarCount) +
                                       static_cast<double>(n - m) * y) / n);
        };
        float r = At(values, xFrom, m_nBarCount);
        for (long long i = xFrom + 1LL; i <= *from; ++i) r = step(i, r);
        for (int i = bars.first; i <= bars.last; ++i) {
            if (i > *from) r = step(i, r);
            out[i] = r;
        }
    }
    Context().m_pCursor = behindCall;
    return 0;
}
