#include "host/stockdb.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <utility>

#include "host/files.h"
#include "host/global.h"

std::vector<CStock*> g_MyStocksArray;
CIndex g_MyIndexSH(1);
CIndex g_MyIndexSZ(1399001);

namespace {

std::vector<std::pair<int, CStock*>>& IdIndex() {
    static std::vector<std::pair<int, CStock*>> index;
    return index;
}

// Counts the rebuilds of the index, starting from 1, so that remembered look-ups can tell that
// they are out of date.
std::atomic<unsigned>& IndexGeneration() {
    static std::atomic<unsigned> generation{1};
    return generation;
}

std::mutex& IdIndexLock() {
    static std::mutex lock;
    return lock;
}

// A quote field of CStock by its GetValue code.
struct QuoteField {
    short code;
    float CStock::*field;
};

// The quote field of a code in a stock, const or not; null for an unknown code.
template <typename Stock>
auto QuoteSlot(Stock& stock, short code) -> decltype(&stock.m_fOpen) {
    static const QuoteField kFields[] = {
        {NY_QUOTE_PRECLOSE, &CStock::m_fPreClose},   {NY_QUOTE_OPEN, &CStock::m_fOpen},
        {NY_QUOTE_LAST, &CStock::m_fNew},            {NY_QUOTE_HIGH, &CStock::m_fHigh},
        {NY_QUOTE_LOW, &CStock::m_fLow},             {NY_QUOTE_VOLUME, &CStock::m_fVolume},
        {NY_QUOTE_AMOUNT, &CStock::m_fAmount},       {NY_QUOTE_EXTRA, &CStock::m_fExtra},
        {NY_QUOTE_CUR_VOLUME, &CStock::m_fCurVolume}, {NY_QUOTE_INNER, &CStock::m_fInnerVolume},
        {NY_QUOTE_AVG_PRICE, &CStock::m_fAvgPrice},  {NY_QUOTE_VOLUME_RATIO, &CStock::m_fVolumeRatio},
        {NY_QUOTE_CHANGE, &CStock::m_fChange},       {NY_QUOTE_RISE_PERCENT, &CStock::m_fRisePercent},
        {NY_QUOTE_ORDER_RATIO, &CStock::m_fOrderRatio}, {NY_QUOTE_ORDER_DIFF, &CStock::m_fOrderDiff},
        {NY_QUOTE_OUTER, &CStock::m_fOuterVolume},   {NY_QUOTE_AMPLITUDE, &CStock::m_fAmplitude},
        {NY_QUOTE_PE, &CStock::m_fPE},               {NY_QUOTE_TURNOVER, &CStock::m_fTurnover},
    };
    for (const QuoteField& entry : kFields)
        if (entry.code == code) return &(stock.*entry.field);
    // The three levels of bids and asks: price and volume alternate from codes 8 and 18.
    if (code >= NY_QUOTE_BUY_PRICE1 && code <= NY_QUOTE_BUY_VOLUME3) {
        const int level = (code - NY_QUOTE_BUY_PRICE1) / 2;
        return (code - NY_QUOTE_BUY_PRICE1) % 2 == 0 ? &stock.m_fBuyPrice[level] : &stock.m_fBuyVolume[level];
    }
    if (code >= NY_QUOTE_SELL_PRICE1 && code <= NY_QUOTE_SELL_VOLUME3) {
        const int level = (code - NY_QUOTE_SELL_PRICE1) / 2;
        return (code - NY_QUOTE_SELL_PRICE1) % 2 == 0 ? &stock.m_fSellPrice[level] : &stock.m_fSellVolume[level];
    }
    return nullptr;
}

// The figure of the financial record of an item, const or not; null for an unknown item.
template <typename Stock>
auto FinanceSlot(Stock& stock, short item) -> decltype(&stock.m_fEPS) {
    static const struct {
        short item;
        float CStock::*field;
    } kFields[] = {
        {NY_FINANCE_TOTAL_SHARES, &CStock::m_fTotalCapital}, {NY_FINANCE_FLOAT_SHARES, &CStock::m_fCapital},
        {NY_FINANCE_STATE_SHARES, &CStock::m_fStateShares}, {NY_FINANCE_LEGAL_SHARES, &CStock::m_fLegalShares},
        {NY_FINANCE_TOTAL_ASSETS, &CStock::m_fTotalAssets}, {NY_FINANCE_CAPITAL_RESERVE, &CStock::m_fCapitalReserve},
        {NY_FINANCE_RESERVE_PER_SHARE, &CStock::m_fReservePerShare}, {NY_FINANCE_EQUITY, &CStock::m_fEquity},
        {NY_FINANCE_MAIN_PROFIT, &CStock::m_fMainProfit}, {NY_FINANCE_TOTAL_PROFIT, &CStock::m_fTotalProfit},
        {NY_FINANCE_NET_PROFIT, &CStock::m_fNetProfit}, {NY_FINANCE_UNDISTRIBUTED, &CStock::m_fUndistributed},
        {NY_FINANCE_EPS, &CStock::m_fEPS}, {NY_FINANCE_NET_ASSETS_PER_SHARE, &CStock::m_fNetAssetsPerShare},
    };
    for (const auto& entry : kFields)
        if (entry.item == item) return &(stock.*entry.field);
    return nullptr;
}

const char* MarketFolder(long id) {
    switch (id / 1000000) {
        case NY_MARKET_SH: return "sh";
        case NY_MARKET_SZ: return "sz";
        default: return "hk";
    }
}

// Trading sessions of a market, as minutes of the day.
struct Session {
    int open;
    int close;
};

const std::vector<Session>& Sessions(char market) {
    static const std::vector<Session> kMainland = {{9 * 60 + 30, 11 * 60 + 30}, {13 * 60, 15 * 60}};
    static const std::vector<Session> kHongKong = {{9 * 60 + 30, 12 * 60}, {13 * 60, 16 * 60}};
    return market == NY_MARKET_HK ? kHongKong : kMainland;
}

}  // namespace

