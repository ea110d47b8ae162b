// The syntax test over whole texts: statements cut at semicolons, names becoming known, and the
// checks of the expression walk. Single statements and their codes are the table of texts_test.cpp.

#include "check/syntax_result.h"
#include "tests/check/check_fixture.h"

namespace {

using nytest::CheckTest;

TEST_F(CheckTest, StatementsAreCutAtSemicolonsAndNamesBecomeKnown) {
    const SYNTestResult result = Test("A:=C+O;\r\n{second}B:A/2,COLORBLUE;;  ;D:B");
    ASSERT_EQ(result.nResult, NY_TEST_OK) << ny::GbkToUtf8(result.strError);
    ASSERT_EQ(result.arItems.size(), 3u);
    EXPECT_EQ(result.strFormula, "A:=C+O; \r\n{second}B:A/2,COLORBLUE;;  ;D:B") << "the editor's lines joined";
    EXPECT_EQ(result.arItems[0].strExpress, "C+O");
    EXPECT_EQ(result.arItems[1].strName, "B");
    EXPECT_EQ(result.arItems[1].strExpress, "A/2");
    EXPECT_EQ(result.arItems[1].lColor, 0xFF0000);
    EXPECT_EQ(result.arItems[2].strName, "D");
    EXPECT_EQ(result.arItems[2].strExpress, "B");
    EXPECT_EQ(editor.m_arIdentifiers, (std::vector<CString>{"A", "B", "D"}));
    // An unnamed output adds no name.
    Test("VOL,VOLSTICK,COLORRED");
    EXPECT_TRUE(editor.m_arIdentifiers.empty());
}

TEST_F(CheckTest, TheTextIsCutAroundCommentsAsWritten) {
    const SYNTestResult result = Test("A:C{X;Y}+1;");
    EXPECT_EQ(result.nResult, NY_TEST_BAD_EXPRESSION);
    EXPECT_EQ(result.strError, "+1");
    ASSERT_EQ(result.arItems.size(), 1u);
    EXPECT_EQ(result.arItems[0].strExpress, "C{X;Y}");
    // A failing statement stops the test; the names before it stay known.
    const SYNTestResult stopped = Test("A:C;B:FOO(1);D:O");
    EXPECT_EQ(stopped.nResult, NY_TEST_BAD_FUNCTION);
    EXPECT_EQ(stopped.arItems.size(), 1u);
    EXPECT_EQ(editor.m_arIdentifiers, (std::vector<CString>{"A"}));
}

TEST_F(CheckTest, PostfixAndParenthesisChecks) {
    using Items = std::vector<AfPressItem>;
    const AfPressItem operand{NY_AF_OPERAND, "C", 0};
    const AfPressItem call{NY_AF_CALL, "MA", 0};
    const AfPressItem plus{NY_AF_OPERATOR, "", NY_TOKEN_PLUS};
    EXPECT_EQ(ColorEditWnd::IsValidAfExpress(Items{operand}), 1);
    EXPECT_EQ(ColorEditWnd::IsValidAfExpress(Items{operand, call, plus}), 1);
    EXPECT_EQ(ColorEditWnd::IsValidAfExpress(Items{operand, plus, call}), 0);
    EXPECT_EQ(ColorEditWnd::IsValidAfExpress(Items{operand, call}), 0);
    EXPECT_EQ(ColorEditWnd::IsValidAfExpress(Items{}), 0);
    EXPECT_EQ(ColorEditWnd::CheckLParen({OPITEM{NY_TOKEN_PLUS, 2, 2}}), 0);
    EXPECT_EQ(ColorEditWnd::CheckLParen({OPITEM{NY_TOKEN_LPAREN, 2, 0}, OPITEM{NY_TOKEN_PLUS, 2, 2}}), 1);
}

}  // namespace
