// Readings the table of readings can't express: limits of the text, words cut byte by byte,
// series permission, the comma count of an argument list and RAND.

#include <gtest/gtest.h>

#include <cstring>

#include "tests/engine/function_fixture.h"

namespace {

class Grammar : public nytest::FunctionTest {
protected:
    void SetUp() override { UseCloses({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}); }

    // The code of ReadExp over "text" with series refused, its first value left in `first`.
    char WithoutSeries(CIndicator& formula, std::string text, float* first = nullptr) {
        std::vector<float> out(10, 0.0f);
        short from = 0, to = 4;
        char flag = 0;
        formula.Context().m_nCurFrom = 0;
        formula.Context().m_nCurTo = formula.m_nBarCount;
        formula.Context().m_pCursor = text.data();
        const char code = formula.ReadExp(out.data(), &from, &to, &flag, nullptr);
        if (first != nullptr) *first = out[0];
        return code;
    }
};

TEST_F(Grammar, ParenthesesAtTheLimitOfTheCounters) {
    const nytest::Reading deep127 = Read(std::string(127, '(') + "2" + std::string(127, ')'));
    EXPECT_EQ(deep127.code, NY_EVAL_OK);
    EXPECT_EQ(deep127.values[0], 2.0f);
    EXPECT_EQ(Read(std::string(128, '(') + "2" + std::string(128, ')')).code, NY_EVAL_PARENTHESES);
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
    EXPECT_EQ(ind.CalExp(line, out.data(), &from, &to, &flag, nullptr), NY_EVAL_OK);
    EXPECT_EQ(out[0], 256.0f);
    EXPECT_EQ(line[511], ';');
}

TEST_F(Grammar, SeriesNeedPermissionConstantsDoNot) {
    EXPECT_EQ(WithoutSeries(ind, "C+1;"), NY_EVAL_SERIES_NOT_ALLOWED);
    nytest::Formula f({{"S", "CLOSE"}, {"K", "3"}});
    f.Run(nytest::RisingBars(5));
    EXPECT_EQ(WithoutSeries(f.ind, "S;"), NY_EVAL_SERIES_NOT_ALLOWED);
    float first = 0;
    EXPECT_EQ(WithoutSeries(f.ind, "K*2;", &first), NY_EVAL_OK);
    EXPECT_EQ(first, 6.0f);
}

TEST_F(Grammar, WordsAreCutByteByByte) {
    // A double-byte name whose second byte is '|' ends at that byte: the word is its lead byte
    // alone, and the '|' behind it is a lone operator.
    nytest::Formula f({{"\xB0", "1"}, {"\xB0\x7C\xB0\xA1", "2"}, {"R", "\xB0\x7C\xB0\xA1"}});
    f.Run(nytest::RisingBars(3));
    EXPECT_EQ(f["\xB0"].m_cComputed, 1);
    EXPECT_EQ(f["R"].m_cComputed, 0);
    EXPECT_EQ(nytest::ReadValue(f.ind, "\xB0\x7C\xB0\xA1").code, NY_EVAL_LONE_OPERATOR);
}

TEST_F(Grammar, BuiltInWordsComeBeforeStatementsAndParametersBeforeStatements) {
    nytest::Formula f({{"C", "100"}, {"A", "1"}, {"X", "C"}, {"Y", "A"}});
    f.AddParam("A", 42);
    f.Run(nytest::RisingBars(5));
    EXPECT_EQ(f.At("X", 2), 3.0f);   // C is the close, not the statement
    EXPECT_EQ(f.At("Y", 2), 42.0f);  // the parameter hides the statement
}

TEST_F(Grammar, CountCumaCountsTopLevelCommasOutsideQuotes) {
    const struct {
        std::string text;
        int commas;  // 255 for a list the statement's end cuts
        size_t stop;
    } rows[] = {{"A,'B,C',D);", 2, 0}, {"MA(C,5),2)+1;", 1, 0}, {"A,B;", 255, 3}};
    for (auto row : rows) {
        ind.Context().m_pCursor = row.text.data();
        EXPECT_EQ(static_cast<unsigned char>(ind.CountCuma()), row.commas) << row.text;
        EXPECT_EQ(ind.Context().m_pCursor, row.text.data() + row.stop) << row.text;
    }
}

TEST_F(Grammar, RandDrawsOnceAndNeverDividesByZero) {
    for (int k = 0; k < 200; ++k) {
        const float r = Read("RAND(4)").values[0];
        EXPECT_TRUE(r == 1.0f || r == 2.0f || r == 3.0f) << r;
    }
    // A series argument: bar 0's value, one draw for all bars.
    UseCloses({4, 9, 16, 25, 36, 49});
    const std::vector<float> drawn = Series("RAND(CLOSE)", 0, 5);
    ASSERT_EQ(drawn.size(), 6u);
    for (float v : drawn) EXPECT_EQ(v, drawn[0]);
    EXPECT_GE(drawn[0], 1.0f);
    EXPECT_LE(drawn[0], 3.0f);
}

}  // namespace
