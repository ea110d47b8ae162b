// Ex-rights adjustment of the bar pipeline: the record in force, stepping through the list, and
// the factor that scales older prices so that the series runs smoothly into today's.

#include <gtest/gtest.h>

#include "tests/picker/picker_fixture.h"

namespace {

using pickertest::Bar;
using pickertest::Event;

constexpr int kShare = 600001;
constexpr int kShenzhen = 1000002;
constexpr int kHongKong = 2000005;

class Adjustment : public ::testing::Test {
protected:
    Adjustment() : market("SH600001,Share,GP,A\nSZ000002,Two,ET,A\nHK000005,Hk,HK,STOCK\n") {}

    // Bars of the Shanghai share with the given records, adjusted.
    std::vector<CHisDay> Adjusted(const std::vector<CHisDay>& bars,
                                  const std::vector<CPowerData>& oldestFirst) {
        market.Day("data/sh/day/600001.day", bars);
        market.Power("data/sh/power/600001.pwr", oldestFirst);
        EXPECT_TRUE(market.Open());
        return engine.Load(kShare, NY_PERIOD_DAY, 1);
    }

    pickertest::Market market;
    pickertest::Engine engine;
};

TEST_F(Adjustment, RecordInForceAndSteppingNewestFirst) {
    engine.m_arPower = {Event(20210601, 1), Event(20200601, 2), Event(20190601, 3)};
    CPowerData record = Event(7, 7);
    EXPECT_EQ(engine.GetStartCQ(20180101, record), -1);
    EXPECT_EQ(record.m_lDate, 7);  // untouched when nothing qualifies
    EXPECT_EQ(engine.GetStartCQ(20200601, record), 1);
    EXPECT_EQ(engine.GetStartCQ(20991231, record), 0);
    EXPECT_EQ(engine.GetNextCQ(0, record, 0), 1);
    EXPECT_FLOAT_EQ(record.m_fProfit, 2);
    EXPECT_EQ(engine.GetNextCQ(2, record, 0), -1);
    EXPECT_FLOAT_EQ(record.m_fProfit, 2);
    EXPECT_EQ(engine.GetNextCQ(2, record, 1), 1);
    EXPECT_EQ(engine.GetNextCQ(0, record, 1), -1);
}

TEST_F(Adjustment, RecordsByMarket) {
    market.Power("data/sh/power/600001.pwr", {Event(20200601, 1)});
    market.Power("data/sz/power/000002.pwr", {Event(20200601, 2), Event(20210601, 3)});
    market.Power("data/hk/power/000005.pwr", {Event(20200601, 4)});
    ASSERT_TRUE(market.Open());
    engine.m_lStockID = kShare;
    engine.LoadPower();
    ASSERT_EQ(engine.m_arPower.size(), 1u);
    engine.m_lStockID = kShenzhen;
    engine.LoadPower();
    ASSERT_EQ(engine.m_arPower.size(), 2u);
    EXPECT_FLOAT_EQ(engine.m_arPower[0].m_fProfit, 3);  // newest first
    engine.m_lStockID = kHongKong;
    engine.LoadPower();
    EXPECT_TRUE(engine.m_arPower.empty());
    engine.m_lStockID = 1777777;  // unknown: the list stays as it was
    engine.m_arPower = {Event(1, 1)};
    engine.LoadPower();
    EXPECT_EQ(engine.m_arPower.size(), 1u);
}

// Stored bars, records and the adjusted bars that must come of them.
TEST_F(Adjustment, ScaledBars) {
    const struct {
        const char* name;
        const char* stored;
        std::vector<CPowerData> records;
        std::vector<const char*> bars;
    } rows[] = {
        // The newest bars stay as stored; the close before is the bar before, adjusted, and the
        // first bar refers to its stored open; volumes are never adjusted.
        {"dividend scales every price before the event", "20210104:10 open=9.5 20210105:10 20210106:9.8",
         {Event(20210106, 2)},
         {"open=9.31 high=10.78 low=8.82 pre=9.5 volume=100", "close=9.8 pre=9.8", "close=9.8 high=10.8 pre=9.8"}},
        // A bonus dated Saturday and a dividend dated Sunday fall into one gap: 0.98 x 0.5.
        {"events between bars act at the next bar and multiply", "20210107:10 20210108:10 20210111:5",
         {Event(20210109, 0, 10), Event(20210110, 2)},
         {"close=4.9", "close=4.9", "close=5"}},
        // After the last bar, on the first bar's day, and too small to matter: only the dividend of
        // 01-05 acts, on the bar of 01-04.
        {"events without effect", "20210104:10 20210105:10 20210106:10 20210107:10",
         {Event(20210104, 2), Event(20210105, 2), Event(20210107, 0.0005f), Event(20210201, 5)},
         {"close=9.8", "close=10", "", "close=10"}},
        {"capital follows the record in force", "20210104:10 20210105:10 20210106:10",
         {Event(20210105, 0, 0, 500), Event(20210106, 0, 0, 600)},
         {"capital=0", "capital=500", "capital=600"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto bars = Adjusted(pickertest::Bars(row.stored), row.records);
        ASSERT_EQ(bars.size(), row.bars.size());
        for (size_t i = 0; i < bars.size(); ++i) pickertest::ExpectBar(bars[i], row.bars[i]);
    }
}

TEST_F(Adjustment, StoredCapitalStartsFromTheRecordInForce) {
    market.Day("data/sh/day/600001.day", pickertest::Bars("20210104:10 20210105:10 20210106:10"));
    market.Power("data/sh/power/600001.pwr", {Event(20210101, 0, 0, 400), Event(20210106, 0, 0, 600)});
    ASSERT_TRUE(market.Open());
    const auto plain = engine.Load(kShare, NY_PERIOD_DAY, 0);
    pickertest::ExpectBar(plain[0], "capital=400");
    pickertest::ExpectBar(plain[1], "capital=400");
    pickertest::ExpectBar(plain[2], "capital=600 pre=10");
}

TEST_F(Adjustment, OtherMarketsAreNeverAdjusted) {
    market.Day("data/hk/day/000005.day", {Bar(20210104, 10), Bar(20210105, 5)});
    market.Power("data/hk/power/000005.pwr", {Event(20210105, 0, 10)});
    ASSERT_TRUE(market.Open());
    EXPECT_FLOAT_EQ(engine.Load(kHongKong, NY_PERIOD_DAY, 1)[0].m_fClose, 10);
}

}  // namespace
