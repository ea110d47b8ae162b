// IF(X, A, B) and IFF(X, A, B): A where the condition holds, else B; IFN(X, A, B) the other way
// about. A constant condition picks one branch for all bars, and only that branch is evaluated:
// the other one is stepped over as text, so whatever it holds never runs.

#include <algorithm>
#include <cstring>

#include "engine/eval_context.h"
#include "engine/argument_scan.h"
#include "engine/eval_code.h"
#include "engine/eval_util.h"
#include "model/indicator.h"

namespace {

// The cursor stands at the start of A. The chosen branch is read into `out` over the caller's
// range; the other one is only walked over.
char ReadChosenBranch(CIndicator& ind, bool takeFirst, float* out, short* from, short* to,
                      char permission, char* isSeries) {
    char flag = permission;
    if (takeFirst) {
        const char rc = ind.ReadExp(out, from, to, &flag, nullptr);
        if (rc != 0) return rc;
        char* closing = ny::FindClosingParenthesis(ind.Context().m_pCursor);
        if (closing == nullptr) return NY_EVAL_UNTERMINATED;
        ind.Context().m_pCursor = closing + 1;
    } else {
        char* comma = ny::FindTopLevelComma(ind.Context().m_pCursor);
        if (comma == nullptr) return NY_EVAL_UNTERMINATED;
        ind.Context().m_pCursor = comma + 1;
        flag = static_cast<char>(permission + 2);
        const char rc = ind.ReadExp(out, from, to, &flag, nullptr);
        if (rc != 0) return rc;
    }
    *isSeries = flag;
    return 0;
}

// Both branches are read in full; the result's range is where condition, A and B all have values.
char MergeBranches(CIndicator& ind, const char* truth, bool inverted, float* out, short* from,
                   short* to, char permission) {
    const short count = ind.m_nBarCount;
    ny::PooledBuffer first(ind.Context().pool, count);
    short firstFrom = *from, firstTo = *to;
    char firstSeries = 0;
    char rc = ind.ReadValueArgument(first.floats(), &firstFrom, &firstTo, &firstSeries,
                                    permission, false);
    if (rc != 0) return rc;
    ny::PooledBuffer second(ind.Context().pool, count);
    short secondFrom = *from, secondTo = *to;
    char secondSeries = 0;
    rc = ind.ReadValueArgument(second.floats(), &secondFrom, &secondTo, &secondSeries, permission,
                               true);
    if (rc != 0) return rc;

    if (!firstSeries) ny::Spread(first.floats(), firstFrom, firstTo, count);
    if (!secondSeries) ny::Spread(second.floats(), secondFrom, secondTo, count);
    *from = std::max({*from, firstFrom, secondFrom});
    *to = std::min({*to, firstTo, secondTo});
    if (*from > *to) return NY_EVAL_EMPTY_RANGE;
    const ny::BarSpan bars(*from, *to, count);
    for (int i = bars.first; i <= bars.last; ++i)
        out[i] = ((truth[i] != 0) != inverted) ? first.floats()[i] : second.floats()[i];
    return 0;
}

}  // namespace

char CIndicator::ReadIf(char* word, float* out, short* from, short* to, char permission,
                        char* isSeries) {
    char rc = BeginCall(3);
    if (rc != 0) return rc;
    const bool inverted = std::strcmp(word, "IFN") == 0;

    ny::PooledBuffer condition(Context().pool, m_nBarCount);
    char conditionSeries = permission;
    rc = ReadLogical(condition.bytes(), from, to, &conditionSeries);
    if (rc != 0) return rc;
    if (!conditionSeries) {
        const bool takeFirst = (condition.bytes()[0] != 0) != inverted;
        return ReadChosenBranch(*this, takeFirst, out, from, to, permission, isSeries);
    }
    *isSeries = 1;
    return MergeBranches(*this, condition.bytes(), inverted, out, from, to, permission);
}
