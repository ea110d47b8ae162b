// The value grammar: a recursive descent over the statement text that computes whole series as
// it goes. Each level is one loop over the characters at the cursor; operands come from the next
// level into pooled, zero-filled buffers and are combined into `out` bar by bar.

#include <cstring>

#include "engine/eval_code.h"
#include "engine/eval_context.h"
#include "engine/eval_util.h"
#include "model/indicator.h"

using ny::Op;

namespace {

enum class Slot { Start, AfterOperand, AfterOperator };

template <typename F>
void ForEachBar(float* out, const float* r, const ny::BarSpan& span, F apply) {
    for (int i = span.first; i <= span.last; ++i) out[i] = apply(out[i], r[i]);
}

// Combines two series bar by bar. The operator is chosen once, outside the loop over the bars.
void CombineSeries(float* out, const float* r, Op op, const ny::BarSpan& span) {
    using ny::Apply;
    switch (op) {
        case Op::None:
            if (span.first <= span.last)
                std::memcpy(out + span.first, r + span.first,
                            sizeof(float) * (span.last - span.first + 1));
            return;
        case Op::Add: return ForEachBar(out, r, span, [](float l, float x) { return l + x; });
        case Op::Sub: return ForEachBar(out, r, span, [](float l, float x) { return l - x; });
        case Op::Mul: return ForEachBar(out, r, span, [](float l, float x) { return l * x; });
        case Op::Div: return ForEachBar(out, r, span, [](float l, float x) { return l / x; });
        case Op::And: return ForEachBar(out, r, span, [](float l, float x) { return Apply(Op::And, l, x); });
        case Op::Or: return ForEachBar(out, r, span, [](float l, float x) { return Apply(Op::Or, l, x); });
        case Op::Greater: return ForEachBar(out, r, span, [](float l, float x) { return Apply(Op::Greater, l, x); });
        case Op::GreaterEqual: return ForEachBar(out, r, span, [](float l, float x) { return Apply(Op::GreaterEqual, l, x); });
        case Op::Less: return ForEachBar(out, r, span, [](float l, float x) { return Apply(Op::Less, l, x); });
        case Op::LessEqual: return ForEachBar(out, r, span, [](float l, float x) { return Apply(Op::LessEqual, l, x); });
        case Op::Equal: return ForEachBar(out, r, span, [](float l, float x) { return Apply(Op::Equal, l, x); });
        case Op::NotEqual: return ForEachBar(out, r, span, [](float l, float x) { return Apply(Op::NotEqual, l, x); });
    }
}

// Combines operand R into the running value L held in `out`; `lSeries` is L's is-series flag and
// becomes 1 when a series meets a constant.
void Combine(float* out, char* lSeries, float* r, char rSeries, Op op, short from, short to,
             short count) {
    if (!ny::AlignOperands(out, lSeries, r, rSeries, from, to, count)) {
        out[0] = ny::Apply(op, out[0], r[0]);
        return;
    }
    const ny::BarSpan span(from, to, count);
    if (op == Op::Div && rSeries) {
        // A divisor near zero repeats the bar before; on the first bar of the range it gives 0.
        for (int i = span.first; i <= span.last; ++i) {
            if (ny::IsZeroDivisor(r[i]))
                out[i] = (i == from) ? 0.0f : out[i - 1];
            else
                out[i] = out[i] / r[i];
        }
        return;
    }
    CombineSeries(out, r, op, span);
}

bool AtStatementEnd(char c) { return c == ';' || c == ',' || c == ')' || c == '\0'; }

// Terminators of the comparison level: those of the logical level and its operators.
bool EndsComparison(const char* p) {
    return AtStatementEnd(*p) || *p == '&' || *p == '|' || ny::AtAndWord(p) || ny::AtOrWord(p);
}

bool EndsAddition(const char* p) {
    return EndsComparison(p) || *p == '>' || *p == '<' || *p == '=' || *p == '!';
}

bool EndsMultiplication(const char* p) { return EndsAddition(p) || *p == '+' || *p == '-'; }

}  // namespace

// What tells one level of the value grammar from another: where it ends, which operators it
// knows, what an operand behind an operand costs, whether "+" and "-" may stand as signs at its
// start, and the level that reads its operands.
struct ny::GrammarLevel {
    bool (*ends)(const char* p);
    // Sets op and length for an operator at p (op stays None if there is none); a non-zero
    // result is the code of a malformed operator.
    char (*scanOperator)(const char* p, Op* op, int* length);
    char operandAfterOperand;
    bool signsAtStart;
    char (CIndicator::*next)(float* out, short* from, short* to, char* flag, CExpression* expr);
};

