// The lexer module through its two entry points, and the token sink.

#include <cstring>

#include "tests/check/check_fixture.h"

namespace {

using nytest::CheckTest;
using Tokens = std::vector<std::pair<int, std::string>>;

TEST_F(CheckTest, LexerCutsAStatementIntoItsTokens) {
    EXPECT_EQ(Lex("X:=REF(C,1)>O AND MA(V,5)>0"),
              (Tokens{{22, "X"}, {15, ":="}, {4, "REF"}, {16, "("}, {22, "C"}, {18, ","}, {5, "1"},
                      {17, ")"}, {8, ">"}, {22, "O"}, {6, "AND"}, {4, "MA"}, {16, "("}, {22, "V"},
                      {18, ","}, {5, "5"}, {17, ")"}, {8, ">"}, {5, "0"}}));
}

TEST_F(CheckTest, LexerOperatorCodes) {
    EXPECT_EQ(Lex("+-*/ > >= < <= = == != && || OR : :="),
              (Tokens{{0, "+"}, {1, "-"}, {2, "*"}, {3, "/"}, {8, ">"}, {9, ">="}, {10, "<"},
                      {11, "<="}, {12, "="}, {12, "=="}, {13, "!="}, {6, "&&"}, {7, "||"}, {7, "OR"},
                      {14, ":"}, {15, ":="}}));
    // Characters the language has no use for: one byte each.
    EXPECT_EQ(Lex("!A & | @#$;}"),
              (Tokens{{24, "!"}, {22, "A"}, {24, "&"}, {24, "|"}, {24, "@"}, {24, "#"}, {24, "$"},
                      {24, ";"}, {24, "}"}}));
}

TEST_F(CheckTest, LexerQuotesAndComments) {
    EXPECT_EQ(Lex("'UP 1'"), (Tokens{{24, "'"}, {22, "UP"}, {5, "1"}, {24, "'"}}));
    EXPECT_EQ(Lex("''+'"), (Tokens{{24, "''"}, {0, "+"}, {24, "'"}}));
    EXPECT_EQ(Lex("A{x;y}B{open"), (Tokens{{22, "A"}, {29, "{x;y}"}, {22, "B"}, {29, "{open"}}));
    EXPECT_EQ(Lex("{only a comment}"), (Tokens{{29, "{only a comment}"}}));
}

TEST_F(CheckTest, LexerNumbersAndNames) {
    EXPECT_EQ(Lex("0 0.5 .5 5. 12.25"),
              (Tokens{{5, "0"}, {5, "0.5"}, {5, ".5"}, {5, "5."}, {5, "12.25"}}));
    // Spellings the evaluator refuses come apart, so that the test refuses them too.
    EXPECT_EQ(Lex("007"), (Tokens{{5, "0"}, {5, "0"}, {5, "7"}}));
    EXPECT_EQ(Lex("1.2.3"), (Tokens{{5, "1.2"}, {5, ".3"}}));
    EXPECT_EQ(Lex(".."), (Tokens{{24, ".."}}));
    // Digits followed by letters are a name, as the evaluator reads them.
    EXPECT_EQ(Lex("5日线+MA5+_X1"), (Tokens{{22, "5日线"}, {0, "+"}, {22, "MA5"}, {0, "+"}, {22, "_X1"}}));
    EXPECT_EQ(Lex("MACD.DIF .X A."), (Tokens{{22, "MACD.DIF"}, {22, ".X"}, {22, "A."}}));
}

TEST_F(CheckTest, LexerDoubleByteText) {
    // Chinese names are words; full-width punctuation (the GBK symbol area) is no name character.
    EXPECT_EQ(Lex("短线:C，O"), (Tokens{{22, "短线"}, {14, ":"}, {22, "C"}, {24, "，"}, {22, "O"}}));
    // A lead byte without a valid second byte stands alone.
    EXPECT_EQ(Lex("A\xB6"), (Tokens{{22, "A"}, {24, "\xB6"}}));
    EXPECT_EQ(Lex("\xB6\x20" "B"), (Tokens{{24, "\xB6"}, {22, "B"}}));
}

TEST_F(CheckTest, LexerTellsCallsFromWords) {
    // Any name in front of "(", known or not, blanks allowed between.
    EXPECT_EQ(Lex("MA (C,5)+FOO(1)"),
              (Tokens{{4, "MA"}, {16, "("}, {22, "C"}, {18, ","}, {5, "5"}, {17, ")"}, {0, "+"},
                      {4, "FOO"}, {16, "("}, {5, "1"}, {17, ")"}}));
    // Functions the catalog lists without arguments but that are written with one.
    EXPECT_EQ(Lex("NOT(X)")[0], (std::pair<int, std::string>{22, "NOT"}));
    EXPECT_EQ(Lex("FINANCE(7)")[0], (std::pair<int, std::string>{22, "FINANCE"}));
    // An argument-less function alone is a call; a market keyword and a style word are words.
    EXPECT_EQ(Lex("ISLASTBAR CLOSE CAPITAL COLORRED LINETHICK3"),
              (Tokens{{4, "ISLASTBAR"}, {22, "CLOSE"}, {22, "CAPITAL"}, {22, "COLORRED"},
                      {22, "LINETHICK3"}}));
}

TEST_F(CheckTest, PaintTokensTileTheLine) {
    EXPECT_EQ(Lex(" ma5 : ma(close,5),\tcolorred {x", true),
              (Tokens{{19, " "}, {22, "ma5"}, {19, " "}, {14, ":"}, {19, " "}, {4, "ma"}, {16, "("},
                      {22, "close"}, {18, ","}, {5, "5"}, {17, ")"}, {18, ","}, {19, "\t"},
                      {22, "colorred"}, {19, " "}, {29, "{x"}}));
    EXPECT_EQ(Lex(" a ", false), (Tokens{{22, "a"}}));
    EXPECT_TRUE(Lex("", true).empty());
    // Mode 0 leaves white space out as the other entry point does.
    CMyLexicalAnaly sink;
    editor.m_pfnPaintLexical(" A ", &sink, 0);
    ASSERT_EQ(sink.GetTokenCount(), 1);
    EXPECT_EQ(sink.GetToken(0).nPos, 1);
}

TEST_F(CheckTest, LexerIgnoresMissingArgumentsAndStopsAtTheLimit) {
    CMyLexicalAnaly sink;
    editor.m_pfnLexical(nullptr, &sink);
    editor.m_pfnLexical("A", nullptr);
    editor.m_pfnPaintLexical(nullptr, &sink, 1);
    EXPECT_EQ(sink.GetTokenCount(), 0);

    // Positions must fit 16 bits: a longer text is read up to the limit only.
    const std::string text(40000, 'A');
    editor.m_pfnPaintLexical((std::string(NY_LEXICAL_MAX_TEXT - 1, ' ') + text).c_str(), &sink, 1);
    ASSERT_EQ(sink.GetTokenCount(), 2);
    EXPECT_EQ(sink.GetToken(1).nPos, NY_LEXICAL_MAX_TEXT - 1);
    EXPECT_EQ(sink.GetToken(1).nLen, 1);
}

TEST(LexicalSink, KeepsTokensAsGivenAndRemovesByIndex) {
    CMyLexicalAnaly sink;
    IMyLexicalAnalysis& face = sink;
    face.AddToken(22, 0, 3);
    face.AddToken(-7, 300, 32767);
    face.AddToken(5, 4, 1);
    EXPECT_EQ(face.GetTokenCount(), 3);
    EXPECT_EQ(face.GetTokenPtr(1)->nType, -7);
    EXPECT_EQ(face.GetTokenPtr(1)->nLen, 32767);
    EXPECT_EQ(face.RemoveToken(1), 1);
    EXPECT_EQ(face.RemoveToken(9), 1);
    ASSERT_EQ(face.GetTokenCount(), 2);
    EXPECT_EQ(sink.GetToken(1).nPos, 4);
}

}  // namespace
