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

SYNTestResult Coded(int code, const CString& word = CString()) {
    SYNTestResult result;
    result.nResult = code;
    result.strError = word;
    return result;
}

TEST(TestString, MessagesOfTheResultCodes) {
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(0), "MA"), "通过测试");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-1), ""),
               "当前公式: 请写公式名字.\r\n错误句: \r\n详细信息: 公式没有名字\r\n错误起始位置: 0 长度: 0\r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-2), "MA"),
               "当前公式: MA\r\n错误句: \r\n详细信息: 新建的公式，名称与已有的公式名称重名,请修改.\r\n"
               "错误起始位置: 0 长度: 0\r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-3), "MA"), "当前公式: MA\r\n无编译内容\r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-4, "FOO"), "均线"), "当前公式: 均线\r\nFOO函数名错误\r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-5, "MA"), "X"), "当前公式: X\r\nMA函数参数错误\r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-6, "MA"), "X"), "当前公式: X\r\n函数式子不完整\r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-7, "A:B:C"), "X"), "当前公式: X\r\nA:B:C表达式语法不正确\r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-8, "A:=1:=2"), "X"), "当前公式: X\r\nA:=1:=2表达式语法不正确\r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-9, "Y"), "X"), "当前公式: X\r\nY未知字符串\r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-10, "MACD"), "X"), "当前公式: X\r\n未知错误\r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-11, "C+"), "X"), "当前公式: X\r\nC+表达式错误\r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-12, "!C"), "X"),
               "当前公式: X\r\n!C不应该包含如!@#$等字符串\r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-13, "Y"), "X"),
               "当前公式: X\r\n在Y前又错误的定义一次变量，或者该变量未定义，请检查!!, \r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-14, ":C"), "X"),
               "当前公式: X\r\n在:C前定义了错误的变量类型或未定义或者特殊符号，请检查!!, \r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-21), "X"), "当前公式: X\r\n参数最小值应小于最大值!\r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-22), "X"), "当前公式: X\r\n缺省值超出范围!\r\n");
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(7), "X"), "当前公式: X\r\n未知错误\r\n");
    // The word is taken as it stands, a "%s" in it included.
    EXPECT_GBK(CFormulaDialog::GetTestString(Coded(-9, "%s%d"), "X"), "当前公式: X\r\n%s%d未知字符串\r\n");
}

TEST(TestString, TextsAreGbkBytes) {
    // "通过测试" in GBK.
    EXPECT_EQ(CFormulaDialog::GetTestString(Coded(0), ""), "\xCD\xA8\xB9\xFD\xB2\xE2\xCA\xD4");
}

}  // namespace
