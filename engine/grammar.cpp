// The value grammar: a recursive descent over the statement text that computes whole series as
// it goes. Each level is one loop over the characters at the cursor; operands come from the next
// level into pooled, zero-filled buffers and are combined into `out` bar by bar.

#include "engine/eval_util.h"
#include "model/indicator.h"

using ny::Op;

namespace {

enum class Slot { Start, AfterOperand, AfterOperator };

// Combines operand R into the running value L held in `out`; `lSeries` is L's is-series flag and
// becomes 1 when a series meets a constant.
void Combine(float* out, char* lSeries, float* r, char rSeries, Op op, short from, short to,
             short count) {
    if (!*lSeries && !rSeries) {
        out[0] = ny::Apply(op, out[0], r[0]);
        return;
    }
    if (*lSeries && !rSeries) {
        ny::Spread(r, from, to, count);
    } else if (!*lSeries) {
        ny::Spread(out, from, to, count);
        *lSeries = 1;
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
    for (int i = span.first; i <= span.last; ++i) out[i] = ny::Apply(op, out[i], r[i]);
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

char CIndicator::ReadExp(float* out, short* from, short* to, char* flag, CExpression* expr) {
    const char permission = *flag % 2;
    const bool closedByParen = (*flag / 2) != 0;
    *flag = 0;
    char isSeries = 0;
    Slot slot = Slot::Start;
    Op pending = Op::None;
    while (!AtStatementEnd(*m_pCursor)) {
        const char* p = m_pCursor;
        if (*p == ' ') {
            ++m_pCursor;
            continue;
        }
        Op op = Op::None;
        int length = 0;
        if (ny::At(p, "&&")) op = Op::And, length = 2;
        else if (ny::AtAndWord(p)) op = Op::And, length = 3;
        else if (ny::At(p, "||")) op = Op::Or, length = 2;
        else if (ny::AtOrWord(p)) op = Op::Or, length = 2;
        else if (*p == '&' || *p == '|') return 8;
        if (op != Op::None) {
            if (slot != Slot::AfterOperand) return 4;
            m_pCursor += length;
            pending = op;
            slot = Slot::AfterOperator;
            continue;
        }
        if (slot == Slot::AfterOperand) return 4;
        ny::PooledBuffer operand(m_pool, m_nBarCount);
        char operandFlag = permission;
        const char rc = ReadExp1(operand.floats(), from, to, &operandFlag, expr);
        if (rc != 0) return rc;
        Combine(out, &isSeries, operand.floats(), operandFlag, pending, *from, *to, m_nBarCount);
        slot = Slot::AfterOperand;
    }
    if (*m_pCursor == '\0') return 10;
    if (closedByParen != (*m_pCursor == ')')) return 3;
    ++m_pCursor;
    *flag = isSeries;
    return 0;
}

char CIndicator::ReadExp1(float* out, short* from, short* to, char* flag, CExpression* expr) {
    const char permission = *flag % 2;
    *flag = 0;
    char isSeries = 0;
    Slot slot = Slot::Start;
    Op pending = Op::None;
    while (!EndsComparison(m_pCursor)) {
        const char* p = m_pCursor;
        if (*p == ' ') {
            ++m_pCursor;
            continue;
        }
        Op op = Op::None;
        int length = 1;
        if (*p == '>') op = p[1] == '=' ? (length = 2, Op::GreaterEqual) : Op::Greater;
        else if (*p == '<') op = p[1] == '=' ? (length = 2, Op::LessEqual) : Op::Less;
        else if (*p == '=') op = Op::Equal, length = p[1] == '=' ? 2 : 1;
        else if (*p == '!') {
            if (p[1] != '=') return 8;
            op = Op::NotEqual, length = 2;
        }
        if (op != Op::None) {
            if (slot != Slot::AfterOperand) return 4;
            m_pCursor += length;
            pending = op;
            slot = Slot::AfterOperator;
            continue;
        }
        if (slot == Slot::AfterOperand) return 4;
        ny::PooledBuffer operand(m_pool, m_nBarCount);
        char operandFlag = permission;
        const char rc = ReadExp2(operand.floats(), from, to, &operandFlag, expr);
        if (rc != 0) return rc;
        Combine(out, &isSeries, operand.floats(), operandFlag, pending, *from, *to, m_nBarCount);
        slot = Slot::AfterOperand;
    }
    *flag = isSeries;
    return 0;
}

char CIndicator::ReadExp2(float* out, short* from, short* to, char* flag, CExpression* expr) {
    const char permission = *flag % 2;
    *flag = 0;
    char isSeries = 0;
    Slot slot = Slot::Start;
    Op pending = Op::None;
    while (!EndsAddition(m_pCursor)) {
        const char c = *m_pCursor;
        if (c == ' ') {
            ++m_pCursor;
            continue;
        }
        if (c == '+' || c == '-') {
            // At the start a sign: the operand is added to or subtracted from the zero in `out`.
            if (slot == Slot::AfterOperator) return 4;
            ++m_pCursor;
            pending = c == '+' ? Op::Add : Op::Sub;
            slot = Slot::AfterOperator;
            continue;
        }
        if (slot == Slot::AfterOperand) return 13;
        ny::PooledBuffer operand(m_pool, m_nBarCount);
        char operandFlag = permission;
        const char rc = ReadItem(operand.floats(), from, to, &operandFlag, expr);
        if (rc != 0) return rc;
        Combine(out, &isSeries, operand.floats(), operandFlag, pending, *from, *to, m_nBarCount);
        slot = Slot::AfterOperand;
    }
    *flag = isSeries;
    return 0;
}

char CIndicator::ReadItem(float* out, short* from, short* to, char* flag, CExpression* expr) {
    const char permission = *flag != 0 ? 1 : 0;
    *flag = 0;
    char isSeries = 0;
    Slot slot = Slot::Start;
    Op pending = Op::None;
    while (!EndsMultiplication(m_pCursor)) {
        const char c = *m_pCursor;
        if (c == ' ') {
            ++m_pCursor;
            continue;
        }
        if (c == '*' || c == '/') {
            if (slot != Slot::AfterOperand) return 4;
            ++m_pCursor;
            pending = c == '*' ? Op::Mul : Op::Div;
            slot = Slot::AfterOperator;
            continue;
        }
        if (slot == Slot::AfterOperand) return 5;
        ny::PooledBuffer operand(m_pool, m_nBarCount);
        char operandFlag = permission;
        char rc;
        if (c == '(') {
            ++m_pCursor;
            operandFlag = permission + 2;
            rc = ReadExp(operand.floats(), from, to, &operandFlag, nullptr);
        } else {
            rc = ReadNumber(operand.floats(), from, to, &operandFlag, expr);
        }
        if (rc != 0) return rc;
        if (pending == Op::Div && !operandFlag && ny::IsZeroConstantDivisor(operand.floats()[0]))
            return 17;
        Combine(out, &isSeries, operand.floats(), operandFlag, pending, *from, *to, m_nBarCount);
        slot = Slot::AfterOperand;
    }
    *flag = isSeries;
    return 0;
}

char CIndicator::CountCuma() {
    int open = 0;
    int close = 0;
    int quotes = 0;
    unsigned char commas = 0;
    for (char* p = m_pCursor;; ++p) {
        const char c = *p;
        if (c == ';' || c == '\0') {
            m_pCursor = p;
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
