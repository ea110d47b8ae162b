#pragma once
// The working state of evaluations of one formula object, apart from its definition and its
// results: the cursor in the statement being read, the bar range of the data context, the pool of
// working buffers, the place in the plan and the line buffer. Every formula object has its own,
// made on its first evaluation and kept for the next ones (the next stock of a pick reuses its
// buffers); a copy of a formula gets a fresh one, so threads that evaluate copies of one formula
// share nothing that an evaluation writes.
//
// The function readers reach it through CIndicator::Context(): `Context().m_pCursor` is the
// cursor, `Context().m_nCurFrom` to `m_nCurTo` the bars the data context allows, and
// `Context().pool` lends zero-filled buffers of the bar count (ny::PooledBuffer).

#include <cstddef>

#include "engine/plan.h"
#include "engine/series_pool.h"
#include "model/indicator.h"

namespace ny {

// Room for a statement of 511 bytes, the ';' planted behind it, and a terminating zero, plus one
// byte so that a text of 512 bytes is seen as too long instead of being cut.
constexpr size_t kLineBytes = 514;

struct EvalContext {
    char* m_pCursor = nullptr;  // valid only while a statement is read
    short m_nCurFrom = 0;
    short m_nCurTo = 0;
    short m_nCurSpan = 0;
    SeriesPool pool;
    PlanPlace plan;  // the planned statement being read, if any
    // Set by the caller when every statement's buffers are zero and untouched since, as
    // Renew leaves them: the next Calc then does not zero them again. Calc clears it.
    bool buffersZeroed = false;
    char line[kLineBytes] = {};
};

}  // namespace ny

inline ny::EvalContext& CIndicator::Context() {
    if (!m_pContext) m_pContext = std::make_shared<ny::EvalContext>();
    return *m_pContext;
}
