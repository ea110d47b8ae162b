#pragma once
// The condition stock picker: runs condition formulas over a list of stocks on a worker thread
// and keeps the stocks whose verdict holds. Its bars come from the bar loader it builds on, whose
// buffers serve every stock of a pick; the single-stock services use the same loader.
//
// A pick: Play (calling thread) decides whether quotes must be refreshed, then starts the worker;
// the worker waits at most 5 s for the quotes, then for each stock loads its bars, evaluates every
// condition, merges the verdicts and appends hits to the status. Callers poll QueryStatus or set
// a notify callback; Stop ends a pick between two stocks.

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "host/hisday.h"
#include "host/types.h"
#include "model/indicator.h"
#include "picker/bar_loader.h"
#include "platform/sync.h"

class CChildView;
class CCommData;
class CCondStocksRequestDataDlg;
namespace ny {
enum class RefreshMode;
}

// Progress and result of a pick.
struct CondStocksSTATUS {
    short m_nTotal = 0;           // stocks to examine
    short m_nDone = 0;            // stocks examined so far
    short m_nPicked = 0;          // stocks that met the conditions so far
    short m_nDamaged = 0;         // stocks left out because their bar file is damaged
    std::vector<int> m_arResult;  // picked ids, in the order of the stock list
    short m_nRunning = 0;         // 1 while a pick runs
};

// Name of the event that tells the worker that the quote refresh has arrived.
extern const char* const MY_EVENT_CondStocks_ADDRTDATA;
// The warning of a minute-based pick during trading hours.
extern const char* const MSG_MINUTE_PICK_IN_TRADING_HOURS;

class CCondStocks : public CBarLoader {
public:
    using NotifyProc = void (*)(const CondStocksSTATUS* status);

    CCondStocks();
    ~CCondStocks() override;
    CCondStocks(const CCondStocks&) = delete;
    CCondStocks& operator=(const CCondStocks&) = delete;

    void InitStatus();
    void SetNotifyProc(NotifyProc proc);
    // Starts a pick; 1 when the worker was started. See the clock rules in cond_stocks.cpp.
    BOOL Play(std::vector<CIndicator*>& indicators, char logic, std::vector<int>& stocks, short period,
              int power, int varPeriod, int beginDate, int endDate, int ask);
    // Requests a stop and waits until no pick runs any more; returns 1 then.
    BOOL Stop();
    // Copies the status under the lock; 0 for a null pointer.
    BOOL QueryStatus(CondStocksSTATUS* status);

    // The worker's body, and one stock of it: 1 if the stock is picked.
    void ProcCondPick();
    BOOL ProcCondPick_Item(int stockId);

    // Loads a stock's bars in a period and computes an indicator on the last 280 of them.
    BOOL CalcIndicator(CIndicator* indicator, int stockId, short period, int power, int varPeriod);
    // Prepares a stock's bars limited to a date range for testing a trade formula; the
    // indicator is then computed on them by ExploreTSIndicator.
    BOOL BeforeExplore(int stockId, int beginDate, int endDate, short period, int power);
    BOOL ExploreTSIndicator(CIndicator* indicator);

    // The data refresh from the server (refresh.cpp), on the user-interface thread.
    // Sends the quote request of a day-based pick; returns at once.
    void AddRTData();
    // Takes the quote request back.
    void RemoveData();
    // The host's entry for arrivals: the quote reply, and the open refresh dialog's replies.
    void ProcData(void* unused);
    // Parses a quote reply; the last page signals m_hRTEvent.
    void Data_RT();
    // Brings one stock's data of a period up to date for the host, by the clock rules of Play.
    void AddTodayData(short period, int stockId);
    // The host's entry for a failed exchange: the open dialog's, or the quote request's.
    void ProcFailure(int id, const CString& message);

    // Latest refresh of the whole process: quotes for day-based picks, 1-minute data for
    // minute-based ones. Dates YYYYMMDD, times HHMMSS.
    static int m_lLastUpdateDate;
    static int m_lLastUpdateTime;
    static int m_lLastUpdateMinuteDate;
    static int m_lLastUpdateMinuteTime;

    // Pick state.
    NotifyProc m_pfnNotify = nullptr;
    // Workers of a pick, 1 by default: each further worker has its own bar loader and copies of
    // the conditions. Status, stop and result are those of one worker. Set it between picks.
    int m_nWorkers = 1;
    // Called on the worker that examined a stock, right after it, with the stock's index in
    // m_arStocks, its verdict, the conditions that hold its values and their bar count; empty
    // by default. Workers call it at the same time for different stocks. Set it between picks.
    std::function<void(size_t index, BOOL picked, const std::vector<CIndicator*>& conditions, short bars)>
        m_fnItemDone;
    CondStocksSTATUS m_Status;
    std::vector<CIndicator*> m_arIndicators;  // the caller's; must outlive the pick
    std::vector<int> m_arStocks;
    char m_cLogic = 0;     // 1 AND, any other value OR
    int m_lBeginDate = 0;  // history range, YYYYMMDD; 0 = none
    int m_lEndDate = 0;
    std::thread m_hThread;  // the worker of the latest pick
    std::atomic<int> m_bStop{0};
    std::shared_ptr<ny::ManualResetEvent> m_hRTEvent;  // signalled when the quotes have arrived
    ny::CriticalSection m_csStatus;                    // guards m_Status

    // The exchange with the server. The engine puts itself into the chart view's picker slot for
    // its life; an engine made while another holds the slot gives it back when it ends, so
    // engines must end in the reverse order of their making.
    int m_nCommID;                                      // the quote request's id
    CChildView* m_pChildView;                           // g_MyChildView
    CCondStocksRequestDataDlg* m_pRequestDlg = nullptr; // the refresh dialog while it runs

private:
    // The clock rules of the 1-minute refresh: the market is closed (at noon, after the close, on
    // weekends), and the day's 1-minute data were fetched late enough to be current.
    static bool MarketClosed(int date, int time);
    static bool MinuteDataCurrent(int date, int time);
    // The quotes were fetched today less than ten minutes ago.
    static bool QuotesFresh(int date, int time);
    void RunRequestDialog(ny::RefreshMode mode, const std::vector<int>& stocks);
    void AttachToView();
    void DetachFromView();
    CCommData* QuoteData();

    CCondStocks* m_pPreviousInSlot = nullptr;
    BOOL PrepareMinuteData(int time);
    void PrepareQuotes(int time, int ask);
    void StartWorker();
    void WaitForQuotes();
    short Running();
    struct PickHelper;
    void PickShare(const std::vector<CIndicator*>& conditions, const CBarLoader& loader,
                   const std::function<BOOL(int)>& verdictOf);
    void Commit(size_t i, BOOL picked, bool damaged);
    BOOL PickVerdict(CBarLoader& loader, const std::vector<CIndicator*>& conditions, float* result) const;
    static void ComputeOnBars(CIndicator* indicator, CBarLoader& loader);
    void MergeVerdicts(const std::vector<CIndicator*>& conditions, short bars, float* result) const;
    BOOL Verdict(const CBarLoader& loader, const float* result) const;

    std::vector<char> m_arVerdicts;            // per stock of the list: 0 not yet, 1 no, 2 picked
    std::atomic<size_t> m_nNextStock{0};       // the next stock a worker takes
};
