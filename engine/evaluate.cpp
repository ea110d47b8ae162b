#include "engine/evaluate.h"

namespace ny {

int EvaluateOver(CIndicator& formula, int stockId, CHisDay* bars, short count) {
    formula.m_lStockID = stockId;
    formula.Change();
    formula.m_pHisDay = bars;
    formula.m_nBarCount = count;
    formula.m_nDrawStart = 0;
    formula.m_nDrawEnd = count;
    formula.AllocMem(count);
    return formula.Calc(0, count);
}

}  // namespace ny
