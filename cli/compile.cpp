#include "cli/compile.h"

#include <vector>

#include "dialogs/formula_dialog.h"
#include "editor/color_edit_wnd.h"

namespace nyind {
namespace {

int TestParams(const std::vector<CParam>& params) {
    for (const CParam& p : params) {
        if (p.m_nMax <= p.m_nMin) return NY_TEST_PARAM_RANGE;
        if (p.m_nDefault < p.m_nMin || p.m_nDefault > p.m_nMax) return NY_TEST_PARAM_DEFAULT;
    }
    return NY_TEST_OK;
}

}  // namespace

SYNTestResult TestFormula(const CIndicator& formula) {
    std::vector<CParam> params;
    for (const CParam* p : formula.m_arParams) params.push_back(*p);
    SYNTestResult result;
    result.nResult = TestParams(params);
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