namespace {

char ScanLogical(const char* p, Op* op, int* length) {
    if (ny::At(p, "&&")) *op = Op::And, *length = 2;
    else if (ny::AtAndWord(p)) *op = Op::And, *length = 3;
    else if (ny::At(p, "||")) *op = Op::Or, *length = 2;
    else if (ny::AtOrWord(p)) *op = Op::Or, *length = 2;
    else if (*p == '&' || *p == '|') return NY_EVAL_LONE_OPERATOR;
    return 0;
}

// ">", ">=", "<", "<=", "=", "==" and "!="; a "!" without "=" is malformed.
char ScanComparison(const char* p, Op* op, int* length) {
    const bool withEqual = p[1] == '=';
    *length = withEqual ? 2 : 1;
    switch (*p) {
        case '>': *op = withEqual ? Op::GreaterEqual : Op::Greater; return 0;
        case '<': *op = withEqual ? Op::LessEqual : Op::Less; return 0;
        case '=': *op = Op::Equal; return 0;
        case '!':
            if (!withEqual) return NY_EVAL_LONE_OPERATOR;
            *op = Op::NotEqual;
            return 0;
        default: return 0;
    }
}

char ScanAddition(const char* p, Op* op, int* length) {
    if (*p == '+' || *p == '-') *op = *p == '+' ? Op::Add : Op::Sub, *length = 1;
    return 0;
}

char ScanMultiplication(const char* p, Op* op, int* length) {
    if (*p == '*' || *p == '/') *op = *p == '*' ? Op::Mul : Op::Div, *length = 1;
    return 0;
}

bool EndsLogical(const char* p) { return AtStatementEnd(*p); }

const ny::GrammarLevel kLogicalLevel = {EndsLogical, ScanLogical, NY_EVAL_MISPLACED_OPERATOR, false,
                                        &CIndicator::ReadExp1};
const ny::GrammarLevel kComparisonLevel = {EndsComparison, ScanComparison, NY_EVAL_MISPLACED_OPERATOR,
                                           false, &CIndicator::ReadExp2};
const ny::GrammarLevel kAdditionLevel = {EndsAddition, ScanAddition, NY_EVAL_MISSING_SUM_OPERATOR, true,
                                         &CIndicator::ReadItem};
const ny::GrammarLevel kMultiplicationLevel = {EndsMultiplication, ScanMultiplication,
                                               NY_EVAL_MISSING_TERM_OPERATOR, false,
                                               &CIndicator::ReadFactor};

// What combining a first operand into a zero-filled `out` leaves there: the operand's bars
// from..to for a series, its element 0 for a constant, zeros everywhere else.
void KeepCombinedPart(float* out, char isSeries, short from, short to, short count) {
    if (count <= 0) return;
    if (!isSeries) {
        std::memset(out + 1, 0, sizeof(float) * (count - 1));
        return;
    }
    const ny::BarSpan span(from, to, count);
    if (span.first > span.last) {
        std::memset(out, 0, sizeof(float) * count);
        return;
    }
    std::memset(out, 0, sizeof(float) * span.first);
    std::memset(out + span.last + 1, 0, sizeof(float) * (count - 1 - span.last));
}

}  // namespace

