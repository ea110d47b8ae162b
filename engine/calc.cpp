// The run over the statements of one formula: each statement's text is prepared in a line
// buffer, checked for its parentheses and read by the value grammar; its result is stored in the
// statement. The bar range is shared by all statements of a run, so what narrows it in one
// statement narrows it for all that follow.

#include <cstring>
#include <utility>

#include "engine/eval_code.h"
#include "engine/eval_context.h"
#include "engine/eval_util.h"
#include "engine/plan.h"
#include "model/indicator.h"

namespace {

using ny::kLineBytes;

// Copies a statement's text without CR and LF; stops once the text is known to be too long.
void PrepareLine(const CString& text, char* line) {
    std::memset(line, 0, kLineBytes);
    size_t length = 0;
    for (char c : text) {
        if (c == '\r' || c == '\n') continue;
        if (length == kLineBytes - 2) break;
        line[length++] = c;
    }
}

}  // namespace

int CIndicator::Calc(short from, short to) {
    ny::EvalContext& context = Context();
    const bool buffersZeroed = std::exchange(context.buffersZeroed, false);
    if (m_nBarCount < 0 || m_pHisDay == nullptr) return 0;
    m_nNextInfoID = 1;
    m_arInfoRecords.clear();
    context.m_nCurFrom = m_nDrawStart;
    context.m_nCurTo = m_nDrawEnd;
    context.m_nCurSpan = static_cast<short>(context.m_nCurTo - context.m_nCurFrom);

    ny::PooledBuffer result(context.pool, m_nBarCount);
    if (to > m_nBarCount - 1) to = static_cast<short>(m_nBarCount - 1);
    char* line = context.line;
    if (!m_pPlan) m_pPlan = std::make_shared<ny::FormulaPlan>();
    m_pPlan->Match(*this);
    for (size_t i = 0; i < m_arExpressions.size(); ++i) {
        CExpression* expr = m_arExpressions[i];
        context.plan = m_pPlan->Enter(i, line);
        EvaluateStatement(*expr, line, result.floats(), &from, &to, buffersZeroed);
        context.plan = {};
        if (expr->m_cComputed == 1 && expr->m_nType > 0 && expr->m_nType < 25) {
            expr->m_nHasDraw = 1;
            expr->ResetPoints(m_nBarCount);
        }
    }
    return 1;
}

// `buffersZeroed` tells that the statement's buffers are zero already: a statement's buffers are
// written only by its own evaluation, so this holds up to it in the run.
void CIndicator::EvaluateStatement(CExpression& expr, char* line, float* result, short* from,
                                   short* to, bool buffersZeroed) {
    if (expr.m_pDrawData != nullptr && expr.m_nAllocBars > 0 && !buffersZeroed)
        std::memset(expr.m_pDrawData, 0, sizeof(float) * 4 * expr.m_nAllocBars);
    expr.m_strDrawText.clear();
    PrepareLine(expr.m_strText, line);
    if (expr.m_pData == nullptr) return;

    const short bars = std::min(m_nBarCount, expr.m_nAllocBars);
    std::memset(result, 0, sizeof(float) * std::max<short>(m_nBarCount, 1));
    if (bars > 0 && !buffersZeroed) std::memset(expr.m_pData, 0, sizeof(float) * bars);

    char flag = 1;
    expr.m_cFailCode = static_cast<unsigned char>(ReadLine(line, result, from, to, &flag, &expr, true));
    if (expr.m_cFailCode != 0) {
        expr.m_cComputed = 0;
        return;
    }
    const ny::BarSpan span(*from, *to, bars);
    for (int i = span.first; i <= span.last; ++i) expr.m_pData[i] = flag ? result[i] : result[0];
    // A constant also keeps its value in element 0, where a later reference reads it.
    if (!flag && bars > 0) expr.m_pData[0] = result[0];
    expr.m_nFirst = std::min(expr.m_nFirst, *from);
    expr.m_nEnd = std::max<short>(expr.m_nEnd, static_cast<short>(*to + 1));
    expr.m_cIsSeries = flag;
    expr.m_cComputed = 1;
}

char CIndicator::CalExp(char* line, float* out, short* from, short* to, char* flag, CExpression* expr) {
    return ReadLine(line, out, from, to, flag, expr, false);
}

char CIndicator::ReadLine(char* line, float* out, short* from, short* to, char* flag,
                          CExpression* expr, bool outIsZero) {
    const size_t length = std::strlen(line);
    if (length == 0 || length >= 512) return NY_EVAL_BAD_LENGTH;
    signed char open = 0;
    signed char close = 0;
    for (size_t i = 0; i < 512; ++i) {
        if (line[i] == '\0') line[i] = ';';
        if (line[i] == ';') break;
        if (line[i] == '(') {
            ++open;
        } else if (line[i] == ')') {
            ++close;
            if (close > open) break;
        }
    }
    if (open != close) return NY_EVAL_PARENTHESES;
    Context().m_pCursor = line;
    return ReadExpInto(out, from, to, flag, expr, outIsZero);
}
