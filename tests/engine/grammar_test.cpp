// The value grammar: precedence, signs, combining series and constants, division, numbers,
// parameters and statements, and the codes of malformed text.

#include <gtest/gtest.h>

#include <cstring>

#include "engine/eval_code.h"
#include "host/stockdb.h"
#include "tests/engine/function_fixture.h"

using nytest::ReadValue;

namespace {

class Grammar : public nytest::FunctionTest {
protected:
    void SetUp() override { UseBars(nytest::RisingBars(10)); }
};

TEST_F(Grammar, PrecedenceOfArithmetic) {
    EXPECT_FLOAT_EQ(Constant("1+2*3"), 7.0f);
    EXPECT_FLOAT_EQ(Constant("(1+2)*3"), 9.0f);
    EXPECT_FLOAT_EQ(Constant("10-4-3"), 3.0f);
    EXPECT_FLOAT_EQ(Constant("12/3/2"), 2.0f);
    EXPECT_FLOAT_EQ(Constant("2>1+3"), 0.0f);
    EXPECT_FLOAT_EQ(Constant("1+1=2"), 1.0f);
}

TEST_F(Grammar, AndOrShareOneLevelFromLeftToRight) {
    Param("X", 1);
    Param("Y", 0);
    Param("Z", 0);
    EXPECT_FLOAT_EQ(Constant("X || Y && Z"), 0.0f);
    EXPECT_FLOAT_EQ(Constant("X OR Y AND Z"), 0.0f);
    EXPECT_FLOAT_EQ(Constant("Y AND Z OR X"), 1.0f);
}

TEST_F(Grammar, OperatorWordsCutWords) {
    Param("M", 0);
    Param("X", 3);
    EXPECT_FLOAT_EQ(Constant("MOR X"), 1.0f);
    EXPECT_FLOAT_EQ(Constant("MAND X"), 0.0f);
}

TEST_F(Grammar, ComparisonsAreExact) {
    EXPECT_FLOAT_EQ(Constant("3!=4"), 1.0f);
    EXPECT_FLOAT_EQ(Constant("3==3"), 1.0f);
    EXPECT_FLOAT_EQ(Constant("3>=3"), 1.0f);
    EXPECT_FLOAT_EQ(Constant("3<=2"), 0.0f);
    EXPECT_FLOAT_EQ(Constant("0.1+0.2=0.3"), 1.0f);  // float arithmetic: 0.1f + 0.2f == 0.3f
    EXPECT_EQ(Code("3<>4"), 4);
}

TEST_F(Grammar, ChainedComparisonIsLeftAssociative) {
    // (3>2)>0 is 1>0.
    EXPECT_FLOAT_EQ(Constant("3>2>0"), 1.0f);
    EXPECT_FLOAT_EQ(Constant("3>2>1"), 0.0f);
}

TEST_F(Grammar, SignsStandOnlyAtTheStart) {
    nytest::Reading neg = ReadValue(ind, "-CLOSE");
    ASSERT_EQ(neg.code, 0);
    EXPECT_EQ(neg.isSeries, 1);
    EXPECT_FLOAT_EQ(neg.values[0], -1.0f);
    EXPECT_FLOAT_EQ(neg.values[9], -10.0f);
    EXPECT_FLOAT_EQ(Constant("-2*3"), -6.0f);
    EXPECT_FLOAT_EQ(Constant("+4"), 4.0f);
    EXPECT_FLOAT_EQ(Constant("2*(-3)"), -6.0f);
    EXPECT_EQ(Code("1+-2"), 4);
    EXPECT_EQ(Code("--2"), 4);
}

TEST_F(Grammar, MultiplicationByANegativeReadsAsSubtraction) {
    nytest::Reading r = ReadValue(ind, "CLOSE*-1");
    ASSERT_EQ(r.code, 0);
    EXPECT_FLOAT_EQ(r.values[4], 4.0f);  // CLOSE-1 at the fifth bar, close 5
    EXPECT_FLOAT_EQ(Constant("6*-2"), 4.0f);
}

TEST_F(Grammar, DanglingOperatorIsDropped) {
    EXPECT_FLOAT_EQ(Constant("5+"), 5.0f);
    EXPECT_FLOAT_EQ(Constant("5>"), 5.0f);
    EXPECT_FLOAT_EQ(Constant("5*"), 5.0f);
}

TEST_F(Grammar, DivisionByConstantZeroFails) {
    EXPECT_EQ(Code("5/0"), 17);
    EXPECT_EQ(Code("CLOSE/0"), 17);
    EXPECT_EQ(Code("5/0.0000009"), 17);
    EXPECT_FLOAT_EQ(Constant("5/0.000002"), 2500000.0f);
}

TEST_F(Grammar, DivisionBySeriesNearZeroRepeatsThePreviousBar) {
    nytest::Reading zeros = ReadValue(ind, "5/(CLOSE-CLOSE)");
    ASSERT_EQ(zeros.code, 0);
    EXPECT_EQ(zeros.isSeries, 1);
    for (float v : zeros.values) EXPECT_FLOAT_EQ(v, 0.0f);

    // Bar 7 has close 8; the divisor CLOSE-8 is zero there and at no other bar.
    nytest::Reading r = ReadValue(ind, "CLOSE/(CLOSE-8)");
    ASSERT_EQ(r.code, 0);
    EXPECT_FLOAT_EQ(r.values[6], 7.0f / -1.0f);
    EXPECT_FLOAT_EQ(r.values[7], r.values[6]);
    EXPECT_FLOAT_EQ(r.values[8], 9.0f / 1.0f);
    // Zero on the first bar of the range gives 0.
    nytest::Reading first = ReadValue(ind, "CLOSE/(CLOSE-1)");
    EXPECT_FLOAT_EQ(first.values[0], 0.0f);
    EXPECT_FLOAT_EQ(first.values[1], 2.0f);
}

TEST_F(Grammar, ValueGrammarTruthIsExactZero) {
    EXPECT_FLOAT_EQ(Constant("0.0000005 && 1"), 1.0f);
    EXPECT_FLOAT_EQ(Constant("0 || 0"), 0.0f);
}

TEST_F(Grammar, NumbersAndMalformedNumbers) {
    EXPECT_FLOAT_EQ(Constant("0"), 0.0f);
    EXPECT_FLOAT_EQ(Constant(".5"), 0.5f);
    EXPECT_FLOAT_EQ(Constant("1."), 1.0f);
    EXPECT_FLOAT_EQ(Constant("0.25"), 0.25f);
    EXPECT_EQ(Code("00"), 6);
    EXPECT_EQ(Code("007"), 6);
    EXPECT_EQ(Code("1.5.2"), 6);
}

TEST_F(Grammar, MalformedTextCodes) {
    const struct {
        const char* text;
        char code;
    } cases[] = {
        {"1&2", NY_EVAL_LONE_OPERATOR},     {"1|2", NY_EVAL_LONE_OPERATOR},
        {"1!2", NY_EVAL_LONE_OPERATOR},     {"1 2", NY_EVAL_MISSING_TERM_OPERATOR},
        {"(1", NY_EVAL_PARENTHESES},        {"1)", NY_EVAL_PARENTHESES},
        {"!1", NY_EVAL_MISPLACED_OPERATOR}, {"&1", NY_EVAL_MISPLACED_OPERATOR},
        {"|1", NY_EVAL_MISPLACED_OPERATOR}, {"1>!2", NY_EVAL_MISPLACED_OPERATOR},
        {"*2", NY_EVAL_MISPLACED_OPERATOR}, {"&&1", NY_EVAL_MISPLACED_OPERATOR},
        {"1>>2", NY_EVAL_MISPLACED_OPERATOR}, {"NOWORD", NY_EVAL_UNKNOWN_WORD},
        {"CLOSE(5)", NY_EVAL_MISSING_TERM_OPERATOR},
    };
    for (const auto& c : cases) EXPECT_EQ(Code(c.text), c.code) << c.text;
    EXPECT_FLOAT_EQ(Constant("()"), 0.0f);
}

TEST_F(Grammar, CommaEndsAStatement) {
    EXPECT_FLOAT_EQ(Constant("4,NOWORD"), 4.0f);
    EXPECT_FLOAT_EQ(Constant("4;NOWORD"), 4.0f);
}

TEST_F(Grammar, ParenthesesAtTheLimitOfTheCounters) {
    const std::string deep127 = std::string(127, '(') + "2" + std::string(127, ')');
    EXPECT_FLOAT_EQ(Constant(deep127), 2.0f);
    const std::string deep128 = std::string(128, '(') + "2" + std::string(128, ')');
    EXPECT_EQ(Code(deep128), 3);
}

TEST_F(Grammar, TextWithoutTerminatorAtFullLength) {
    // 511 bytes in a buffer of exactly 512: the terminating zero becomes the ';'.
    std::string text = "1";
    while (text.size() < 511) text += "+1";
    char line[512];
    std::memcpy(line, text.c_str(), 512);
    std::vector<float> out(10, 0.0f);
    short from = 0, to = 9;
    char flag = 1;
    EXPECT_EQ(ind.CalExp(line, out.data(), &from, &to, &flag, nullptr), 0);
    EXPECT_FLOAT_EQ(out[0], 256.0f);
    EXPECT_EQ(line[511], ';');
}

TEST_F(Grammar, ParametersReadTheirPeriodValue) {
    auto* n = new CParam;
    n->m_strName = "N";
    n->m_nDefault = 12;
    n->SetParam(1, 20);
    ind.m_arParams.push_back(n);
    Param("NEG", -5);
    ind.m_nPeriod = 1;
    EXPECT_FLOAT_EQ(Constant("N"), 20.0f);
    ind.m_nPeriod = 2;
    EXPECT_FLOAT_EQ(Constant("N"), 12.0f);
    EXPECT_FLOAT_EQ(Constant("NEG"), 0.0f);
}

TEST_F(Grammar, WordsNarrowTheRangeNumbersDoNot) {
    ind.m_nDrawStart = 4;
    nytest::Reading number = ReadValue(ind, "5");
    EXPECT_EQ(number.from, 0);
    nytest::Reading close = ReadValue(ind, "C");
    EXPECT_EQ(close.from, 4);
    EXPECT_EQ(close.to, 9);
    nytest::Reading both = ReadValue(ind, "5+C");
    EXPECT_EQ(both.from, 4);
    EXPECT_FLOAT_EQ(both.values[4], 10.0f);
    ind.m_nDrawStart = 10;
    EXPECT_EQ(Code("C"), 14);
}

TEST_F(Grammar, PriceWordsNeedSeriesPermission) {
    std::vector<float> out(10, 0.0f);
    short from = 0, to = 9;
    char line[] = "C+1;";
    ind.m_nCurFrom = 0;
    ind.m_nCurTo = 10;
    ind.m_pCursor = line;
    char flag = 0;
    EXPECT_EQ(ind.ReadExp(out.data(), &from, &to, &flag, nullptr), 12);
}

TEST_F(Grammar, PriceWordsReadTheirFields) {
    EXPECT_FLOAT_EQ(ReadValue(ind, "HIGH").values[2], 4.0f);
    EXPECT_FLOAT_EQ(ReadValue(ind, "L").values[2], 2.0f);
    EXPECT_FLOAT_EQ(ReadValue(ind, "O").values[2], 2.5f);
    EXPECT_FLOAT_EQ(ReadValue(ind, "AMOUNT").values[2], 3000.0f);
}

TEST_F(Grammar, VolumeUnitsFollowTheStock) {
    CStock share, bond, hands;
    share.m_lStockID = 600001;
    bond.m_lStockID = 10001;
    bond.m_dwKind = NY_KIND_BOND;
    hands.m_lStockID = 1000001;
    hands.m_dwKind = NY_KIND_HAND_UNIT | NY_KIND_BOND;
    g_MyStocksArray = {&share, &bond, &hands};
    ind.m_lStockID = 600001;
    EXPECT_FLOAT_EQ(ReadValue(ind, "VOL").values[4], 5.0f);  // 500 shares = 5 hands
    ind.m_lStockID = 10001;
    EXPECT_FLOAT_EQ(ReadValue(ind, "V").values[4], 50.0f);
    ind.m_lStockID = 1000001;
    EXPECT_FLOAT_EQ(ReadValue(ind, "VOL").values[4], 500.0f);
    g_MyStocksArray.clear();
}

TEST_F(Grammar, WordsAreCutByteByByte) {
    // A double-byte name whose second byte is '|' ends at that byte: the word is its lead byte
    // alone, and the '|' behind it is a lone operator.
    nytest::Formula f({{"\xB0", "1"}, {"\xB0\x7C\xB0\xA1", "2"}, {"R", "\xB0\x7C\xB0\xA1"}});
    f.Run(nytest::RisingBars(3));
    EXPECT_EQ(f["\xB0"].m_cComputed, 1);
    EXPECT_EQ(f["R"].m_cComputed, 0);
    EXPECT_EQ(ReadValue(f.ind, "\xB0\x7C\xB0\xA1").code, 8);
}

class Shadowing : public ::testing::Test {};

TEST_F(Shadowing, BuiltInWordsComeBeforeStatementsAndParametersBeforeStatements) {
    nytest::Formula f({{"C", "100"}, {"A", "1"}, {"X", "C"}, {"Y", "A"}});
    f.AddParam("A", 42);
    f.Run(nytest::RisingBars(5));
    EXPECT_FLOAT_EQ(f.At("X", 2), 3.0f);   // C is the close, not the statement
    EXPECT_FLOAT_EQ(f.At("Y", 2), 42.0f);  // the parameter hides the statement
}

TEST_F(Shadowing, SeriesStatementNeedsPermissionConstantDoesNot) {
    nytest::Formula f({{"S", "CLOSE"}, {"K", "3"}});
    f.Run(nytest::RisingBars(5));
    std::vector<float> out(5, 0.0f);
    short from = 0, to = 4;
    char line[] = "S;";
    f.ind.m_pCursor = line;
    char flag = 0;
    EXPECT_EQ(f.ind.ReadExp(out.data(), &from, &to, &flag, nullptr), 12);
    char line2[] = "K*2;";
    f.ind.m_pCursor = line2;
    flag = 0;
    EXPECT_EQ(f.ind.ReadExp(out.data(), &from, &to, &flag, nullptr), 0);
    EXPECT_FLOAT_EQ(out[0], 6.0f);
}

}  // namespace
