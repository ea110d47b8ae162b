// The condition grammar: truth with a tolerance, one comparison per leaf, nesting and negation,
// and the comma count of function arguments.

#include <gtest/gtest.h>

#include "tests/engine/function_fixture.h"

using nytest::ReadCondition;

namespace {

class Conditions : public nytest::FunctionTest {
protected:
    void SetUp() override { UseBars(nytest::RisingBars(10)); }
};

TEST_F(Conditions, ConstantComparisonsAndConnectives) {
    nytest::Condition c = ReadCondition(ind, "3>2 AND 1<2");
    ASSERT_EQ(c.code, 0);
    EXPECT_EQ(c.isSeries, 0);
    EXPECT_EQ(c.truth[0], 1);
    EXPECT_EQ(ReadCondition(ind, "3>2 && 2>3").truth[0], 0);
    EXPECT_EQ(ReadCondition(ind, "3>2 || 2>3").truth[0], 1);
    EXPECT_EQ(ReadCondition(ind, "1>2 OR 2>3").truth[0], 0);
}

TEST_F(Conditions, SeriesComparisonPerBar) {
    nytest::Condition c = ReadCondition(ind, "CLOSE>5");
    ASSERT_EQ(c.code, 0);
    EXPECT_EQ(c.isSeries, 1);
    EXPECT_EQ(c.truth[4], 0);
    EXPECT_EQ(c.truth[5], 1);
}

TEST_F(Conditions, ToleranceOfTruth) {
    auto* tiny = new CExpression;
    tiny->m_strName = "T";
    tiny->m_cComputed = 1;
    tiny->m_nFirst = 0;
    tiny->m_nEnd = 10;
    tiny->AllocMem(10);
    tiny->m_cComputed = 1;
    tiny->m_pData[0] = 0.0000005f;
    ind.m_arExpressions.push_back(tiny);
    EXPECT_EQ(ReadCondition(ind, "T").truth[0], 0);
    EXPECT_EQ(ReadCondition(ind, "!T").truth[0], 1);
    tiny->m_pData[0] = 0.000002f;
    EXPECT_EQ(ReadCondition(ind, "T").truth[0], 1);
}

TEST_F(Conditions, OneComparisonPerLeaf) {
    EXPECT_EQ(ReadCondition(ind, "3>2>1").code, 8);
    EXPECT_EQ(ReadCondition(ind, "3!2").code, 8);
}

TEST_F(Conditions, NestingIsToldByLookingAhead) {
    Param("A", 3);
    Param("B", 2);
    Param("D", 4);
    EXPECT_EQ(ReadCondition(ind, "(A>B) && D").truth[0], 1);
    EXPECT_EQ(ReadCondition(ind, "(A+B)>D").truth[0], 1);
    EXPECT_EQ(ReadCondition(ind, "(A>B)*2>D").code, 5);
    EXPECT_EQ(ReadCondition(ind, "(A+B").code, 10);
    EXPECT_EQ(ReadCondition(ind, "(A>B").code, 3);
}

TEST_F(Conditions, NegationOfWordsAndNestedConditions) {
    Param("A", 3);
    Param("Z", 0);
    EXPECT_EQ(ReadCondition(ind, "!A").truth[0], 0);
    EXPECT_EQ(ReadCondition(ind, "!Z").truth[0], 1);
    EXPECT_EQ(ReadCondition(ind, "! (A>2)").truth[0], 0);
    EXPECT_EQ(ReadCondition(ind, "!(A<2) AND A").truth[0], 1);
    nytest::Condition series = ReadCondition(ind, "!(CLOSE>3)");
    EXPECT_EQ(series.isSeries, 1);
    EXPECT_EQ(series.truth[2], 1);
    EXPECT_EQ(series.truth[3], 0);
}

TEST_F(Conditions, RangesOfBothSidesAreMerged) {
    ind.m_nDrawStart = 2;
    nytest::Condition c = ReadCondition(ind, "CLOSE>OPEN AND 1");
    ASSERT_EQ(c.code, 0);
    EXPECT_EQ(c.from, 2);
    EXPECT_EQ(c.to, 9);
    EXPECT_EQ(c.truth[2], 1);
}

TEST_F(Conditions, MalformedConditions) {
    EXPECT_EQ(ReadCondition(ind, "1&2").code, 8);
    EXPECT_EQ(ReadCondition(ind, "1|2").code, 8);
    EXPECT_EQ(ReadCondition(ind, "AND 1").code, 4);
    EXPECT_EQ(ReadCondition(ind, "1 2").code, 5);
}

TEST(CountCuma, CountsTopLevelCommasOutsideQuotes) {
    CIndicator ind;
    char text[] = "A,'B,C',D);";
    ind.m_pCursor = text;
    EXPECT_EQ(ind.CountCuma(), 2);
    EXPECT_EQ(ind.m_pCursor, text);
    char nested[] = "MA(C,5),2)+1;";
    ind.m_pCursor = nested;
    EXPECT_EQ(ind.CountCuma(), 1);
    char open[] = "A,B;";
    ind.m_pCursor = open;
    EXPECT_EQ(static_cast<unsigned char>(ind.CountCuma()), 255);
    EXPECT_EQ(*ind.m_pCursor, ';');
}

}  // namespace
