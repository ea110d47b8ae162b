// The condition grammar: one true-or-false byte per bar. It serves IF, COUNT and the other
// functions that take a condition. A condition treats a magnitude up to 0.000001 as false, and
// allows a single comparison per leaf.

#include "engine/eval_code.h"
#include "engine/eval_context.h"
#include "engine/eval_util.h"
#include "model/indicator.h"

namespace {

enum class Slot { Start, AfterOperand, AfterOperator };

bool AtStatementEnd(char c) { return c == ';' || c == ',' || c == ')' || c == '\0'; }

// Combines a byte operand into the running bytes with "and" or "or".
void CombineBytes(char* out, char* lSeries, char* r, char rSeries, bool isAnd, short from,
                  short to, short count) {
    auto apply = [isAnd](char l, char rr) -> char {
        return isAnd ? (l != 0 && rr != 0) : (l != 0 || rr != 0);
    };
    if (!ny::AlignOperands(out, lSeries, r, rSeries, from, to, count)) {
        out[0] = apply(out[0], r[0]);
        return;
    }
    const ny::BarSpan span(from, to, count);
    for (int i = span.first; i <= span.last; ++i) out[i] = apply(out[i], r[i]);
}

// Codes of the comparison in a condition leaf.
ny::Op ComparisonAt(const char* p, int* length) {
    *length = (p[1] == '=') ? 2 : 1;
    switch (p[0]) {
        case '>': return *length == 2 ? ny::Op::GreaterEqual : ny::Op::Greater;
        case '<': return *length == 2 ? ny::Op::LessEqual : ny::Op::Less;
        case '=': return ny::Op::Equal;
        default: return ny::Op::NotEqual;  // "!=", checked by the caller
    }
}

// Looks ahead from an opening parenthesis: a nested condition holds a logical or comparison
// operator before its parenthesis closes. Returns the character that decided it.
char ScanParenthesis(const char* p) {
    int depth = 0;
    for (;; ++p) {
        const char c = *p;
        if (c == ';' || c == '\0') return ';';
        if (c == '&' || c == '|' || c == '!' || c == '>' || c == '<' || c == '=') return c;
        if (c == '(') ++depth;
        if (c == ')' && --depth == 0) return ')';
    }
}

}  // namespace

char CIndicator::ReadLogical(char* out, short* from, short* to, char* flag) {
    const char permission = *flag % 2;
    const bool closedByParen = (*flag / 2) != 0;
    *flag = 0;
    char isSeries = 0;
    Slot slot = Slot::Start;
    while (!AtStatementEnd(*Context().m_pCursor)) {
        const char* p = Context().m_pCursor;
        if (*p == ' ') {
            ++Context().m_pCursor;
            continue;
        }
        int length = 0;
        if (ny::At(p, "||") || ny::AtOrWord(p)) length = 2;
        else if (*p == '|') return NY_EVAL_LONE_OPERATOR;
        if (length != 0) {
            if (slot != Slot::AfterOperand) return NY_EVAL_MISPLACED_OPERATOR;
            Context().m_pCursor += length;
            slot = Slot::AfterOperator;
            continue;
        }
        if (slot == Slot::AfterOperand) return NY_EVAL_MISPLACED_OPERATOR;
        ny::PooledBuffer operand(Context().pool, m_nBarCount);
        char operandFlag = permission;
        const char rc = ReadLogItem(operand.bytes(), from, to, &operandFlag);
        if (rc != 0) return rc;
        CombineBytes(out, &isSeries, operand.bytes(), operandFlag, false, *from, *to, m_nBarCount);
        slot = Slot::AfterOperand;
    }
    if (*Context().m_pCursor == '\0') return NY_EVAL_UNTERMINATED;
    if (closedByParen != (*Context().m_pCursor == ')')) return NY_EVAL_PARENTHESES;
    ++Context().m_pCursor;
    *flag = isSeries;
    return 0;
}

char CIndicator::ReadLogItem(char* out, short* from, short* to, char* flag) {
    const char permission = *flag != 0 ? NY_EVAL_BAD_LENGTH : 0;
    *flag = 0;
    char isSeries = 0;
    out[0] = 1;
    Slot slot = Slot::Start;
    while (!AtStatementEnd(*Context().m_pCursor) && *Context().m_pCursor != '|' && !ny::AtOrWord(Context().m_pCursor)) {
        const char* p = Context().m_pCursor;
        if (*p == ' ') {
            ++Context().m_pCursor;
            continue;
        }
        int length = 0;
        if (ny::At(p, "&&")) length = 2;
        else if (ny::AtAndWord(p)) length = 3;
        else if (*p == '&') return NY_EVAL_LONE_OPERATOR;
        if (length != 0) {
            if (slot != Slot::AfterOperand) return NY_EVAL_MISPLACED_OPERATOR;
            Context().m_pCursor += length;
            slot = Slot::AfterOperator;
            continue;
        }
        if (slot == Slot::AfterOperand) return NY_EVAL_MISSING_TERM_OPERATOR;
        ny::PooledBuffer operand(Context().pool, m_nBarCount);
        char operandFlag = permission;
        char rc;
        if (*p == '(') {
            const char decided = ScanParenthesis(p);
            if (decided == ';') {
                while (*Context().m_pCursor != ';' && *Context().m_pCursor != '\0') ++Context().m_pCursor;
                return NY_EVAL_UNTERMINATED;
            }
            if (decided != ')') {
                ++Context().m_pCursor;
                operandFlag = permission + 2;
                rc = ReadLogical(operand.bytes(), from, to, &operandFlag);
            } else {
                rc = ReadLogNum(operand.bytes(), from, to, &operandFlag);
            }
        } else {
            rc = ReadLogNum(operand.bytes(), from, to, &operandFlag);
        }
        if (rc != 0) return rc;
        CombineBytes(out, &isSeries, operand.bytes(), operandFlag, true, *from, *to, m_nBarCount);
        slot = Slot::AfterOperand;
    }
    *flag = isSeries;
    return 0;
}