BOOL CStock::IsHandUnit(long id) {
    const CStock* stock = g_MyGetStock(id);
    return stock != nullptr && stock->IsHandUnit();
}

BOOL CStock::IsZQ(long id) {
    const CStock* stock = g_MyGetStock(id);
    return stock != nullptr && stock->IsZQ();
}

float CStock::GetValue(short code) const {
    const float* slot = QuoteSlot(*this, code);
    return slot != nullptr ? *slot : 0.0f;
}

BOOL CStock::SetValue(short code, float value) {
    float* slot = QuoteSlot(*this, code);
    if (slot == nullptr) return FALSE;
    *slot = value;
    return TRUE;
}

float CStock::GetFinanceValue(short item) const {
    const float* slot = FinanceSlot(*this, item);
    return slot != nullptr ? *slot : 0.0f;
}

BOOL CStock::SetFinanceValue(short item, float value) {
    float* slot = FinanceSlot(*this, item);
    if (slot == nullptr) return FALSE;
    *slot = value;
    return TRUE;
}

short ny::DynaInfoQuoteCode(int n) {
    static const struct {
        short number;
        short code;
    } kNumbers[] = {
        {3, NY_QUOTE_PRECLOSE}, {4, NY_QUOTE_OPEN}, {5, NY_QUOTE_HIGH}, {6, NY_QUOTE_LOW},
        {7, NY_QUOTE_LAST}, {8, NY_QUOTE_VOLUME}, {9, NY_QUOTE_CUR_VOLUME}, {10, NY_QUOTE_AMOUNT},
        {11, NY_QUOTE_AVG_PRICE}, {12, NY_QUOTE_CHANGE}, {13, NY_QUOTE_AMPLITUDE},
        {14, NY_QUOTE_RISE_PERCENT}, {15, NY_QUOTE_ORDER_RATIO}, {16, NY_QUOTE_ORDER_DIFF},
        {17, NY_QUOTE_VOLUME_RATIO}, {20, NY_QUOTE_BUY_PRICE1}, {21, NY_QUOTE_SELL_PRICE1},
        {22, NY_QUOTE_INNER}, {23, NY_QUOTE_OUTER}, {25, NY_QUOTE_BUY_VOLUME1},
        {26, NY_QUOTE_BUY_VOLUME2}, {27, NY_QUOTE_BUY_VOLUME3}, {28, NY_QUOTE_BUY_PRICE1},
        {29, NY_QUOTE_BUY_PRICE2}, {30, NY_QUOTE_BUY_PRICE3}, {31, NY_QUOTE_SELL_VOLUME1},
        {32, NY_QUOTE_SELL_VOLUME2}, {33, NY_QUOTE_SELL_VOLUME3}, {34, NY_QUOTE_SELL_PRICE1},
        {35, NY_QUOTE_SELL_PRICE2}, {36, NY_QUOTE_SELL_PRICE3}, {37, NY_QUOTE_TURNOVER},
        {39, NY_QUOTE_PE}, {59, NY_QUOTE_EXTRA},
    };
    for (const auto& entry : kNumbers)
        if (entry.number == n) return entry.code;
    return -1;
}

CString CStock::GetDayFilePath() const { return ny::StockFilePath(m_lStockID, "day", ".day"); }
CString CStock::GetMin5FilePath() const { return ny::StockFilePath(m_lStockID, "min5", ".mn5"); }
CString CStock::GetMinuteFilePath() const { return ny::StockFilePath(m_lStockID, "min1", ".mn1"); }
CString CStock::GetExtDayFilePath() const { return ny::StockFilePath(m_lStockID, "dayext", ".ext"); }
CString CStock::GetPowerFilePath() const { return ny::StockFilePath(m_lStockID, "power", ".pwr"); }
CString CStock::GetOptInfoFilePathLocal() const { return ny::StockFilePath(m_lStockID, "expert", ".exp"); }

