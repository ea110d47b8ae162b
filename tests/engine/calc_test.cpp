// The run over a formula's statements: what each outcome leaves in the statement, the shared bar
// range, and the limits of a statement's text.

#include <functional>

#include <gtest/gtest.h>

#include "tests/engine/formula_fixture.h"

using nytest::Formula;
using nytest::RisingBars;

namespace {

TEST(Calc, FormulaWithoutStatementsRuns) {
    Formula f({});
    EXPECT_EQ(f.Run(RisingBars(10)), 1);
}

TEST(Calc, RefusesWithoutBarsAndLeavesStatementsAlone) {
    Formula f({{"A", "5"}});
    f.ind.AllocMem(10);
    f.ind.m_nBarCount = 10;
    EXPECT_EQ(f.ind.Calc(0, 10), 0);
    EXPECT_EQ(f["A"].m_cComputed, 0);
    EXPECT_EQ(f["A"].m_nFirst, 30000);
}

TEST(Calc, ConstantStatementFillsTheWholeRange) {
    Formula f({{"X", "5"}});
    ASSERT_EQ(f.Run(RisingBars(100)), 1);
    const CExpression& x = f["X"];
    EXPECT_EQ(x.m_cComputed, 1);
    EXPECT_EQ(x.m_cIsSeries, 0);
    EXPECT_EQ(x.m_nFirst, 0);
    EXPECT_EQ(x.m_nEnd, 100);
    for (int i = 0; i < 100; ++i) ASSERT_EQ(x.m_pData[i], 5.0f) << i;
}

TEST(Calc, SeriesStatementCopiesTheBars) {
    Formula f({{"A", "CLOSE"}});
    f.Run(RisingBars(20));
    EXPECT_EQ(f["A"].m_cIsSeries, 1);
    EXPECT_EQ(f.At("A", 0), 1.0f);
    EXPECT_EQ(f.At("A", 19), 20.0f);
}

TEST(Calc, EmptyStatementFails) {
    Formula f({{"A", ""}, {"B", "1"}});
    f.Run(RisingBars(5));
    EXPECT_EQ(f["A"].m_cComputed, 0);
    EXPECT_EQ(f["B"].m_cComputed, 1);
}

TEST(Calc, FailureDoesNotStopTheNextStatement) {
    Formula f({{"B", "NOWORD"}, {"C", "CLOSE"}});
    f.Run(RisingBars(10));
    EXPECT_EQ(f["B"].m_cComputed, 0);
    EXPECT_EQ(f.At("B", 3), 0.0f);
    EXPECT_EQ(f["C"].m_cComputed, 1);
    EXPECT_EQ(f.At("C", 3), 4.0f);
}

TEST(Calc, NarrowedRangeCarriesToLaterStatements) {
    // The market may be read from bar 3 on: the constant before the first market word is valid
    // from bar 0, everything behind it only from bar 3, constants included.
    Formula f({{"K", "7"}, {"A", "CLOSE"}, {"B", "7"}});
    f.Run(RisingBars(10), 3);
    EXPECT_EQ(f["K"].m_nFirst, 0);
    EXPECT_EQ(f["A"].m_nFirst, 3);
    EXPECT_EQ(f["B"].m_nFirst, 3);
    EXPECT_EQ(f["B"].m_nEnd, 10);
    EXPECT_EQ(f.At("B", 2), 0.0f);
    EXPECT_EQ(f.At("B", 3), 7.0f);
}

TEST(Calc, ConstantDeclaredBehindANarrowingReadsItsValue) {
    Formula f({{"A", "CLOSE"}, {"X", "5"}, {"B", "CLOSE*X"}});
    f.Run(RisingBars(10), 3);
    EXPECT_EQ(f.At("B", 4), 25.0f);
    EXPECT_EQ(f.At("B", 9), 50.0f);
}

TEST(Calc, LaterStatementIsNotComputedYet) {
    Formula f({{"A", "B+1"}, {"B", "CLOSE"}});
    f.Run(RisingBars(5));
    EXPECT_EQ(f["A"].m_cComputed, 0);
    EXPECT_EQ(f["B"].m_cComputed, 1);
}

TEST(Calc, StatementWithoutBufferIsSkipped) {
    Formula f({{"A", "CLOSE"}});
    std::vector<CHisDay> bars = RisingBars(5);
    nytest::AttachBars(f.ind, bars);
    EXPECT_EQ(f.ind.Calc(0, 5), 1);
    EXPECT_EQ(f["A"].m_cComputed, 0);
    EXPECT_EQ(f["A"].m_pData, nullptr);
}

TEST(Calc, LineBreaksInsideAStatementVanish) {
    Formula f({{"A", "CLO\r\nSE+\n1"}});
    f.Run(RisingBars(5));
    ASSERT_EQ(f["A"].m_cComputed, 1);
    EXPECT_EQ(f.At("A", 4), 6.0f);
}

TEST(Calc, StatementOf511BytesRunsAnd512BytesFails) {
    std::string text = "1";
    while (text.size() < 511) text += "+1";
    ASSERT_EQ(text.size(), 511u);
    Formula f({{"A", text}, {"B", text + " "}});
    f.Run(RisingBars(3));
    EXPECT_EQ(f["A"].m_cComputed, 1);
    EXPECT_EQ(f.At("A", 0), 256.0f);
    EXPECT_EQ(f["B"].m_cComputed, 0);
}

TEST(Calc, OverlongTextIsRefusedWithoutOverrun) {
    Formula f({{"A", std::string(5000, '1')}});
    f.Run(RisingBars(3));
    EXPECT_EQ(f["A"].m_cComputed, 0);
}

TEST(Calc, DrawingStatementGetsItsChartArea) {
    Formula f({{"A", "CLOSE"}, {"B", "CLOSE"}, {"N", "CLOSE"}});
    f.ind.m_arExpressions[0]->m_nType = 1;
    f.ind.m_arExpressions[2]->m_nType = 25;
    f.Run(RisingBars(4));
    EXPECT_EQ(f["A"].m_nHasDraw, 1);
    ASSERT_NE(f["A"].m_pPoints, nullptr);
    for (int i = 0; i < 4 * 8; ++i) ASSERT_EQ(f["A"].m_pPoints[i], 0);
    EXPECT_EQ(f["B"].m_nHasDraw, 0);
    EXPECT_EQ(f["B"].m_pPoints, nullptr);
    EXPECT_EQ(f["N"].m_pPoints, nullptr);
}

TEST(Calc, ResultsOnlyWidenUntilChange) {
    Formula f({{"A", "CLOSE"}});
    f.Run(RisingBars(10), 4);
    EXPECT_EQ(f["A"].m_nFirst, 4);
    // A second run without Change keeps the widest range seen.
    f.ind.m_nDrawStart = 6;
    f.ind.Calc(0, 10);
    EXPECT_EQ(f["A"].m_nFirst, 4);
    f.ind.Change();
    EXPECT_EQ(f["A"].m_nFirst, 30000);
    EXPECT_EQ(f["A"].m_cComputed, 0);
}

TEST(Calc, RefSetsItsOwnRangeInsideAStatementRun) {
    // The moved range replaces what the statement before left, as REF's range follows X's.
    Formula f({{"A", "MA(CLOSE,5)"}, {"B", "REF(CLOSE,1)"}});
    f.Run(RisingBars(10));
    EXPECT_EQ(f["A"].m_nFirst, 4);
    EXPECT_EQ(f["B"].m_nFirst, 1);
    EXPECT_EQ(f.At("B", 1), 1.0f);
}

TEST(Calc, WindowsKeepAnEarlierNarrowing) {
    // Behind the longer average, later statements start where it does, with the values of their
    // own windows.
    Formula f({{"A", "MA(CLOSE,5)"}, {"B", "MA(CLOSE,2)"}, {"C", "HHV(CLOSE,0)"},
               {"D", "REFDATE(CLOSE,1240103)"}});
    f.Run(RisingBars(10));
    EXPECT_EQ(f["B"].m_nFirst, 4);
    EXPECT_EQ(f.At("B", 4), 4.5f);
    EXPECT_EQ(f.At("B", 3), 0.0f);
    EXPECT_EQ(f["C"].m_nFirst, 4);
    EXPECT_EQ(f["D"].m_nFirst, 4);
    EXPECT_EQ(f.At("D", 4), 2.0f);
}

TEST(Calc, RecursionAfterANarrowedRange) {
    // EMA reads X from bar 0 and runs through the bars before the range unseen; SMA reads X over
    // the range it is given and starts afresh at its first bar: 2, then (6 + 2 x 2) / 3, ...
    Formula f({{"A", "EMA(CLOSE,3)"}, {"B", "MA(CLOSE,4)*0+EMA(CLOSE,3)"},
               {"D", "MA(CLOSE,4)*0+SMA(CLOSE,3,1)"}});
    f.Run(nytest::MakeBars({2, 4, 8, 2, 6, 1, 9}));
    EXPECT_EQ(f["A"].m_nFirst, 0);
    EXPECT_EQ(f["B"].m_nFirst, 3);
    EXPECT_EQ(f["D"].m_nFirst, 3);
    const float sma[] = {2, 3.33333325f, 2.55555558f, 4.70370388f};
    for (int i = 3; i < 7; ++i) {
        EXPECT_EQ(f.At("B", i), f.At("A", i)) << i;
        EXPECT_EQ(f.At("D", i), sma[i - 3]) << i;
    }
}


// A second run of the same object must read the formula as it stands now: every change of a
// statement's text or name, or of a parameter's name, is seen, though words are kept between runs.
TEST(Calc, EditsBetweenRunsAreSeen) {
    Formula f({{"A", "N*2"}, {"B", "A+1"}});
    f.AddParam("N", 5);
    struct Step {
        const char* what;
        std::function<void(CIndicator&)> edit;
        char computedB;
        float valueB;
    };
    const Step steps[] = {
        {"as written", [](CIndicator&) {}, 1, 11.0f},
        {"text of A", [](CIndicator& ind) { ind.m_arExpressions[0]->m_strText = "N*3"; }, 1, 16.0f},
        {"parameter renamed", [](CIndicator& ind) { ind.m_arParams[0]->m_strName = "M"; }, 0, 0.0f},
        {"A renamed", [](CIndicator& ind) {
             ind.m_arParams[0]->m_strName = "N";
             ind.m_arExpressions[0]->m_strName = "Z";
         }, 0, 0.0f},
        {"B reads Z", [](CIndicator& ind) { ind.m_arExpressions[1]->m_strText = "Z+2"; }, 1, 17.0f},
    };
    for (const Step& step : steps) {
        step.edit(f.ind);
        ASSERT_EQ(f.Run(RisingBars(5)), 1) << step.what;
        EXPECT_EQ(f.ind.m_arExpressions[1]->m_cComputed, step.computedB) << step.what;
        EXPECT_EQ(f.ind.m_arExpressions[1]->m_pData[4], step.valueB) << step.what;
    }
}

}  // namespace
