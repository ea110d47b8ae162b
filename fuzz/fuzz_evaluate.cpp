// The evaluator over a fixed bar set: any text that passes the syntax test is computed.
#include "check/syntax_result.h"
#include "engine/evaluate.h"
#include "fuzz/fuzz_support.h"
#include "model/indicator.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ColorEditWnd& editor = fuzz::Editor();
    CIndicator formula;
    formula.m_strName = "FUZZ";
    auto* param = new CParam;
    param->m_strName = "N";
    param->m_nMin = 1;
    param->m_nMax = 100;
    param->m_nDefault = 5;
    formula.m_arParams.push_back(param);
    editor.SetText(fuzz::Text(data, size, 2000));
    const SYNTestResult result = editor.GetTestResult({*param});
    if (result.nResult != NY_TEST_OK) return 0;
    ny::AppendTestedStatements(result, formula);
    std::vector<CHisDay> bars = fuzz::FixedBars();
    formula.m_nPeriod = NY_PERIOD_DAY;
    ny::EvaluateOver(formula, fuzz::kStockId, bars.data(), static_cast<short>(bars.size()));
    return 0;
}
