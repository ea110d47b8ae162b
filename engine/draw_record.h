#pragma once
// Pieces of the draw commands: an argument read into its own buffer with a private copy of the
// call's range, and the statement fields a command fills for the chart (the layout is in
// docs/drawing.md). Writes to the statement are bounded by its buffers, so a statement evaluated
// without AllocMem loses the drawing but never writes past an array.

#include <algorithm>
#include <cstring>
#include <string>

#include "engine/draw_kind.h"
#include "engine/eval_code.h"
#include "engine/eval_context.h"
#include "engine/eval_util.h"
#include "engine/function_util.h"
#include "engine/series_pool.h"
#include "model/indicator.h"

namespace ny {

// Longest text a command keeps, in bytes.
constexpr size_t kDrawTextBytes = 127;

// How a constant argument reaches the bars of a field: on all bars of its range, or bar 0 only.
enum class SpreadRule { Never, Always, NonZero, NotNegative };

class Operand {
public:
    Operand(CIndicator& ind, short from, short to)
        : m_buffer(ind.Context().pool, static_cast<size_t>(std::max<short>(ind.m_nBarCount, 1))),
          m_count(ind.m_nBarCount), from(from), to(to) {}

    float* values() const { return m_buffer.floats(); }
    char* truth() const { return m_buffer.bytes(); }

    // The value at bar i: a series as it is; a constant on every bar if the rule spreads it,
    // else on bar 0 only.
    float ValueAt(int i, SpreadRule rule) const {
        if (isSeries) return values()[i];
        const float c = values()[0];
        const bool spread = rule == SpreadRule::Always || (rule == SpreadRule::NonZero && c != 0) ||
                            (rule == SpreadRule::NotNegative && c >= 0);
        return spread || i == 0 ? c : 0.0f;
    }
    // A condition's truth at bar i as 0.0 or 1.0; a constant holds on every bar.
    float TruthAt(int i) const { return (isSeries ? truth()[i] : truth()[0]) ? 1.0f : 0.0f; }
    // The value at the first bar of the range, as the buffer holds it there.
    float AtFirstBar() const { return from >= 0 && from < m_count ? values()[from] : 0.0f; }
    short count() const { return m_count; }

private:
    PooledBuffer m_buffer;
    short m_count;

public:
    short from;
    short to;
    char isSeries = 0;
};

// A switch argument of DRAWGBK and DRAWSIGN, read into a zeroed buffer: code 16 for a constant 0
// whose reading failed; no other code of the reading counts.
inline char ReadSwitchArgument(CIndicator& ind, Operand& a, bool last) {
    const char rc = ind.ReadValueArgument(a.values(), &a.from, &a.to, &a.isSeries, 1, last);
    return !a.isSeries && a.values()[0] == 0.0f && rc != 0 ? NY_EVAL_CONSTANT_ARGUMENT : 0;
}

// The switch's whole number at a bar is above 0; a constant 1 is 1 wherever the range starts,
// any other constant counts only where its buffer holds it.
inline bool SwitchOn(const Operand& a, short bar) {
    if (!a.isSeries && a.values()[0] == 1.0f) return true;
    return bar >= 0 && bar < a.count() && TruncToInt(a.values()[bar]) > 0;
}

class DrawRecord {
public:
    explicit DrawRecord(CExpression& expr) : m_expr(expr) {}

    void Set(int bar, int field, float value) {
        if (m_expr.m_pDrawData != nullptr && bar >= 0 && bar < m_expr.m_nAllocBars)
            m_expr.m_pDrawData[4 * bar + field] = value;
    }
    // The argument's values over bars first..last into one of the four floats per bar.
    void Fill(int field, const Operand& a, short first, short last, short count, SpreadRule rule) {
        const BarSpan span(first, last, count);
        for (int i = span.first; i <= span.last; ++i) Set(i, field, a.ValueAt(i, rule));
    }
    void FillTruth(int field, const Operand& a, short first, short last, short count) {
        const BarSpan span(first, last, count);
        for (int i = span.first; i <= span.last; ++i) Set(i, field, a.TruthAt(i));
    }

    template <typename T>
    void Put(size_t offset, T value) {
        std::memcpy(m_expr.m_DrawParams + offset, &value, sizeof(T));
    }
    // The text, cut at 127 bytes, zero-terminated from the start of the parameters.
    void PutText(const std::string& text) {
        std::memset(m_expr.m_DrawParams, 0, sizeof(m_expr.m_DrawParams));
        text.copy(m_expr.m_DrawParams, std::min(text.size(), kDrawTextBytes));
    }
    // The slots carry floats in 32-bit integer fields: the bit pattern is stored.
    void SetArg(int slot, float value) { std::memcpy(&m_expr.m_lDrawArgs[slot], &value, sizeof(float)); }

    CExpression& expr() { return m_expr; }

private:
    CExpression& m_expr;
};

}  // namespace ny
