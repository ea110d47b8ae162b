#pragma once
// The bar loader: turns what is stored for a stock into one array of bars in the wanted period.
// Its pipeline reads the stored file, puts today's data on top, maps stored bars to bars of the
// period, merges them with or without ex-rights adjustment, and on request regroups them into
// runs up and down. Its buffers live on from stock to stock and only ever grow, so one loader
// serves a whole pick without allocating per stock. The picker, `nyind calc` and any chart take
// their bars from it; a loader is used by one thread at a time.

#include <vector>

#include "host/power.h"
#include "host/hisday.h"
#include "host/types.h"

// One output bar of the period map: the first and last stored bar that fall into it.
struct CondStocksDRAWNO {
    short m_nFirst = 0;
    short m_nLast = 0;
};

class CBarLoader {
public:
    CBarLoader() = default;
    virtual ~CBarLoader();
    CBarLoader(const CBarLoader&) = delete;
    CBarLoader& operator=(const CBarLoader&) = delete;

    // Loads a stock's bars in a period (1 day ... 10 sixty minutes); power 1 adjusts prices for
    // ex-rights events, a non-zero varPeriod regroups the bars into runs. True if any bar came out.
    bool Load(int stockId, short period, int power, int varPeriod);
    // Keeps only the newest `count` bars.
    void KeepLast(short count);
    // Keeps the bars from the first dated on or after beginDate to the first dated on or after
    // endDate; false (bars untouched) if either is missing or both are the same bar.
    bool KeepDateRange(int beginDate, int endDate);

    // The bars of the current stock in the wanted period, and their count.
    const CHisDay* DrawData() const { return m_pDrawData; }
    CHisDay* DrawData() { return m_pDrawData; }
    short DrawCount() const { return m_nDrawCount; }
    // The date (YYYYMMDD) of a bar time of the current period.
    int DayOfBar(int time) const;
    // True when the last Load found impossible prices in the stored bar file (reported as a problem of the
    // installation, with the file and record): the stock then has no bars.
    bool Damaged() const { return m_bDamaged; }

    int m_lStockID = -1;
    short m_nPeriod = 1;
    int m_nPower = 0;                   // 1: adjust prices for ex-rights events
    int m_nVarPeriod = 0;               // non-zero: regroup bars into runs up and down
    std::vector<CPowerData> m_arPower;  // ex-rights records of the stock, newest first

protected:
    // The pipeline: stored bars, today's data, period map, merge, optional regrouping.
    BOOL RequestData();
    BOOL LoadHisData();
    BOOL RefuseDamagedBars(const CString& path);
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
    float* m_pResult = nullptr;  // the picker's combined verdict per output bar

private:
    void MergeAdjusted(int firstRaw, int lastRaw, char market);
    void MergeAsStored(int firstRaw, char market);
    void ApplyEvents(int r, int& index, CPowerData& record, float& factor);

    bool m_bDamaged = false;
    std::vector<CHisDay> m_arMinute;  // the day's 1-minute records while they are appended
    std::vector<CHisDay> m_arFold;    // copy of the minutes while they are folded
};
