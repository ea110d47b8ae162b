// The picking engine: when Play starts a pick and what it refreshes first, the worker and its
// status, the merged verdict of the conditions, and the single-stock services.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "host/clock.h"
#include "host/global.h"
#include "picker/refresh.h"
#include "tests/picker/picker_fixture.h"

namespace {

using pickertest::Bar;
using pickertest::MakeFormula;

constexpr int kShare = 600001;
constexpr int kWednesday = 20210630;

// Ten weekday bars from 2021-01-04, closes 10 to 19.
std::vector<CHisDay> TenDays() {
    const int dates[] = {20210104, 20210105, 20210106, 20210107, 20210108,
                         20210111, 20210112, 20210113, 20210114, 20210115};
    std::vector<CHisDay> bars;
    for (int i = 0; i < 10; ++i) bars.push_back(Bar(dates[i], 10 + static_cast<float>(i)));
    return bars;
}

void WaitUntilIdle(CCondStocks& engine) {
    CondStocksSTATUS status;
    do {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        engine.QueryStatus(&status);
    } while (status.m_nRunning != 0);
}

class Picking : public ::testing::Test {
protected:
    Picking() : market("SH600001,Share,GP,A\n"), condition(MakeFormula({{"X", "C>0"}})) {}

    void SetUp() override {
        market.Day("data/sh/day/600001.day", TenDays());
        ASSERT_TRUE(market.Open());
        CCondStocks::m_lLastUpdateDate = CCondStocks::m_lLastUpdateTime = 0;
        CCondStocks::m_lLastUpdateMinuteDate = CCondStocks::m_lLastUpdateMinuteTime = 0;
        ny::ClearRefreshes();
        ny::ClearMessages();
    }
    void TearDown() override {
        ny::HoldQuoteAnswers(false);
        CClockModule::UseSystemClock();
    }

    BOOL PlayAt(int date, int time, short period, int ask = 0) {
        CClockModule::SetClock(date, time);
        std::vector<CIndicator*> indicators = {condition.get()};
        std::vector<int> stocks = {kShare};
        const BOOL started = engine.Play(indicators, 1, stocks, period, 0, 0, 0, 0, ask);
        WaitUntilIdle(engine);
        return started;
    }

    // One stock through the engine with these conditions.
    BOOL Picked(std::vector<CIndicator*> indicators, char logic, int begin = 0, int end = 0) {
        engine.m_arIndicators = indicators;
        engine.m_cLogic = logic;
        engine.m_nPeriod = NY_PERIOD_DAY;
        engine.m_lBeginDate = begin;
        engine.m_lEndDate = end;
        return engine.ProcCondPick_Item(kShare);
    }

