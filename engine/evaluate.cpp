#include "engine/evaluate.h"

#include "engine/eval_context.h"

namespace ny {

int EvaluateOver(CIndicator& formula, int stockId, CHisDay* bars, short count) {
    formula.m_lStockID = stockId;
    formula.m_pHisDay = bars;
    formula.m_nBarCount = count;
    formula.m_nDrawStart = 0;
    formula.m_nDrawEnd = count;
    // Change and AllocMem in one: a pick's next stock reuses the buffers, zeroed once.
    formula.Renew(count);
    formula.Context().buffersZeroed = true;
    return formula.Calc(0, count);
}

}  // namespace ny
