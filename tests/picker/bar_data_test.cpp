// The bar pipeline: stored bars, today's data, period grouping, merging, runs up and down; and
// the whole pipeline over a generated market against an aggregation of our own.

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <tuple>

#include "host/clock.h"
#include "host/sample_market.h"
#include "host/stockdb.h"
#include "tests/picker/picker_fixture.h"

namespace {

using pickertest::Bar;
using pickertest::Bars;
using pickertest::ExpectBar;

constexpr int kShare = 600001;

class BarData : public ::testing::Test {
protected:
    BarData() : market("SH600001,Share,GP,A\n") {}

    std::vector<CHisDay> Day(const std::vector<CHisDay>& stored, short period, int varPeriod = 0) {
        market.Day("data/sh/day/600001.day", stored);
        EXPECT_TRUE(market.Open());
        return engine.Load(kShare, period, 0, varPeriod);
    }
    // Minute bars of 2021-01-08 (YYMMDDHHMM) at the given times, closes counting up from 10.
    static std::vector<CHisDay> Minutes(const std::vector<int>& hhmm, int date = 2101080000) {
        std::vector<CHisDay> bars;
        for (size_t i = 0; i < hhmm.size(); ++i)
            bars.push_back(Bar(date + hhmm[i], 10 + static_cast<float>(i)));
        return bars;
    }

