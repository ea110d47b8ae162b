// Crossings, counts of conditions, distances and run lengths, window statistics, the ordered
// search of a window and FORCAL, over bars whose closes spell out the conditions.

#include <algorithm>
#include <cmath>

#include "tests/engine/function_fixture.h"

namespace {

using Values = std::vector<float>;

class Logic : public nytest::FunctionTest {};

// ---- Crossings ----

TEST_F(Logic, CrossCountsATouchFromBelow) {
    UseCloses({8, 10, 11, 9, 12, 12});
    EXPECT_EQ(Series("CROSS(CLOSE,10)", 0, 5), (Values{0, 0, 1, 0, 1, 0}));
    EXPECT_EQ(Series("CROSS(10,CLOSE)", 0, 5), (Values{0, 0, 0, 1, 0, 0}));
    // Open is always half a point below the close: the close never crosses it again.
    EXPECT_EQ(Series("CROSS(CLOSE,OPEN)", 0, 5), (Values{0, 0, 0, 0, 0, 0}));
}

TEST_F(Logic, CrossWorksOnTheCommonRangeOfItsArguments) {
    UseCloses({1, 2, 3, 4, 5, 6});
    AddSeries("FAST", {0, 0, 3, 5, 4, 7}, 2, 6);
    AddSeries("SLOW", {4, 4, 4, 4, 4, 4}, 1, 5);
    // Bars 2..4; bar 2 has no bar before it in the range and is 0.
    EXPECT_EQ(Series("CROSS(FAST,SLOW)", 2, 4), (Values{0, 1, 0}));
    AddSeries("EARLY", {1, 2, 3, 4, 5, 6}, 0, 2);
    EXPECT_EQ(Code("CROSS(FAST,EARLY)"), 14);
    EXPECT_EQ(Code("CROSS(FAST)"), 11);
    EXPECT_EQ(Code("CROSS FAST"), 7);
}

TEST_F(Logic, LongCrossNeedsNBarsAtOrBelowBefore) {
    UseCloses({8, 9, 10, 11, 12, 9, 13});
    EXPECT_EQ(Series("LONGCROSS(CLOSE,10,2)", 0, 6), (Values{0, 0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(Series("LONGCROSS(CLOSE,10,1)", 0, 6), (Values{0, 0, 0, 1, 0, 0, 1}));
    EXPECT_EQ(Code("LONGCROSS(CLOSE,10,0)"), 15);
    EXPECT_EQ(Code("LONGCROSS(CLOSE,10,1.5)"), 15);
    EXPECT_EQ(Code("LONGCROSS(10,CLOSE,2)"), 16);
    EXPECT_EQ(Code("LONGCROSS(CLOSE,10)"), 11);
}

TEST_F(Logic, NDayHoldsWhenNotBelowForNBars) {
    UseCloses({8, 9, 10, 11, 12, 9, 13});
    EXPECT_EQ(Series("NDAY(CLOSE,CLOSE,3)", 0, 6), (Values{0, 0, 1, 1, 1, 1, 1}));
    EXPECT_EQ(Series("NDAY(CLOSE,10,2)", 0, 6), (Values{0, 0, 0, 1, 1, 0, 0}));
    EXPECT_EQ(Code("NDAY(5,CLOSE,2)"), 16);
}

// ---- Window statistics ----

struct Window {
    double meanA = 0, meanB = 0, devA = 0, devB = 0, cov = 0;
};

Window Measure(const Values& a, const Values& b, int last, int n) {
    Window w;
    double ab = 0, sa = 0, sb = 0;
    for (int j = last - n + 1; j <= last; ++j) w.meanA += a[j] / n, w.meanB += b[j] / n, ab += a[j] * b[j] / n;
    for (int j = last - n + 1; j <= last; ++j)
        sa += (a[j] - w.meanA) * (a[j] - w.meanA) / n, sb += (b[j] - w.meanB) * (b[j] - w.meanB) / n;
    w.devA = std::sqrt(sa);
    w.devB = std::sqrt(sb);
    w.cov = ab - w.meanA * w.meanB;
    return w;
}

TEST_F(Logic, CovarianceCorrelationAndBetaOverAWindow) {
    const Values closes = {10, 12, 11, 15, 14, 18, 17, 16};
    const Values other = {5, 4, 6, 7, 9, 8, 12, 10};
    UseCloses(closes);
    AddSeries("Y", other, 0, 8);
    const Values covar = Series("COVAR(CLOSE,Y,4)", 3, 7);
    const Values relate = Series("RELATE(CLOSE,Y,4)", 3, 7);
    const Values beta = Series("BETAEX(CLOSE,Y,4)", 3, 7);
    ASSERT_EQ(covar.size(), 5u);
    ASSERT_EQ(relate.size(), 5u);
    ASSERT_EQ(beta.size(), 5u);
    for (int i = 3; i <= 7; ++i) {
        const Window w = Measure(closes, other, i, 4);
        EXPECT_NEAR(covar[i - 3], w.cov, 1e-4) << i;
        EXPECT_NEAR(relate[i - 3], w.cov / (w.devA * w.devB), 1e-5) << i;
        EXPECT_NEAR(beta[i - 3], w.cov / (w.devB * w.devB), 1e-5) << i;
    }
}

TEST_F(Logic, RelateOfASeriesWithItself) {
    UseCloses({3, 7, 2, 9, 4, 4, 4, 4});
    const Values self = Series("RELATE(CLOSE,CLOSE,3)", 2, 7);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(self[k], 1.0f, 1e-5) << k;
    // A flat window has no deviation.
    EXPECT_EQ(self[5], 0.0f);
    EXPECT_EQ(Series("RELATE(CLOSE,VOL,1)", 0, 7), Values(8, 0.0f));
}

// ---- Counts of a condition ----

class Counting : public Logic {
protected:
    // A condition spelled out by the closes: true where the close is 1.
    void UseTruth(const Values& truth) { UseCloses(truth); }
};

TEST_F(Counting, CountWithConstantPeriods) {
    const Values truth = {1, 0, 1, 1, 0, 1, 1, 1};
    UseTruth(truth);
    EXPECT_EQ(Series("COUNT(C,0)", 0, 7), (Values{1, 1, 2, 3, 3, 4, 5, 6}));
    EXPECT_EQ(Series("COUNT(C,1)", 0, 7), truth);
    // Rolling three-bar windows against a plain count.
    Values expected;
    for (int i = 2; i < 8; ++i) expected.push_back(truth[i - 2] + truth[i - 1] + truth[i]);
    EXPECT_EQ(Series("COUNT(C,3)", 2, 7), expected);
    EXPECT_EQ(Series("COUNT(C>0.5 AND O>0,3)", 2, 7), expected);
}

TEST_F(Counting, CountWithASeriesPeriodReadsItPerBar) {
    UseTruth({1, 0, 1, 1, 0, 1, 1, 1});
    AddSeries("S", {0, 1, 2, 3, 3, 1, 0, 2}, 0, 8);
    // A period of 3 counts four bars; windows are cut at the first bar.
    EXPECT_EQ(Series("COUNT(C,S)", 0, 7), (Values{1, 1, 2, 3, 2, 1, 1, 3}));
}

TEST_F(Counting, CountFailures) {
    UseTruth({1, 0, 1, 1, 0, 1, 1, 1});
    EXPECT_EQ(Code("COUNT(C,-1)"), 15);
    EXPECT_EQ(Code("COUNT(C,2.5)"), 15);
    EXPECT_EQ(Code("EXIST(C,2.5)"), 15);
    EXPECT_EQ(Code("COUNT(1,3)"), 16);
    EXPECT_EQ(Code("FILTER(2>1,3)"), 16);
    EXPECT_EQ(Code("COUNT(C,20)"), 14);
    EXPECT_EQ(Code("COUNT(C)"), 11);
    EXPECT_EQ(Code("COUNT(C,1,2)"), 11);
}

TEST_F(Counting, ExistAndEvery) {
    UseTruth({0, 0, 1, 0, 0, 0, 1, 0});
    EXPECT_EQ(Series("EXIST(C,3)", 2, 7), (Values{1, 1, 1, 0, 1, 1}));
    EXPECT_EQ(Series("EVERY(C,1)", 0, 7), (Values{0, 0, 1, 0, 0, 0, 1, 0}));
    // A period of 0 is the current bar only.
    EXPECT_EQ(Series("EXIST(C,0)", 0, 7), (Values{0, 0, 1, 0, 0, 0, 1, 0}));
    UseTruth({1, 0, 1, 1, 0, 1, 1, 1});
    EXPECT_EQ(Series("EVERY(C,2)", 1, 7), (Values{0, 0, 1, 0, 0, 1, 1}));
    EXPECT_EQ(Series("EVERY(C,0)", 0, 7), (Values{1, 0, 1, 1, 0, 1, 1, 1}));
    // A window longer than the data leaves no bar, without an error.
    const nytest::Reading none = Read("EXIST(C,20)");
    EXPECT_EQ(none.code, 0);
    EXPECT_GT(none.from, none.to);
}

TEST_F(Counting, FilterSilencesTheNextNBars) {
    UseTruth({0, 1, 1, 1, 1, 0, 0});
    EXPECT_EQ(Series("FILTER(C,2)", 0, 6), (Values{0, 1, 0, 0, 1, 0, 0}));
    EXPECT_EQ(Series("FILTER(C,0)", 0, 6), (Values{0, 1, 1, 1, 1, 0, 0}));
    EXPECT_EQ(Series("FILTER(C,10)", 0, 6), (Values{0, 1, 0, 0, 0, 0, 0}));
}

TEST_F(Counting, BackSetMarksTheBarsBefore) {
    Values truth(12, 0.0f);
    truth[10] = 1;
    UseTruth(truth);
    Values two(12, 0.0f), one(12, 0.0f);
    two[9] = two[10] = 1;
    one[10] = 1;
    EXPECT_EQ(Series("BACKSET(C,2)", 0, 11), two);
    EXPECT_EQ(Series("BACKSET(C,1)", 0, 11), one);
    EXPECT_EQ(Series("BACKSET(C,0)", 0, 11), one);
}

TEST_F(Counting, BarsSinceNLooksAtTheEarliestSignalInTheWindow) {
    UseTruth({1, 1, 1, 1, 1, 1, 1, 1});
    EXPECT_EQ(Series("BARSSINCEN(C,5)", 0, 7), (Values{0, 0, 0, 0, 0, 4, 4, 4}));
    UseTruth({0, 0, 1, 0, 1, 0, 0, 0});
    EXPECT_EQ(Series("BARSSINCEN(C,3)", 0, 7), (Values{0, 0, 0, 1, 2, 1, 2, 0}));
}

TEST_F(Counting, LastTestsAWindowOfPastBars) {
    UseTruth({1, 1, 1, 0, 1, 1, 1, 1, 1, 1});
    EXPECT_EQ(Series("LAST(C,0,0)", 0, 9), (Values{1, 1, 1, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Series("LAST(C,2,1)", 2, 9), (Values{1, 1, 0, 0, 1, 1, 1, 1}));
    EXPECT_EQ(Series("LAST(C,5,5)", 5, 9), (Values{1, 1, 1, 0, 1}));
    EXPECT_EQ(Series("LAST(C,3,5)", 5, 9), (Values{0, 0, 0, 0, 0}));
    EXPECT_EQ(Code("LAST(C,-1,0)"), 15);
    EXPECT_EQ(Code("LAST(C,1,0.5)"), 15);
    EXPECT_EQ(Code("LAST(1,2,3)"), 16);
    EXPECT_EQ(Code("LAST(C,2)"), 11);
}

TEST_F(Counting, DistancesToTrueBars) {
    UseTruth({0, 0, 0, 1, 0, 0, 0});
    EXPECT_EQ(Series("BARSLAST(C)", 3, 6), (Values{0, 1, 2, 3}));
    UseTruth({0, 1, 0, 0, 1, 0});
    EXPECT_EQ(Series("BARSLAST(C)", 1, 5), (Values{0, 1, 2, 0, 1}));
    EXPECT_EQ(Series("BARSSINCE(C)", 1, 5), (Values{0, 1, 2, 3, 4}));
    // Never true: the last bar alone, holding the bars walked.
    UseTruth({0, 0, 0});
    EXPECT_EQ(Series("BARSLAST(C)", 2, 2), (Values{3}));
    EXPECT_EQ(Series("BARSSINCE(C)", 2, 2), (Values{3}));
    EXPECT_EQ(Code("BARSLAST(1)"), 16);
    EXPECT_EQ(Code("BARSSINCE(C,1)"), 11);
}

TEST_F(Counting, BarsLastCountIsTheRunLength) {
    UseTruth({1, 1, 0, 1});
    EXPECT_EQ(Series("BARSLASTCOUNT(C)", 0, 3), (Values{1, 2, 0, 1}));
    EXPECT_EQ(Code("BARSLASTCOUNT(0)"), 16);
}

// ---- Bar positions ----

TEST_F(Logic, BarsCountIsTheBarIndex) {
    UseCloses({5, 3, 4, 6, 6, 2});
    AddSeries("LATE", {0, 0, 4, 3, 2, 1}, 2, 6);
    EXPECT_EQ(Series("BARSCOUNT(CLOSE)", 0, 5), (Values{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(Series("BARSCOUNT(LATE)", 2, 5), (Values{2, 3, 4, 5}));
    EXPECT_EQ(Code("BARSCOUNT(5)"), 16);
}

TEST_F(Logic, ConstSpreadsTheLastValidValue) {
    UseCloses({5, 3, 4, 6, 6, 2});
    AddSeries("LATE", {0, 0, 4, 3, 2, 1}, 2, 5);
    // The caller's range stays, bars before the argument's included.
    EXPECT_EQ(Series("CONST(LATE)", 0, 5), (Values{2, 2, 2, 2, 2, 2}));
    EXPECT_EQ(Code("CONST(3)"), 16);
}

TEST_F(Logic, TopRangeAndLowRange) {
    UseCloses({5, 3, 4, 6, 6, 2, 7});
    EXPECT_EQ(Series("TOPRANGE(CLOSE)", 0, 6), (Values{0, 0, 1, 3, 0, 0, 6}));
    EXPECT_EQ(Series("LOWRANGE(CLOSE)", 0, 6), (Values{0, 1, 0, 0, 0, 5, 0}));
}

// ---- Ordered search of a window ----

TEST_F(Logic, FindHighAndFindLow) {
    UseCloses({3, 1, 4, 1, 5, 9, 2, 6});
    EXPECT_EQ(Series("FINDHIGH(CLOSE,0,4,1)", 0, 7), (Values{3, 3, 4, 4, 5, 9, 9, 9}));
    // T above M becomes M: the fourth highest of five bars, not the lowest.
    EXPECT_EQ(Series("FINDHIGH(CLOSE,0,4,9)", 0, 7), (Values{3, 1, 1, 1, 1, 1, 2, 2}));
    EXPECT_EQ(Series("FINDHIGH(CLOSE,1,1,5)", 1, 7), (Values{3, 1, 4, 1, 5, 9, 2}));
    EXPECT_EQ(Series("FINDLOW(CLOSE,0,2,2)", 0, 7), (Values{3, 3, 3, 1, 4, 5, 5, 6}));
    // M = 0: the single bar of the window.
    EXPECT_EQ(Series("FINDHIGH(CLOSE,0,0,3)", 0, 7), (Values{3, 1, 4, 1, 5, 9, 2, 6}));
}

TEST_F(Logic, FindLowWindowReachesBelowTheFirstValidBar) {
    UseCloses({3, 1, 4, 1, 5, 9, 2, 6});
    AddSeries("LATE", {0, 0, 4, 3, 2, 1, 7, 8}, 2, 8);
    EXPECT_EQ(Series("FINDLOW(LATE,0,3,1)", 2, 7), (Values{0, 0, 0, 1, 1, 1}));
}

TEST_F(Logic, FindHighFailures) {
    UseCloses({3, 1, 4, 1, 5, 9, 2, 6});
    EXPECT_EQ(Code("FINDHIGH(CLOSE,8,8,1)"), 14);
    EXPECT_EQ(Code("FINDHIGH(CLOSE,0,8,1)"), 14);
    EXPECT_EQ(Code("FINDHIGH(CLOSE,3,2,1)"), 14);
    // -1 is not whole by the rounding rule: trunc(-1 + 0.5) is 0.
    EXPECT_EQ(Code("FINDHIGH(CLOSE,-1,2,1)"), 15);
    EXPECT_EQ(Code("FINDHIGH(CLOSE,0.5,2,1)"), 15);
    EXPECT_EQ(Code("FINDLOW(CLOSE,0,2,1.5)"), 15);
    EXPECT_EQ(Code("FINDHIGH(1,0,2,1)"), 16);
    EXPECT_EQ(Code("FINDHIGH(CLOSE,0,2,CLOSE)"), 12);
    EXPECT_EQ(Code("FINDHIGH(CLOSE,0,2)"), 11);
}

// ---- Readers called on a statement that ends inside their arguments ----

TEST_F(Logic, ArgumentListCutByTheStatementEnd) {
    UseCloses({1, 2, 3});
    for (Reader reader : {&CIndicator::ReadCROSS, &CIndicator::ReadLONGCROSS, &CIndicator::ReadCOUNT,
                          &CIndicator::ReadLAST, &CIndicator::ReadLogicalFun, &CIndicator::ReadBARSCOUNT,
                          &CIndicator::ReadFINDHIGH, &CIndicator::ReadForCla})
        EXPECT_EQ(CallReader(reader, "X", "(C,1;"), 10);
}

// ---- Signals as users write them ----

// Runs a formula over bars of the given closes; each statement is checked over its valid bars.
class Signals : public ::testing::Test {
protected:
    void Expect(const nytest::Formula& f, const std::string& name, short first, const Values& values) {
        const CExpression& e = f[name];
        ASSERT_EQ(e.m_cComputed, 1) << name;
        EXPECT_EQ(e.m_nFirst, first) << name;
        EXPECT_EQ(e.m_nEnd, first + static_cast<short>(values.size())) << name;
        EXPECT_EQ(Values(e.m_pData + first, e.m_pData + e.m_nEnd), values) << name;
    }
};

TEST_F(Signals, GoldenAndDeathCrossOfTwoAverages) {
    Values closes(10, 10.0f);
    for (float c : {11.0f, 12.0f, 13.0f, 12.0f, 11.0f, 10.0f}) closes.push_back(c);
    nytest::Formula f{{"FAST", "MA(CLOSE,3)"}, {"SLOW", "MA(CLOSE,5)"},
                      {"GOLD", "CROSS(FAST,SLOW)"}, {"DEATH", "CROSS(SLOW,FAST)"}};
    ASSERT_EQ(f.Run(nytest::MakeBars(closes)), 1);
    // Flat averages meet at 10 until the first rise lifts the short one above (bar 10: 10.33
    // against 10.2); on the way down it falls below at bar 15 (11 against 11.6).
    Values gold(12, 0.0f), death(12, 0.0f);
    gold[10 - 4] = 1;
    death[15 - 4] = 1;
    Expect(f, "GOLD", 4, gold);
    Expect(f, "DEATH", 4, death);
}

TEST_F(Signals, ThreeRisingClosesInFiveBars) {
    nytest::Formula f{{"UP3", "COUNT(CLOSE>REF(CLOSE,1),5)>=3"}};
    ASSERT_EQ(f.Run(nytest::MakeBars({10, 11, 10, 11, 12, 10, 10, 10, 11, 12, 13})), 1);
    // Rises at bars 1, 3, 4, 8, 9, 10; windows of five from bar 5 on.
    Expect(f, "UP3", 5, {1, 0, 0, 0, 0, 1});
}

TEST_F(Signals, BarsSinceTheLastLimitUp) {
    nytest::Formula f{{"SINCE", "BARSLAST(CLOSE>=REF(CLOSE,1)*1.095)"}};
    ASSERT_EQ(f.Run(nytest::MakeBars({10, 11, 11.5f, 12.65f, 12, 12.5f, 13.75f, 13})), 1);
    // Limit-ups at bars 1, 3 and 6.
    Expect(f, "SINCE", 1, {0, 1, 0, 1, 2, 0, 1});
}

// ---- FORCAL ----

TEST(ForCal, SmoothsFourStatementsInPlace) {
    nytest::Formula f{{"A", "OPEN"}, {"B", "HIGH"}, {"CC", "LOW"}, {"D", "CLOSE"},
                      {"F", "FORCAL(A,B,CC,D)"}, {"E", "D"}};
    const Values closes = {10, 12, 11, 15, 9, 9, 14};
    ASSERT_EQ(f.Run(nytest::MakeBars(closes)), 1);

    // The transform written out over the prices of MakeBars.
    const size_t n = closes.size();
    Values a(n), b(n), c(n), d(n);
    for (size_t i = 0; i < n; ++i) a[i] = closes[i] - 0.5f, b[i] = closes[i] + 1, c[i] = closes[i] - 1, d[i] = closes[i];
    d[0] = static_cast<float>((d[0] * 2.0 + b[0] + c[0]) / 4);
    for (size_t i = 1; i < n; ++i) {
        a[i] = static_cast<float>((static_cast<double>(a[i - 1]) + d[i - 1]) / 2);
        b[i] = std::max(b[i], a[i]);
        c[i] = std::min(c[i], a[i]);
        d[i] = static_cast<float>((d[i] * 2.0 + b[i] + c[i]) / 4);
    }
    for (size_t i = 0; i < n; ++i) {
        EXPECT_EQ(f.At("A", i), a[i]) << i;
        EXPECT_EQ(f.At("B", i), b[i]) << i;
        EXPECT_EQ(f.At("CC", i), c[i]) << i;
        EXPECT_EQ(f.At("D", i), d[i]) << i;
        EXPECT_EQ(f.At("E", i), d[i]) << i;
    }
    // The statement itself has no value of its own.
    EXPECT_EQ(f["F"].m_cComputed, 0);
    EXPECT_EQ(f["E"].m_cComputed, 1);
}

TEST(ForCal, AMissingNameChangesNothing) {
    nytest::Formula f{{"A", "OPEN"}, {"B", "HIGH"}, {"CC", "LOW"}, {"F", "FORCAL(A,B,CC,NONE)"}};
    ASSERT_EQ(f.Run(nytest::MakeBars({10, 12, 11})), 1);
    EXPECT_EQ(f.At("A", 2), 10.5f);
    EXPECT_EQ(f.At("B", 2), 12.0f);
    EXPECT_EQ(f.At("CC", 2), 10.0f);
    EXPECT_EQ(f["F"].m_cComputed, 0);
}

}  // namespace
