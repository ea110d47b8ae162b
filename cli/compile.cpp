#include "cli/compile.h"

#include <vector>

#include "dialogs/formula_dialog.h"
#include "editor/color_edit_wnd.h"

namespace nyind {
SYNTestResult TestFormula(const CIndicator& formula) {
    std::vector<CParam> params;
    for (const CParam* p : formula.m_arParams) params.push_back(*p);
    SYNTestResult result;
    result.nResult = CFormulaDialog::TestParam(params);
    if (result.nResult != NY_TEST_OK) return result;
    ColorEditWnd editor;
    editor.PrepareLanguage();
    editor.SetText(formula.m_strSource);
    return editor.GetTestResult(params);
}

SYNTestResult CompileFormula(CIndicator& formula, CString* message) {
    SYNTestResult result = TestFormula(formula);
    *message = CFormulaDialog::GetTestString(result, formula.m_strName);
    if (result.nResult == NY_TEST_OK) {
        formula.DeleteExpression();
        ny::AppendTestedStatements(result, formula);
    }
    return result;
}

}  // namespace nyind