char CIndicator::ReadLogNum(char* out, short* from, short* to, char* flag) {
    const char permission = *flag != 0 ? NY_EVAL_BAD_LENGTH : 0;
    *flag = 0;
    if (*Context().m_pCursor == '!') return ReadNegatedLeaf(out, from, to, flag, permission);

    ny::PooledBuffer left(Context().pool, m_nBarCount);
    ny::PooledBuffer right(Context().pool, m_nBarCount);
    short leftFrom = *from, leftTo = *to, rightFrom = *from, rightTo = *to;
    char leftFlag = permission, rightFlag = permission;
    ny::Op comparison = ny::Op::None;
    int open = 0, close = 0;
    char* p = Context().m_pCursor;
    for (;; ++p) {
        const char c = *p;
        if (c == ';' || c == '\0' || c == '&' || c == '|' || ny::AtAndWord(p) || ny::AtOrWord(p))
            break;
        if (c == '(') {
            ++open;
        } else if (c == ')') {
            if (open == close) break;
            ++close;
        } else if (c == ',') {
            if (open == close) break;
        } else if ((c == '>' || c == '<' || c == '=' || c == '!') && open == close) {
            if (comparison != ny::Op::None || (c == '!' && p[1] != '=')) {
                Context().m_pCursor = p;
                return NY_EVAL_LONE_OPERATOR;
            }
            *p = ';';
            const char rc = ReadExpInto(left.floats(), &leftFrom, &leftTo, &leftFlag, nullptr, true);
            *p = c;
            if (rc != 0) return rc;
            int length;
            comparison = ComparisonAt(p, &length);
            p += length - 1;
            Context().m_pCursor = p + 1;
        }
    }
    if (*p == ';' || *p == '\0') {
        Context().m_pCursor = p;
        return NY_EVAL_UNTERMINATED;
    }
    const char stop = *p;
    *p = ';';
    const char rc = comparison != ny::Op::None
                        ? ReadExpInto(right.floats(), &rightFrom, &rightTo, &rightFlag, nullptr, true)
                        : ReadExpInto(left.floats(), &leftFrom, &leftTo, &leftFlag, nullptr, true);
    *p = stop;
    if (rc != 0) return rc;
    Context().m_pCursor = p;

    float* l = left.floats();
    float* r = right.floats();
    if (comparison == ny::Op::None) {
        *flag = leftFlag;
        *from = leftFrom;
        *to = leftTo;
        if (!leftFlag) {
            out[0] = ny::IsTrue(l[0]);
            return 0;
        }
        const ny::BarSpan span(*from, *to, m_nBarCount);
        for (int i = span.first; i <= span.last; ++i) out[i] = ny::IsTrue(l[i]);
        return 0;
    }
    if (!leftFlag && !rightFlag) {
        out[0] = ny::Apply(comparison, l[0], r[0]) != 0.0f;
        return 0;
    }
    *from = std::max({*from, leftFrom, rightFrom});
    *to = std::min({*to, leftTo, rightTo});
    if (*from > *to) return NY_EVAL_EMPTY_RANGE;
    *flag = 1;
    if (!leftFlag) ny::Spread(l, *from, *to, m_nBarCount);
    if (!rightFlag) ny::Spread(r, *from, *to, m_nBarCount);
    const ny::BarSpan span(*from, *to, m_nBarCount);
    for (int i = span.first; i <= span.last; ++i) out[i] = ny::Apply(comparison, l[i], r[i]) != 0.0f;
    return 0;
}

// "!" in front of a nested condition inverts it; in front of a word it tests the word for zero.
char CIndicator::ReadNegatedLeaf(char* out, short* from, short* to, char* flag, char permission) {
    ++Context().m_pCursor;
    while (*Context().m_pCursor == ' ') ++Context().m_pCursor;
    if (*Context().m_pCursor == '(') {
        ++Context().m_pCursor;
        ny::PooledBuffer inner(Context().pool, m_nBarCount);
        char innerFlag = permission + 2;
        const char rc = ReadLogical(inner.bytes(), from, to, &innerFlag);
        if (rc != 0) return rc;
        *flag = innerFlag;
        const char* bytes = inner.bytes();
        if (!innerFlag) {
            out[0] = bytes[0] == 0;
            return 0;
        }
        const ny::BarSpan span(*from, *to, m_nBarCount);
        for (int i = span.first; i <= span.last; ++i) out[i] = bytes[i] == 0;
        return 0;
    }
    ny::PooledBuffer value(Context().pool, m_nBarCount);
    char valueFlag = permission;
    const char rc = ReadNumber(value.floats(), from, to, &valueFlag, nullptr);
    if (rc != 0) return rc;
    *flag = valueFlag;
    const float* v = value.floats();
    if (!valueFlag) {
        out[0] = std::fabs(static_cast<double>(v[0])) < ny::kZeroTolerance;
        return 0;
    }
    const ny::BarSpan span(*from, *to, m_nBarCount);
    for (int i = span.first; i <= span.last; ++i)
        out[i] = std::fabs(static_cast<double>(v[i])) < ny::kZeroTolerance;
    return 0;
}
