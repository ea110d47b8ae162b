// The picking engine: Play and its clock rules, the worker, the status, one stock's verdict, and
// the single-stock services.

#include "picker/cond_stocks.h"

#include <algorithm>
#include <thread>

#include "engine/evaluate.h"
#include "host/clock.h"
#include "host/comm_data.h"
#include "host/global.h"
#include "picker/refresh.h"

const char* const MY_EVENT_CondStocks_ADDRTDATA = "MY_EVENT_CondStocks_ADDRTDATA";
const char* const MSG_MINUTE_PICK_IN_TRADING_HOURS = "分钟数据只能在收盘后进行下载和选股！";

int CCondStocks::m_lLastUpdateDate = 0;
int CCondStocks::m_lLastUpdateTime = 0;
int CCondStocks::m_lLastUpdateMinuteDate = 0;
int CCondStocks::m_lLastUpdateMinuteTime = 0;

namespace {

constexpr int kQuoteWaitMs = 5000;
constexpr int kStopPollMs = 10;
constexpr short kExploreBars = 280;
constexpr size_t kResultGrowth = 1000;
constexpr char kNotPicked = 1;  // verdicts of examined stocks; 0: not yet examined
constexpr char kPicked = 2;

// Minutes of the day of an HHMMSS time.
int MinuteOfDay(int time) { return time / 10000 * 60 + time / 100 % 100; }

}  // namespace

CCondStocks::CCondStocks()
    : m_hRTEvent(ny::OpenNamedEvent(MY_EVENT_CondStocks_ADDRTDATA, false)),
      m_nCommID(g_MyGetControlID()),
      m_pChildView(g_MyChildView) {
    AttachToView();
    InitStatus();
}

CCondStocks::~CCondStocks() {
    DetachFromView();
    Stop();
    if (m_hThread.joinable()) m_hThread.join();
}

void CCondStocks::InitStatus() {
    ny::CriticalSectionLock guard(m_csStatus);
    m_Status.m_nTotal = 0;
    m_Status.m_nDone = 0;
    m_Status.m_nPicked = 0;
    m_Status.m_nDamaged = 0;
    m_Status.m_nRunning = 0;
    m_Status.m_arResult.clear();
    m_Status.m_arResult.reserve(kResultGrowth);
}

void CCondStocks::SetNotifyProc(NotifyProc proc) { m_pfnNotify = proc; }

short CCondStocks::Running() {
    ny::CriticalSectionLock guard(m_csStatus);
    return m_Status.m_nRunning;
}

// ---- Starting a pick ----

BOOL CCondStocks::Play(std::vector<CIndicator*>& indicators, char logic, std::vector<int>& stocks,
                       short period, int power, int varPeriod, int beginDate, int endDate, int ask) {
    if (Running() == 1 || indicators.empty() || stocks.empty()) return FALSE;
    // The worker of the previous pick has left its loop; let it end before its state is reused.
    if (m_hThread.joinable()) m_hThread.join();
    m_arIndicators = indicators;
    m_arStocks = stocks;
    m_cLogic = logic;
    m_nPeriod = period;
    m_nPower = power;
    m_nVarPeriod = varPeriod;
    m_lBeginDate = beginDate;
    m_lEndDate = endDate;

    const int time = CClockModule::m_SystemTime;
    // Signalled unless a quote request below clears it: the worker then does not wait.
    m_hRTEvent->Set();
    if (ny::IsMinutePeriod(period)) {
        if (!PrepareMinuteData(time)) return FALSE;
    } else {
        PrepareQuotes(time, ask);
    }
    StartWorker();
    return TRUE;
}

// The day's 1-minute data can be fetched only while the market is closed: at noon, after the
// close and on weekends. During trading hours a minute-based pick is refused, except before
// 09:15 when there is nothing of the day to fetch yet.
bool CCondStocks::MarketClosed(int date, int time) {
    const int weekday = ny::WeekDay(date);
    return (time >= 113001 && time < 130000) || time >= 150001 || weekday == 1 || weekday == 7;
}

bool CCondStocks::MinuteDataCurrent(int date, int time) {
    return m_lLastUpdateMinuteDate >= date && (m_lLastUpdateMinuteTime >= 130000 || time <= 150000);
}

bool CCondStocks::QuotesFresh(int date, int time) {
    return m_lLastUpdateDate >= date && MinuteOfDay(m_lLastUpdateTime) + 10 > MinuteOfDay(time);
}

BOOL CCondStocks::PrepareMinuteData(int time) {
    const int date = CClockModule::m_SystemDate;
    if (!MarketClosed(date, time)) {
        if (time < 91500) return TRUE;
        g_MyMessageBox(MSG_MINUTE_PICK_IN_TRADING_HOURS);
        return FALSE;
    }
    if (!MinuteDataCurrent(date, time)) {
        RunRequestDialog(ny::RefreshMode::Minute, m_arStocks);
        m_lLastUpdateMinuteDate = date;
        m_lLastUpdateMinuteTime = time;
    }
    return TRUE;
}

