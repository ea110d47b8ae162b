#pragma once
// Moving the cursor over argument text without evaluating it. Functions that read their arguments
// out of order, and IF with a constant condition, step over an argument by counting parentheses.
// Quotes are not looked at.

namespace ny {

// The first "," at which the "(" and ")" counted from `p` are equal; null if the statement's ";"
// (or the end of the text) comes first.
inline char* FindTopLevelComma(char* p) {
    int open = 0;
    int close = 0;
    for (;; ++p) {
        const char c = *p;
        if (c == ';' || c == '\0') return nullptr;
        if (c == '(') ++open;
        else if (c == ')') ++close;
        else if (c == ',' && open == close) return p;
    }
}

// The ")" that closes the call whose arguments continue at `p`; null if the ";" comes first.
inline char* FindClosingParenthesis(char* p) {
    int depth = 0;
    for (;; ++p) {
        const char c = *p;
        if (c == ';' || c == '\0') return nullptr;
        if (c == '(') {
            ++depth;
        } else if (c == ')') {
            if (depth == 0) return p;
            --depth;
        }
    }
}

}  // namespace ny
