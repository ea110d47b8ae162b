#pragma once
// How a formula text is cut into statements, shared by the syntax test and the translation. The
// statements are returned as written (not upper-cased): each client upper-cases what it reads.

#include <string_view>
#include <vector>

#include "host/types.h"

namespace ny {

struct FormulaStatement {
    CString text;
    // Cut in front of a ";" (or behind a comment that holds one); false for a last statement
    // without a ";" and for a text that is taken whole.
    bool cutAtSemicolon = false;
};

// The statements of a text, in order. A ";" ends a statement unless it lies inside a comment
// "{...}"; blanks, CR, LF and ";" are stripped from both ends of each, and empty ones are left
// out. A text with no ";" behind its first byte is one statement, taken whole and unstripped;
// an empty text so gives one empty statement.
std::vector<FormulaStatement> CutStatements(std::string_view text);

}  // namespace ny