// Quotes fetched less than ten minutes ago are current; otherwise they are fetched again, by the
// refresh dialog or by a request whose answer the worker waits for.
void CCondStocks::PrepareQuotes(int time, int ask) {
    const int date = CClockModule::m_SystemDate;
    if (QuotesFresh(date, time)) return;
    if (ask == 1) {
        RunRequestDialog(ny::RefreshMode::Quotes, m_arStocks);
    } else {
        m_hRTEvent->Reset();
        AddRTData();
    }
    m_lLastUpdateDate = date;
    m_lLastUpdateTime = time;
}

void CCondStocks::StartWorker() {
    InitStatus();
    {
        ny::CriticalSectionLock guard(m_csStatus);
        m_Status.m_nTotal = static_cast<short>(m_arStocks.size());
        m_Status.m_nRunning = 1;
    }
    m_bStop = 0;
    m_hThread = std::thread(&CCondStocks::ProcCondPick, this);
}

// ---- Stop and status ----

BOOL CCondStocks::Stop() {
    if (Running() == 1) m_bStop = 1;
    while (Running() == 1) std::this_thread::sleep_for(std::chrono::milliseconds(kStopPollMs));
    return TRUE;
}

BOOL CCondStocks::QueryStatus(CondStocksSTATUS* status) {
    if (status == nullptr) return FALSE;
    ny::CriticalSectionLock guard(m_csStatus);
    *status = m_Status;
    return TRUE;
}

// ---- The worker ----

// Waits at most 5 s for the quotes; a stop request ends the wait too.
void CCondStocks::WaitForQuotes() {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kQuoteWaitMs);
    while (m_bStop == 0 && std::chrono::steady_clock::now() < deadline)
        if (m_hRTEvent->Wait(std::chrono::milliseconds(kStopPollMs))) return;
}

// A further worker of a pick: a bar loader and copies of the conditions of its own, so that it
// shares nothing with the other workers but the stock list and the status.
struct CCondStocks::PickHelper {
    explicit PickHelper(const std::vector<CIndicator*>& originals) {
        for (const CIndicator* original : originals) {
            if (original != nullptr) {
                copies.push_back(std::make_unique<CIndicator>());
                *copies.back() = *original;
            }
            conditions.push_back(original != nullptr ? copies.back().get() : nullptr);
        }
    }
    CBarLoader loader;
    std::vector<std::unique_ptr<CIndicator>> copies;
    std::vector<CIndicator*> conditions;
    std::vector<float> result;
};

void CCondStocks::ProcCondPick() {
    WaitForQuotes();
    m_arVerdicts.assign(m_arStocks.size(), 0);
    m_nNextStock = 0;
    // Every further worker takes stocks from the same list; the status counts them in the
    // order of the list whoever examined them.
    const size_t helpers = std::min<size_t>(std::max(m_nWorkers, 1) - 1, m_arStocks.size() - 1);
    std::vector<std::unique_ptr<PickHelper>> workers;
    std::vector<std::thread> threads;
    for (size_t k = 0; k < helpers; ++k) {
        workers.push_back(std::make_unique<PickHelper>(m_arIndicators));
        PickHelper* helper = workers.back().get();
        // The own loader rewrites its period and adjustment with each stock: helpers take copies.
        threads.emplace_back([this, helper, period = m_nPeriod, power = m_nPower, varPeriod = m_nVarPeriod] {
            PickShare(helper->conditions, helper->loader, [this, helper, period, power, varPeriod](int id) {
                if (!helper->loader.Load(id, period, power, varPeriod)) return FALSE;
                helper->result.resize(std::max<size_t>(helper->result.size(), helper->loader.DrawCount()));
                return PickVerdict(helper->loader, helper->conditions, helper->result.data());
            });
        });
    }
    PickShare(m_arIndicators, *this, [this](int id) { return ProcCondPick_Item(id); });
    for (std::thread& thread : threads) thread.join();
    ny::CriticalSectionLock guard(m_csStatus);
    m_Status.m_nRunning = 0;
    if (m_pfnNotify != nullptr) m_pfnNotify(&m_Status);
}

// One worker's loop: the next stock of the list until none is left or a stop is requested.
void CCondStocks::PickShare(const std::vector<CIndicator*>& conditions, const CBarLoader& loader,
                            const std::function<BOOL(int)>& verdictOf) {
    const size_t count = m_arStocks.size();
    for (size_t i = m_nNextStock++; i < count && m_bStop == 0; i = m_nNextStock++) {
        const BOOL picked = verdictOf(m_arStocks[i]);
        if (m_fnItemDone) m_fnItemDone(i, picked, conditions, loader.DrawCount());
        Commit(i, picked, loader.Damaged());
    }
}