    pickertest::Market market;
    pickertest::Engine engine;
    std::unique_ptr<CIndicator> condition;
};

TEST_F(Picking, MinutePicksOnlyWhileTheMarketIsClosed) {
    EXPECT_FALSE(PlayAt(kWednesday, 113000, NY_PERIOD_MIN5));
    ASSERT_EQ(ny::RecordedMessages().size(), 1u);
    EXPECT_EQ(ny::RecordedMessages()[0], MSG_MINUTE_PICK_IN_TRADING_HOURS);
    EXPECT_TRUE(PlayAt(kWednesday, 113001, NY_PERIOD_MIN5));
    EXPECT_TRUE(PlayAt(kWednesday, 125959, NY_PERIOD_MIN15));
    EXPECT_FALSE(PlayAt(kWednesday, 130000, NY_PERIOD_MIN1));
    EXPECT_FALSE(PlayAt(kWednesday, 150000, NY_PERIOD_MIN60));
    EXPECT_TRUE(PlayAt(kWednesday, 150001, NY_PERIOD_MIN5));
    EXPECT_TRUE(PlayAt(20210703, 100000, NY_PERIOD_MIN5));  // Saturday
    EXPECT_TRUE(PlayAt(20210704, 100000, NY_PERIOD_MIN5));  // Sunday
    EXPECT_EQ(ny::RecordedMessages().size(), 3u);
    // Day-based picks know no trading hours.
    EXPECT_TRUE(PlayAt(kWednesday, 100000, NY_PERIOD_DAY));
}

TEST_F(Picking, MinuteDataRefreshedOnlyWhenStale) {
    EXPECT_TRUE(PlayAt(20210702, 91459, NY_PERIOD_MIN5));  // before 09:15: nothing to fetch
    EXPECT_EQ(ny::RecordedRefreshes().minuteDialogs, 0);
    PlayAt(kWednesday, 120000, NY_PERIOD_MIN5);
    EXPECT_EQ(ny::RecordedRefreshes().minuteDialogs, 1);
    EXPECT_EQ(ny::RecordedRefreshes().minuteStocks, std::vector<int>{kShare});
    EXPECT_EQ(CCondStocks::m_lLastUpdateMinuteDate, kWednesday);
    EXPECT_EQ(CCondStocks::m_lLastUpdateMinuteTime, 120000);
    PlayAt(kWednesday, 121000, NY_PERIOD_MIN5);  // still noon: current
    EXPECT_EQ(ny::RecordedRefreshes().minuteDialogs, 1);
    PlayAt(kWednesday, 153000, NY_PERIOD_MIN5);  // the afternoon has passed since
    EXPECT_EQ(ny::RecordedRefreshes().minuteDialogs, 2);
    PlayAt(kWednesday, 160000, NY_PERIOD_MIN5);
    EXPECT_EQ(ny::RecordedRefreshes().minuteDialogs, 2);
    PlayAt(20210701, 120000, NY_PERIOD_MIN5);  // a new day
    EXPECT_EQ(ny::RecordedRefreshes().minuteDialogs, 3);
}

TEST_F(Picking, QuotesRefreshedEveryTenMinutes) {
    PlayAt(kWednesday, 100000, NY_PERIOD_DAY);
    EXPECT_EQ(ny::RecordedRefreshes().quoteRequests, 1);
    PlayAt(kWednesday, 100959, NY_PERIOD_WEEK);
    EXPECT_EQ(ny::RecordedRefreshes().quoteRequests, 1);
    EXPECT_TRUE(engine.m_hRTEvent->IsSet());  // no request: the worker did not wait
    PlayAt(kWednesday, 101000, NY_PERIOD_DAY);
    EXPECT_EQ(ny::RecordedRefreshes().quoteRequests, 2);
    EXPECT_EQ(CCondStocks::m_lLastUpdateTime, 101000);
    PlayAt(kWednesday, 102000, NY_PERIOD_DAY, 1);  // asked for: the refresh dialog instead
    EXPECT_EQ(ny::RecordedRefreshes().quoteRequests, 2);
    EXPECT_EQ(ny::RecordedRefreshes().quoteDialogs, 1);
    PlayAt(20210701, 100000, NY_PERIOD_DAY);
    EXPECT_EQ(ny::RecordedRefreshes().quoteRequests, 3);
}

TEST_F(Picking, WorkerWaitsForTheQuotesAndStopsDuringTheWait) {
    ny::HoldQuoteAnswers(true);
    CClockModule::SetClock(kWednesday, 100000);
    std::vector<CIndicator*> indicators = {condition.get()};
    std::vector<int> stocks = {kShare};
    ASSERT_TRUE(engine.Play(indicators, 1, stocks, NY_PERIOD_DAY, 0, 0, 0, 0, 0));
    EXPECT_FALSE(engine.Play(indicators, 1, stocks, NY_PERIOD_DAY, 0, 0, 0, 0, 0));  // one at a time
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    CondStocksSTATUS status;
    engine.QueryStatus(&status);
    EXPECT_EQ(status.m_nRunning, 1);
    EXPECT_EQ(status.m_nDone, 0);
    // The answer arrives: the pick goes on.
    ny::OpenNamedEvent(MY_EVENT_CondStocks_ADDRTDATA, false)->Set();
    WaitUntilIdle(engine);
    engine.QueryStatus(&status);
    EXPECT_EQ(status.m_nDone, 1);
    EXPECT_EQ(status.m_arResult, std::vector<int>{kShare});

    // A stop during the wait ends the pick long before the wait would time out.
    CClockModule::SetClock(kWednesday, 110000);
    ASSERT_TRUE(engine.Play(indicators, 1, stocks, NY_PERIOD_DAY, 0, 0, 0, 0, 0));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(engine.Stop());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2500));
    engine.QueryStatus(&status);
    EXPECT_EQ(status.m_nRunning, 0);
    EXPECT_EQ(status.m_nDone, 0);
    EXPECT_EQ(status.m_nTotal, 1);
}

