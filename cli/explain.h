#pragma once
// A formula told in words: its source cut into statements, each with its sentence and the syntax
// test's verdict. Shared by explain, check --explain and lib show.

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "model/indicator.h"

namespace nyind {

struct ExplainedStatement {
    CString statement;  // as written, without the ";"
    CString sentence;   // as far as it can be formed, also for a statement that fails
    int code = 0;       // the syntax test's result for the statement
    CString message;    // the system's message for a failure; empty when it passed
};

// The statements of the formula's source in order. Each is tested as the syntax test tests it,
// with the formula's parameters and the names of the statements before it that passed, and
// translated; a failure does not stop the ones behind it. A source without statements gives none.
std::vector<ExplainedStatement> ExplainFormula(const CIndicator& formula);

// Each statement on its own lines, its sentence and any failure indented below it (UTF-8).
std::string ExplanationText(const std::vector<ExplainedStatement>& statements);
// [{"statement", "sentence", "code", "message"}]
nlohmann::ordered_json ExplanationJson(const std::vector<ExplainedStatement>& statements);

}  // namespace nyind
