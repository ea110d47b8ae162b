// The syntax test: statement forms, names, argument counts, attributes and the expression walk.

#include "tests/check/check_fixture.h"

namespace {

using nytest::CheckTest;

class SyntaxTest : public CheckTest {
protected:
    // The code of a one-statement text, with the word the message would name.
    std::pair<int, std::string> Code(const std::string& text, const std::vector<CParam>& params = {}) {
        const SYNTestResult result = Test(text, params);
        return {result.nResult, result.strError};
    }
    // The single item of a passing text.
    SYNLineItem Item(const std::string& text) {
        const SYNTestResult result = Test(text);
        EXPECT_EQ(result.nResult, 0) << text << " -> " << ny::GbkToUtf8(result.strError);
        EXPECT_EQ(result.arItems.size(), 1u) << text;
        return result.arItems.empty() ? SYNLineItem() : result.arItems.front();
    }
    using Result = std::pair<int, std::string>;
};

TEST_F(SyntaxTest, StatementFormsAndTheirItems) {
    const SYNLineItem assign = Item("X := 1");
    EXPECT_EQ(assign.strName, "X");
    EXPECT_EQ(assign.strExpress, " 1");
    EXPECT_EQ(assign.nType, 0);
    EXPECT_EQ(assign.lColor, -1);
    EXPECT_EQ(assign.nWidth, 1);

    const SYNLineItem output = Item("ma5:ma(close,5),colorff8000,linethick3;");
    EXPECT_EQ(output.strName, "MA5");
    EXPECT_EQ(output.strExpress, "MA(CLOSE,5)");
    EXPECT_EQ(output.nType, 1);
    EXPECT_EQ(output.lColor, 0xFF8000);  // digits read blue, green, red
    EXPECT_EQ(output.nWidth, 3);

    const SYNLineItem unnamed = Item("VOL,VOLSTICK,COLORRED");
    EXPECT_EQ(unnamed.strName, "");
    EXPECT_EQ(unnamed.strExpress, "VOL");
    EXPECT_EQ(unnamed.nType, 2);
    EXPECT_EQ(unnamed.lColor, 0x0000FF);
    EXPECT_TRUE(editor.m_arIdentifiers.empty());
}

TEST_F(SyntaxTest, StatementsAreCutAtSemicolonsAndNamesBecomeKnown) {
    const SYNTestResult result = Test("A:=C+O;\r\n{second}B:A/2,COLORBLUE;;  ;D:B");
    ASSERT_EQ(result.nResult, 0) << ny::GbkToUtf8(result.strError);
    ASSERT_EQ(result.arItems.size(), 3u);
    EXPECT_EQ(result.strFormula, "A:=C+O; \r\n{second}B:A/2,COLORBLUE;;  ;D:B") << "the editor's lines joined";
    EXPECT_EQ(result.arItems[0].strExpress, "C+O");
    EXPECT_EQ(result.arItems[1].strName, "B");
    EXPECT_EQ(result.arItems[1].strExpress, "A/2");
    EXPECT_EQ(result.arItems[1].lColor, 0xFF0000);
    EXPECT_EQ(result.arItems[2].strName, "D");
    EXPECT_EQ(result.arItems[2].strExpress, "B");
    EXPECT_EQ(editor.m_arIdentifiers, (std::vector<CString>{"A", "B", "D"}));
}

TEST_F(SyntaxTest, AttributesOfOutputs) {
    EXPECT_EQ(Item("A:C,NODRAW").nWidth, 0);
    EXPECT_EQ(Item("A:C,NODRAW").nType, 32);
    // Without a name NODRAW sets the style only.
    EXPECT_EQ(Item("C,NODRAW").nWidth, 1);
    EXPECT_EQ(Item("C,NODRAW").nType, 32);
    EXPECT_EQ(Item("A:C,DOTLINE,LINETHICK9").nType, 13);
    EXPECT_EQ(Item("A:C,DOTLINE,LINETHICK9").nWidth, 9);
    // An invalid hexadecimal digit ends its pair with what was read.
    EXPECT_EQ(Item("A:C,COLOR1G00A0").lColor, 0x0100A0);
    // LINETHICK without a digit takes whatever byte stands behind it: ',' - '0', or the end.
    EXPECT_EQ(Item("A:C,LINETHICK,COLORRED").nWidth, ',' - '0');
    EXPECT_EQ(Item("A:C,LINETHICK").nWidth, -'0');
    // An assignment keeps attribute words in its expression and draws nothing.
    const SYNLineItem assign = Item("X:=C,COLORRED");
    EXPECT_EQ(assign.strExpress, "C,COLORRED");
    EXPECT_EQ(assign.lColor, -1);
    EXPECT_EQ(assign.nType, 0);
}

TEST_F(SyntaxTest, CommentsAndUpperCase) {
    const SYNLineItem comment = Item("{只是注释}");
    EXPECT_EQ(comment.strName, "");
    EXPECT_EQ(comment.strExpress, "{只是注释}");
    EXPECT_EQ(Item("{均线} ma5:ma(c,5)").strName, "MA5");
    EXPECT_EQ(Item("A:C{收盘}").strExpress, "C{收盘}");
    // Strings are upper-cased too; second bytes of double-byte characters are not letters.
    EXPECT_EQ(Item("drawtext(c>o,l,'up')").strExpress, "DRAWTEXT(C>O,L,'UP')");
    EXPECT_EQ(Item("漲:c>o").strName, "漲");
    // A ";" in a comment does not end the statement.
    EXPECT_EQ(Item("A:C{X;Y};").strExpress, "C{X;Y}");
    // A comment above 256 bytes is a token too long.
    EXPECT_EQ(Code("A:C{" + std::string(300, 'x') + "}"), (Result{-9, ""}));
}

TEST_F(SyntaxTest, UnknownWordsAndNames) {
    EXPECT_EQ(Code("X := Y"), (Result{-13, "Y"}));
    EXPECT_EQ(Code("Y"), (Result{-9, "Y"}));
    EXPECT_EQ(Code("A:MA(C,Q)"), (Result{-9, "Q"}));
    // A name defined twice: assignments pass, outputs fail since the second name is known.
    EXPECT_EQ(Test("X:=1;X:=2").nResult, 0);
    EXPECT_EQ(Code("A:C;A:O"), (Result{-7, "A:O"}));
    EXPECT_EQ(Code("CLOSE:C"), (Result{-7, "CLOSE:C"}));
    // Parameters are known words, whatever their case.
    const std::vector<CParam> params = {nytest::MakeParam("n", 1, 100, 5)};
    EXPECT_EQ(Code("ma(c,n)", params), (Result{0, ""}));
    EXPECT_EQ(Code("N:C", params), (Result{-7, "N:C"}));
}

TEST_F(SyntaxTest, CallsAndArgumentCounts) {
    EXPECT_EQ(Code("ABS()"), (Result{-11, "ABS()"}));
    EXPECT_EQ(Code("MA()"), (Result{-5, "MA"}));
    EXPECT_EQ(Code("MA(C,5,1)"), (Result{-5, "MA"}));
    EXPECT_EQ(Code("FOO(C)"), (Result{-4, "FOO"}));
    EXPECT_EQ(Code("A:MA(C,5"), (Result{-6, ""}));
    EXPECT_EQ(Code("IF(C>O,MA(C,(5+5)),REF(C,1))"), (Result{0, ""}));
    // Argument-less functions are values alone; written with an argument, the parentheses are a
    // value of their own.
    EXPECT_EQ(Code("A:ISLASTBAR"), (Result{0, ""}));
    EXPECT_EQ(Code("A:NOT(C>O)"), (Result{0, ""}));
    EXPECT_EQ(Code("A:FINANCE(7)/10000"), (Result{0, ""}));
    // Inside a call every argument must be one value.
    EXPECT_EQ(Code("A:MA(C O,5)"), (Result{-11, "MA(C O,5)"}));
}

TEST_F(SyntaxTest, LibraryIndicators) {
    nytest::LibraryMacd macd;
    EXPECT_EQ(Code("A:MACD(12,26)"), (Result{0, ""}));
    EXPECT_EQ(Code("A:MACD(12,26,9,1)"), (Result{-10, "MACD"}));
    EXPECT_EQ(Code("A:MA(MACD.DIF,5)"), (Result{0, ""}));
    // At the top level a reference leaves its name pending behind the marker.
    EXPECT_EQ(Code("A:MACD.DIF"), (Result{-9, "MACD.DIF"}));
}

TEST_F(SyntaxTest, MarkersInTheWrongPlace) {
    EXPECT_EQ(Code("A:B:C").first, -7);
    EXPECT_EQ(Code(":C"), (Result{-14, ":C"}));
    EXPECT_EQ(Code("5:C"), (Result{-14, "5:C"}));
    EXPECT_EQ(Code("X:=1:=2"), (Result{-8, "X:=1:=2"}));
    EXPECT_EQ(Code(":=1"), (Result{-7, ":=1"}));
    EXPECT_EQ(Code("A:MA(C:=1,5)").first, -7);
    EXPECT_EQ(Code("A:"), (Result{-11, ""}));
}

TEST_F(SyntaxTest, SignsAndOperators) {
    EXPECT_EQ(Code("-C").first, 0);
    EXPECT_EQ(Code("A:MA(-C,5)").first, 0);
    EXPECT_EQ(Code("A:(-1)*C").first, 0);
    EXPECT_EQ(Code("A:2*(-1)"), (Result{-11, "2*(-1)"}));
    EXPECT_EQ(Code("A:+C"), (Result{-11, "+C"}));
    // Only behind "<" may a minus follow an operator.
    EXPECT_EQ(Code("A:C<-1").first, 0);
    EXPECT_EQ(Code("A:C>-1").first, -11);
    EXPECT_EQ(Code("A:C*-1").first, -11);
    EXPECT_EQ(Code("A:C+").first, -11);
    EXPECT_EQ(Code("A:(C+O").first, -11);
    EXPECT_EQ(Code("A:C+O)").first, -11);
    EXPECT_EQ(Code("A:C>O && C<H || C=O AND C!=H OR C>=O").first, 0);
    // A comma at the top level separates nothing: two values fail.
    EXPECT_EQ(Code("A:C,O"), (Result{-11, "C,O"}));
}

TEST_F(SyntaxTest, CharactersOutsideTheLanguage) {
    EXPECT_EQ(Code("A:!C"), (Result{-12, "A:!C"}));
    EXPECT_EQ(Code("A:C>O,'#'"), (Result{-12, "A:C>O,'#'"}));
    EXPECT_EQ(Code("A:C，O"), (Result{-12, "A:C，O"}));
    // In text functions any text goes, in DRAWTEXT only in the third argument.
    EXPECT_EQ(Code("DRAWTEXT(C>O,L,'买入#1')").first, 0);
    EXPECT_EQ(Code("DRAWTEXT(C>O,'#',L)").first, -12);
    EXPECT_EQ(Code("A:STRCAT('#','$')").first, 0);
    // Any word is an operand of a text function.
    EXPECT_EQ(Code("A:STRCAT(FOO,BAR)").first, 0);
    // A ";" inside quotes ends the statement all the same.
    EXPECT_EQ(Code("DRAWTEXT(C>O,L,'A;B')").first, -6);
    // A text beginning with ";" is one statement, and its ";" is no character of a statement.
    EXPECT_EQ(Code(";A:C"), (Result{-12, ";A:C"}));
}

TEST_F(SyntaxTest, TheTextIsCutAroundCommentsAsWritten) {
    const SYNTestResult result = Test("A:C{X;Y}+1;");
    EXPECT_EQ(result.nResult, -11);
    EXPECT_EQ(result.strError, "+1");
    ASSERT_EQ(result.arItems.size(), 1u);
    EXPECT_EQ(result.arItems[0].strExpress, "C{X;Y}");
    // A failing statement stops the test; the names before it stay known.
    const SYNTestResult stopped = Test("A:C;B:FOO(1);D:O");
    EXPECT_EQ(stopped.nResult, -4);
    EXPECT_EQ(stopped.arItems.size(), 1u);
    EXPECT_EQ(editor.m_arIdentifiers, (std::vector<CString>{"A"}));
}

TEST_F(SyntaxTest, EmptyTextsAndFixedSizes) {
    EXPECT_EQ(Code("").first, -3);
    EXPECT_EQ(Code("  ;\r\n; ").first, -3);
    std::string longExpression = "A:C";
    while (longExpression.size() < 520) longExpression += "+C";
    EXPECT_EQ(Code(longExpression).first, -11);
    EXPECT_EQ(Code(std::string(33, 'N') + ":C").first, -7);
    EXPECT_EQ(Code(std::string(32, 'N') + ":C").first, 0);
}

TEST_F(SyntaxTest, PostfixAndParenthesisChecks) {
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