int CStock::Time2Time(int time, int kind, char market) {
    static const int kMinutes[] = {5, 15, 30, 60};
    if (kind < 0 || kind > 3) return time;
    const int period = kMinutes[kind];
    const int minute = time % 10000 / 100 * 60 + time % 100;
    const std::vector<Session>& sessions = Sessions(market);
    // The session that holds the time, or that a break or the close belongs to.
    const Session* session = &sessions.front();
    for (const Session& candidate : sessions)
        if (minute >= candidate.open) session = &candidate;
    const int elapsed = std::min(minute, session->close) - session->open;
    const int slot = std::max(1, (elapsed + period - 1) / period);
    const int stamp = std::min(session->open + slot * period, session->close);
    return time / 10000 * 10000 + stamp / 60 * 100 + stamp % 60;
}

int CStock::Min5Time2Day(int time) { return 20000000 + time / 10000; }

CStock* g_MyGetStock(long id) {
    std::vector<std::pair<int, CStock*>>& index = IdIndex();
    if (index.size() != g_MyStocksArray.size()) ny::IndexStocks();
    // The evaluator asks for the same stock at every bar: remember the last answer per thread.
    thread_local long lastId = 0;
    thread_local CStock* lastStock = nullptr;
    thread_local unsigned lastGeneration = 0;
    const unsigned generation = IndexGeneration().load(std::memory_order_acquire);
    if (lastGeneration == generation && lastId == id) return lastStock;
    auto found = std::lower_bound(index.begin(), index.end(), id,
                                  [](const std::pair<int, CStock*>& entry, long key) { return entry.first < key; });
    lastId = id;
    lastStock = found != index.end() && found->first == id ? found->second : nullptr;
    lastGeneration = generation;
    return lastStock;
}

const CHisDay* CIndex::GetDay(long date) {
    if (!m_bLoaded.load(std::memory_order_acquire)) {
        std::lock_guard<std::mutex> guard(m_lock);
        if (!m_bLoaded.load(std::memory_order_relaxed)) {
            m_arDays = ny::ReadBarFile(GetDayFilePath());
            m_bLoaded.store(true, std::memory_order_release);
        }
    }
    auto found = std::lower_bound(m_arDays.begin(), m_arDays.end(), date,
                                  [](const CHisDay& bar, long key) { return bar.m_lTime < key; });
    return found != m_arDays.end() && found->m_lTime == date ? &*found : nullptr;
}

CString CIndex::GetDayFilePath() const { return ny::StockFilePath(m_lStockID, "day", ".day"); }

void CIndex::Reset() {
    std::lock_guard<std::mutex> guard(m_lock);
    m_bLoaded.store(false, std::memory_order_release);
    m_arDays.clear();
}

namespace ny {

CString StockFilePath(long id, const char* folder, const char* extension) {
    char name[32];
    std::snprintf(name, sizeof(name), "%06ld", id % 1000000);
    return g_MyExePath + "data/" + MarketFolder(id) + "/" + folder + "/" + name + extension;
}

int ParseStockCode(const std::string& text) {
    static const char* const kMarkets[] = {"SH", "SZ", "HK"};
    if (text.size() != 8) return 0;
    for (int market = 0; market < 3; ++market) {
        if (text.compare(0, 2, kMarkets[market]) != 0) continue;
        int code = 0;
        for (size_t i = 2; i < 8; ++i) {
            if (text[i] < '0' || text[i] > '9') return 0;
            code = code * 10 + (text[i] - '0');
        }
        const int id = market * 1000000 + code;
        return id > 0 ? id : 0;
    }
    return 0;
}

std::string FormatStockCode(long id) {
    static const char* const kMarkets[] = {"SH", "SZ", "HK"};
    char text[16];
    std::snprintf(text, sizeof(text), "%s%06ld", kMarkets[std::clamp<long>(id / 1000000, 0, 2)], id % 1000000);
    return text;
}

void IndexStocks() {
    std::lock_guard<std::mutex> guard(IdIndexLock());
    std::vector<std::pair<int, CStock*>>& index = IdIndex();
    index.clear();
    index.reserve(g_MyStocksArray.size());
    for (CStock* stock : g_MyStocksArray) index.emplace_back(stock->m_lStockID, stock);
    std::stable_sort(index.begin(), index.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    IndexGeneration().fetch_add(1, std::memory_order_release);
}

void ClearStocks() {
    for (CStock* stock : g_MyStocksArray) delete stock;
    g_MyStocksArray.clear();
    IndexStocks();
}

}  // namespace ny
