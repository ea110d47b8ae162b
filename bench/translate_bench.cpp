// The translation that the formula dialog runs after every keystroke, over a formula of 500
// statements: it has to take well under the time between two keystrokes (about 50 ms at a fast
// typist's 20 keys a second).

#include <benchmark/benchmark.h>

#include <string>

#include "catalog/function_manager.h"
#include "editor/color_edit_wnd.h"

namespace {

// 500 statements of the shapes people write: nested calls with reordered arguments, operators,
// AND and OR, style keywords, one of them unclosed at the end as while typing.
std::string LongFormula() {
    std::string text;
    for (int i = 0; i < 500; ++i) {
        const std::string n = std::to_string(i % 60 + 2);
        switch (i % 4) {
            case 0: text += "A" + std::to_string(i) + ":=REF(MA(C," + n + "),1)>O AND EMA(V," + n + ")>0;\n"; break;
            case 1: text += "B" + std::to_string(i) + ":CROSS(MA(C,5),REF(HHV(H," + n + "),1)),COLORRED;\n"; break;
            case 2: text += "C" + std::to_string(i) + ":IF(C>O OR C<REF(C,1),SMA(C," + n + ",1),ZIG(3," + n + "));\n"; break;
            default: text += "D" + std::to_string(i) + ":COUNT((C+O)/2>MA(C," + n + ")," + n + "),LINETHICK2;\n"; break;
        }
    }
    return text + "E:MA(REF(C,1";
}

void BM_TranslateLongFormula(benchmark::State& state) {
    g_MyFunsMng.LoadFun();
    ColorEditWnd editor;
    editor.PrepareLanguage();
    if (editor.m_pfnLexical == nullptr) {
        state.SkipWithError("the lexer module did not open");
        return;
    }
    const std::string text = LongFormula();
    editor.SetText(text);
    size_t sentenceBytes = 0;
    for (auto _ : state) {
        const CString sentences = editor.GetTranslate();
        sentenceBytes = sentences.size();
        benchmark::DoNotOptimize(sentences.data());
    }
    state.counters["formula_bytes"] = static_cast<double>(text.size());
    state.counters["sentence_bytes"] = static_cast<double>(sentenceBytes);
}
BENCHMARK(BM_TranslateLongFormula)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
