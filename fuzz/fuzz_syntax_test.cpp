// The syntax test over any formula text, with two parameters, and the statements it cuts.
#include "check/syntax_result.h"
#include "fuzz/fuzz_support.h"
#include "model/indicator.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ColorEditWnd& editor = fuzz::Editor();
    std::vector<CParam> params(2);
    params[0].m_strName = "N";
    params[1].m_strName = "M";
    editor.SetText(fuzz::Text(data, size, 12000));
    const SYNTestResult result = editor.GetTestResult(params);
    if (result.nResult == NY_TEST_OK) {
        CIndicator formula;
        ny::AppendTestedStatements(result, formula);
    }
    return 0;
}
