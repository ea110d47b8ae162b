#pragma once
// The condition stock picker: runs condition formulas over a list of stocks on a worker thread
// and keeps the stocks whose verdict holds. Besides the pick it turns a stock's stored files into
// bars of any period (with or without ex-rights adjustment) for single-stock services.
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

#include "host/power.h"
#include "model/hisday.h"
#include "model/indicator.h"
#include "model/types.h"
#include "platform/sync.h"

// Progress and result of a pick.
struct CondStocksSTATUS {
    short m_nTotal = 0;           // stocks to examine
    short m_nDone = 0;            // stocks examined so far
    short m_nPicked = 0;          // stocks that met the conditions so far
    std::vector<int> m_arResult;  // picked ids, in the order of the stock list
    short m_nRunning = 0;         // 1 while a pick runs
};

// One output bar of the period map: the first and last stored bar that fall into it.
struct CondStocksDRAWNO {
    short m_nFirst = 0;
    short m_nLast = 0;
};

// Name of the event that tells the worker that the quote refresh has arrived.
extern const char* const MY_EVENT_CondStocks_ADDRTDATA;
// The warning of a minute-based pick during trading hours.
extern const char* const MSG_MINUTE_PICK_IN_TRADING_HOURS;

class CCondStocks {
public:
    using NotifyProc = void (*)(const CondStocksSTATUS* status);

    CCondStocks();
    virtual ~CCondStocks();
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

    // Sends the quote request of a day-based pick (see refresh.cpp).
    void AddRTData();

    // The bars of the current stock in the wanted period, and their count.
    const CHisDay* DrawData() const { return m_pDrawData; }
    short DrawCount() const { return m_nDrawCount; }

    // Latest refresh of the whole process: quotes for day-based picks, 1-minute data for
    // minute-based ones. Dates YYYYMMDD, times HHMMSS.
    static int m_lLastUpdateDate;
    static int m_lLastUpdateTime;
    static int m_lLastUpdateMinuteDate;
    static int m_lLastUpdateMinuteTime;

    // Pick state.
    NotifyProc m_pfnNotify = nullptr;
    // Called on the worker thread right after each stock, with its id and verdict, while the
    // conditions still hold that stock's values; empty by default. Set it between picks only.
    std::function<void(int stockId, BOOL picked)> m_fnItemDone;
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

    // Bar pipeline state.
    int m_lStockID = -1;
    short m_nPeriod = 1;
    int m_nPower = 0;                   // 1: adjust prices for ex-rights events
    int m_nVarPeriod = 0;               // non-zero: regroup bars into runs up and down
    std::vector<CPowerData> m_arPower;  // ex-rights records of the stock, newest first

protected:
    // The pipeline: stored bars, today's data, period map, merge, optional regrouping.
    BOOL RequestData();
    BOOL LoadHisData();
    BOOL LoadRTData();
    void LoadRTData_Day();
    void LoadRTData_Minute();
    void ChangeToMinute5(CHisDay* bars, short& count);
    BOOL IsSamePeriod(int earlier, int later);
    void CalcDrawDays();
    void ChangeDataType();
    void CalcVarPeriod();

    // The five buffers: allocated anew for m_nHisCount + 100 records, or grown keeping the
    // stored bars; they only ever grow.
    void AllocMem();
    void ReAlloc();
    void Free();

    // Ex-rights records.
    void LoadPower();
    int GetStartCQ(int date, CPowerData& record);
    int GetNextCQ(int index, CPowerData& record, int direction);

    CHisDay* m_pHisData = nullptr;
    short m_nHisCount = 0;
    CHisDay* m_pDrawData = nullptr;
    short m_nDrawCount = 0;
    CHisDay* m_pTempData = nullptr;
    short m_nBufSize = 0;
    CondStocksDRAWNO* m_pDrawNo = nullptr;
    float* m_pResult = nullptr;

private:
    BOOL PrepareMinuteData(int time);
    void PrepareQuotes(int time, int ask);
    void StartWorker();
    void WaitForQuotes();
    void SetRunning(short running);
    short Running();
    bool LoadStock(int stockId, short period, int power, int varPeriod);
    void ComputeOnDrawData(CIndicator* indicator);
    void MergeVerdicts();
    BOOL Verdict() const;
    int DayOfBar(int time) const;
    void MergeAdjusted(int firstRaw, int lastRaw, char market);
    void MergeAsStored(int firstRaw, char market);
    void ApplyEvents(int r, int& index, CPowerData& record, float& factor);

    std::vector<CHisDay> m_arMinute;  // the day's 1-minute records while they are appended
    std::vector<CHisDay> m_arFold;    // copy of the minutes while they are folded
};
