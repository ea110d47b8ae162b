// The syntax test: statement forms, names, argument counts, attributes and the expression walk.

#include "check/syntax_result.h"
#include "tests/check/check_fixture.h"

namespace {

using nytest::CheckTest;

// One statement that passes, and the item it gives.
TEST_F(CheckTest, ItemsOfStatements) {
    const struct {
        const char* text;
        const char* name;
        const char* express;
        int type, color, width;
    } rows[] = {
        {"X := 1", "X", " 1", 0, -1, 1},
        {"ma5:ma(close,5),colorff8000,linethick3;", "MA5", "MA(CLOSE,5)", 1, 0xFF8000, 3},  // blue, green, red
        {"VOL,VOLSTICK,COLORRED", "", "VOL", 2, 0x0000FF, 1},
        {"A:C,NODRAW", "A", "C", 32, -1, 0},
        // Without a name NODRAW sets the style only.
        {"C,NODRAW", "", "C", 32, -1, 1},
        {"A:C,DOTLINE,LINETHICK9", "A", "C", 13, -1, 9},
        // An invalid hexadecimal digit ends its pair with what was read.
        {"A:C,COLOR1G00A0", "A", "C", 1, 0x0100A0, 1},
        // LINETHICK without a digit takes whatever byte stands behind it: ',' - '0', or the end.
        {"A:C,LINETHICK,COLORRED", "A", "C", 1, 0x0000FF, ',' - '0'},
        {"A:C,LINETHICK", "A", "C", 1, -1, -'0'},
        // An assignment keeps attribute words in its expression and draws nothing.
        {"X:=C,COLORRED", "X", "C,COLORRED", 0, -1, 1},
        // Comments stay with the statement; text is upper-cased, strings too, but not the second
        // bytes of double-byte characters.
        {"{只是注释}", "", "{只是注释}", 1, -1, 1},
        {"{均线} ma5:ma(c,5)", "MA5", "MA(C,5)", 1, -1, 1},
        {"A:C{收盘}", "A", "C{收盘}", 1, -1, 1},
        {"drawtext(c>o,l,'up')", "", "DRAWTEXT(C>O,L,'UP')", 1, -1, 1},
        {"漲:c>o", "漲", "C>O", 1, -1, 1},
        // A ";" in a comment does not end the statement.
        {"A:C{X;Y};", "A", "C{X;Y}", 1, -1, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const SYNTestResult result = Test(row.text);
        ASSERT_EQ(result.nResult, NY_TEST_OK) << ny::GbkToUtf8(result.strError);
        ASSERT_EQ(result.arItems.size(), 1u);
        const SYNLineItem& item = result.arItems.front();
        EXPECT_EQ(item.strName, row.name);
        EXPECT_EQ(item.strExpress, row.express);
        EXPECT_EQ(item.nType, row.type);
        EXPECT_EQ(item.lColor, row.color);
        EXPECT_EQ(item.nWidth, row.width);
    }
    // An unnamed output adds no name.
    Test("VOL,VOLSTICK,COLORRED");
    EXPECT_TRUE(editor.m_arIdentifiers.empty());
}

// The result code of a text, and the word its message names (nullptr: not checked).
TEST_F(CheckTest, CodesOfTexts) {
    std::string longExpression = "A:C";
    while (longExpression.size() < 520) longExpression += "+C";
    const std::string longComment = "A:C{" + std::string(300, 'x') + "}";
    const std::string name33 = std::string(33, 'N') + ":C", name32 = std::string(32, 'N') + ":C";
    const struct {
        std::string text;
        int code;
        const char* word;
    } rows[] = {
        {"", NY_TEST_EMPTY, nullptr},
        {"  ;\r\n; ", NY_TEST_EMPTY, nullptr},
        // A token above 256 bytes, a name above 32, an expression above 511.
        {longComment, NY_TEST_UNKNOWN_WORD, ""},
        {longExpression, NY_TEST_BAD_EXPRESSION, nullptr},
        {name33, NY_TEST_BAD_MARKER, nullptr},
        {name32, NY_TEST_OK, nullptr},
        // Unknown words and names defined twice: assignments pass, outputs fail since the second
        // name is known; so do built-in words.
        {"X := Y", NY_TEST_SECOND_UNKNOWN, "Y"},
        {"Y", NY_TEST_UNKNOWN_WORD, "Y"},
        {"A:MA(C,Q)", NY_TEST_UNKNOWN_WORD, "Q"},
        {"X:=1;X:=2", NY_TEST_OK, nullptr},
        {"A:C;A:O", NY_TEST_BAD_MARKER, "A:O"},
        {"CLOSE:C", NY_TEST_BAD_MARKER, "CLOSE:C"},
        // Calls and argument counts.
        {"ABS()", NY_TEST_BAD_EXPRESSION, "ABS()"},
        {"MA()", NY_TEST_BAD_ARGUMENTS, "MA"},
        {"MA(C,5,1)", NY_TEST_BAD_ARGUMENTS, "MA"},
        {"FOO(C)", NY_TEST_BAD_FUNCTION, "FOO"},
        {"A:MA(C,5", NY_TEST_OPEN_CALL, ""},
        {"IF(C>O,MA(C,(5+5)),REF(C,1))", NY_TEST_OK, ""},
        // Argument-less functions are values alone; written with an argument, the parentheses
        // are a value of their own.
        {"A:ISLASTBAR", NY_TEST_OK, ""},
        {"A:NOT(C>O)", NY_TEST_OK, ""},
        {"A:FINANCE(7)/10000", NY_TEST_OK, ""},
        // Inside a call every argument must be one value.
        {"A:MA(C O,5)", NY_TEST_BAD_EXPRESSION, "MA(C O,5)"},
        // Markers in the wrong place.
        {"A:B:C", NY_TEST_BAD_MARKER, nullptr},
        {":C", NY_TEST_BAD_START, ":C"},
        {"5:C", NY_TEST_BAD_START, "5:C"},
        {"X:=1:=2", NY_TEST_SECOND_ASSIGN, "X:=1:=2"},
        {":=1", NY_TEST_BAD_MARKER, ":=1"},
        {"A:MA(C:=1,5)", NY_TEST_BAD_MARKER, nullptr},
        {"A:", NY_TEST_BAD_EXPRESSION, ""},
        // Signs and operators; only behind "<" may a minus follow an operator.
        {"-C", NY_TEST_OK, nullptr},
        {"A:MA(-C,5)", NY_TEST_OK, nullptr},
        {"A:(-1)*C", NY_TEST_OK, nullptr},
        {"A:2*(-1)", NY_TEST_BAD_EXPRESSION, "2*(-1)"},
        {"A:+C", NY_TEST_BAD_EXPRESSION, "+C"},
        {"A:C<-1", NY_TEST_OK, nullptr},
        {"A:C>-1", NY_TEST_BAD_EXPRESSION, nullptr},
        {"A:C*-1", NY_TEST_BAD_EXPRESSION, nullptr},
        {"A:C+", NY_TEST_BAD_EXPRESSION, nullptr},
        {"A:(C+O", NY_TEST_BAD_EXPRESSION, nullptr},
        {"A:C+O)", NY_TEST_BAD_EXPRESSION, nullptr},
        {"A:C>O && C<H || C=O AND C!=H OR C>=O", NY_TEST_OK, nullptr},
        // A comma at the top level separates nothing: two values fail.
        {"A:C,O", NY_TEST_BAD_EXPRESSION, "C,O"},
        // Characters outside the language; in text functions any text goes, in DRAWTEXT only in
        // the third argument, and any word is an operand of a text function.
        {"A:!C", NY_TEST_BAD_CHARACTER, "A:!C"},
        {"A:C>O,'#'", NY_TEST_BAD_CHARACTER, "A:C>O,'#'"},
        {"A:C，O", NY_TEST_BAD_CHARACTER, "A:C，O"},
        {"DRAWTEXT(C>O,L,'买入#1')", NY_TEST_OK, nullptr},
        {"DRAWTEXT(C>O,'#',L)", NY_TEST_BAD_CHARACTER, nullptr},
        {"A:STRCAT('#','$')", NY_TEST_OK, nullptr},
        {"A:STRCAT(FOO,BAR)", NY_TEST_OK, nullptr},
        // A ";" inside quotes ends the statement all the same.
        {"DRAWTEXT(C>O,L,'A;B')", NY_TEST_OPEN_CALL, nullptr},
        // A text beginning with ";" is one statement, and its ";" is no character of a statement.
        {";A:C", NY_TEST_BAD_CHARACTER, ";A:C"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const SYNTestResult result = Test(row.text);
        EXPECT_EQ(result.nResult, row.code);
        if (row.word != nullptr) {
            EXPECT_GBK(result.strError, row.word);
        }
    }
}

TEST_F(CheckTest, ParametersAndLibraryIndicatorsAreKnownWords) {
    // Parameters whatever their case; a library indicator with no more arguments than
    // parameters; at the top level a reference leaves its name pending behind the marker.
    const std::vector<CParam> params = {nytest::MakeParam("n", 1, 100, 5)};
    nytest::LibraryMacd macd;
    const struct {
        const char* text;
        int code;
        const char* word;
    } rows[] = {
        {"ma(c,n)", NY_TEST_OK, ""},
        {"N:C", NY_TEST_BAD_MARKER, "N:C"},
        {"A:MACD(12,26)", NY_TEST_OK, ""},
        {"A:MACD(12,26,9,1)", NY_TEST_TOO_MANY_ARGS, "MACD"},
        {"A:MA(MACD.DIF,5)", NY_TEST_OK, ""},
        {"A:MACD.DIF", NY_TEST_UNKNOWN_WORD, "MACD.DIF"},
    };
    for (const auto& row : rows) {
        const SYNTestResult result = Test(row.text, params);
        EXPECT_EQ(result.nResult, row.code) << row.text;
        EXPECT_EQ(result.strError, row.word) << row.text;
    }
}

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
