// Ex-rights records of the current stock: loading, the record in force at a date, and stepping
// through the list (newest first, index 0 the latest event).

#include "host/files.h"
#include "host/power.h"
#include "host/stockdb.h"
#include "picker/bar_loader.h"

void CBarLoader::LoadPower() {
    const CStock* stock = g_MyGetStock(m_lStockID);
    if (stock == nullptr) return;
    m_arPower.clear();
    // Shanghai records are found by the full id, Shenzhen records by the code; other markets
    // have none.
    if (stock->m_cMarket == NY_MARKET_SH)
        g_MyLoadPowerById(m_arPower, m_lStockID);
    else if (stock->m_cMarket == NY_MARKET_SZ)
        g_MyLoadPowerById(m_arPower, m_lStockID % 1000000);
    // Adjusting with an impossible record would spoil every earlier bar: the stock gets no bars
    // and the file is reported. Without adjustment the records are not used.
    if (m_nPower == 0) return;
    if (const std::string damage = ny::FindPowerDamage(m_arPower, true); !damage.empty()) {
        ny::ReportProblem(stock->GetPowerFilePath() + ": " + damage);
        m_bDamaged = true;
    }
}

int CBarLoader::GetStartCQ(int date, CPowerData& record) {
    for (size_t i = 0; i < m_arPower.size(); ++i) {
        if (m_arPower[i].m_lDate <= date) {
            record = m_arPower[i];
            return static_cast<int>(i);
        }
    }
    return -1;
}

int CBarLoader::GetNextCQ(int index, CPowerData& record, int direction) {
    const int last = static_cast<int>(m_arPower.size()) - 1;
    int next;
    if (direction == 0) {
        if (index >= last) return -1;
        next = index + 1;
    } else {
        if (index < 1) return -1;
        next = index - 1;
    }
    record = m_arPower[next];
    return next;
}

// Applies, backwards in time, every event dated after the day of stored bar r-1 up to and
// including the day of bar r: the bars before such an event are scaled by the ratio of the
// adjusted to the stored close of bar r-1.
void CBarLoader::ApplyEvents(int r, int& index, CPowerData& record, float& factor) {
    const int t1 = DayOfBar(m_pHisData[r].m_lTime);
    const int t0 = DayOfBar(m_pHisData[r - 1].m_lTime);
    while (index >= 0) {
        if (record.m_lDate > t1 || record.m_lDate <= t0) return;
        factor = ny::ScaleForEvent(factor, record, m_pHisData[r - 1].m_fClose);
        index = GetNextCQ(index, record, 0);
    }
}
