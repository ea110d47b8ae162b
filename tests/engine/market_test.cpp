// Market words that read the stock, its quote and its market index, over a small installation.

#include <gtest/gtest.h>

#include "host/files.h"
#include "host/stockdb.h"
#include "tests/engine/formula_fixture.h"
#include "tests/host/temp_installation.h"

namespace {

CHisDay IndexDay(int date, float close, int rising, int falling) {
    return {.m_lTime = date, .m_fHigh = close + 10, .m_fClose = close, .m_fVolume = 5000, .m_lAdvDec = rising + falling * 1024};
}

class MarketWords : public ::testing::Test {
protected:
    void SetUp() override {
        home.Write("data/stocks.csv",
                   "code,name,pinyin,kind,capital,total_capital\n"
                   "SH000001,SHI,SHI,INDEX+HAND,0,0\n"
                   "SZ399001,SZI,SZI,INDEX+HAND,0,0\n"
                   "SH600001,AAA,AAA,A,5000,8000\n"
                   "SZ000002,BBB,BBB,A,100,100\n");
        home.Write("data/quotes.csv", "date=20240104\ncode,inner,outer\nSH600001,3000,4500\n");
        home.Write("data/sh/day/000001.day",
                   ny::EncodeBars({IndexDay(20240102, 3000, 12, 34), IndexDay(20240104, 3100, 700, 200)}));
        home.Write("data/sz/day/399001.day", ny::EncodeBars({IndexDay(20240103, 9000, 1, 2)}));
        ASSERT_TRUE(ny::OpenInstallation(home.Path()));
        bars = nytest::MakeBars({10, 11, 12});
        bars[1].m_lAdvDec = 5 + 6 * 1024;
        nytest::AttachBars(ind, bars);
        ind.m_lStockID = 600001;
    }
    TempInstallation home;
    std::vector<CHisDay> bars;
    CIndicator ind;
};

TEST_F(MarketWords, ReadTheStockItsQuoteAndItsIndex) {
    const struct {
        int stock;
        const char* text;
        int bar;
        float value;
        EvalCode code = NY_EVAL_OK;
    } rows[] = {
        // The same day of the market's index; the index has no bar on the second day.
        {600001, "INDEXC", 0, 3000},
        {600001, "INDEXC", 1, 0},
        {600001, "INDEXC", 2, 3100},
        {600001, "INDEXH", 2, 3110},
        {600001, "INDEXV", 0, 5000},
        {600001, "INDEXADV", 2, 700},
        {600001, "INDEXDEC", 0, 34},
        // A Shenzhen stock reads the Shenzhen index.
        {1000002, "INDEXC", 1, 9000},
        {1000002, "INDEXC", 0, 0},
        // Stock words hold one value on every bar; the outer volume of 4500 shares in hands.
        {600001, "BUYVOL", 2, 45},
        {600001, "SELLVOL", 0, 30},
        {600001, "CAPITAL", 1, 500000},
        {600001, "ISINDEX", 1, 0},
        {600001, "SETCODE", 1, 0},
        {1000002, "SETCODE", 1, 1},
        // A stock missing from the list, and a stock that is no index.
        {600999, "BUYVOL", 0, 0, NY_EVAL_NO_DATA},
        {600999, "SELLVOL", 0, 0, NY_EVAL_NO_DATA},
        {600999, "CAPITAL", 1, 0},
        {600999, "ISINDEX", 1, 0},
        {600999, "ADVANCE", 0, 0, NY_EVAL_NO_DATA},
        {600001, "DECLINE", 0, 0, NY_EVAL_NO_DATA},
        // An index reads advances and declines from its own bars.
        {1, "ISINDEX", 0, 1},
        {1, "ADVANCE", 1, 5},
        {1, "DECLINE", 1, 6},
        {1, "ADVANCE", 0, 0},
        // Bar positions count in the current range.
        {600001, "CURRBARSCOUNT", 0, 3},
        {600001, "CURRBARSCOUNT", 2, 1},
        {600001, "TOTALBARSCOUNT", 0, 3},
        {600001, "ISLASTBAR", 1, 0},
        {600001, "ISLASTBAR", 2, 1},
        {600001, "POS", 1, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.stock) + " " + row.text + " bar " + std::to_string(row.bar));
        ind.m_lStockID = row.stock;
        const nytest::Reading r = nytest::ReadValue(ind, row.text);
        ASSERT_EQ(r.code, row.code);
        if (row.code != NY_EVAL_OK) continue;
        EXPECT_EQ(r.isSeries, 1);
        EXPECT_EQ(r.values[row.bar], row.value);
    }
}

TEST_F(MarketWords, LoadIndexDayMergesByDate) {
    ASSERT_EQ(ind.LoadIndexDay(0), 1);
    ASSERT_NE(ind.m_pIndexDay, nullptr);
    EXPECT_EQ(ind.m_pIndexDay[0].m_lTime, 20240102);
    EXPECT_EQ(ind.m_pIndexDay[1].m_lTime, 0);
    EXPECT_EQ(ind.m_pIndexDay[2].m_fClose, 3100.0f);
}

}  // namespace
