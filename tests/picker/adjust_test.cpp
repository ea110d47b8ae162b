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

TEST_F(Adjustment, DividendScalesEveryPriceBeforeTheEvent) {
    CHisDay first = Bar(20210104, 10);
    first.m_fOpen = 9.5f;
    const auto bars = Adjusted({first, Bar(20210105, 10), Bar(20210106, 9.8f)}, {Event(20210106, 2)});
    ASSERT_EQ(bars.size(), 3u);
    EXPECT_FLOAT_EQ(bars[0].m_fOpen, 9.5f * 0.98f);
    EXPECT_FLOAT_EQ(bars[0].m_fHigh, 11 * 0.98f);
    EXPECT_FLOAT_EQ(bars[0].m_fLow, 9 * 0.98f);
    EXPECT_FLOAT_EQ(bars[1].m_fClose, 9.8f);
    EXPECT_FLOAT_EQ(bars[2].m_fClose, 9.8f);  // the newest bars stay as stored
    EXPECT_FLOAT_EQ(bars[2].m_fHigh, 10.8f);
    EXPECT_FLOAT_EQ(bars[2].m_fPreClose, 9.8f);  // the bar before, adjusted
    EXPECT_FLOAT_EQ(bars[1].m_fPreClose, 9.8f);
    EXPECT_FLOAT_EQ(bars[0].m_fPreClose, 9.5f);  // the first bar: its stored open
    EXPECT_FLOAT_EQ(bars[0].m_fVolume, 100);     // volumes are never adjusted
}

TEST_F(Adjustment, EventsBetweenBarsActAtTheNextBarAndMultiply) {
    // A bonus dated Saturday and a dividend dated Sunday fall into one gap: 0.98 x 0.5.
    const auto bars = Adjusted({Bar(20210107, 10), Bar(20210108, 10), Bar(20210111, 5)},
                               {Event(20210109, 0, 10), Event(20210110, 2)});
    EXPECT_FLOAT_EQ(bars[0].m_fClose, 10 * (0.98f * 0.5f));
    EXPECT_FLOAT_EQ(bars[1].m_fClose, 10 * (0.98f * 0.5f));
    EXPECT_FLOAT_EQ(bars[2].m_fClose, 5);
}

TEST_F(Adjustment, EventsWithoutEffect) {
    // After the last bar, on the first bar's day, and too small to matter.
    const auto bars =
        Adjusted({Bar(20210104, 10), Bar(20210105, 10), Bar(20210106, 10), Bar(20210107, 10)},
                 {Event(20210104, 2), Event(20210105, 2), Event(20210107, 0.0005f), Event(20210201, 5)});
    // Only the dividend of 01-05 acts, on the bar of 01-04; the tiny one of 01-07 is passed over.
    EXPECT_FLOAT_EQ(bars[0].m_fClose, 9.8f);
    EXPECT_FLOAT_EQ(bars[1].m_fClose, 10);
    EXPECT_FLOAT_EQ(bars[3].m_fClose, 10);
}

TEST_F(Adjustment, CapitalFollowsTheRecordInForce) {
    const std::vector<CHisDay> stored = {Bar(20210104, 10), Bar(20210105, 10), Bar(20210106, 10)};
    const std::vector<CPowerData> records = {Event(20210105, 0, 0, 500), Event(20210106, 0, 0, 600)};
    const auto adjusted = Adjusted(stored, records);
    EXPECT_FLOAT_EQ(adjusted[0].m_fCapital, 0);  // before the oldest record
    EXPECT_FLOAT_EQ(adjusted[1].m_fCapital, 500);
    EXPECT_FLOAT_EQ(adjusted[2].m_fCapital, 600);
    // As stored the capital starts from the record in force at the first bar and follows on.
    market.Power("data/sh/power/600001.pwr", {Event(20210101, 0, 0, 400), Event(20210106, 0, 0, 600)});
    const auto plain = engine.Load(kShare, NY_PERIOD_DAY, 0);
    EXPECT_FLOAT_EQ(plain[0].m_fCapital, 400);
    EXPECT_FLOAT_EQ(plain[1].m_fCapital, 400);
    EXPECT_FLOAT_EQ(plain[2].m_fCapital, 600);
    EXPECT_FLOAT_EQ(plain[2].m_fPreClose, 10);
}

TEST_F(Adjustment, OtherMarketsAreNeverAdjusted) {
    market.Day("data/hk/day/000005.day", {Bar(20210104, 10), Bar(20210105, 5)});
    market.Power("data/hk/power/000005.pwr", {Event(20210105, 0, 10)});
    ASSERT_TRUE(market.Open());
    EXPECT_FLOAT_EQ(engine.Load(kHongKong, NY_PERIOD_DAY, 1)[0].m_fClose, 10);
}

}  // namespace
