// Whole-market picks over a generated market: the pick agrees with evaluating each stock alone,
// a stop ends it early with the hits so far, and the request interface refuses what can't run.

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <thread>

#include "engine/evaluate.h"
#include "host/clock.h"
#include "host/group.h"
#include "host/sample_market.h"
#include "host/stockdb.h"
#include "model/library.h"
#include "picker/pick_request.h"
#include "picker/refresh.h"
#include "tests/engine/formula_fixture.h"
#include "tests/picker/picker_fixture.h"

namespace {

using Statements = std::vector<nytest::Statement>;

const Statements kAboveAverage = {{"M", "MA(C,N)"}, {"X", "C>M"}};
const Statements kVolumeUp = {{"X", "V>MA(V,5)"}};

// A condition formula with one parameter N.
std::unique_ptr<CIndicator> Condition(const Statements& statements, const std::string& name, short n) {
    auto formula = pickertest::MakeFormula(statements, name);
    formula->m_arParams.push_back(new CParam(nytest::MakeParam("N", 1, 100, n)));
    return formula;
}

// The verdict of one stock, evaluated on its own: fresh formulas over the stock's bars.
bool PickedAlone(int id, const std::vector<const Statements*>& conditions, short n, bool andMode,
                 short period, bool adjust) {
    std::vector<CHisDay> bars;
    if (!ny::LoadStockBars(id, period, adjust, &bars)) return false;
    std::vector<float> last;
    for (const Statements* statements : conditions) {
        auto formula = Condition(*statements, "ALONE", n);
        const short count = static_cast<short>(bars.size());
        ny::EvaluateOver(*formula, id, bars.data(), count);
        const CExpression* verdict = formula->m_arExpressions.back();
        if (verdict->m_cComputed == 1) last.push_back(verdict->m_pData[count - 1]);
    }
    if (last.empty()) return false;
    if (last.size() == 1) return last[0] > 0;
    bool all = true, any = false;
    for (float value : last) {
        all = all && value != 0;
        any = any || value != 0;
    }
    return andMode ? all : any;
}

class MarketPick : public GeneratedMarketTest {
protected:
    void SetUp() override {
        GeneratedMarketTest::SetUp();
        CClockModule::SetClock(20210331, 160000);
        for (const CStock* stock : g_MyStocksArray) all.push_back(stock->m_lStockID);
    }
    void TearDown() override {
        g_MyRemoveIndicators();
        CClockModule::UseSystemClock();
    }

    // The ids picked by the engine, run to its end.
    std::vector<int> Pick(std::vector<CIndicator*> indicators, char logic, std::vector<int> stocks,
                          short period, int power, int workers = 1) {
        CCondStocks engine;
        engine.m_nWorkers = workers;
        EXPECT_TRUE(engine.Play(indicators, logic, stocks, period, power, 0, 0, 0, 0));
        const CondStocksSTATUS status = pickertest::WaitUntilIdle(engine);
        EXPECT_EQ(status.m_nDone, static_cast<short>(stocks.size()));
        EXPECT_EQ(status.m_nPicked, static_cast<short>(status.m_arResult.size()));
        return status.m_arResult;
    }

