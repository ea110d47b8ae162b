// References to other formulas of the library: "NAME.LINE" reads one line of a technical
// indicator, "NAME" the line of the same name or else its last line. Each reference runs the
// whole referenced formula on a temporary copy over this formula's bars, so the library's object
// stays untouched.

#include <cstring>
#include <string>

#include "engine/eval_code.h"
#include "model/indicator.h"
#include "model/library.h"

namespace {

// Formulas that refer to each other, directly or in a circle, would nest without end; a
// reference deeper than this is refused like an unknown word.
constexpr int kMaxReferenceDepth = 16;
thread_local int g_referenceDepth = 0;

struct DepthGuard {
    DepthGuard() { ++g_referenceDepth; }
    ~DepthGuard() { --g_referenceDepth; }
};

}  // namespace

char CIndicator::ReadFormulaReference(const char* word, float* out, short* from, short* to,
                                      char* isSeries) {
    const char* dot = word[0] != '\0' ? std::strchr(word + 1, '.') : nullptr;
    const std::string name = dot ? std::string(word, dot) : std::string(word);
    CIndicator* found = g_MyGetIndicator(name, NY_KIND_INDICATOR);
    if (found == nullptr || g_referenceDepth >= kMaxReferenceDepth) return NY_EVAL_UNKNOWN_WORD;

    DepthGuard depth;
    CIndicator nested;
    nested = *found;
    nested.m_lStockID = m_lStockID;
    nested.m_pHisDay = m_pHisDay;
    nested.m_nBarCount = m_nBarCount;
    nested.m_nDrawStart = m_nDrawStart;
    nested.m_nDrawEnd = m_nDrawEnd;
    nested.AllocMem(m_nBarCount);
    nested.Calc(0, m_nDrawEnd);

    const CExpression* line = nullptr;
    if (dot != nullptr) {
        line = nested.Find(dot + 1);
    } else {
        line = nested.Find(name);
        if (line == nullptr && !nested.m_arExpressions.empty()) line = nested.m_arExpressions.back();
    }
    if (line == nullptr || !line->m_cComputed) return NY_EVAL_UNKNOWN_WORD;
    CopyStatement(*line, out, from, to, isSeries);
    return 0;
}
