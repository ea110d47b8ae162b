// The picking engine: when Play starts a pick and what it refreshes first, the worker and its
// status, the merged verdict of the conditions over a range of dates, and the single-stock
// services.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <tuple>

#include "host/clock.h"
#include "host/global.h"
#include "picker/refresh.h"
#include "tests/picker/picker_fixture.h"

namespace {

using pickertest::Bar;
using pickertest::MakeFormula;
using pickertest::WaitUntilIdle;

constexpr int kShare = 600001;
constexpr int kWednesday = 20210630;

class Picking : public ::testing::Test {
protected:
    Picking() : market("SH600001,Share,GP,A\n"), condition(MakeFormula({{"X", "C>0"}})) {}

    void SetUp() override {
        // Ten weekday bars from 2021-01-04, closes 10 to 19.
        market.Day("data/sh/day/600001.day", pickertest::Bars("20210104:10..14 20210111:15..19"));
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

    pickertest::Market market;
    pickertest::Engine engine;
    std::unique_ptr<CIndicator> condition;
};

TEST_F(Picking, MinutePicksOnlyWhileTheMarketIsClosed) {
    // Date, time, period and whether the pick starts; each refusal says why.
    const std::tuple<int, int, short, bool> rows[] = {
        {kWednesday, 113000, NY_PERIOD_MIN5, false}, {kWednesday, 113001, NY_PERIOD_MIN5, true},
        {kWednesday, 125959, NY_PERIOD_MIN15, true}, {kWednesday, 130000, NY_PERIOD_MIN1, false},
        {kWednesday, 150000, NY_PERIOD_MIN60, false}, {kWednesday, 150001, NY_PERIOD_MIN5, true},
        {20210703, 100000, NY_PERIOD_MIN5, true},  // Saturday
        {20210704, 100000, NY_PERIOD_MIN5, true},  // Sunday
        {kWednesday, 100000, NY_PERIOD_DAY, true}};  // day-based picks know no trading hours
    size_t refusals = 0;
    for (const auto& [date, time, period, starts] : rows) {
        EXPECT_EQ(PlayAt(date, time, period), starts) << date << " " << time;
        refusals += starts ? 0 : 1;
        EXPECT_EQ(ny::RecordedMessages(), std::vector<CString>(refusals, MSG_MINUTE_PICK_IN_TRADING_HOURS));
    }
}

TEST_F(Picking, DataRefreshedOnlyWhenStale) {
    // Minute data: the time of a pick and the refresh dialogs run since the first.
    const std::tuple<int, int, int> minutes[] = {
        {20210702, 91459, 0},                              // before 09:15: nothing to fetch
        {kWednesday, 120000, 1}, {kWednesday, 121000, 1},  // still noon: current
        {kWednesday, 153000, 2},                           // the afternoon has passed since
        {kWednesday, 160000, 2}, {20210701, 120000, 3}};   // a new day
    for (const auto& [date, time, dialogs] : minutes) {
        const int before = ny::RecordedRefreshes().minuteDialogs;
        EXPECT_TRUE(PlayAt(date, time, NY_PERIOD_MIN5));
        EXPECT_EQ(ny::RecordedRefreshes().minuteDialogs, dialogs) << date << " " << time;
        if (dialogs == before) continue;
        EXPECT_EQ(ny::RecordedRefreshes().minuteStocks, std::vector<int>{kShare});
        EXPECT_EQ(CCondStocks::m_lLastUpdateMinuteDate, date);
        EXPECT_EQ(CCondStocks::m_lLastUpdateMinuteTime, time);
    }
    // Quotes every ten minutes: time, period, whether a dialog was asked for, requests and
    // dialogs since the first. Without a request the worker does not wait.
    const std::tuple<int, int, short, int, int, int> quotes[] = {
        {kWednesday, 100000, NY_PERIOD_DAY, 0, 1, 0}, {kWednesday, 100959, NY_PERIOD_WEEK, 0, 1, 0},
        {kWednesday, 101000, NY_PERIOD_DAY, 0, 2, 0}, {kWednesday, 102000, NY_PERIOD_DAY, 1, 2, 1},
        {20210701, 100000, NY_PERIOD_DAY, 0, 3, 1}};
    for (const auto& [date, time, period, ask, requests, dialogs] : quotes) {
        const int before = ny::RecordedRefreshes().quoteRequests;
        PlayAt(date, time, period, ask);
        EXPECT_EQ(ny::RecordedRefreshes().quoteRequests, requests) << date << " " << time;
        EXPECT_EQ(ny::RecordedRefreshes().quoteDialogs, dialogs) << date << " " << time;
        if (requests == before)
            EXPECT_TRUE(engine.m_hRTEvent->IsSet()) << time;
        else
            EXPECT_EQ(CCondStocks::m_lLastUpdateTime, time);
    }
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
    status = WaitUntilIdle(engine);
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
    status = WaitUntilIdle(engine);
    EXPECT_EQ(status.m_nTotal, 3);
    EXPECT_EQ(status.m_nDone, 3);
    EXPECT_EQ(status.m_nPicked, 2);  // the unknown stock is examined, not picked
    EXPECT_EQ(status.m_arResult, (std::vector<int>{kShare, kShare}));
    EXPECT_TRUE(engine.Stop());  // nothing runs: at once
    EXPECT_EQ(g_notified, 4);  // once per stock and once at the end
    EXPECT_EQ(g_lastRunning, 0);
}

TEST_F(Picking, VerdictsOfConditionsAndDateRanges) {
    auto positive = MakeFormula({{"A", "C"}, {"X", "3.5"}});
    auto negative = MakeFormula({{"X", "-1"}});
    auto zero = MakeFormula({{"X", "C-C"}});
    auto failing = MakeFormula({{"X", "NOSUCHWORD+1"}});
    auto empty = MakeFormula({});
    auto rising = MakeFormula({{"X", "C>15"}});
    // Minute bars are dated by their stamp.
    market.Write("data/sh/min5/600001.mn5", ny::EncodeBars({Bar(2101070935, 20), Bar(2101080935, 5)}));
    // Conditions, logic (1 AND, any other OR), period, range of dates and the verdict.
    const std::tuple<std::vector<CIndicator*>, char, short, int, int, bool> rows[] = {
        {{positive.get()}, 1, NY_PERIOD_DAY, 0, 0, true},  // the value of the last bar
        {{negative.get()}, 1, NY_PERIOD_DAY, 0, 0, false},
        {{zero.get()}, 1, NY_PERIOD_DAY, 0, 0, false},
        {{negative.get(), zero.get()}, 2, NY_PERIOD_DAY, 0, 0, true},  // OR: -1 counts as true
        {{positive.get(), zero.get()}, 1, NY_PERIOD_DAY, 0, 0, false},
        {{positive.get(), negative.get()}, 1, NY_PERIOD_DAY, 0, 0, true},  // AND of two non-zero values
        {{zero.get(), positive.get()}, 0, NY_PERIOD_DAY, 0, 0, true},
        // Conditions that fail or have no statement don't take part.
        {{failing.get(), positive.get(), empty.get(), nullptr}, 1, NY_PERIOD_DAY, 0, 0, true},
        {{failing.get()}, 1, NY_PERIOD_DAY, 0, 0, false},
        {{rising.get()}, 1, NY_PERIOD_DAY, 0, 0, true},
        {{rising.get()}, 1, NY_PERIOD_DAY, 20210104, 20210111, false},  // closes 10 to 15
        {{rising.get()}, 1, NY_PERIOD_DAY, 20210112, 20210112, true},   // close 16
        {{rising.get()}, 1, NY_PERIOD_DAY, 20210104, 0, false},         // no bar lies in the range
        {{rising.get()}, 1, NY_PERIOD_DAY, 0, 20210115, true},
        {{rising.get()}, 1, NY_PERIOD_MIN5, 20210107, 20210107, true},
        {{rising.get()}, 1, NY_PERIOD_MIN5, 20210108, 20210108, false}};
    for (size_t row = 0; row < std::size(rows); ++row) {
        const auto& [indicators, logic, period, begin, end, picked] = rows[row];
        engine.m_arIndicators = indicators;
        engine.m_cLogic = logic;
        engine.m_nPeriod = period;
        engine.m_lBeginDate = begin;
        engine.m_lEndDate = end;
        EXPECT_EQ(engine.ProcCondPick_Item(kShare), picked ? TRUE : FALSE)
            << "row " << row;
    }
}

TEST_F(Picking, IndicatorOnTheLast280Bars) {
    market.Day("data/sh/day/600001.day", pickertest::Bars("20200101:1..281"));
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
