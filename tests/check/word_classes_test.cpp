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

TEST_F(CheckTest, IndicatorNamesAreCutAtTheLastFullStop) {
    nytest::LibraryMacd macd;
    char kind = 0;
    CString indicator, line;
    EXPECT_NE(editor.IsIndicatorName("macd.dif", kind, indicator, line), nullptr);
    EXPECT_EQ(kind, 1);
    EXPECT_EQ(indicator, "MACD");
    EXPECT_EQ(line, "DIF");
    // Any line name passes as long as the indicator exists.
    EXPECT_NE(editor.IsIndicatorName("MACD.NOLINE", kind, indicator, line), nullptr);
    EXPECT_EQ(line, "NOLINE");
    EXPECT_EQ(editor.IsIndicatorName("X.MACD.DIF", kind, indicator, line), nullptr);
    EXPECT_EQ(indicator, "X.MACD");

    EXPECT_EQ(editor.IsIndicatorName("MACD.", kind, indicator, line), nullptr);
    EXPECT_EQ(kind, 2);
    EXPECT_EQ(indicator, "MACD");

    EXPECT_NE(editor.IsIndicatorName("MACD", kind, indicator, line), nullptr);
    EXPECT_EQ(kind, 2);
    EXPECT_EQ(editor.IsIndicatorName("macd", kind, indicator, line), nullptr);
    EXPECT_EQ(indicator, "macd");
    // A word whose only full stop is its first byte is looked up whole.
    EXPECT_EQ(editor.IsIndicatorName(".MACD", kind, indicator, line), nullptr);
    EXPECT_EQ(indicator, ".MACD");
}

TEST_F(CheckTest, ColourClasses) {
    EXPECT_EQ(editor.GetColor(0), 0x000000);
    EXPECT_EQ(editor.GetColor(1), 0x0080FF);
    EXPECT_EQ(editor.GetColor(2), 0x009600);
    EXPECT_EQ(editor.GetColor(3), 0xC08000);
    EXPECT_EQ(editor.GetColor(29), 0x000000);
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
