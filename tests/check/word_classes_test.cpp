// The word classes of the editor, the lexer module's opening, and the texts of the results.

#include "dialogs/formula_dialog.h"
#include "tests/check/check_fixture.h"

namespace {

using nytest::CheckTest;

TEST_F(CheckTest, KeywordsAreFortyTwoAndExact) {
    ASSERT_EQ(editor.m_arKeyWords.size(), 42u);
    EXPECT_EQ(editor.m_arKeyWords.front(), "OPEN");
    EXPECT_EQ(editor.m_arKeyWords[4], "H");
    EXPECT_EQ(editor.m_arKeyWords.back(), "TOTALBARSCOUNT");
    editor.LoadKeyWord();
    EXPECT_EQ(editor.m_arKeyWords.size(), 42u);

    EXPECT_TRUE(editor.IsKeyWord("CLOSE"));
    EXPECT_TRUE(editor.IsKeyWord(" \tC"));
    EXPECT_FALSE(editor.IsKeyWord("close"));
    EXPECT_FALSE(editor.IsKeyWord("CLOSE "));
    EXPECT_FALSE(editor.IsKeyWord("MA"));
}

TEST_F(CheckTest, FunctionParameterAndIdentifierNames) {
    EXPECT_TRUE(editor.IsFunName("ma"));
    EXPECT_TRUE(editor.IsFunName("FINANCE(7)"));
    EXPECT_FALSE(editor.IsFunName("FINANCE"));

    const std::vector<CParam> params = {nytest::MakeParam("n", 1, 100, 5)};
    EXPECT_TRUE(editor.IsParamName(params, " N"));
    EXPECT_TRUE(editor.IsParamName(params, "n"));
    EXPECT_FALSE(editor.IsParamName(params, "N1"));
    EXPECT_FALSE(editor.IsParamName({}, "N"));

    editor.m_arIdentifiers = {"DIF"};
    EXPECT_TRUE(editor.IsIdentifyName(" DIF\t"));
    EXPECT_FALSE(editor.IsIdentifyName("dif"));
}

// A word, whether it names a library formula, and the kind, indicator and line it is cut into.
TEST_F(CheckTest, IndicatorNamesAreCutAtTheLastFullStop) {
    nytest::LibraryMacd macd;
    const struct {
        const char* word;
        bool found;
        char kind;
        const char* indicator;
        const char* line;
    } rows[] = {
        {"macd.dif", true, 1, "MACD", "DIF"},
        {"MACD.NOLINE", true, 1, "MACD", "NOLINE"},  // any line name passes while the indicator exists
        {"X.MACD.DIF", false, 1, "X.MACD", "DIF"},
        {"MACD.", false, 2, "MACD", nullptr},
        {"MACD", true, 2, "MACD", nullptr},
        {"macd", false, 2, "macd", nullptr},
        {".MACD", false, 2, ".MACD", nullptr},  // a full stop as the first byte: looked up whole
    };
    for (const auto& row : rows) {
        char kind = 0;
        CString indicator, line;
        EXPECT_EQ(editor.IsIndicatorName(row.word, kind, indicator, line) != nullptr, row.found) << row.word;
        EXPECT_EQ(kind, row.kind) << row.word;
        EXPECT_EQ(indicator, row.indicator) << row.word;
        if (row.line != nullptr) {
            EXPECT_EQ(line, row.line) << row.word;
        }
    }
}

TEST(LexicalModule, AMissingModuleLeavesTheEntryPointsNullAndTheTestRefuses) {
    nytest::LoadGlobalCatalog();
    ColorEditWnd editor;
    editor.LoadKeyWord();
    EXPECT_FALSE(editor.OpenLexical("/nonexistent/libny_lexical.so"));
    EXPECT_EQ(editor.m_hLexical, nullptr);
    EXPECT_EQ(editor.m_pfnLexical, nullptr);
    EXPECT_EQ(editor.m_pfnPaintLexical, nullptr);

    editor.SetText("A:C;");
    const SYNTestResult result = editor.GetTestResult({});
    EXPECT_EQ(result.nResult, NY_TEST_NO_LEXER);
    EXPECT_TRUE(result.arItems.empty());
    EXPECT_GBK(CFormulaDialog::GetTestString(result, "KDJ"), "当前公式: KDJ\r\n未知错误\r\n");
    EXPECT_EQ(editor.GetLineTestResult("A:C", {}).nResult, NY_TEST_NO_LEXER);
    EXPECT_EQ(editor.CheckLineExpress("C", {}).nResult, NY_TEST_NO_LEXER);
    // Empty text is reported as such even without the module.
    editor.SetText("");
    EXPECT_EQ(editor.GetTestResult({}).nResult, NY_TEST_EMPTY);
}

TEST(LexicalModule, OpensFromTheBuildTreeAndCloses) {
    const std::vector<CString> paths = ColorEditWnd::LexicalModulePaths();
    ASSERT_FALSE(paths.empty());
    EXPECT_EQ(paths.back(), NY_BINARY_DIR "/check/lexer/libny_lexical.so");
    ColorEditWnd editor;
    ASSERT_TRUE(editor.OpenLexical(paths.back()));
    EXPECT_NE(editor.m_pfnLexical, nullptr);
    EXPECT_NE(editor.m_pfnPaintLexical, nullptr);
    editor.CloseLexical();
    EXPECT_EQ(editor.m_hLexical, nullptr);
    EXPECT_EQ(editor.m_pfnLexical, nullptr);
}

TEST(TestString, TextsAreGbkBytes) {
    // "通过测试" in GBK.
    EXPECT_EQ(CFormulaDialog::GetTestString(SYNTestResult(), ""), "\xCD\xA8\xB9\xFD\xB2\xE2\xCA\xD4");
}

}  // namespace
