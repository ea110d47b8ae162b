// The two-argument series functions: references, sums and averages, recursive averages, window
// statistics, SMA and RANGE, their ranges and their codes.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "tests/engine/formula_fixture.h"

using nytest::Formula;
using nytest::MakeBars;
using nytest::ReadValue;

namespace {

class Averages : public ::testing::Test {
protected:
    void SetUp() override { Use(nytest::RisingBars(10)); }

    // Closes 1..n unless given; the evaluation spans all bars.
    void Use(std::vector<CHisDay> newBars) {
        bars = std::move(newBars);
        nytest::AttachBars(ind, bars);
        ind.m_nCurSpan = static_cast<short>(ind.m_nDrawEnd - ind.m_nDrawStart);
    }
    void UseCloses(const std::vector<float>& closes) { Use(MakeBars(closes)); }

    nytest::Reading Series(const std::string& text) {
        nytest::Reading r = ReadValue(ind, text);
        EXPECT_EQ(r.code, 0) << text;
        EXPECT_EQ(r.isSeries, 1) << text;
        return r;
    }
    void ExpectRange(const nytest::Reading& r, short from, short to) {
        EXPECT_EQ(r.from, from);
        EXPECT_EQ(r.to, to);
    }
    // Bars from..to of a reading equal `expected`, exactly.
    void ExpectValues(const nytest::Reading& r, int from, const std::vector<float>& expected) {
        for (size_t k = 0; k < expected.size(); ++k)
            EXPECT_EQ(r.values[from + k], expected[k]) << "bar " << from + k;
    }
    char Code(const std::string& text) { return ReadValue(ind, text).code; }

