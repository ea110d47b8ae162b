// DYNAINFO and FINANCE values of the stock's live quote and financial record. This build has no
// reader of those host figures yet: every id answers as for a stock without data, code 19 with
// out[0] left as it was (FINANCE zeroes it first). Their callers drop the code, so a formula sees
// the value 0 and runs on.

#include "engine/eval_code.h"
#include "model/indicator.h"

char CIndicator::ReadDYNAINFO(float*, short) { return NY_EVAL_NO_DATA; }

char CIndicator::ReadFINANCE(float* out, short) {
    out[0] = 0.0f;
    return NY_EVAL_NO_DATA;
}
