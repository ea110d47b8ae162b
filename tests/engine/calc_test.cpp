// The run over a formula's statements: what each outcome leaves in the statement, the shared bar
// range, and the limits of a statement's text.

#include <functional>
#include <tuple>

#include <gtest/gtest.h>

#include "tests/engine/formula_fixture.h"

using nytest::Formula;
using nytest::kAnyFirst;
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
    EXPECT_EQ(std::tuple(f["A"].m_cComputed, f["A"].m_nFirst), std::tuple(0, 30000));
}

TEST(Calc, ConstantStatementFillsTheWholeRange) {
    Formula f({{"X", "5"}});
    ASSERT_EQ(f.Run(RisingBars(100)), 1);
    const CExpression& x = f["X"];
    EXPECT_EQ(std::tuple(x.m_cComputed, x.m_cIsSeries, x.m_nFirst, x.m_nEnd), std::tuple(1, 0, 0, 100));
    EXPECT_EQ(std::vector<float>(x.m_pData, x.m_pData + 100), std::vector<float>(100, 5.0f));
}

TEST(Calc, WhatEachStatementOfARunGives) {
    std::string sum511 = "1";
    while (sum511.size() < 511) sum511 += "+1";
    nytest::ExpectRuns({
        {"a series copies the bars", {{"A", "CLOSE"}}, RisingBars(20), 0, {{"A", 1, 0, {{0, 1}, {19, 20}}}}},
        {"an empty statement fails alone", {{"A", ""}, {"B", "1"}}, RisingBars(5), 0,
         {{"A", 0, kAnyFirst, {}}, {"B", 1, 0, {}}}},
        {"a failure does not stop the next statement", {{"B", "NOWORD"}, {"C", "CLOSE"}}, RisingBars(10), 0,
         {{"B", 0, kAnyFirst, {{3, 0}}}, {"C", 1, 0, {{3, 4}}}}},
        // The constant before the first market word is valid from bar 0, everything behind it
        // only from where the market may be read, constants included.
        {"a narrowed range carries to later statements", {{"K", "7"}, {"A", "CLOSE"}, {"B", "7"}}, RisingBars(10), 3,
         {{"K", 1, 0, {}}, {"A", 1, 3, {}}, {"B", 1, 3, {{2, 0}, {3, 7}, {9, 7}}}}},
        {"a constant behind a narrowing reads its value", {{"A", "CLOSE"}, {"X", "5"}, {"B", "CLOSE*X"}},
         RisingBars(10), 3, {{"B", 1, kAnyFirst, {{4, 25}, {9, 50}}}}},
        {"a later statement is not computed yet", {{"A", "B+1"}, {"B", "CLOSE"}}, RisingBars(5), 0,
         {{"A", 0, kAnyFirst, {}}, {"B", 1, 0, {}}}},
        {"line breaks inside a statement vanish", {{"A", "CLO\r\nSE+\n1"}}, RisingBars(5), 0, {{"A", 1, 0, {{4, 6}}}}},
        {"511 bytes run, 512 fail", {{"A", sum511}, {"B", sum511 + " "}}, RisingBars(3), 0,
         {{"A", 1, 0, {{0, 256}}}, {"B", 0, kAnyFirst, {}}}},
        {"an overlong text is refused without overrun", {{"A", std::string(5000, '1')}}, RisingBars(3), 0,
         {{"A", 0, kAnyFirst, {}}}},
        // The moved range replaces what the statement before left, as REF's range follows X's.
        {"REF sets its own range", {{"A", "MA(CLOSE,5)"}, {"B", "REF(CLOSE,1)"}}, RisingBars(10), 0,
         {{"A", 1, 4, {}}, {"B", 1, 1, {{1, 1}}}}},
        // Behind the longer average, later statements start where it does, with the values of
        // their own windows.
        {"windows keep an earlier narrowing",
         {{"A", "MA(CLOSE,5)"}, {"B", "MA(CLOSE,2)"}, {"C", "HHV(CLOSE,0)"}, {"D", "REFDATE(CLOSE,1240103)"}},
         RisingBars(10), 0, {{"B", 1, 4, {{3, 0}, {4, 4.5f}}}, {"C", 1, 4, {}}, {"D", 1, 4, {{4, 2}}}}},
    });
}

// Draw commands narrow the range for the statements behind them; DRAWNUMBER does not.
TEST(Calc, RangeLeftByDrawCommands) {
    const std::pair<const char*, short> rows[] = {
        {"STICKLINE(REF(C,1)>0,0,C,1,0)", 1}, {"DRAWNUMBER(REF(C,1)>0,L,C)", 0}, {"PLOYLINE(C>0,REF(C,2))", 2}};
    for (const auto& [text, first] : rows) {
        Formula f({{"X", text}, {"Y", "C"}});
        f.Run(RisingBars(4));
        EXPECT_EQ(f["Y"].m_nFirst, first) << text;
    }
}

TEST(Calc, StatementWithoutBufferIsSkipped) {
    Formula f({{"A", "CLOSE"}});
    std::vector<CHisDay> bars = RisingBars(5);
    nytest::AttachBars(f.ind, bars);
    EXPECT_EQ(f.ind.Calc(0, 5), 1);
    EXPECT_EQ(f["A"].m_cComputed, 0);
    EXPECT_EQ(f["A"].m_pData, nullptr);
}

TEST(Calc, DrawingStatementGetsItsChartArea) {
    Formula f({{"A", "CLOSE"}, {"B", "CLOSE"}, {"N", "CLOSE"}});
    f.ind.m_arExpressions[0]->m_nType = 1;
    f.ind.m_arExpressions[2]->m_nType = 25;
    f.Run(RisingBars(4));
    EXPECT_EQ(f["A"].m_nHasDraw, 1);
    ASSERT_NE(f["A"].m_pPoints, nullptr);
    for (int i = 0; i < 4 * 8; ++i) ASSERT_EQ(f["A"].m_pPoints[i], 0);
    EXPECT_EQ(std::tuple(f["B"].m_nHasDraw, f["B"].m_pPoints, f["N"].m_pPoints), std::tuple(0, nullptr, nullptr));
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
    EXPECT_EQ(std::tuple(f["A"].m_nFirst, f["A"].m_cComputed), std::tuple(30000, 0));
}

TEST(Calc, RecursionAfterANarrowedRange) {
    // EMA reads X from bar 0 and runs through the bars before the range unseen; SMA reads X over
    // the range it is given and starts afresh at its first bar: 2, then (6 + 2 x 2) / 3, ...
    Formula f({{"A", "EMA(CLOSE,3)"}, {"B", "MA(CLOSE,4)*0+EMA(CLOSE,3)"},
               {"D", "MA(CLOSE,4)*0+SMA(CLOSE,3,1)"}});
    f.Run(nytest::MakeBars({2, 4, 8, 2, 6, 1, 9}));
    EXPECT_EQ(std::tuple(f["A"].m_nFirst, f["B"].m_nFirst, f["D"].m_nFirst), std::tuple(0, 3, 3));
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
