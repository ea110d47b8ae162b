// WINNER and COST over three hand-made bars of a stock with a float of 10,000 shares. The run's
// prices 10 to 41.25 make buckets of exactly 0.03125; each bar spans four buckets (the last one's
// top clamped to bucket 999), and turnovers of 25%, 50%, 25% keep the decay exact:
//   bar 0: 2500 shares over buckets 0..3           -> 625 each,  total 2500
//   bar 1: halves the old, 5000 over 320..323      -> 312.5 / 1250 each, total 6250
//   bar 2: keeps 75%, 2500 over 996..999            -> 234.375 / 937.5 / 625 each, total 7187.5
// A bucket k's upper edge is 10 + (k + 1) x 0.03125.

#include <gtest/gtest.h>

#include "host/stockdb.h"
#include "tests/engine/formula_fixture.h"
#include "tests/host/temp_installation.h"

namespace {

CHisDay Bar(float low, float high, float volume) {
    return {.m_fOpen = low, .m_fHigh = high, .m_fLow = low, .m_fClose = high, .m_fVolume = volume};
}

class Chips : public ::testing::Test {
protected:
    void SetUp() override {
        home.Write("data/stocks.csv",
                   "code,name,pinyin,kind,capital,total_capital\n"
                   "SH600001,AAA,AAA,A,1,1\n"
                   "SH600002,BBB,BBB,A,0,0\n");
        ASSERT_TRUE(ny::OpenInstallation(home.Path()));
    }
    TempInstallation home;
    std::vector<CHisDay> bars = {Bar(10, 10.09375f, 2500), Bar(20, 20.09375f, 5000),
                                 Bar(41.125f, 41.25f, 2500)};
};

TEST_F(Chips, WinnerAndCostAtEachBar) {
    const struct {
        const char* text;
        int stock;
        EvalCode code;
        float values[3];
    } rows[] = {
        // Bar 0 holds nothing above 10.09375; at bar 1 the price 15 closes bucket 159.
        {"WINNER(15)", 600001, NY_EVAL_OK, {1.0f, 1250.0f / 6250.0f, 937.5f / 7187.5f}},
        {"WINNER(C-C+15)", 600001, NY_EVAL_OK, {1.0f, 1250.0f / 6250.0f, 937.5f / 7187.5f}},
        {"WINNER(50)", 600001, NY_EVAL_OK, {1, 1, 1}},
        {"WINNER(5)", 600001, NY_EVAL_OK, {0, 0, 0}},
        {"WINNER(C-C)", 600001, NY_EVAL_OK, {0, 0, 0}},
        // Half the holdings: bucket 1 at bar 0, 321 at bar 1, 322 at bar 2.
        {"COST(50)", 600001, NY_EVAL_OK, {10.0625f, 20.0625f, 20.09375f}},
        // 90 percent from the top: the highest high seen while only the top bucket holds 10%
        // or more, then bucket 998's edge.
        {"COST(90)", 600001, NY_EVAL_OK, {10.09375f, 20.09375f, 41.21875f}},
        {"COST(100)", 600001, NY_EVAL_OK, {10.09375f, 20.09375f, 41.25f}},
        {"COST(C-C)", 600001, NY_EVAL_OK, {10, 10, 10}},
        // Without a float the capital is five times the largest volume; COST(100) doesn't care.
        {"COST(100)", 600002, NY_EVAL_OK, {10.09375f, 20.09375f, 41.25f}},
        {"WINNER(0)", 600001, NY_EVAL_CONSTANT_ARGUMENT, {}},
        {"COST(0)", 600001, NY_EVAL_CONSTANT_ARGUMENT, {}},
        {"COST(50)", 600009, NY_EVAL_NO_DATA, {}},
        {"COST(50,1)", 600001, NY_EVAL_ARGUMENT_COUNT, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text + std::string(" of ") + std::to_string(row.stock));
        CIndicator ind;
        nytest::AttachBars(ind, bars);
        ind.m_lStockID = row.stock;
        const nytest::Reading r = nytest::ReadValue(ind, row.text);
        ASSERT_EQ(r.code, row.code);
        if (row.code != NY_EVAL_OK) continue;
        EXPECT_EQ(r.from, 0);
        EXPECT_EQ(r.to, 2);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(r.values[i], row.values[i]) << "bar " << i;
    }
}

// A bar whose volume is the whole float takes all older chips away.
TEST_F(Chips, FullTurnoverLeavesOnlyTheNewBar) {
    bars[1].m_fVolume = 10000;
    CIndicator ind;
    nytest::AttachBars(ind, bars);
    ind.m_lStockID = 600001;
    EXPECT_EQ(nytest::ReadValue(ind, "WINNER(15)").values[1], 0.0f);
}

// With the range narrowed by an earlier statement the records no longer line up with the bars:
// the result is 0, and no failure.
TEST_F(Chips, NarrowedRangeGivesZero) {
    nytest::Formula f({{"A", "MA(C,2)"}, {"B", "COST(100)"}});
    f.ind.m_lStockID = 600001;
    f.Run(bars);
    EXPECT_EQ(f["B"].m_cComputed, 1);
    EXPECT_EQ(f["B"].m_nFirst, 1);
    EXPECT_EQ(f.At("B", 1), 0.0f);
    EXPECT_EQ(f.At("B", 2), 0.0f);
}

}  // namespace
