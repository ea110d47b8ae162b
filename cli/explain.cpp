#include "cli/explain.h"

#include "check/gbk_text.h"
#include "check/statement_cutting.h"
#include "check/translate.h"
#include "cli/context.h"
#include "dialogs/formula_dialog.h"
#include "editor/color_edit_wnd.h"

namespace nyind {
namespace {

// A UTF-8 text with `first` in front of its first line and `rest` in front of the others.
std::string Indented(const std::string& text, const std::string& first, const std::string& rest) {
    std::string out = first;
    for (char c : text) {
        out += c;
        if (c == '\n') out += rest;
    }
    return out;
}

std::string WithoutTrailingLineEnds(std::string text) {
    while (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
}

}  // namespace

std::vector<ExplainedStatement> ExplainFormula(const CIndicator& formula) {
    std::vector<CParam> params;
    for (const CParam* p : formula.m_arParams) params.push_back(*p);
    ColorEditWnd editor;
    editor.PrepareLanguage();
    ny::FormulaTranslator translator(editor.m_pfnLexical);

    std::vector<ExplainedStatement> explained;
    if (ny::TrimBytes(formula.m_strSource, " \t\r\n;").empty()) return explained;
    for (const ny::FormulaStatement& statement : ny::CutStatements(formula.m_strSource)) {
        const CString upper = ny::UpperGbk(statement.text);
        const SYNTestLineResult line = editor.GetLineTestResult(upper.c_str(), params);
        SYNTestResult result;
        result.nResult = line.nResult;
        result.strError = line.strError;
        explained.push_back({CString(ny::TrimBytes(statement.text, ny::kWhiteSpace)), translator.MeasureForumaleEx(upper.c_str()), line.nResult,
                             line.nResult == NY_TEST_OK ? CString()
                                                        : CFormulaDialog::GetTestString(result, formula.m_strName)});
    }
    return explained;
}

std::string ExplanationText(const std::vector<ExplainedStatement>& statements) {
    std::string out;
    int number = 0;
    for (const ExplainedStatement& s : statements) {
        const std::string label = std::to_string(++number) + ". ";
        const std::string under(label.size(), ' ');
        out += Indented(ToTerminal(s.statement), label, under) + "\n";
        out += Indented(ToTerminal(s.sentence), under + "= ", under + "  ") + "\n";
        if (s.code != NY_TEST_OK)
            out += Indented(WithoutTrailingLineEnds(ToTerminal(s.message)), under + "! ", under + "  ") + "\n";
    }
    return out;
}

nlohmann::ordered_json ExplanationJson(const std::vector<ExplainedStatement>& statements) {
    nlohmann::ordered_json out = nlohmann::ordered_json::array();
    for (const ExplainedStatement& s : statements)
        out.push_back({{"statement", ToTerminal(s.statement)},
                       {"sentence", ToTerminal(s.sentence)},
                       {"code", s.code},
                       {"message", WithoutTrailingLineEnds(ToTerminal(s.message))}});
    return out;
}

}  // namespace nyind
