#pragma once
// A script editor with the catalog loaded and the lexer module opened, for the tests of the
// lexer and the syntax test.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "catalog/function_manager.h"
#include "check/lexical.h"
#include "editor/color_edit_wnd.h"
#include "engine/evaluate.h"
#include "host/encoding.h"
#include "check/syntax_result.h"
#include "model/library.h"
#include "tests/engine/formula_fixture.h"

namespace nytest {

// Fills the global catalog once, as the host does at start.
inline void LoadGlobalCatalog() {
    static const bool loaded = (g_MyFunsMng.LoadFun(), true);
    (void)loaded;
}

// An editor ready to test formulas, as creating it in the dialog leaves it.
class CheckTest : public ::testing::Test {
protected:
    void SetUp() override {
        LoadGlobalCatalog();
        editor.PrepareLanguage();
        ASSERT_NE(editor.m_pfnLexical, nullptr) << "the lexer module did not open";
    }

    SYNTestResult Test(const std::string& text, const std::vector<CParam>& params = {}) {
        editor.SetText(text);
        return editor.GetTestResult(params);
    }

    // The tokens of a text as (code, text) pairs, for readable comparisons.
    std::vector<std::pair<int, std::string>> Lex(const std::string& text, bool paint = false) {
        CMyLexicalAnaly sink;
        if (paint) editor.m_pfnPaintLexical(text.c_str(), &sink, 1);
        else editor.m_pfnLexical(text.c_str(), &sink);
        std::vector<std::pair<int, std::string>> tokens;
        for (int i = 0; i < sink.GetTokenCount(); ++i) {
            const LEX_TOKEN token = sink.GetToken(static_cast<unsigned>(i));
            tokens.emplace_back(token.nType, text.substr(static_cast<size_t>(token.nPos),
                                                         static_cast<size_t>(token.nLen)));
        }
        return tokens;
    }

    ColorEditWnd editor;
};

// Builds a formula from the statements a test passed, as the formula dialog does on OK, and
// evaluates it over the bars.
inline void RunTested(const SYNTestResult& result, const std::vector<CParam>& params,
                      std::vector<CHisDay>& bars, CIndicator& formula) {
    for (const CParam& param : params) formula.m_arParams.push_back(new CParam(param));
    ny::AppendTestedStatements(result, formula);
    ny::EvaluateOver(formula, formula.m_lStockID, bars.data(), static_cast<short>(bars.size()));
}

}  // namespace nytest

// Compares GBK texts byte for byte and shows them readable when they differ.
#define EXPECT_GBK(actual, expected)                                                    \
    EXPECT_EQ(std::string(actual), std::string(expected))                               \
        << "actual:   " << ny::GbkToUtf8(actual) << "\nexpected: " << ny::GbkToUtf8(expected)

namespace nytest {

// A formula MACD of kind 0 with three parameters and the lines DIF, DEA, MACD, in the library for
// the life of the object, so that words can refer to it.
class LibraryMacd {
public:
    LibraryMacd() {
        auto macd = MakeFormula({{"DIF", "C"}, {"DEA", "C"}, {"MACD", "C"}}, "MACD", NY_KIND_INDICATOR);
        macd->m_strTitle = "平滑异同平均";
        for (const char* name : {"SHORT", "LONG", "MID"}) AddParam(*macd, name, 0);
        g_MyAddIndicator(macd.release());
    }
    ~LibraryMacd() { g_MyRemoveIndicatorByPos("MACD", NY_KIND_INDICATOR); }
    LibraryMacd(const LibraryMacd&) = delete;
    LibraryMacd& operator=(const LibraryMacd&) = delete;
};

}  // namespace nytest