// Records the verdict of stock i and counts every stock of the unbroken run from the first not
// yet counted, so that the status grows in the order of the list. The notification is made
// under the lock: workers never notify at the same time.
void CCondStocks::Commit(size_t i, BOOL picked, bool damaged) {
    ny::CriticalSectionLock guard(m_csStatus);
    if (damaged) ++m_Status.m_nDamaged;
    m_arVerdicts[i] = picked ? kPicked : kNotPicked;
    bool counted = false;
    for (size_t next = static_cast<size_t>(m_Status.m_nDone); next < m_arVerdicts.size() && m_arVerdicts[next] != 0;
         ++next) {
        if (m_arVerdicts[next] == kPicked) {
            if (m_Status.m_arResult.size() == m_Status.m_arResult.capacity())
                m_Status.m_arResult.reserve(m_Status.m_arResult.size() + kResultGrowth);
            m_Status.m_arResult.push_back(m_arStocks[next]);
            ++m_Status.m_nPicked;
        }
        ++m_Status.m_nDone;
        counted = true;
    }
    if (counted && m_pfnNotify != nullptr) m_pfnNotify(&m_Status);
}

BOOL CCondStocks::ProcCondPick_Item(int stockId) {
    if (!Load(stockId, m_nPeriod, m_nPower, m_nVarPeriod)) return FALSE;
    return PickVerdict(*this, m_arIndicators, m_pResult);
}

// Computes every condition over the loader's bars, merges their last statements into `result`
// (room for the loader's bar count) and tests the merged values.
BOOL CCondStocks::PickVerdict(CBarLoader& loader, const std::vector<CIndicator*>& conditions, float* result) const {
    for (CIndicator* indicator : conditions)
        if (indicator != nullptr) ComputeOnBars(indicator, loader);
    std::fill(result, result + loader.DrawCount(), 0.0f);
    MergeVerdicts(conditions, loader.DrawCount(), result);
    return Verdict(loader, result);
}

void CCondStocks::ComputeOnBars(CIndicator* indicator, CBarLoader& loader) {
    ny::EvaluateOver(*indicator, loader.m_lStockID, loader.DrawData(), loader.DrawCount());
}

// The last statement of each computed condition: the first is taken as it is, each later one
// combined bar by bar, AND (both non-zero) or OR (either non-zero) into 1 or 0.
void CCondStocks::MergeVerdicts(const std::vector<CIndicator*>& conditions, short bars, float* result) const {
    bool first = true;
    for (CIndicator* indicator : conditions) {
        if (indicator == nullptr || indicator->m_arExpressions.empty()) continue;
        const CExpression* verdict = indicator->m_arExpressions.back();
        if (verdict->m_cComputed != 1 || verdict->m_pData == nullptr) continue;
        const short n = std::min(bars, verdict->m_nAllocBars);
        const float* values = verdict->m_pData;
        if (first) {
            std::copy(values, values + n, result);
            first = false;
            continue;
        }
        for (short b = 0; b < n; ++b) {
            const bool both = result[b] != 0 && values[b] != 0;
            const bool either = result[b] != 0 || values[b] != 0;
            result[b] = (m_cLogic == 1 ? both : either) ? 1.0f : 0.0f;
        }
    }
}

// With a history range: any bar dated in it with a value above 0. Otherwise: the last bar.
BOOL CCondStocks::Verdict(const CBarLoader& loader, const float* result) const {
    const CHisDay* bars = loader.DrawData();
    const short count = loader.DrawCount();
    if (m_lBeginDate > 0 || m_lEndDate > 0) {
        for (short b = 0; b < count; ++b) {
            const int date = loader.DayOfBar(bars[b].m_lTime);
            if (date >= m_lBeginDate && date <= m_lEndDate && result[b] > 0) return TRUE;
        }
        return FALSE;
    }
    return result[count - 1] > 0;
}

// ---- Single-stock services ----

BOOL CCondStocks::CalcIndicator(CIndicator* indicator, int stockId, short period, int power, int varPeriod) {
    if (!Load(stockId, period, power, varPeriod) || indicator == nullptr) return FALSE;
    KeepLast(kExploreBars);
    ComputeOnBars(indicator, *this);
    return TRUE;
}

BOOL CCondStocks::BeforeExplore(int stockId, int beginDate, int endDate, short period, int power) {
    if (!Load(stockId, period, power, 0)) return FALSE;
    if (beginDate < 1 || endDate < 1 || beginDate >= endDate) return TRUE;
    return KeepDateRange(beginDate, endDate);
}

BOOL CCondStocks::ExploreTSIndicator(CIndicator* indicator) {
    if (m_pDrawData == nullptr || m_nDrawCount < 1 || m_lStockID <= 0 || indicator == nullptr) return FALSE;
    ComputeOnBars(indicator, *this);
    return TRUE;
}
