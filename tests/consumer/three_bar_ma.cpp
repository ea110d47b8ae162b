// Evaluates MA(CLOSE,2) over three bars with closes 10, 11 and 13 through the installed umbrella
// header and library. The first bar has no average; the others are 10.5 and 12. Exits 1 on any
// other result.

#include <cstdio>

#include "ny_indicator.h"

int main() {
    CHisDay bars[3];
    const float closes[3] = {10, 11, 13};
    for (int i = 0; i < 3; ++i) {
        bars[i].m_lTime = 20240102 + i;
        bars[i].m_fOpen = bars[i].m_fHigh = bars[i].m_fLow = bars[i].m_fClose = closes[i];
    }
    CIndicator formula;
    auto* average = new CExpression;
    average->m_strName = "MA2";
    average->m_strText = "MA(CLOSE,2)";
    formula.m_arExpressions.push_back(average);

    ny::EvaluateOver(formula, 0, bars, 3);

    const bool right = average->m_cComputed == 1 && average->m_nFirst == 1 && average->m_nEnd == 3 &&
                       average->m_pData[1] == 10.5f && average->m_pData[2] == 12.0f;
    std::printf("MA(CLOSE,2) over 10, 11, 13: first bar %d, values %g %g: %s\n", average->m_nFirst,
                average->m_pData[1], average->m_pData[2], right ? "as expected" : "WRONG");
    return right ? 0 : 1;
}
