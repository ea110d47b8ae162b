// The word leaf of the value grammar: numbers, built-in words, parameters, earlier statements.

#include <cstdlib>
#include <cstring>

#include "engine/chain.h"
#include "engine/eval_code.h"
#include "engine/eval_util.h"
#include "model/indicator.h"

namespace {

// A word ends at an operator, a blank, a parenthesis, a separator or the words "AND " and "OR ".
bool EndsWord(const char* p) {
    switch (*p) {
        case '\0': case ';': case ',': case ')': case '+': case '-': case '*': case '/': case ' ':
        case '(': case '&': case '|': case '>': case '<': case '=': case '!':
            return true;
        default:
            return ny::AtAndWord(p) || ny::AtOrWord(p);
    }
}

bool IsNumberText(const char* word) {
    for (const char* p = word; *p; ++p)
        if (!(*p >= '0' && *p <= '9') && *p != '.') return false;
    return true;
}

// A number has at most one '.' behind its first character and no leading zero before a digit:
// "0", "0.5", ".5" and "1." are numbers, "00" and "1.5.2" are not.
char ReadNumberText(const char* word, float* out) {
    int dots = 0;
    for (const char* p = word + 1; *p; ++p) dots += (*p == '.');
    if (dots > 1) return NY_EVAL_BAD_WORD;
    if (word[0] == '0' && word[1] != '\0' && word[1] != '.') return NY_EVAL_BAD_WORD;
    out[0] = static_cast<float>(std::strtod(word, nullptr));
    return 0;
}

}  // namespace

char CIndicator::ReadNumber(float* out, short* from, short* to, char* flag, CExpression* expr) {
    const char permission = *flag != 0 ? NY_EVAL_BAD_LENGTH : 0;
    *flag = 0;
    char word[512] = {};
    size_t length = 0;
    while (length < sizeof(word) - 1 && !EndsWord(m_pCursor)) word[length++] = *m_pCursor++;
    if (length == 0) return NY_EVAL_BAD_WORD;
    if (IsNumberText(word)) return ReadNumberText(word, out);

    if (*from < m_nCurFrom) *from = m_nCurFrom;
    if (*to >= m_nCurTo) *to = m_nCurTo - 1;
    if (*from > *to) return NY_EVAL_EMPTY_RANGE;

    if (const ny::WordGroup* group = ny::FindBuiltInWord(word)) {
        if (group->needsSeries && !permission) return NY_EVAL_SERIES_NOT_ALLOWED;
        if (group->reader == nullptr && group->drawReader == nullptr) return NY_EVAL_UNKNOWN_WORD;
        if (group->setsSeriesFlag) *flag = 1;
        if (group->drawReader != nullptr)
            return (this->*group->drawReader)(word, out, from, to, permission, flag, expr);
        return (this->*group->reader)(word, out, from, to, permission, flag);
    }
    for (const CParam* param : m_arParams) {
        if (param->m_strName != word) continue;
        const short value = param->GetParam(m_nPeriod);
        out[0] = static_cast<float>(value < 0 ? 0 : value);
        return 0;
    }
    for (const CExpression* statement : m_arExpressions) {
        if (statement->m_strName != word) continue;
        if (!statement->m_cComputed) return NY_EVAL_UNKNOWN_WORD;
        if (!permission && statement->m_cIsSeries) return NY_EVAL_SERIES_NOT_ALLOWED;
        CopyStatement(*statement, out, from, to, flag);
        return 0;
    }
    return ReadFormulaReference(word, out, from, to, flag);
}

// Reads the last result of a statement: its whole buffer, narrowed to its valid bars.
void CIndicator::CopyStatement(const CExpression& source, float* out, short* from, short* to,
                               char* isSeries) const {
    const short bars = std::min(m_nBarCount, source.m_nAllocBars);
    if (source.m_pData != nullptr && bars > 0)
        std::memcpy(out, source.m_pData, sizeof(float) * bars);
    if (*from < source.m_nFirst) *from = source.m_nFirst;
    if (*to >= source.m_nEnd) *to = source.m_nEnd - 1;
    *isSeries = source.m_cIsSeries;
}
