// The element-wise math functions: worked values, tolerances near zero, constants against series,
// range intersection and the codes of malformed calls.

#include <cmath>
#include <cstring>

#include "tests/engine/function_fixture.h"

namespace {

using Values = std::vector<float>;

class MathFunctions : public nytest::FunctionTest {
protected:
    void SetUp() override { UseCloses({4, 9, 16, 25, 36, 49}); }
};

TEST_F(MathFunctions, CeilingAndFloorStepBeyondTheTruncation) {
    EXPECT_EQ(Constant("CEILING(12.3)"), 13.0f);
    EXPECT_EQ(Constant("CEILING(12)"), 13.0f);
    EXPECT_EQ(Constant("CEILING(-3.5)"), -2.0f);
    EXPECT_EQ(Constant("FLOOR(12.3)"), 11.0f);
    EXPECT_EQ(Constant("FLOOR(12)"), 11.0f);
    EXPECT_EQ(Constant("FLOOR(-3.5)"), -4.0f);
    EXPECT_EQ(Constant("INTPART(-3.7)"), -3.0f);
    EXPECT_EQ(Constant("FRACPART(-3.75)"), -0.75f);
    EXPECT_EQ(Constant("FRACPART(2.25)"), 0.25f);
}

TEST_F(MathFunctions, RoundAddsOneHalfAndTruncates) {
    EXPECT_EQ(Constant("ROUND(2.5)"), 3.0f);
    EXPECT_EQ(Constant("ROUND(-2.5)"), -2.0f);
    EXPECT_EQ(Constant("ROUND(-2.7)"), -2.0f);
    EXPECT_EQ(Constant("ROUND(0.49999)"), 0.0f);
}

TEST_F(MathFunctions, SignHasADeadZoneWhileNotTestsExactZero) {
    EXPECT_EQ(Constant("SIGN(0.0000005)"), 0.0f);
    EXPECT_EQ(Constant("SIGN(0.00001)"), 1.0f);
    EXPECT_EQ(Constant("SIGN(-0.00001)"), -1.0f);
    EXPECT_EQ(Constant("NOT(0.0000005)"), 0.0f);
    EXPECT_EQ(Constant("NOT(0)"), 1.0f);
    EXPECT_EQ(Constant("REVERSE(2.5)"), -2.5f);
    EXPECT_EQ(Constant("ABS(-3)"), 3.0f);
}

TEST_F(MathFunctions, LibraryFunctionsAndTheirDomains) {
    EXPECT_FLOAT_EQ(Constant("LOG(1000)"), 3.0f);
    EXPECT_FLOAT_EQ(Constant("LN(1)"), 0.0f);
    EXPECT_FLOAT_EQ(Constant("EXP(1)"), 2.7182817f);
    EXPECT_FLOAT_EQ(Constant("COS(0)"), 1.0f);
    EXPECT_FLOAT_EQ(Constant("ATAN(1)*4"), 3.1415927f);
    EXPECT_FLOAT_EQ(Constant("POW(2,10)"), 1024.0f);
    // Domain errors are stored as IEEE values, not reported.
    EXPECT_TRUE(std::isinf(Constant("LN(0)")));
    EXPECT_TRUE(std::isnan(Constant("ASIN(2)")));
    EXPECT_TRUE(std::isnan(Constant("POW(-1,0.5)")));
}

TEST_F(MathFunctions, SeriesInSeriesOut) {
    EXPECT_EQ(Series("SQRT(CLOSE)", 0, 5), (Values{2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(Series("CEILING(CLOSE/10)", 0, 5), (Values{1, 1, 2, 3, 4, 5}));
    EXPECT_EQ(Series("MAX(CLOSE,20)", 0, 5), (Values{20, 20, 20, 25, 36, 49}));
    EXPECT_EQ(Series("MIN(30,CLOSE)", 0, 5), (Values{4, 9, 16, 25, 30, 30}));
}

TEST_F(MathFunctions, SqrtNearZero) {
    EXPECT_EQ(Code("SQRT(0)"), 17);
    EXPECT_EQ(Code("SQRT(0.000001)"), 17);
    EXPECT_EQ(Series("SQRT(CLOSE-CLOSE)", 0, 5), (Values{0, 0, 0, 0, 0, 0}));
    // A dip to zero at bar 2 repeats bar 1's root.
    UseCloses({4, 9, 0, 16, -1, 25});
    EXPECT_EQ(Series("SQRT(CLOSE)", 0, 5), (Values{2, 3, 3, 4, 4, 5}));
}

TEST_F(MathFunctions, ModTakesTheSignOfTheDividend) {
    EXPECT_EQ(Constant("MOD(5,3)"), 2.0f);
    EXPECT_EQ(Constant("MOD(-5,3)"), -2.0f);
    EXPECT_EQ(Constant("MOD(5.5,2)"), 1.5f);
    EXPECT_EQ(Code("MOD(5,0)"), 17);
    EXPECT_EQ(Code("MOD(CLOSE,0)"), 17);
    EXPECT_EQ(Code("MOD(CLOSE,0.000001)"), 17);
    EXPECT_EQ(Series("MOD(CLOSE,7)", 0, 5), (Values{4, 2, 2, 4, 1, 0}));
    EXPECT_EQ(Series("MOD(5,VOL-VOL)", 0, 5), (Values{0, 0, 0, 0, 0, 0}));
}

TEST_F(MathFunctions, ModBySeriesNearZeroRepeatsTheBarBefore) {
    UseCloses({5, 7, 5, 11});
    // Divisors 0, 2, 0, 6: 0 on the first bar, then 7 mod 2, repeated, then 11 mod 6.
    EXPECT_EQ(Series("MOD(CLOSE,CLOSE-5)", 0, 3), (Values{0, 1, 1, 5}));
}

TEST_F(MathFunctions, ConstantsStayConstants) {
    const nytest::Reading r = Read("MAX(1,2)");
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.isSeries, 0);
    EXPECT_EQ(r.values[0], 2.0f);
    EXPECT_EQ(Constant("MIN(1,2)"), 1.0f);
    EXPECT_EQ(Constant("ABS(MIN(-4,2))+1"), 5.0f);
    // A constant result serves as a period: a two-bar average.
    EXPECT_EQ(Series("MA(CLOSE,MAX(1,2))", 1, 5), (Values{6.5f, 12.5f, 20.5f, 30.5f, 42.5f}));
}

TEST_F(MathFunctions, TwoArgumentRangesIntersect) {
    AddSeries("EARLY", {1, 2, 3, 4, 5, 6}, 0, 3);
    AddSeries("LATE", {6, 5, 4, 3, 2, 1}, 2, 6);
    AddSeries("TAIL", {0, 0, 0, 0, 0, 9}, 5, 6);
    EXPECT_EQ(Series("MAX(EARLY,LATE)", 2, 2), (Values{4}));
    EXPECT_EQ(Series("BETWEEN(3.5,EARLY,LATE)", 2, 2), (Values{1}));
    EXPECT_EQ(Code("MAX(EARLY,TAIL)"), 14);
    EXPECT_EQ(Code("RGB(EARLY,LATE,TAIL)"), 14);
    // One argument: its narrowing is the result's.
    EXPECT_EQ(Series("ABS(LATE)", 2, 5), (Values{4, 3, 2, 1}));
}

TEST_F(MathFunctions, BetweenBounds) {
    EXPECT_EQ(Constant("BETWEEN(5,10,1)"), 1.0f);
    EXPECT_EQ(Constant("BETWEEN(5,1,10)"), 1.0f);
    EXPECT_EQ(Constant("BETWEEN(5,5,5)"), 1.0f);
    EXPECT_EQ(Constant("BETWEEN(11,1,10)"), 0.0f);
    // Over a series the second argument must be the lower bound.
    EXPECT_EQ(Series("BETWEEN(CLOSE,CLOSE+1,CLOSE-1)", 0, 5), (Values{0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Series("BETWEEN(CLOSE,10,30)", 0, 5), (Values{0, 0, 1, 1, 0, 0}));
    EXPECT_EQ(Series("BETWEEN(16,CLOSE,25)", 0, 5), (Values{1, 1, 1, 0, 0, 0}));
}

TEST_F(MathFunctions, RgbPacksLowBytes) {
    EXPECT_EQ(Constant("RGB(255,0,0)"), 255.0f);
    EXPECT_EQ(Constant("RGB(0,0,255)"), 16711680.0f);
    EXPECT_EQ(Constant("RGB(256,0,0)"), 0.0f);
    EXPECT_EQ(Constant("RGB(-1,0,0)"), 255.0f);
    EXPECT_EQ(Constant("RGB(255,255,255)"), 16777215.0f);
    EXPECT_EQ(Constant("RGB(1.9,2,3)"), 1.0f + 2 * 256 + 3 * 65536);
    EXPECT_EQ(Series("RGB(0,CLOSE,0)", 0, 5),
              (Values{4 * 256, 9 * 256, 16 * 256, 25 * 256, 36 * 256, 49 * 256}));
}

TEST_F(MathFunctions, RandDrawsOnceAndNeverDividesByZero) {
    EXPECT_EQ(Constant("RAND(1)"), 1.0f);
    EXPECT_EQ(Constant("RAND(0)"), 1.0f);
    EXPECT_EQ(Constant("RAND(0.7)"), 1.0f);
    for (int k = 0; k < 200; ++k) {
        const float r = Constant("RAND(4)");
        EXPECT_TRUE(r == 1.0f || r == 2.0f || r == 3.0f) << r;
    }
    // A series argument: bar 0's value, one draw for all bars.
    const Values drawn = Series("RAND(CLOSE)", 0, 5);
    ASSERT_EQ(drawn.size(), 6u);
    for (float v : drawn) EXPECT_EQ(v, drawn[0]);
    EXPECT_GE(drawn[0], 1.0f);
    EXPECT_LE(drawn[0], 3.0f);
}

TEST_F(MathFunctions, MarketDetailWithoutDataReadsZero) {
    EXPECT_EQ(Constant("DYNAINFO(7)"), 0.0f);
    EXPECT_EQ(Constant("FINANCE(1)"), 0.0f);
    EXPECT_EQ(Series("CLOSE+DYNAINFO(7)", 0, 5), (Values{4, 9, 16, 25, 36, 49}));
}

TEST_F(MathFunctions, MalformedCalls) {
    EXPECT_EQ(Code("ABS"), 7);
    EXPECT_EQ(Code("ABS+1"), 7);
    EXPECT_EQ(Code("ABS (2)"), 0);
    EXPECT_EQ(Code("ABS(1,2)"), 11);
    EXPECT_EQ(Code("MOD(1)"), 11);
    EXPECT_EQ(Code("MAX(1,2,3)"), 11);
    EXPECT_EQ(Code("RGB(1,2)"), 11);
    EXPECT_EQ(Code("BETWEEN(1,2,3,4)"), 11);
    EXPECT_EQ(Code("ABS(NOWORD)"), 7);
    EXPECT_EQ(Code("MAX(1,5/0)"), 17);
}

TEST_F(MathFunctions, ReadersCalledDirectly) {
    // The statement's ";" comes before the call's ")": the comma count sees it.
    EXPECT_EQ(CallReader(&CIndicator::ReadMathFunc1, "ABS", "(1;"), 10);
    EXPECT_EQ(CallReader(&CIndicator::ReadMathFunc2, "MOD", "(1;"), 10);
    EXPECT_EQ(CallReader(&CIndicator::ReadMathFunc3, "RGB", "(1;"), 10);
    // The caller's permission passes to the argument.
    EXPECT_EQ(CallReader(&CIndicator::ReadMathFunc1, "ABS", "(CLOSE);", 0), 12);
    EXPECT_EQ(CallReader(&CIndicator::ReadMathFunc2, "MAX", "(1,CLOSE);", 0), 12);
}

}  // namespace
