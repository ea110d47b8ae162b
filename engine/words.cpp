// The word leaf of the value grammar: numbers, built-in words, parameters, earlier statements.

#include <cstdlib>
#include <cstring>

#include "engine/eval_context.h"
#include "engine/chain.h"
#include "engine/eval_code.h"
#include "engine/eval_util.h"
#include "engine/plan.h"
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

// Cuts the word at the cursor out of the text and finds what it names. A word that names
// another formula is left for the reference reader, which looks at the library every time.
void CIndicator::ResolveWord(ny::PlannedWord* planned) {
    char word[512] = {};
    size_t length = 0;
    while (length < sizeof(word) - 1 && !EndsWord(Context().m_pCursor + length)) {
        word[length] = Context().m_pCursor[length];
        ++length;
    }
    planned->length = static_cast<short>(length);
    planned->word.assign(word, length);
    if (length == 0) {
        planned->kind = ny::PlannedWord::Kind::Number;
        planned->code = NY_EVAL_BAD_WORD;
        return;
    }
    if (IsNumberText(word)) {
        planned->kind = ny::PlannedWord::Kind::Number;
        planned->code = ReadNumberText(word, &planned->value);
        return;
    }
    if ((planned->group = ny::FindBuiltInWord(word)) != nullptr) {
        planned->kind = ny::PlannedWord::Kind::BuiltIn;
        return;
    }
    for (size_t i = 0; i < m_arParams.size(); ++i) {
        if (m_arParams[i]->m_strName != word) continue;
        planned->kind = ny::PlannedWord::Kind::Param;
        planned->index = i;
        return;
    }
    for (size_t i = 0; i < m_arExpressions.size(); ++i) {
        if (m_arExpressions[i]->m_strName != word) continue;
        planned->kind = ny::PlannedWord::Kind::Statement;
        planned->index = i;
        return;
    }
    planned->kind = ny::PlannedWord::Kind::Other;
}

char CIndicator::ReadNumber(float* out, short* from, short* to, char* flag, CExpression* expr) {
    const char permission = *flag != 0 ? NY_EVAL_BAD_LENGTH : 0;
    *flag = 0;
    // A word of a planned statement is resolved on its first reading only.
    ny::PlannedWord unplanned;
    ny::EvalContext& context = Context();
    ny::PlannedWord* planned = context.plan.WordAt(context.m_pCursor);
    if (planned == nullptr) planned = &unplanned;
    if (planned->kind == ny::PlannedWord::Kind::Unread) ResolveWord(planned);
    context.m_pCursor += planned->length;
    return ReadResolvedWord(*planned, out, from, to, flag, permission, expr);
}

char CIndicator::ReadResolvedWord(ny::PlannedWord& planned, float* out, short* from, short* to,
                                  char* flag, char permission, CExpression* expr) {
    using Kind = ny::PlannedWord::Kind;
    if (planned.kind == Kind::Number) {
        if (planned.code == 0) out[0] = planned.value;
        return planned.code;
    }
    if (*from < Context().m_nCurFrom) *from = Context().m_nCurFrom;
    if (*to >= Context().m_nCurTo) *to = Context().m_nCurTo - 1;
    if (*from > *to) return NY_EVAL_EMPTY_RANGE;

    char* word = planned.word.data();
    switch (planned.kind) {
        case Kind::BuiltIn: {
            const ny::WordGroup* group = planned.group;
            if (group->needsSeries && !permission) return NY_EVAL_SERIES_NOT_ALLOWED;
            if (group->reader == nullptr && group->drawReader == nullptr) return NY_EVAL_UNKNOWN_WORD;
            if (group->setsSeriesFlag) *flag = 1;
            if (group->drawReader != nullptr)
                return (this->*group->drawReader)(word, out, from, to, permission, flag, expr);
            return (this->*group->reader)(word, out, from, to, permission, flag);
        }
        case Kind::Param: {
            const short value = m_arParams[planned.index]->GetParam(m_nPeriod);
            out[0] = static_cast<float>(value < 0 ? 0 : value);
            return 0;
        }
        case Kind::Statement: {
            const CExpression* statement = m_arExpressions[planned.index];
            if (!statement->m_cComputed) return NY_EVAL_UNKNOWN_WORD;
            if (!permission && statement->m_cIsSeries) return NY_EVAL_SERIES_NOT_ALLOWED;
            CopyStatement(*statement, out, from, to, flag);
            return 0;
        }
        default: return ReadFormulaReference(word, out, from, to, flag);
    }
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