// The loop that every level runs: blanks are skipped, an operator becomes pending, an operand
// is read by the next level into a pooled buffer and combined into `out`. A loop that ends behind
// an operator drops it. A constant divisor near zero fails as soon as it is read. `outIsZero`
// tells that `out` is zero-filled on entry, as it always is below the logical level, which is
// reached only through an operand buffer of the level above.
char CIndicator::ReadLevel(const ny::GrammarLevel& level, float* out, short* from, short* to,
                           char permission, char* isSeries, CExpression* expr, bool outIsZero) {
    *isSeries = 0;
    Slot slot = Slot::Start;
    Op pending = Op::None;
    char*& cursor = Context().m_pCursor;
    while (!level.ends(cursor)) {
        if (*cursor == ' ') {
            ++cursor;
            continue;
        }
        Op op = Op::None;
        int length = 0;
        const char malformed = level.scanOperator(cursor, &op, &length);
        if (malformed || op != Op::None) {
            // Where no operator may stand, a lone "&", "|" or "!" is misplaced like any other.
            const bool allowed =
                slot == Slot::AfterOperand || (level.signsAtStart && slot == Slot::Start);
            if (!allowed) return NY_EVAL_MISPLACED_OPERATOR;
            if (malformed) return malformed;
            cursor += length;
            pending = op;
            slot = Slot::AfterOperator;
            continue;
        }
        if (slot == Slot::AfterOperand) return level.operandAfterOperand;
        if (slot == Slot::Start && outIsZero) {
            // The first operand of a zero-filled `out` is read straight into it, which saves a
            // buffer and a copy per level; what the copy would have dropped is zeroed after.
            char operandFlag = permission;
            if (const char rc = (this->*level.next)(out, from, to, &operandFlag, expr)) return rc;
            KeepCombinedPart(out, operandFlag, *from, *to, m_nBarCount);
            *isSeries = operandFlag;
            slot = Slot::AfterOperand;
            continue;
        }
        ny::PooledBuffer operand(Context().pool, m_nBarCount);
        char operandFlag = permission;
        if (const char rc = (this->*level.next)(operand.floats(), from, to, &operandFlag, expr))
            return rc;
        if (pending == Op::Div && !operandFlag && ny::IsZeroConstantDivisor(operand.floats()[0]))
            return NY_EVAL_ZERO_DIVISOR;
        Combine(out, isSeries, operand.floats(), operandFlag, pending, *from, *to, m_nBarCount);
        slot = Slot::AfterOperand;
    }
    return 0;
}

char CIndicator::ReadExp(float* out, short* from, short* to, char* flag, CExpression* expr) {
    return ReadExpInto(out, from, to, flag, expr, false);
}

char CIndicator::ReadExpInto(float* out, short* from, short* to, char* flag, CExpression* expr,
                                bool outIsZero) {
    const char permission = *flag % 2;
    const bool closedByParen = (*flag / 2) != 0;
    *flag = 0;
    char isSeries = 0;
    if (const char rc = ReadLevel(kLogicalLevel, out, from, to, permission, &isSeries, expr, outIsZero))
        return rc;
    if (*Context().m_pCursor == '\0') return NY_EVAL_UNTERMINATED;
    if (closedByParen != (*Context().m_pCursor == ')')) return NY_EVAL_PARENTHESES;
    ++Context().m_pCursor;
    *flag = isSeries;
    return 0;
}

char CIndicator::ReadExp1(float* out, short* from, short* to, char* flag, CExpression* expr) {
    const char permission = *flag % 2;
    return ReadLevel(kComparisonLevel, out, from, to, permission, flag, expr, true);
}

char CIndicator::ReadExp2(float* out, short* from, short* to, char* flag, CExpression* expr) {
    // A sign at the start adds the operand to, or subtracts it from, the zero in `out`.
    const char permission = *flag % 2;
    return ReadLevel(kAdditionLevel, out, from, to, permission, flag, expr, true);
}

char CIndicator::ReadItem(float* out, short* from, short* to, char* flag, CExpression* expr) {
    const char permission = *flag != 0 ? NY_EVAL_BAD_LENGTH : 0;
    return ReadLevel(kMultiplicationLevel, out, from, to, permission, flag, expr, true);
}

// An operand of the multiplication level: an expression in parentheses, which passes no
// statement on, or one word.
char CIndicator::ReadFactor(float* out, short* from, short* to, char* flag, CExpression* expr) {
    if (*Context().m_pCursor != '(') return ReadNumber(out, from, to, flag, expr);
    ++Context().m_pCursor;
    *flag = static_cast<char>(*flag + 2);
    return ReadExpInto(out, from, to, flag, nullptr, true);
}

char CIndicator::CountCuma() {
    int open = 0;
    int close = 0;
    int quotes = 0;
    unsigned char commas = 0;
    for (char* p = Context().m_pCursor;; ++p) {
        const char c = *p;
        if (c == ';' || c == '\0') {
            Context().m_pCursor = p;
            return static_cast<char>(255);
        }
        if (c == '(') {
            ++open;
        } else if (c == '\'') {
            ++quotes;
        } else if (c == ')') {
            if (open == close) return static_cast<char>(commas);
            ++close;
        } else if (c == ',' && quotes % 2 == 0 && open == close) {
            ++commas;
        }
    }
}