std::atomic<int> g_notified{0};
std::atomic<int> g_lastRunning{-1};
void CountNotify(const CondStocksSTATUS* status) {
    ++g_notified;
    g_lastRunning = status->m_nRunning;
}

TEST_F(Picking, StatusAndNotification) {
    CondStocksSTATUS status;
    EXPECT_FALSE(engine.QueryStatus(nullptr));
    std::vector<CIndicator*> none;
    std::vector<CIndicator*> indicators = {condition.get()};
    std::vector<int> stocks = {kShare, 1777777, kShare};
    std::vector<int> noStocks;
    EXPECT_FALSE(engine.Play(none, 1, stocks, NY_PERIOD_DAY, 0, 0, 0, 0, 0));
    EXPECT_FALSE(engine.Play(indicators, 1, noStocks, NY_PERIOD_DAY, 0, 0, 0, 0, 0));
    engine.SetNotifyProc(CountNotify);
    CClockModule::SetClock(kWednesday, 100000);
    ASSERT_TRUE(engine.Play(indicators, 1, stocks, NY_PERIOD_DAY, 0, 0, 0, 0, 0));
    WaitUntilIdle(engine);
    engine.QueryStatus(&status);
    EXPECT_EQ(status.m_nTotal, 3);
    EXPECT_EQ(status.m_nDone, 3);
    EXPECT_EQ(status.m_nPicked, 2);  // the unknown stock is examined, not picked
    EXPECT_EQ(status.m_arResult, (std::vector<int>{kShare, kShare}));
    EXPECT_TRUE(engine.Stop());  // nothing runs: at once
    EXPECT_EQ(g_notified, 4);  // once per stock and once at the end
    EXPECT_EQ(g_lastRunning, 0);
}

TEST_F(Picking, LastBarVerdictAndTheMergeOfConditions) {
    auto positive = MakeFormula({{"A", "C"}, {"X", "3.5"}});
    auto negative = MakeFormula({{"X", "-1"}});
    auto zero = MakeFormula({{"X", "C-C"}});
    auto failing = MakeFormula({{"X", "NOSUCHWORD+1"}});
    auto empty = MakeFormula({});
    EXPECT_TRUE(Picked({positive.get()}, 1));
    EXPECT_FALSE(Picked({negative.get()}, 1));
    EXPECT_FALSE(Picked({zero.get()}, 1));
    EXPECT_TRUE(Picked({negative.get(), zero.get()}, 2));  // OR: -1 counts as true
    EXPECT_FALSE(Picked({positive.get(), zero.get()}, 1));
    EXPECT_TRUE(Picked({positive.get(), negative.get()}, 1));  // AND of two non-zero values
    EXPECT_TRUE(Picked({zero.get(), positive.get()}, 0));      // any logic but 1 is OR
    // Conditions that fail or have no statement don't take part.
    EXPECT_TRUE(Picked({failing.get(), positive.get(), empty.get(), nullptr}, 1));
    EXPECT_FALSE(Picked({failing.get()}, 1));
}