    pickertest::Market market;
    pickertest::Engine engine;
};

TEST_F(BarData, SamePeriodByCalendar) {
    ASSERT_TRUE(market.Open());
    engine.m_lStockID = kShare;
    engine.m_nPeriod = NY_PERIOD_WEEK;
    EXPECT_FALSE(engine.IsSamePeriod(20210108, 20210111));  // Friday, then Monday
    EXPECT_TRUE(engine.IsSamePeriod(20210104, 20210108));   // Monday and Friday
    EXPECT_TRUE(engine.IsSamePeriod(20210103, 20210104));   // Sunday and the Monday after
    EXPECT_FALSE(engine.IsSamePeriod(20210104, 20210111));  // a week apart
    EXPECT_FALSE(engine.IsSamePeriod(0, 20210105));
    engine.m_nPeriod = NY_PERIOD_MONTH;
    EXPECT_TRUE(engine.IsSamePeriod(20210104, 20210129));
    EXPECT_FALSE(engine.IsSamePeriod(20210129, 20210201));
    engine.m_nPeriod = NY_PERIOD_QUARTER;
    EXPECT_FALSE(engine.IsSamePeriod(20210331, 20210401));
    EXPECT_TRUE(engine.IsSamePeriod(20210401, 20210630));
    EXPECT_FALSE(engine.IsSamePeriod(20200401, 20210401));
    engine.m_nPeriod = NY_PERIOD_YEAR;
    EXPECT_TRUE(engine.IsSamePeriod(20210104, 20211231));
    engine.m_nPeriod = NY_PERIOD_MIN15;
    EXPECT_TRUE(engine.IsSamePeriod(2101080935, 2101080945));
    EXPECT_FALSE(engine.IsSamePeriod(2101080945, 2101080950));
    engine.m_nPeriod = NY_PERIOD_MIN60;
    EXPECT_TRUE(engine.IsSamePeriod(2101081035, 2101081130));
    EXPECT_FALSE(engine.IsSamePeriod(2101081030, 2101081035));
    engine.m_lStockID = 1777777;  // no stock, no answer
    EXPECT_FALSE(engine.IsSamePeriod(2101080935, 2101080935));
}

TEST_F(BarData, WeekBarsMergeTheirDays) {
    const auto weeks = Day(Bars("20210103:10:50 20210104:8:60 20210108:12:70 high=20 20210111:13"), NY_PERIOD_WEEK);
    ASSERT_EQ(weeks.size(), 2u);
    // Stamped with its latest day; the first bar refers to its own open.
    ExpectBar(weeks[0], "time=20210108 open=10 high=20 low=7 close=12 volume=180 pre=10");
    ExpectBar(weeks[1], "pre=12");
    // A bar stamped 0 is no date: it stands alone.
    EXPECT_EQ(Day({Bar(20210104, 8), Bar(0, 9), Bar(20210105, 10)}, NY_PERIOD_WEEK).size(), 3u);
}

TEST_F(BarData, ZeroPricesShowTheCloseBefore) {
    const auto days = Day(Bars("20210104:8 20210105:0 high=0 low=0"), NY_PERIOD_DAY);
    ExpectBar(days[1], "open=8 high=8 low=8 close=8");
}

TEST_F(BarData, TodaysQuoteOverwritesOrAppends) {
    const std::string header = "code,open,high,low,last,volume,amount\n";
    market.Write("data/quotes.csv", "date=20210105\n" + header + "SH600001,0,0,9.5,10.5,300,3000\n");
    auto days = Day({Bar(20210104, 8), Bar(20210105, 9)}, NY_PERIOD_DAY);
    // Today's stored bar is replaced; an open of 0 takes the latest price, as does the high.
    ASSERT_EQ(days.size(), 2u);
    ExpectBar(days[1], "open=10.5 high=10.5 low=9.5 volume=300");
    market.Write("data/quotes.csv", "date=20210106\n" + header + "SH600001,10,11,9,10.5,300,3000\n");
    days = Day({Bar(20210104, 8), Bar(20210105, 9)}, NY_PERIOD_DAY);
    ASSERT_EQ(days.size(), 3u);
    ExpectBar(days[2], "time=20210106 pre=9");
    // The buffers hold 102 records since the first file: 101 stored bars and today's fill them,
    // and growing keeps the stored bars.
    ASSERT_EQ(engine.m_nBufSize, 102);
    std::vector<CHisDay> many;
    for (int i = 0; i < 101; ++i) many.push_back(Bar(20200101 + i, static_cast<float>(i)));
    days = Day(many, NY_PERIOD_DAY);
    EXPECT_EQ(engine.m_nBufSize, 202);
    ASSERT_EQ(days.size(), 102u);
    ExpectBar(days[0], "close=0");
    ExpectBar(days[100], "close=100");
    ExpectBar(days[101], "close=10.5");
}

TEST_F(BarData, MissingAndTruncatedFiles) {
    ASSERT_TRUE(market.Open());
    EXPECT_TRUE(engine.Load(kShare, NY_PERIOD_DAY).empty());
    EXPECT_TRUE(engine.Load(1777777, NY_PERIOD_DAY).empty());
    market.Write("data/sh/day/600001.day", ny::EncodeBars({Bar(20210104, 8)}) + std::string(39, 'x'));
    EXPECT_EQ(engine.Load(kShare, NY_PERIOD_DAY).size(), 1u);
    market.Write("data/sh/day/600001.day", std::string(39, 'x'));
    EXPECT_TRUE(engine.Load(kShare, NY_PERIOD_DAY).empty());
}

TEST_F(BarData, MinuteFileFoldsIntoFiveMinuteBars) {
    market.Write("data/sh/min1/600001.mn1",
                 ny::EncodeBars(Minutes({930, 931, 932, 933, 934, 935, 936, 937, 938, 939, 940})));
    market.Write("data/sh/min5/600001.mn5", ny::EncodeBars(Minutes({1455, 1500}, 2101070000)));
    ASSERT_TRUE(market.Open());
    auto bars = engine.Load(kShare, NY_PERIOD_MIN5);
    ASSERT_EQ(bars.size(), 4u);
    // The opening minute joins the first slot.
    ExpectBar(bars[2], "time=2101080935 open=10 close=15 high=16 volume=600");
    ExpectBar(bars[3], "time=2101080940 open=16");
    // One-minute bars come from the minute file alone.
    EXPECT_EQ(engine.Load(kShare, NY_PERIOD_MIN1).size(), 11u);
    // Without 5-minute bars the day's minutes are all there is.
    market.Write("data/sh/min5/600001.mn5", "");
    EXPECT_EQ(engine.Load(kShare, NY_PERIOD_MIN5).size(), 2u);
    // A minute file older than the end of the 5-minute file adds nothing.
    market.Write("data/sh/min5/600001.mn5", ny::EncodeBars(Minutes({935, 940, 945, 950}, 2101090000)));
    bars = engine.Load(kShare, NY_PERIOD_MIN15);
    ASSERT_EQ(bars.size(), 2u);
    ExpectBar(bars[0], "time=2101090945 close=12 volume=300");
    ExpectBar(bars[1], "time=2101091000");  // stamped with its slot, not its latest bar
}

TEST_F(BarData, RunsUpAndDown) {
    auto runs = Day(Bars("20210104:10 open=9.5 20210105:11 open=9 20210106:12 open=11.5"), NY_PERIOD_DAY, 1);
    ASSERT_EQ(runs.size(), 1u);
    ExpectBar(runs[0], "time=20210106 open=9 close=12 high=13 volume=300");  // the lowest open of a run up
    // Up: a flat close joins. Down (fixed by the first bar): a flat close opens a new run.
    EXPECT_EQ(Day(Bars("20210104:10 20210105:10"), NY_PERIOD_DAY, 1).size(), 1u);
    runs = Day(Bars("20210104:10 open=11 20210105:10 20210106:9 open=12"), NY_PERIOD_DAY, 1);
    ASSERT_EQ(runs.size(), 2u);
    ExpectBar(runs[1], "open=12 close=9 pre=0");  // the highest open of a run down
}

// ---- The generated market ----

class SampleMarketBars : public pickertest::GeneratedMarketTest {
protected:
    void SetUp() override {
        GeneratedMarketTest::SetUp();
        for (const CStock* stock : g_MyStocksArray)
            if (stock->m_dwKind & (NY_KIND_SH_A | NY_KIND_SZ_A)) shares.push_back(stock);
        ASSERT_EQ(shares.size(), 40u);
    }

