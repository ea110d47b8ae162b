#pragma once
// The way from a formula's source to its statements, as the formula dialog goes it: the
// parameters are checked, the syntax test cuts the text, and a passed test becomes the formula's
// statements.

#include "check/syntax_result.h"
#include "model/indicator.h"

namespace nyind {

// Tests the parameters (smallest below largest, default between them) and then the source of
// `formula` with its parameters. The result's code is 0 when both pass.
SYNTestResult TestFormula(const CIndicator& formula);

// Tests `formula` and, if it passes, replaces its statements with those of the test. Returns the
// result; `message` receives the system's text for it, with the formula's name.
SYNTestResult CompileFormula(CIndicator& formula, CString* message);

}  // namespace nyind