    std::vector<int> all;
};

TEST_F(MarketPick, SameAsEvaluatingEachStockAlone) {
    struct Case {
        short period;
        int power;
        char logic;
    };
    for (const Case& c : {Case{NY_PERIOD_DAY, 0, 1}, Case{NY_PERIOD_DAY, 1, 2}, Case{NY_PERIOD_MONTH, 1, 2},
                          Case{NY_PERIOD_MIN30, 0, 1}}) {
        auto above = Condition(kAboveAverage, "A", 10);
        auto volume = Condition(kVolumeUp, "B", 10);
        std::vector<int> expected;
        for (int id : all)
            if (PickedAlone(id, {&kAboveAverage, &kVolumeUp}, 10, c.logic == 1, c.period, c.power == 1))
                expected.push_back(id);
        // Several workers pick the same stocks in the same order as one.
        for (int workers : {1, 3})
            EXPECT_EQ(Pick({above.get(), volume.get()}, c.logic, all, c.period, c.power, workers), expected)
                << "period " << c.period << " power " << c.power << " workers " << workers;
        EXPECT_FALSE(expected.empty()) << "period " << c.period;
        EXPECT_LT(expected.size(), all.size()) << "period " << c.period;
    }
}

TEST_F(MarketPick, StopEndsAPickWithTheHitsSoFar) {
    auto above = Condition(kAboveAverage, "A", 10);
    std::map<int, bool> alone;
    for (int id : all) alone[id] = PickedAlone(id, {&kAboveAverage}, 10, true, NY_PERIOD_DAY, false);
    std::vector<int> stocks;
    for (int round = 0; round < 60; ++round) stocks.insert(stocks.end(), all.begin(), all.end());
    CCondStocks engine;
    engine.m_nWorkers = 2;  // the status still counts an unbroken run of the list
    std::vector<CIndicator*> indicators = {above.get()};
    ASSERT_TRUE(engine.Play(indicators, 1, stocks, NY_PERIOD_DAY, 0, 0, 0, 0, 0));
    CondStocksSTATUS status;
    do {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        engine.QueryStatus(&status);
    } while (status.m_nDone < 5);
    EXPECT_TRUE(engine.Stop());
    engine.QueryStatus(&status);
    EXPECT_EQ(status.m_nRunning, 0);
    ASSERT_LT(status.m_nDone, status.m_nTotal);
    std::vector<int> expected;
    for (int i = 0; i < status.m_nDone; ++i)
        if (alone[stocks[i]]) expected.push_back(stocks[i]);
    EXPECT_EQ(status.m_arResult, expected);
    // The same engine runs the next pick at once.
    const std::vector<int> again = Pick({above.get()}, 1, all, NY_PERIOD_DAY, 0);
    EXPECT_EQ(again.size(), static_cast<size_t>(
                                std::count_if(alone.begin(), alone.end(), [](auto& e) { return e.second; })));
}

class RequestPick : public MarketPick {
protected:
    void SetUp() override {
        MarketPick::SetUp();
        g_MyAddIndicator(Condition(kAboveAverage, "UPMA", 20).release());
        g_MyAddIndicator(Condition(kVolumeUp, "VOLUP", 20).release());
    }
    static ny::PickRequest Request(std::vector<ny::PickCondition> conditions) {
        ny::PickRequest request;
        request.conditions = std::move(conditions);
        return request;
    }
};

TEST_F(RequestPick, RunsThroughTheEngineAndStoresTheBlock) {
    ny::PickRequest request = Request({{"UPMA", {5}}, {"VOLUP", {}}});
    int lastDone = -1, lastTotal = -1;
    const ny::PickOutcome outcome = ny::RunPick(
        request, [&](int done, int total) { lastDone = done, lastTotal = total; }, nullptr);
    ASSERT_TRUE(outcome.ok) << outcome.message;
    EXPECT_EQ(outcome.total, 40);  // the A shares
    EXPECT_EQ(outcome.examined, 40);
    EXPECT_EQ(lastDone, 40);
    EXPECT_EQ(lastTotal, 40);
    EXPECT_FALSE(outcome.stopped);
    std::vector<int> expected, ids;
    for (const CStock* stock : g_MyStocksArray)
        if ((stock->m_dwKind & (NY_KIND_SH_A | NY_KIND_SZ_A)) &&
            PickedAlone(stock->m_lStockID, {&kAboveAverage, &kVolumeUp}, 5, true, NY_PERIOD_DAY, false))
            expected.push_back(stock->m_lStockID);
    std::sort(expected.begin(), expected.end());
    for (const ny::PickHit& hit : outcome.hits) {
        ids.push_back(hit.stockId);
        EXPECT_EQ(hit.lastValues, (std::vector<float>{1, 1}));
    }
    EXPECT_EQ(ids, expected);
    EXPECT_EQ(CGroup::ReadGroupFile("自定义", "智能选股"), expected);
    // The library's formula keeps its own parameter.
    EXPECT_EQ(g_MyGetIndicator("UPMA", NY_KIND_CONDITION)->m_arParams[0]->m_nDefault, 20);
}

TEST_F(RequestPick, StopRequestEndsThePick) {
    ASSERT_TRUE(CGroup::CreateGroup("自定义", "智能选股", {600000}));
    // The quotes are asked for and held back, so the stop comes while the worker waits for them.
    CCondStocks::m_lLastUpdateDate = 0;
    ny::HoldQuoteAnswers(true);
    const ny::PickOutcome outcome = ny::RunPick(Request({{"UPMA", {}}}), nullptr, [] { return true; });
    ny::HoldQuoteAnswers(false);
    ASSERT_TRUE(outcome.ok);
    EXPECT_TRUE(outcome.stopped);
    EXPECT_EQ(outcome.examined, 0);
    EXPECT_EQ(outcome.total, 40);
    // A stopped pick leaves the block as it was.
    EXPECT_EQ(CGroup::ReadGroupFile("自定义", "智能选股"), std::vector<int>{600000});
}

TEST_F(RequestPick, RefusalsSayWhy) {
    // Conditions, period, dates, a list of codes for the scope, the time of day and the message.
    const struct {
        std::vector<ny::PickCondition> conditions;
        short period;
        int from, to;
        bool codes;
        int time;
        std::string message;
    } rows[] = {
        {{}, NY_PERIOD_DAY, 0, 0, false, 160000, ny::MSG_PICK_NO_CONDITION},
        {{{"NOSUCH", {}}}, NY_PERIOD_DAY, 0, 0, false, 160000, std::string(ny::MSG_PICK_UNKNOWN_CONDITION) + "NOSUCH"},
        {{{"UPMA", {5, 6}}}, NY_PERIOD_DAY, 0, 0, false, 160000, std::string(ny::MSG_PICK_TOO_MANY_PARAMS) + "UPMA"},
        {{{"UPMA", {}}}, NY_PERIOD_DAY, 20210301, 20210201, false, 160000, ny::MSG_PICK_DATES_REVERSED},
        {{{"UPMA", {}}}, 11, 0, 0, false, 160000, ny::MSG_PICK_BAD_PERIOD},
        {{{"UPMA", {}}}, NY_PERIOD_DAY, 0, 0, true, 160000, ny::MSG_PICK_NO_STOCKS},
        {{{"UPMA", {}}}, NY_PERIOD_MIN5, 0, 0, false, 100000, MSG_MINUTE_PICK_IN_TRADING_HOURS}};
    for (const auto& row : rows) {
        ny::PickRequest request = Request(row.conditions);
        request.period = row.period;
        request.fromDate = row.from;
        request.toDate = row.to;
        if (row.codes) request.scope = ny::PickScope::Codes;
        CClockModule::SetClock(20210331, row.time);
        const ny::PickOutcome outcome = ny::RunPick(request, nullptr, nullptr);
        EXPECT_FALSE(outcome.ok) << row.message;
        EXPECT_EQ(outcome.message, row.message);
    }
    std::vector<CHisDay> bars;
    EXPECT_FALSE(ny::LoadStockBars(1777777, NY_PERIOD_DAY, false, &bars));
    EXPECT_FALSE(ny::LoadStockBars(all[0], 11, false, &bars));
}

}  // namespace
