// The ordered search of a window (FINDHIGH, FINDLOW) and FORCAL, the statement that smooths four
// earlier statements in place as open, high, low and close of a bar.

#include <algorithm>
#include <cstring>
#include <utility>

#include "engine/eval_code.h"
#include "engine/eval_context.h"
#include "engine/eval_util.h"
#include "engine/function_util.h"
#include "model/indicator.h"

namespace {

// Sorts by exchange, highest first (or lowest first), equal values keeping separate places.
void SortByExchange(float* values, int count, bool highestFirst) {
    for (int a = 0; a + 1 < count; ++a)
        for (int b = a + 1; b < count; ++b)
            if (highestFirst ? values[b] > values[a] : values[b] < values[a])
                std::swap(values[a], values[b]);
}

// Copies the text up to `stop` into a name of at most 127 bytes and steps over the stop; the
// statement's ";" or end ends the name too and stays under the cursor.
void ReadRawName(char*& cursor, char stop, char (&name)[128]) {
    size_t length = 0;
    for (; *cursor != stop && *cursor != ';' && *cursor != '\0'; ++cursor)
        if (length < sizeof(name) - 1) name[length++] = *cursor;
    if (*cursor == stop) ++cursor;
}

}  // namespace

char CIndicator::ReadFINDHIGH(char* word, float* out, short* from, short* to, char, char*) {
    const bool highest = std::strcmp(word, "FINDHIGH") == 0;
    char rc = BeginCall(4);
    if (rc != 0) return rc;
    ny::FirstArgumentLast order(*this);
    if ((rc = order.Skip()) != 0) return rc;
    // N, M and T share one buffer, zeroed before each; T must be a constant.
    ny::PooledBuffer numberBuffer(Context().pool, m_nBarCount);
    int numbers[3];
    for (int k = 0; k < 3; ++k) {
        short f = *from, t = *to;
        char isSeries = 0;
        std::memset(numberBuffer.floats(), 0, sizeof(float) * std::max<int>(m_nBarCount, 1));
        rc = ReadValueArgument(numberBuffer.floats(), &f, &t, &isSeries, k < 2 ? 1 : 0, k == 2);
        if (rc != 0) return rc;
        const float v = numberBuffer.floats()[0];
        if (!ny::IsWholeNumber(v)) return NY_EVAL_BAD_PERIOD;
        numbers[k] = ny::RoundedPeriod(v);
    }
    order.ReturnToFirst();
    ny::PooledBuffer value(Context().pool, m_nBarCount);
    const float* x = value.floats();
    short xFrom = *from, xTo = *to;
    char xSeries = 0;
    if ((rc = ReadValueArgument(value.floats(), &xFrom, &xTo, &xSeries, 1, false)) != 0) return rc;
    order.Finish();
    if (!xSeries) return NY_EVAL_CONSTANT_ARGUMENT;

    const int n = numbers[0], m = numbers[1];
    if (n < 0 || n >= Context().m_nCurSpan || m < 0 || m >= Context().m_nCurSpan || n > m) return NY_EVAL_EMPTY_RANGE;
    // T is limited by M, not by the window's size M - N + 1; with M = 0 the one value is taken.
    const int place = std::max(std::min(std::max(numbers[2], 1), m), 1);

    *from = ny::ClampBar(n + xFrom);
    *to = xTo;
    ny::PooledBuffer work(Context().pool, m_nBarCount);
    float* window = work.floats();
    const ny::BarSpan span(*from, *to, m_nBarCount);
    for (int i = span.first; i <= span.last; ++i) {
        // The window may reach below the argument's first bar, where its buffer holds 0.
        int count = 0;
        for (int j = std::max(i - m, 0); j <= i - n; ++j) window[count++] = x[j];
        SortByExchange(window, count, highest);
        out[i] = place < count ? window[place - 1] : window[count - 1];
    }
    return 0;
}

char CIndicator::ReadForCla(char*, float*, short* from, short* to, char, char*) {
    char rc = BeginCall(4);
    if (rc != 0) return rc;
    char names[4][128] = {};
    for (int k = 0; k < 4; ++k) ReadRawName(Context().m_pCursor, k < 3 ? ',' : ')', names[k]);
    // The call takes the rest of its statement: nothing behind it is read.
    while (*Context().m_pCursor != ';' && *Context().m_pCursor != '\0') ++Context().m_pCursor;
    if (*Context().m_pCursor == ';') ++Context().m_pCursor;

    float* series[4] = {};
    int bars = m_nBarCount;
    for (int k = 0; k < 4; ++k) {
        for (CExpression* statement : m_arExpressions) {
            if (statement->m_strName != names[k] || statement->m_pData == nullptr) continue;
            series[k] = statement->m_pData;
            bars = std::min<int>(bars, statement->m_nAllocBars);
            break;
        }
        if (series[k] == nullptr) return 0;
    }
    float* open = series[0];
    float* high = series[1];
    float* low = series[2];
    float* close = series[3];
    auto smoothClose = [&](int i) {
        close[i] = static_cast<float>((static_cast<double>(close[i]) * 2 + high[i] + low[i]) / 4);
    };
    const ny::BarSpan span(*from, *to, static_cast<short>(bars));
    if (span.first > span.last) return 0;
    smoothClose(span.first);
    for (int i = span.first + 1; i <= span.last; ++i) {
        open[i] = static_cast<float>((static_cast<double>(open[i - 1]) + close[i - 1]) / 2);
        if (high[i] < open[i]) high[i] = open[i];
        if (low[i] > open[i]) low[i] = open[i];
        smoothClose(i);
    }
    return 0;
}