    CIndicator ind;
    std::vector<CHisDay> bars;
};

// ---- REF, REFDATE, SUMBARS ----

TEST_F(Averages, RefWithAConstantPeriodMovesTheRange) {
    nytest::Reading back = Series("REF(CLOSE,2)");
    ExpectRange(back, 2, 9);
    ExpectValues(back, 2, {1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(back.values[1], 0.0f);

    nytest::Reading ahead = Series("REF(CLOSE,-2)");
    ExpectRange(ahead, 0, 7);
    ExpectValues(ahead, 0, {3, 4, 5, 6, 7, 8, 9, 10});
    EXPECT_EQ(ahead.values[8], 0.0f);

    nytest::Reading same = Series("REF(CLOSE,0)");
    ExpectRange(same, 0, 9);
    ExpectValues(same, 0, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
}

TEST_F(Averages, RefCanWidenTheLastBarUpToTheSeriesEnd) {
    // X ends at bar 7; one bar back, the result ends at bar 8 and shows X's last value there.
    nytest::Reading r = Series("REF(REF(CLOSE,-2),1)");
    ExpectRange(r, 1, 8);
    EXPECT_EQ(r.values[8], 10.0f);
    ExpectRange(Series("REF(CLOSE,1)"), 1, 9);
}

TEST_F(Averages, RefRoundsAConstantPeriodButTruncatesASeriesPeriod) {
    nytest::Reading constant = Series("REF(CLOSE,1.7)");
    ExpectRange(constant, 2, 9);
    EXPECT_EQ(constant.values[5], 4.0f);
    EXPECT_EQ(Series("REF(CLOSE,2.5)").from, 3);

    // The same periods as series: 1.7 is one bar back, 2.5 two; the range is not shifted.
    nytest::Reading series = Series("REF(CLOSE,CLOSE-CLOSE+1.7)");
    ExpectRange(series, 0, 9);
    ExpectValues(series, 0, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    nytest::Reading twoAndHalf = Series("REF(CLOSE,CLOSE-CLOSE+2.5)");
    ExpectValues(twoAndHalf, 0, {0, 0, 1, 2, 3});
}

TEST_F(Averages, RefWithANegativeSeriesPeriodReadsForwardAndZeroPastTheEnd) {
    nytest::Reading r = Series("REF(CLOSE,CLOSE-CLOSE-3)");
    ExpectValues(r, 5, {9, 10, 0, 0, 0});
}

TEST_F(Averages, RefSetsItsOwnRangeInsideAStatementRun) {
    // The moved range replaces what the statement before left, as REF's range follows X's.
    Formula f({{"A", "MA(CLOSE,5)"}, {"B", "REF(CLOSE,1)"}});
    f.Run(nytest::RisingBars(10));
    EXPECT_EQ(f["A"].m_nFirst, 4);
    EXPECT_EQ(f["B"].m_nFirst, 1);
    EXPECT_EQ(f.At("B", 1), 1.0f);
}

TEST_F(Averages, WindowsKeepAnEarlierNarrowing) {
    // The shorter average behind the longer one starts where the longer one does, in one
    // expression and across the statements of a run, with the values of its own window.
    nytest::Reading difference = Series("MA(CLOSE,4)-MA(CLOSE,2)");
    ExpectRange(difference, 3, 9);
    for (int i = 3; i < 10; ++i) EXPECT_EQ(difference.values[i], -1.0f) << i;
    EXPECT_EQ(difference.values[1], 0.0f);

    Formula f({{"A", "MA(CLOSE,5)"}, {"B", "MA(CLOSE,2)"}, {"C", "HHV(CLOSE,0)"},
               {"D", "REFDATE(CLOSE,1240103)"}});
    f.Run(nytest::RisingBars(10));
    EXPECT_EQ(f["B"].m_nFirst, 4);
    EXPECT_EQ(f.At("B", 4), 4.5f);
    EXPECT_EQ(f.At("B", 3), 0.0f);
    EXPECT_EQ(f["C"].m_nFirst, 4);
    EXPECT_EQ(f["D"].m_nFirst, 4);
    EXPECT_EQ(f.At("D", 4), 2.0f);
}

TEST_F(Averages, RefDateTakesTheValueOfTheDatedBar) {
    // Bars are dated 20240102 onwards; 1240105 is 2024-01-05, bar 3.
    nytest::Reading r = Series("REFDATE(CLOSE,1240105)");
    ExpectRange(r, 0, 9);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(r.values[i], 4.0f) << i;
    EXPECT_EQ(Code("REFDATE(CLOSE,1240201)"), 3);
    EXPECT_EQ(Code("REFDATE(CLOSE,0)"), 14);
    ind.m_nPeriod = NY_PERIOD_WEEK;
    EXPECT_EQ(Code("REFDATE(CLOSE,1240105)"), 14);
}

TEST_F(Averages, SumBarsCountsBackUntilTheSumIsReached) {
    nytest::Reading r = Series("SUMBARS(CLOSE,6)");
    ExpectRange(r, 0, 9);
    ExpectValues(r, 0, {99999, 99999, 3, 2, 2, 1, 1});
    EXPECT_EQ(Code("SUMBARS(CLOSE,0)"), 14);
}

// ---- SUM and MA ----

TEST_F(Averages, SumWindowsAndTheCumulativeSum) {
    nytest::Reading window = Series("SUM(CLOSE,3)");
    ExpectRange(window, 2, 9);
    ExpectValues(window, 2, {6, 9, 12, 15, 18, 21, 24, 27});
    nytest::Reading cumulative = Series("SUM(CLOSE,0)");
    ExpectRange(cumulative, 0, 9);
    ExpectValues(cumulative, 0, {1, 3, 6, 10, 15, 21, 28, 36, 45, 55});
    // From X's first bar, not from the start of the series.
    ExpectValues(Series("SUM(REF(CLOSE,2),0)"), 2, {1, 3, 6});
    ExpectValues(Series("SUM(CLOSE,1)"), 0, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
}

TEST_F(Averages, MovingAverage) {
    nytest::Reading r = Series("MA(CLOSE,4)");
    ExpectRange(r, 3, 9);
    ExpectValues(r, 3, {2.5f, 3.5f, 4.5f, 5.5f, 6.5f, 7.5f, 8.5f});
    ExpectRange(Series("MA(CLOSE,10)"), 9, 9);
}

TEST_F(Averages, MovingSumRollsAndDividesAtTheEnd) {
    // 16777216 + 1 is not a float: the seed loses the 1, and the rolled sum keeps that loss.
    // A sum recomputed per window would give 1 from bar 2 on.
    UseCloses({16777216.0f, 1, 1, 1, 1, 1});
    nytest::Reading r = Series("MA(CLOSE,2)");
    ExpectRange(r, 1, 5);
    ExpectValues(r, 1, {8388608.0f, 0.5f, 0.5f, 0.5f, 0.5f});
}

TEST_F(Averages, PeriodLongerThanTheSpanFailsOnlyForMaSumAndRuns) {
    EXPECT_EQ(Code("MA(CLOSE,11)"), 15);
    EXPECT_EQ(Code("SUM(CLOSE,11)"), 15);
    EXPECT_EQ(Code("UPNDAY(CLOSE,11)"), 15);
    EXPECT_EQ(Code("DOWNNDAY(CLOSE,11)"), 15);
    // HHV succeeds with an empty range, which the next word of the expression refuses.
    nytest::Reading hhv = ReadValue(ind, "HHV(CLOSE,11)");
    EXPECT_EQ(hhv.code, 0);
    EXPECT_GT(hhv.from, hhv.to);
    for (float v : hhv.values) EXPECT_EQ(v, 0.0f);
    EXPECT_EQ(Code("HHV(CLOSE,11)+CLOSE"), 14);
    EXPECT_EQ(Code("EMA(HHV(CLOSE,11),3)"), 14);
}

TEST_F(Averages, MaOfPeriodZeroDividesByZero) {
    nytest::Reading r = Series("MA(CLOSE,0)");
    ExpectRange(r, 0, 9);
    for (int i = 0; i < 10; ++i) EXPECT_FALSE(std::isfinite(r.values[i])) << i;
}

// ---- Recursive averages ----

TEST_F(Averages, EmaStartsAtTheFirstValue) {
    UseCloses({2, 4, 8, 2});
    // ((N-1)·y + 2·x) / (N+1) with N = 3.
    ExpectValues(Series("EMA(CLOSE,3)"), 0, {2, 3, 5.5f, 3.75f});
    ExpectValues(Series("EXPMA(CLOSE,3)"), 0, {2, 3, 5.5f, 3.75f});
    ExpectValues(Series("EMA(CLOSE,1)"), 0, {2, 4, 8, 2});
    // N = 0 gives 2·x - y; the period series counts with its bar-0 value only.
    ExpectValues(Series("EMA(CLOSE,0)"), 0, {2, 6, 10, -6});
    ExpectValues(Series("EMA(CLOSE,CLOSE+1)"), 0, {2, 3, 5.5f, 3.75f});
}

TEST_F(Averages, RecursionAfterANarrowedRange) {
    // EMA reads X from bar 0 and runs through the bars before the range unseen; SMA reads X over
    // the range it is given and starts afresh at its first bar.
    Formula f({{"A", "EMA(CLOSE,3)"}, {"B", "MA(CLOSE,4)*0+EMA(CLOSE,3)"},
               {"D", "MA(CLOSE,4)*0+SMA(CLOSE,3,1)"}});
    const std::vector<float> closes = {2, 4, 8, 2, 6, 1, 9};
    f.Run(MakeBars(closes));
    EXPECT_EQ(f["A"].m_nFirst, 0);
    EXPECT_EQ(f["B"].m_nFirst, 3);
    EXPECT_EQ(f["D"].m_nFirst, 3);
    float sma = closes[3];
    for (int i = 3; i < 7; ++i) {
        EXPECT_EQ(f.At("B", i), f.At("A", i)) << i;
        if (i > 3) sma = static_cast<float>((closes[i] + 2.0 * sma) / 3);
        EXPECT_EQ(f.At("D", i), sma) << i;
    }
}

TEST_F(Averages, DmaWeights) {
    UseCloses({2, 4, 8});
    ExpectValues(Series("DMA(CLOSE,0.5)"), 0, {2, 3, 5.5f});
    ExpectValues(Series("DMA(CLOSE,1.5)"), 0, {2, 4, 8});
    ExpectValues(Series("DMA(CLOSE,-1)"), 0, {2, 2, 2});
    // A weight per bar: 0.2, 0.4, 0.8.
    nytest::Reading r = Series("DMA(CLOSE,CLOSE/10)");
    const float a1 = 0.4f, a2 = 0.8f;
    const float y1 = static_cast<float>((1.0 - a1) * 2 + 4.0 * a1);
    const float y2 = static_cast<float>((1.0 - a2) * y1 + 8.0 * a2);
    ExpectValues(r, 0, {2, y1, y2});
}

TEST_F(Averages, MemaSeedsWithTheMeanThenSmooths) {
    UseCloses({2, 4, 8, 6});
    nytest::Reading r = Series("MEMA(CLOSE,2)");
    ExpectRange(r, 1, 3);
    ExpectValues(r, 1, {3, 5.5f, 5.75f});
    ExpectValues(Series("EXPMEMA(CLOSE,2)"), 1, {3, 5.5f, 5.75f});
}

// ---- Window statistics ----

TEST_F(Averages, HighestAndLowestAndBarsSince) {
    UseCloses({5, 3, 8, 1, 4, 7, 2, 6});
    nytest::Reading high = Series("HHV(CLOSE,3)");
    ExpectRange(high, 2, 7);
    ExpectValues(high, 2, {8, 8, 8, 7, 7, 7});
    ExpectValues(Series("LLV(CLOSE,3)"), 2, {3, 1, 1, 1, 2, 2});
    ExpectValues(Series("HHVBARS(CLOSE,3)"), 2, {0, 1, 2, 0, 1, 2});
    ExpectValues(Series("LLVBARS(CLOSE,3)"), 2, {1, 0, 1, 2, 0, 1});
    nytest::Reading one = Series("HHV(CLOSE,1)");
    ExpectRange(one, 0, 7);
    ExpectValues(one, 0, {5, 3, 8, 1, 4, 7, 2, 6});
}

TEST_F(Averages, OfEqualExtremesTheLatestCounts) {
    UseCloses({2, 5, 5, 1, 1});
    ExpectValues(Series("HHVBARS(CLOSE,3)"), 2, {0, 1, 2});
    ExpectValues(Series("LLVBARS(CLOSE,3)"), 2, {2, 0, 0});
}

TEST_F(Averages, PeriodZeroReachesBackToBarZero) {
    UseCloses({5, 3, 8, 1, 4, 7, 2, 6});
    ExpectValues(Series("HHV(CLOSE,0)"), 0, {5, 5, 8, 8, 8, 8, 8, 8});
    ExpectValues(Series("HHV(CLOSE,-2)"), 0, {5, 5, 8, 8, 8, 8, 8, 8});
    ExpectValues(Series("LLVBARS(CLOSE,0)"), 0, {0, 0, 1, 0, 1, 2, 3, 4});

    // Bars before X's first value hold 0 and take part: the lowest of positive averages is 0,
    // the highest of negative ones too, and the range starts one bar before X's.
    Use(nytest::RisingBars(10));
    nytest::Reading low = Series("LLV(MA(CLOSE,5),0)");
    ExpectRange(low, 3, 9);
    for (int i = 3; i < 10; ++i) EXPECT_EQ(low.values[i], 0.0f) << i;
    nytest::Reading high = Series("HHV(MA(0-CLOSE,5),0)");
    ExpectRange(high, 3, 9);
    for (int i = 3; i < 10; ++i) EXPECT_EQ(high.values[i], 0.0f) << i;
}

TEST_F(Averages, RunsUpAndDown) {
    UseCloses({1, 2, 3, 3, 2, 4, 5, 6});
    nytest::Reading up = Series("UPNDAY(CLOSE,2)");
    ExpectRange(up, 1, 7);
    ExpectValues(up, 1, {1, 1, 1, 0, 0, 1, 1});
    ExpectValues(Series("DOWNNDAY(CLOSE,2)"), 1, {0, 0, 0, 1, 0, 0, 0});
    ExpectValues(Series("UPNDAY(CLOSE,0)"), 0, {1, 1, 1, 1, 1, 1, 1, 1});

    UseCloses({4, 4, 4, 4});
    ExpectValues(Series("UPNDAY(CLOSE,3)"), 2, {1, 1});
    ExpectValues(Series("DOWNNDAY(CLOSE,3)"), 2, {1, 1});
}

TEST_F(Averages, DeviationsOverAWindow) {
    // Mean 5, deviations 3 1 1 1 0 0 2 4, squares summing to 32.
    UseCloses({2, 4, 4, 4, 5, 5, 7, 9});
    nytest::Reading std = Series("STD(CLOSE,8)");
    ExpectRange(std, 7, 7);
    EXPECT_EQ(std.values[7], 2.0f);
    EXPECT_EQ(Series("STDP(CLOSE,8)").values[7], 2.0f);
    EXPECT_EQ(Series("DEVSQ(CLOSE,8)").values[7], 32.0f);
    EXPECT_EQ(Series("VARP(CLOSE,8)").values[7], 4.0f);
    EXPECT_EQ(Series("VAR(CLOSE,8)").values[7], static_cast<float>(32.0 / 7));
    EXPECT_EQ(Series("AVEDEV(CLOSE,8)").values[7], 1.5f);

    ExpectValues(Series("STD(CLOSE,1)"), 0, {0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_TRUE(std::isnan(Series("VAR(CLOSE,1)").values[3]));
}

TEST_F(Averages, LineFitSlopeAndForecast) {
    UseCloses({1, 4, 9, 16, 25});
    // Bar 2: k = 1 2 3, y = 1 4 9: b = 4, a = -10/3, value at k = 3 is 12 - 10/3.
    EXPECT_EQ(Series("SLOPE(CLOSE,3)").values[2], 4.0f);
    const float a = static_cast<float>((14.0 - 4.0 * 6) / 3);
    EXPECT_EQ(Series("FORCAST(CLOSE,3)").values[2], static_cast<float>(3.0 * 4 + a));
    // Bar 4: y = 9 16 25, b = 8.
    EXPECT_EQ(Series("SLOPE(CLOSE,3)").values[4], 8.0f);

    ExpectValues(Series("FORCAST(CLOSE,2)"), 1, {4, 9, 16, 25});
    ExpectValues(Series("FORCAST(CLOSE,1)"), 0, {1, 4, 9, 16, 25});
    EXPECT_TRUE(std::isnan(Series("SLOPE(CLOSE,1)").values[2]));

    Use(nytest::RisingBars(10));
    nytest::Reading line = Series("FORCAST(CLOSE,5)");
    ExpectValues(line, 4, {5, 6, 7, 8, 9, 10});
}

// ---- SMA and RANGE ----

TEST_F(Averages, SmaHasNoStartUpBars) {
    UseCloses({3, 6, 9, 12});
    nytest::Reading r = Series("SMA(CLOSE,3,1)");
    ExpectRange(r, 0, 3);
    const float y2 = static_cast<float>((9.0 + 2.0 * 4) / 3);
    const float y3 = static_cast<float>((12.0 + 2.0 * y2) / 3);
    ExpectValues(r, 0, {3, 4, y2, y3});
}

TEST_F(Averages, SmaWeightAndWholeNumberTests) {
    EXPECT_EQ(Code("SMA(CLOSE,5,5)"), 15);
    EXPECT_EQ(Code("SMA(CLOSE,1,1)"), 15);
    EXPECT_EQ(Code("SMA(CLOSE,3,0)"), 15);
    EXPECT_EQ(Code("SMA(CLOSE,3,1.5)"), 15);
    EXPECT_EQ(Code("SMA(CLOSE,10,1)"), 14);  // the span is 10 bars
    EXPECT_EQ(Code("SMA(CLOSE,-10,1)"), 14);
    EXPECT_EQ(Code("SMA(CLOSE,9,1)"), 0);
    EXPECT_EQ(Code("SMA(CLOSE,2.6,1.0000001)"), 0);  // 3 and 1
}

TEST_F(Averages, RangeTestsStrictlyBetweenWholeBounds) {
    nytest::Reading r = Series("RANGE(CLOSE,1.4,3)");
    ExpectValues(r, 0, {0, 1, 0, 0});
    ExpectValues(Series("RANGE(CLOSE,2,6)"), 0, {0, 0, 1, 1, 1, 0});
    EXPECT_EQ(Code("RANGE(CLOSE,1,2.5)"), 15);
}

TEST_F(Averages, ThirdArgumentOfSmaTakesConstantsOnly) {
    auto* p = new CParam;
    p->m_strName = "M";
    p->m_nDefault = 1;
    ind.m_arParams.push_back(p);
    EXPECT_EQ(Code("SMA(CLOSE,5,M)"), 0);
    EXPECT_EQ(Code("SMA(CLOSE,5,VOL)"), 12);
    EXPECT_EQ(Code("SMA(CLOSE,5,MA(CLOSE,2))"), 12);
}

// ---- Periods beyond any window ----

TEST_F(Averages, ExtremePeriodsStayInsideTheSeries) {
    EXPECT_EQ(Code("MA(CLOSE,100000000000)"), 15);
    for (const char* text : {"HHV(CLOSE,100000000000)", "REF(CLOSE,100000000000)",
                             "REF(CLOSE,0-100000000000)", "STD(CLOSE,100000)"}) {
        nytest::Reading r = ReadValue(ind, text);
        EXPECT_EQ(r.code, 0) << text;
        EXPECT_GT(r.from, r.to) << text;
    }
    // Windows reaching before bar 0 or behind the last bar read nothing outside the series.
    for (const char* text : {"MA(CLOSE,-3)", "SUM(CLOSE,-3)", "MEMA(CLOSE,-3)", "AVEDEV(CLOSE,-5)",
                             "FORCAST(CLOSE,-3)", "UPNDAY(CLOSE,-2)", "STD(CLOSE,CLOSE*1000)",
                             "SLOPE(CLOSE,CLOSE*1000)", "HHVBARS(CLOSE,CLOSE*1000)",
                             "EMA(CLOSE,100000000000)", "DMA(CLOSE,CLOSE*1000)"})
        EXPECT_EQ(Code(text), 0) << text;
    ExpectValues(Series("REF(CLOSE,CLOSE*1000)"), 0, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    ExpectValues(Series("REF(CLOSE,0-CLOSE*100000000000)"), 0, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    ExpectValues(Series("SUMBARS(CLOSE,100000000000)"), 9, {99999});
    EXPECT_EQ(Code("REFDATE(CLOSE,100000000000)"), 3);
}

// ---- Codes of the argument list ----

TEST_F(Averages, CodesOfTheArgumentList) {
    EXPECT_EQ(Code("MA CLOSE"), 7);
    EXPECT_EQ(Code("MA (CLOSE,2)"), 0);
    EXPECT_EQ(Code("MA(CLOSE)"), 11);
    EXPECT_EQ(Code("MA(CLOSE,2,3)"), 11);
    EXPECT_EQ(Code("SMA(CLOSE,3)"), 11);
    EXPECT_EQ(Code("MA(5,2)"), 16);
    EXPECT_EQ(Code("SMA(5,3,1)"), 16);
    EXPECT_EQ(Code("MA(CLOSE,NOWORD)"), 7);
    EXPECT_EQ(Code("MA(NOWORD,2)"), 7);
    // A constant context refuses the whole family before its arguments are read.
    EXPECT_EQ(Code("SMA(CLOSE,3,MA(5,2))"), 12);
}

TEST_F(Averages, UnclosedArgumentListGivesTen) {
    // The statement's ";" before the closing parenthesis, as text that reaches the reader.
    char ma[] = "(CLOSE,5;";
    char sma[] = "(CLOSE,5,1;";
    float out[10] = {};
    short from = 0, to = 9;
    char isSeries = 1;
    ind.m_pCursor = ma;
    EXPECT_EQ(ind.ReadMA(const_cast<char*>("MA"), out, &from, &to, 1, &isSeries), 10);
    ind.m_pCursor = sma;
    EXPECT_EQ(ind.ReadSMA(const_cast<char*>("SMA"), out, &from, &to, 1, &isSeries), 10);
}

}  // namespace
