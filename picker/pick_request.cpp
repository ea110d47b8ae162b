#include "picker/pick_request.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <set>
#include <thread>

#include "host/comm_data.h"
#include "host/group.h"
#include "host/stockdb.h"
#include "model/library.h"
#include "model/period.h"
#include "picker/cond_stocks.h"

namespace ny {

const char* const MSG_PICK_NO_CONDITION = "请加入选股条件";
const char* const MSG_PICK_NO_STOCKS = "请选择选股票范围";
const char* const MSG_PICK_DATES_REVERSED = "起始日期应在终止日期之前";
const char* const MSG_PICK_UNKNOWN_CONDITION = "条件选股公式不存在: ";
const char* const MSG_PICK_TOO_MANY_PARAMS = "参数个数超过公式的参数: ";
const char* const MSG_PICK_BAD_PERIOD = "周期无效";
const char* const MSG_PICK_BLOCK_NOT_SAVED = "选股结果板块无法保存";
const char* const PICK_RESULT_CATEGORY = "自定义";
const char* const PICK_RESULT_BLOCK = "智能选股";

namespace {

constexpr int kPollMs = 5;
constexpr auto kProgressStep = std::chrono::milliseconds(100);

// The ids of a scope, ascending, each once.
std::vector<int> ScopeStocks(const PickRequest& request) {
    std::set<int> ids;
    auto byKind = [&ids](unsigned bits) {
        for (const CStock* stock : g_MyStocksArray)
            if (stock->m_dwKind & bits) ids.insert(stock->m_lStockID);
    };
    switch (request.scope) {
        case PickScope::AllA:
            byKind(NY_KIND_SH_A | NY_KIND_SZ_A);
            break;
        case PickScope::ShanghaiA:
            byKind(NY_KIND_SH_A);
            break;
        case PickScope::ShenzhenA:
            byKind(NY_KIND_SZ_A);
            break;
        case PickScope::Block: {
            std::vector<CStock*> stocks;
            CGroup::GetStock(request.blockCategory, request.blockName, stocks);
            for (const CStock* stock : stocks) ids.insert(stock->m_lStockID);
            break;
        }
        case PickScope::Codes:
            ids.insert(request.stockIds.begin(), request.stockIds.end());
            break;
    }
    return std::vector<int>(ids.begin(), ids.end());
}

// Copies of the library's conditions with the request's parameter values, clamped to each
// parameter's range. The library's own objects stay untouched.
bool PrepareConditions(const PickRequest& request, std::vector<std::unique_ptr<CIndicator>>* copies,
                       CString* message) {
    for (const PickCondition& condition : request.conditions) {
        const CIndicator* formula = g_MyGetIndicator(condition.name, NY_KIND_CONDITION);
        if (formula == nullptr) {
            *message = MSG_PICK_UNKNOWN_CONDITION + condition.name;
            return false;
        }
        if (condition.params.size() > formula->m_arParams.size()) {
            *message = MSG_PICK_TOO_MANY_PARAMS + condition.name;
            return false;
        }
        auto copy = std::make_unique<CIndicator>();
        *copy = *formula;
        for (size_t i = 0; i < condition.params.size(); ++i) {
            CParam& param = *copy->m_arParams[i];
            param.m_nDefault = std::clamp(condition.params[i], param.m_nMin, param.m_nMax);
        }
        copies->push_back(std::move(copy));
    }
    return true;
}

// Refuses a request that can't run; the message says why.
bool CheckRequest(const PickRequest& request, CString* message) {
    if (request.conditions.empty())
        *message = MSG_PICK_NO_CONDITION;
    else if (ny::FindPeriod(request.period) == nullptr)
        *message = MSG_PICK_BAD_PERIOD;
    else if (request.fromDate > 0 && request.toDate > 0 && request.toDate < request.fromDate)
        *message = MSG_PICK_DATES_REVERSED;
    return message->empty();
}

// The last value of each condition's verdict statement for the stock the engine handled last;
// NaN for a condition that did not compute.
std::vector<float> LastValues(const std::vector<CIndicator*>& conditions, short bars) {
    std::vector<float> values;
    for (const CIndicator* condition : conditions) {
        const CExpression* verdict =
            condition->m_arExpressions.empty() ? nullptr : condition->m_arExpressions.back();
        const bool computed =
            verdict != nullptr && verdict->m_cComputed == 1 && bars > 0 && bars <= verdict->m_nAllocBars;
        values.push_back(computed ? verdict->m_pData[bars - 1] : std::numeric_limits<float>::quiet_NaN());
    }
    return values;
}

}  // namespace

PickOutcome RunPick(const PickRequest& request, const std::function<void(int done, int total)>& progress,
                    const std::function<bool()>& stopRequested) {
    PickOutcome outcome;
    std::vector<std::unique_ptr<CIndicator>> conditions;
    if (!CheckRequest(request, &outcome.message) ||
        !PrepareConditions(request, &conditions, &outcome.message))
        return outcome;
    std::vector<int> stocks = ScopeStocks(request);
    if (stocks.empty()) {
        outcome.message = MSG_PICK_NO_STOCKS;
        return outcome;
    }
    const bool history = request.fromDate > 0 && request.toDate > 0;
    std::vector<CIndicator*> indicators;
    for (const auto& condition : conditions) indicators.push_back(condition.get());

    CCondStocks engine;
    engine.m_nWorkers = request.workers > 0 ? request.workers : DefaultPickWorkers();
    // The conditions hold the values of one stock at a time: take each hit's as it is examined,
    // into the slot of its stock, which no other worker writes. Read here once the status says
    // that the pick has ended.
    std::vector<std::vector<float>> lastValues(stocks.size());
    engine.m_fnItemDone = [&lastValues](size_t index, BOOL picked, const std::vector<CIndicator*>& conditions,
                                        short bars) {
        if (picked) lastValues[index] = LastValues(conditions, bars);
    };
    if (!engine.Play(indicators, request.andMode ? 1 : 2, stocks, request.period, request.adjustPower ? 1 : 0,
                     0, history ? request.fromDate : 0, history ? request.toDate : 0, 0)) {
        outcome.message = MSG_MINUTE_PICK_IN_TRADING_HOURS;
        return outcome;
    }
    CondStocksSTATUS status;
    auto lastReport = std::chrono::steady_clock::now() - kProgressStep;
    for (;;) {
        engine.QueryStatus(&status);
        const auto now = std::chrono::steady_clock::now();
        if (status.m_nRunning == 0) break;
        if (now - lastReport >= kProgressStep) {
            lastReport = now;
            if (progress) progress(status.m_nDone, status.m_nTotal);
            if (stopRequested && stopRequested()) {
                engine.Stop();
                outcome.stopped = true;
                continue;
            }
        }
        // The wait pumps the server link: the quotes the worker waits for arrive on this thread.
        g_MyChildView->m_ClientSocket.Pump(kPollMs);
    }
    if (progress) progress(status.m_nDone, status.m_nTotal);
    // The stocks counted by the status are the first m_nDone of the list, whatever the workers.
    for (size_t i = 0; i < static_cast<size_t>(status.m_nDone); ++i)
        if (!lastValues[i].empty()) outcome.hits.push_back(PickHit{stocks[i], std::move(lastValues[i])});
    outcome.ok = true;
    outcome.examined = status.m_nDone;
    outcome.total = status.m_nTotal;
    outcome.damaged = status.m_nDamaged;
    outcome.stopped = outcome.stopped && status.m_nDone < status.m_nTotal;
    if (!outcome.stopped && !CGroup::CreateGroup(PICK_RESULT_CATEGORY, PICK_RESULT_BLOCK, status.m_arResult))
        outcome.message = MSG_PICK_BLOCK_NOT_SAVED;
    return outcome;
}

int DefaultPickWorkers() { return std::max(1, static_cast<int>(std::thread::hardware_concurrency())); }

bool LoadStockBars(int stockId, short period, bool adjustPower, std::vector<CHisDay>* bars) {
    bars->clear();
    if (ny::FindPeriod(period) == nullptr) return false;
    CBarLoader loader;
    if (!loader.Load(stockId, period, adjustPower ? 1 : 0, 0)) return false;
    bars->assign(loader.DrawData(), loader.DrawData() + loader.DrawCount());
    return true;
}

}  // namespace ny
