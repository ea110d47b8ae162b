#pragma once
// One evaluation of a formula over the bars of one stock.

#include "host/hisday.h"
#include "model/indicator.h"

namespace ny {

// The calling sequence of an evaluation in one place: the stock, Change, the bars as the whole
// draw range, AllocMem and Calc over all of them. The caller keeps `bars` alive while it reads
// the statements. Returns what Calc returns: 1 if it ran, 0 if it refused.
int EvaluateOver(CIndicator& formula, int stockId, CHisDay* bars, short count);

}  // namespace ny