    std::vector<const CStock*> shares;
    pickertest::Engine engine;
};

// Open, high, low, close and volume of consecutive stored bars with the same key, in order.
template <typename Key>
std::vector<std::pair<int, CHisDay>> Aggregate(const std::vector<CHisDay>& stored, Key key) {
    std::vector<std::pair<int, CHisDay>> out;
    for (const CHisDay& bar : stored) {
        const int k = key(bar.m_lTime);
        if (out.empty() || out.back().first != k) {
            out.push_back({k, bar});
            continue;
        }
        CHisDay& group = out.back().second;
        group.m_lTime = bar.m_lTime;
        group.m_fHigh = std::max(group.m_fHigh, bar.m_fHigh);
        group.m_fLow = std::min(group.m_fLow, bar.m_fLow);
        group.m_fClose = bar.m_fClose;
        group.m_fVolume += bar.m_fVolume;
    }
    return out;
}

void ExpectSameBars(const std::vector<std::pair<int, CHisDay>>& expected, const std::vector<CHisDay>& got,
                    bool stampIsKey, const std::string& what) {
    ASSERT_EQ(expected.size(), got.size()) << what;
    for (size_t i = 0; i < got.size(); ++i) {
        const CHisDay& want = expected[i].second;
        const auto fields = [](const CHisDay& bar) {
            return std::make_tuple(bar.m_fOpen, bar.m_fHigh, bar.m_fLow, bar.m_fClose, bar.m_fVolume);
        };
        EXPECT_EQ(got[i].m_lTime, stampIsKey ? expected[i].first : want.m_lTime) << what << " bar " << i;
        EXPECT_EQ(fields(got[i]), fields(want)) << what << " bar " << i;
        if (i > 0) {
            EXPECT_EQ(got[i].m_fPreClose, expected[i - 1].second.m_fClose) << what << " bar " << i;
        }
    }
}

TEST_F(SampleMarketBars, DayBasedPeriodsAgreeWithCalendarGroups) {
    // Weeks start on Monday: day numbers from a Monday, in sevens.
    const std::pair<short, int (*)(int)> periods[] = {
        {NY_PERIOD_WEEK, [](int date) { return static_cast<int>((ny::DayNumber(date) + 3) / 7); }},
        {NY_PERIOD_MONTH, [](int date) { return date / 100; }},
        {NY_PERIOD_QUARTER, [](int date) { return date / 10000 * 10 + (date / 100 % 100 - 1) / 3; }},
        {NY_PERIOD_YEAR, [](int date) { return date / 10000; }}};
    for (const CStock* stock : shares) {
        const std::vector<CHisDay> stored = ny::ReadBarFile(stock->GetDayFilePath());
        const std::string code = ny::FormatStockCode(stock->m_lStockID);
        EXPECT_EQ(engine.Load(stock->m_lStockID, NY_PERIOD_DAY).size(), stored.size()) << code;
        for (const auto& [period, key] : periods)
            ExpectSameBars(Aggregate(stored, key), engine.Load(stock->m_lStockID, period), false,
                           code + " period " + std::to_string(period));
    }
}

TEST_F(SampleMarketBars, MinutePeriodsAgreeWithTradingSlots) {
    // The slot of a 5-minute stamp, as its own end stamp: sessions 09:30-11:30 and 13:00-15:00.
    const auto slot = [](int minutes) {
        return [minutes](int time) {
            const int of = time % 10000 / 100 * 60 + time % 100;
            const int open = of <= 11 * 60 + 30 ? 9 * 60 + 30 : 13 * 60;
            const int close = open + 120;
            const int end = std::min(open + ((of - open - 1) / minutes + 1) * minutes, close);
            return time / 10000 * 10000 + end / 60 * 100 + end % 60;
        };
    };
    const std::pair<short, int> periods[] = {
        {NY_PERIOD_MIN5, 5}, {NY_PERIOD_MIN15, 15}, {NY_PERIOD_MIN30, 30}, {NY_PERIOD_MIN60, 60}};
    for (const CStock* stock : shares) {
        const std::vector<CHisDay> stored = ny::ReadBarFile(stock->GetMin5FilePath());
        const std::string code = ny::FormatStockCode(stock->m_lStockID);
        ASSERT_FALSE(stored.empty()) << code;
        for (const auto& [period, minutes] : periods)
            ExpectSameBars(Aggregate(stored, slot(minutes)), engine.Load(stock->m_lStockID, period), true,
                           code + " " + std::to_string(minutes));
        EXPECT_EQ(engine.Load(stock->m_lStockID, NY_PERIOD_MIN1).size(), 241u) << code;
    }
}

TEST_F(SampleMarketBars, AdjustedPricesRunSmoothlyAcrossEvents) {
    int bonusEvents = 0;
    for (const CStock* stock : shares) {
        const std::vector<CHisDay> stored = ny::ReadBarFile(stock->GetDayFilePath());
        const std::vector<CPowerData> events = ny::ReadPowerFile(stock->GetPowerFilePath());
        const std::vector<CHisDay> adjusted = engine.Load(stock->m_lStockID, NY_PERIOD_DAY, 1);
        ASSERT_EQ(adjusted.size(), stored.size());
        // Our own factor per bar: every event after the bar's day, by the close before it.
        std::vector<double> factor(stored.size(), 1.0);
        for (const CPowerData& event : events) {
            size_t at = 0;
            while (at < stored.size() && stored[at].m_lTime < event.m_lDate) ++at;
            if (at == 0 || at == stored.size()) continue;
            const float close = stored[at - 1].m_fClose;
            const double ratio = static_cast<double>(event.Adjust(close)) / close;
            if (std::fabs(ratio - 1) * close < 0.0001) continue;
            for (size_t b = 0; b < at; ++b) factor[b] *= ratio;
            const double rawMove = stored[at].m_fClose / stored[at - 1].m_fClose;
            const double adjustedMove = adjusted[at].m_fClose / adjusted[at - 1].m_fClose;
            EXPECT_NEAR(adjustedMove, 1, 0.2)
                << ny::FormatStockCode(stock->m_lStockID) << " " << event.m_lDate;
            if (event.m_fGive >= 4) {
                ++bonusEvents;
                EXPECT_LT(rawMove, 0.8);
            }
        }
        for (size_t b = 0; b < stored.size(); ++b)
            ASSERT_NEAR(adjusted[b].m_fClose, stored[b].m_fClose * factor[b], 2e-5 * stored[b].m_fClose)
                << ny::FormatStockCode(stock->m_lStockID) << " bar " << b;
    }
    EXPECT_GT(bonusEvents, 0);
}

}  // namespace
