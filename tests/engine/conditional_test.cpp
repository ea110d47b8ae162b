// IF, IFF and IFN: one branch for a constant condition, the other one never evaluated; both
// branches merged bar by bar for a series condition.

#include <gtest/gtest.h>

#include "tests/engine/function_fixture.h"

using nytest::ReadValue;

namespace {

class Conditional : public nytest::FunctionTest {
protected:
    void SetUp() override { UseBars(nytest::RisingBars(25)); }
};

TEST_F(Conditional, ConstantConditionPicksOneBranch) {
    EXPECT_EQ(Constant("IF(1,2,3)"), 2.0f);
    EXPECT_EQ(Constant("IF(0,2,3)"), 3.0f);
    EXPECT_EQ(Constant("IFF(2>1,2,3)"), 2.0f);
    EXPECT_EQ(Constant("IFN(1,2,3)"), 3.0f);
    EXPECT_EQ(Constant("IFN(0,2,3)"), 2.0f);
    // A condition treats a magnitude up to 0.000001 as false.
    EXPECT_EQ(Constant("IF(0.0000005,2,3)"), 3.0f);
    // The condition is read by the condition grammar: connectives, negation, nesting.
    EXPECT_EQ(Constant("IF(1>0 AND 2>3,1,2)"), 2.0f);
    EXPECT_EQ(Constant("IF(!0,1,2)"), 1.0f);
    EXPECT_EQ(Constant("IF(!(2>1),1,2)"), 2.0f);
}

TEST_F(Conditional, TheBranchNotTakenIsNeverEvaluated) {
    EXPECT_EQ(Constant("IF(0,XYZ,3)"), 3.0f);
    EXPECT_EQ(Constant("IF(1,2,XYZ)"), 2.0f);
    EXPECT_EQ(Constant("IF(0,5/0,3)"), 3.0f);
    EXPECT_EQ(Constant("IFN(1,MA(5,2),4)"), 4.0f);
    // The taken branch is evaluated as usual, and its failure is the call's.
    EXPECT_EQ(Code("IF(1,XYZ,3)"), 7);
    EXPECT_EQ(Code("IF(0,2,5/0)"), 17);
}

TEST_F(Conditional, CursorContinuesBehindTheCall) {
    EXPECT_EQ(Constant("IF(1,2,XYZ(1,(2)))+1"), 3.0f);
    EXPECT_EQ(Constant("IF(0,XYZ(1,(2)),3)*2"), 6.0f);
    EXPECT_EQ(Constant("IF(1,IF(0,7,8),9)+IF(0,1,IF(1,10,11))"), 18.0f);
}

TEST_F(Conditional, ConstantConditionWithASeriesBranch) {
    nytest::Reading r = ReadValue(ind, "IF(1,CLOSE,0)");
    ASSERT_EQ(r.code, 0);
    EXPECT_EQ(r.isSeries, 1);
    EXPECT_EQ(r.values[7], 8.0f);
    // Only the taken branch narrows the range.
    nytest::Reading narrowed = ReadValue(ind, "IF(0,CLOSE,MA(CLOSE,4))");
    EXPECT_EQ(narrowed.from, 3);
    EXPECT_EQ(narrowed.values[3], 2.5f);
    EXPECT_EQ(ReadValue(ind, "IF(1,CLOSE,MA(CLOSE,4))").from, 0);
}

TEST_F(Conditional, SeriesConditionChoosesPerBar) {
    nytest::Reading r = ReadValue(ind, "IF(CLOSE>5,CLOSE,0-CLOSE)");
    ASSERT_EQ(r.code, 0);
    EXPECT_EQ(r.isSeries, 1);
    EXPECT_EQ(r.from, 0);
    EXPECT_EQ(r.to, 24);
    for (int i = 0; i < 25; ++i) {
        const float close = static_cast<float>(i + 1);
        EXPECT_EQ(r.values[i], close > 5 ? close : -close) << i;
    }
    nytest::Reading inverse = ReadValue(ind, "IFN(CLOSE>5,CLOSE,0-CLOSE)");
    for (int i = 0; i < 25; ++i) EXPECT_EQ(inverse.values[i], -r.values[i]) << i;
}

TEST_F(Conditional, ConstantBranchesAreSpread) {
    nytest::Reading r = ReadValue(ind, "IF(CLOSE>20,1,2)");
    ASSERT_EQ(r.code, 0);
    EXPECT_EQ(r.isSeries, 1);
    EXPECT_EQ(r.values[0], 2.0f);
    EXPECT_EQ(r.values[20], 1.0f);
}

TEST_F(Conditional, RangeIsWhereConditionAndBothBranchesHaveValues) {
    // The constant 0 could serve the first bars, but the narrower branch decides the range.
    nytest::Reading r = ReadValue(ind, "IF(CLOSE>OPEN,MA(CLOSE,20),0)");
    ASSERT_EQ(r.code, 0);
    EXPECT_EQ(r.from, 19);
    EXPECT_EQ(r.values[19], 10.5f);
    EXPECT_EQ(r.values[18], 0.0f);
    // The condition's own narrowing counts too.
    EXPECT_EQ(ReadValue(ind, "IF(CLOSE>REF(CLOSE,3),1,2)").from, 3);
}

TEST_F(Conditional, Codes) {
    EXPECT_EQ(Code("IF 1"), 7);
    EXPECT_EQ(Code("IF(1,2)"), 11);
    EXPECT_EQ(Code("IF(1,2,3,4)"), 11);
    EXPECT_EQ(Code("IF(3>2>1,1,2)"), 8);
    EXPECT_EQ(Code("IF(CLOSE>5,CLOSE,NOWORD)"), 7);
    EXPECT_EQ(Code("IF(CLOSE>OPEN,HHV(CLOSE,30),1)"), 14);
    // Without series permission neither a series condition nor a series branch passes.
    EXPECT_EQ(Code("SMA(CLOSE,5,IF(CLOSE>1,1,2))"), 12);
    EXPECT_EQ(Code("SMA(CLOSE,5,IF(1,CLOSE,1))"), 12);
    EXPECT_EQ(Code("SMA(CLOSE,5,IF(1,1,CLOSE))"), 0);
}

TEST_F(Conditional, UnclosedCallGivesTen) {
    // The statement's ";" before the closing parenthesis, as text that reaches the reader.
    char text[] = "(1,2,3;";
    float out[25] = {};
    short from = 0, to = 24;
    char isSeries = 0;
    ind.m_pCursor = text;
    EXPECT_EQ(ind.ReadIf(const_cast<char*>("IF"), out, &from, &to, 1, &isSeries), 10);
}

}  // namespace