TEST_F(Picking, HistoryRangeVerdict) {
    auto rising = MakeFormula({{"X", "C>15"}});
    EXPECT_TRUE(Picked({rising.get()}, 1));                       // the last bar
    EXPECT_FALSE(Picked({rising.get()}, 1, 20210104, 20210111));  // closes 10 to 15
    EXPECT_TRUE(Picked({rising.get()}, 1, 20210112, 20210112));   // close 16
    EXPECT_FALSE(Picked({rising.get()}, 1, 20210104, 0));         // no bar lies in the range
    EXPECT_TRUE(Picked({rising.get()}, 1, 0, 20210115));
    // Minute bars are dated by their stamp.
    market.Write("data/sh/min5/600001.mn5", ny::EncodeBars({Bar(2101070935, 20), Bar(2101080935, 5)}));
    engine.m_arIndicators = {rising.get()};
    engine.m_nPeriod = NY_PERIOD_MIN5;
    engine.m_lBeginDate = engine.m_lEndDate = 20210107;
    EXPECT_TRUE(engine.ProcCondPick_Item(kShare));
    engine.m_lBeginDate = engine.m_lEndDate = 20210108;
    EXPECT_FALSE(engine.ProcCondPick_Item(kShare));
}

TEST_F(Picking, IndicatorOnTheLast280Bars) {
    std::vector<CHisDay> bars;
    for (int i = 0; i < 281; ++i) bars.push_back(Bar(20200101 + i, static_cast<float>(i + 1)));
    market.Day("data/sh/day/600001.day", bars);
    auto close = MakeFormula({{"X", "C"}});
    ASSERT_TRUE(engine.CalcIndicator(close.get(), kShare, NY_PERIOD_DAY, 0, 0));
    EXPECT_EQ(close->m_nBarCount, 280);
    EXPECT_FLOAT_EQ(close->m_arExpressions[0]->m_pData[0], 2);
    EXPECT_FLOAT_EQ(close->m_arExpressions[0]->m_pData[279], 281);
    EXPECT_EQ(close->m_lStockID, kShare);
    EXPECT_FALSE(engine.CalcIndicator(nullptr, kShare, NY_PERIOD_DAY, 0, 0));
    EXPECT_FALSE(engine.CalcIndicator(close.get(), 1777777, NY_PERIOD_DAY, 0, 0));
}

TEST_F(Picking, ExploreADateRange) {
    auto close = MakeFormula({{"X", "C"}});
    EXPECT_FALSE(engine.ExploreTSIndicator(close.get()));  // nothing prepared
    ASSERT_TRUE(engine.BeforeExplore(kShare, 20210105, 20210105, NY_PERIOD_DAY, 0));
    EXPECT_EQ(engine.DrawCount(), 10);  // equal dates: the whole series
    ASSERT_TRUE(engine.BeforeExplore(kShare, 20210105, 20210108, NY_PERIOD_DAY, 0));
    ASSERT_EQ(engine.DrawCount(), 4);
    EXPECT_EQ(engine.DrawData()[0].m_lTime, 20210105);
    ASSERT_TRUE(engine.ExploreTSIndicator(close.get()));
    EXPECT_EQ(close->m_nBarCount, 4);
    EXPECT_FLOAT_EQ(close->m_arExpressions[0]->m_pData[3], 14);
    ASSERT_TRUE(engine.BeforeExplore(kShare, 20210109, 20210112, NY_PERIOD_DAY, 0));  // from a Saturday
    EXPECT_EQ(engine.DrawCount(), 2);
    EXPECT_FALSE(engine.BeforeExplore(kShare, 20210109, 20210110, NY_PERIOD_DAY, 0));  // one and the same bar
    EXPECT_FALSE(engine.BeforeExplore(kShare, 20210105, 20210201, NY_PERIOD_DAY, 0));  // the end is missing
    EXPECT_FALSE(engine.ExploreTSIndicator(nullptr));
}

}  // namespace
