// Market words that read the stock, its quote and its market index, over a small installation.

#include <gtest/gtest.h>

#include "host/files.h"
#include "host/stockdb.h"
#include "tests/engine/formula_fixture.h"
#include "tests/host/temp_installation.h"

namespace {

CHisDay IndexDay(int date, float close, int rising, int falling) {
    CHisDay day;
    day.m_lTime = date;
    day.m_fClose = close;
    day.m_fHigh = close + 10;
    day.m_fVolume = 5000;
    day.m_lAdvDec = rising + falling * 1024;
    return day;
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
    nytest::Reading Read(const char* text) { return nytest::ReadValue(ind, text); }

    TempInstallation home;
    std::vector<CHisDay> bars;
    CIndicator ind;
};

TEST_F(MarketWords, IndexWordsReadTheSameDayOfTheMarketIndex) {
    nytest::Reading close = Read("INDEXC");
    ASSERT_EQ(close.code, 0);
    EXPECT_EQ(close.isSeries, 1);
    EXPECT_FLOAT_EQ(close.values[0], 3000.0f);
    EXPECT_FLOAT_EQ(close.values[1], 0.0f);  // the index has no bar that day
    EXPECT_FLOAT_EQ(close.values[2], 3100.0f);
    EXPECT_FLOAT_EQ(Read("INDEXH").values[2], 3110.0f);
    EXPECT_FLOAT_EQ(Read("INDEXV").values[0], 5000.0f);
    EXPECT_FLOAT_EQ(Read("INDEXADV").values[2], 700.0f);
    EXPECT_FLOAT_EQ(Read("INDEXDEC").values[0], 34.0f);
    ind.m_lStockID = 1000002;  // a Shenzhen stock reads the Shenzhen index
    EXPECT_FLOAT_EQ(Read("INDEXC").values[1], 9000.0f);
    EXPECT_FLOAT_EQ(Read("INDEXC").values[0], 0.0f);
}

TEST_F(MarketWords, StockWordsHoldOneValueOnEveryBar) {
    EXPECT_FLOAT_EQ(Read("BUYVOL").values[2], 45.0f);  // outer volume 4500 shares in hands
    EXPECT_FLOAT_EQ(Read("SELLVOL").values[0], 30.0f);
    EXPECT_FLOAT_EQ(Read("CAPITAL").values[1], 500000.0f);
    EXPECT_FLOAT_EQ(Read("ISINDEX").values[1], 0.0f);
    EXPECT_FLOAT_EQ(Read("SETCODE").values[1], 0.0f);
    ind.m_lStockID = 1000002;
    EXPECT_FLOAT_EQ(Read("SETCODE").values[1], 1.0f);
}

TEST_F(MarketWords, MissingStockAndNonIndex) {
    ind.m_lStockID = 600999;
    EXPECT_EQ(Read("BUYVOL").code, 19);
    EXPECT_EQ(Read("SELLVOL").code, 19);
    EXPECT_FLOAT_EQ(Read("CAPITAL").values[1], 0.0f);
    EXPECT_FLOAT_EQ(Read("ISINDEX").values[1], 0.0f);
    EXPECT_EQ(Read("ADVANCE").code, 19);
    ind.m_lStockID = 600001;
    EXPECT_EQ(Read("DECLINE").code, 19);
}

TEST_F(MarketWords, AdvanceAndDeclineOfAnIndexReadItsOwnBars) {
    ind.m_lStockID = 1;
    EXPECT_FLOAT_EQ(Read("ISINDEX").values[0], 1.0f);
    EXPECT_FLOAT_EQ(Read("ADVANCE").values[1], 5.0f);
    EXPECT_FLOAT_EQ(Read("DECLINE").values[1], 6.0f);
    EXPECT_FLOAT_EQ(Read("ADVANCE").values[0], 0.0f);
}

TEST_F(MarketWords, BarPositionWordsUseTheCurrentRange) {
    nytest::Reading curr = Read("CURRBARSCOUNT");
    EXPECT_FLOAT_EQ(curr.values[0], 3.0f);
    EXPECT_FLOAT_EQ(curr.values[2], 1.0f);
    EXPECT_FLOAT_EQ(Read("TOTALBARSCOUNT").values[0], 3.0f);
    nytest::Reading last = Read("ISLASTBAR");
    EXPECT_FLOAT_EQ(last.values[1], 0.0f);
    EXPECT_FLOAT_EQ(last.values[2], 1.0f);
    nytest::Reading pos = Read("POS");
    EXPECT_EQ(pos.code, 0);
    EXPECT_EQ(pos.isSeries, 1);
    EXPECT_FLOAT_EQ(pos.values[1], 0.0f);
}

TEST_F(MarketWords, LoadIndexDayMergesByDate) {
    ASSERT_EQ(ind.LoadIndexDay(0), 1);
    ASSERT_NE(ind.m_pIndexDay, nullptr);
    EXPECT_EQ(ind.m_pIndexDay[0].m_lTime, 20240102);
    EXPECT_EQ(ind.m_pIndexDay[1].m_lTime, 0);
    EXPECT_FLOAT_EQ(ind.m_pIndexDay[2].m_fClose, 3100.0f);
}

}  // namespace
