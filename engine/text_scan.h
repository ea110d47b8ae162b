#pragma once
// Reading the text arguments of the draw commands and the text functions: blanks, a quoted text,
// the step behind a call's ")".

#include <algorithm>
#include <cstring>
#include <string>

#include "engine/draw_record.h"
#include "engine/eval_code.h"
#include "engine/eval_context.h"
#include "model/indicator.h"

namespace ny {

inline void SkipBlanks(CIndicator& ind) {
    char*& cursor = ind.Context().m_pCursor;
    while (*cursor == ' ') ++cursor;
}

// Puts the cursor behind the next ")", code 10 if the statement ends first.
inline char StepBehindParenthesis(CIndicator& ind) {
    char*& cursor = ind.Context().m_pCursor;
    while (*cursor != ')' && *cursor != ';' && *cursor != '\0') ++cursor;
    if (*cursor != ')') return NY_EVAL_UNTERMINATED;
    ++cursor;
    return 0;
}

// A quoted text at the cursor, blanks first: code 7 without the opening quote, 10 without the
// closing one. The cursor ends behind the closing quote; the text is cut at 127 bytes.
inline char ReadQuotedText(CIndicator& ind, std::string* text) {
    SkipBlanks(ind);
    char*& cursor = ind.Context().m_pCursor;
    if (*cursor != '\'') return NY_EVAL_UNKNOWN_WORD;
    const char* start = ++cursor;
    char* end = std::strchr(cursor, '\'');
    if (end == nullptr) return NY_EVAL_UNTERMINATED;
    text->assign(start, std::min<size_t>(end - start, ny::kDrawTextBytes));
    cursor = end + 1;
    return 0;
}

}  // namespace ny
