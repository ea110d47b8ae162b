// The lexer module through its two entry points.

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
}  // namespace
