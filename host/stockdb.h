#pragma once
// The host's stock database: the stock objects of the installation with their names, kinds,
// stored files and current quotes; the two market indexes; the trading sessions.

#include <atomic>
#include <mutex>
#include <vector>

#include "host/hisday.h"
#include "host/types.h"

// Kind bits of CStock::m_dwKind.
constexpr unsigned NY_KIND_INDEX = 0x0001;      // a market index
constexpr unsigned NY_KIND_SH_A = 0x0002;       // a Shanghai A share
constexpr unsigned NY_KIND_BOND = 0x0004;       // a bond: volumes stored in units of a tenth hand
constexpr unsigned NY_KIND_HAND_UNIT = 0x0008;  // volumes stored in hands
constexpr unsigned NY_KIND_FUND = 0x0010;       // an exchange-traded fund
constexpr unsigned NY_KIND_SZ_A = 0x2000;       // a Shenzhen A share

// Markets, the first digit of a stock id (market x 1,000,000 + code).
constexpr char NY_MARKET_SH = 0;
constexpr char NY_MARKET_SZ = 1;
constexpr char NY_MARKET_HK = 2;

// GetValue codes of the quote fields. The same numbers serve as sort columns of blocks.
enum : short {
    NY_QUOTE_PRECLOSE = 0, NY_QUOTE_OPEN = 1, NY_QUOTE_LAST = 2, NY_QUOTE_HIGH = 3, NY_QUOTE_LOW = 4,
    NY_QUOTE_VOLUME = 5, NY_QUOTE_AMOUNT = 6, NY_QUOTE_EXTRA = 7,
    NY_QUOTE_BUY_PRICE1 = 8, NY_QUOTE_BUY_VOLUME1 = 9, NY_QUOTE_BUY_PRICE2 = 10,
    NY_QUOTE_BUY_VOLUME2 = 11, NY_QUOTE_BUY_PRICE3 = 12, NY_QUOTE_BUY_VOLUME3 = 13,
    NY_QUOTE_SELL_PRICE1 = 18, NY_QUOTE_SELL_VOLUME1 = 19, NY_QUOTE_SELL_PRICE2 = 20,
    NY_QUOTE_SELL_VOLUME2 = 21, NY_QUOTE_SELL_PRICE3 = 22, NY_QUOTE_SELL_VOLUME3 = 23,
    NY_QUOTE_CUR_VOLUME = 48, NY_QUOTE_INNER = 51, NY_QUOTE_AVG_PRICE = 60,
    NY_QUOTE_VOLUME_RATIO = 61, NY_QUOTE_CHANGE = 62, NY_QUOTE_RISE_PERCENT = 63,
    NY_QUOTE_ORDER_RATIO = 64, NY_QUOTE_ORDER_DIFF = 65, NY_QUOTE_OUTER = 66,
    NY_QUOTE_AMPLITUDE = 67, NY_QUOTE_PE = 70, NY_QUOTE_TURNOVER = 71,
};

// GetFinanceValue items of the financial record. Shares and money are in units of 10,000 (shares
// or yuan); per-share figures in yuan.
enum : short {
    NY_FINANCE_TOTAL_SHARES = 1, NY_FINANCE_STATE_SHARES = 5, NY_FINANCE_LEGAL_SHARES = 6,
    NY_FINANCE_TOTAL_ASSETS = 10, NY_FINANCE_CAPITAL_RESERVE = 17, NY_FINANCE_RESERVE_PER_SHARE = 18,
    NY_FINANCE_EQUITY = 19, NY_FINANCE_MAIN_PROFIT = 21, NY_FINANCE_TOTAL_PROFIT = 28,
    NY_FINANCE_NET_PROFIT = 30, NY_FINANCE_UNDISTRIBUTED = 31, NY_FINANCE_EPS = 33,
    NY_FINANCE_NET_ASSETS_PER_SHARE = 34, NY_FINANCE_FLOAT_SHARES = 94,
};

class CStock {
public:
    int m_lStockID = 0;     // market x 1,000,000 + code
    char m_cMarket = 0;     // NY_MARKET_...
    CString m_strCode;      // six digits
    CString m_strName;      // GBK
    CString m_strPyCode;    // pinyin initials of the name, upper case
    unsigned m_dwKind = 0;  // NY_KIND_... bits
    float m_fCapital = 0;       // circulating shares, in 10,000 shares
    float m_fTotalCapital = 0;  // total shares, in 10,000 shares

    // Current quote. Volumes are in the units of the stock's bar files.
    float m_fPreClose = 0, m_fOpen = 0, m_fNew = 0, m_fHigh = 0, m_fLow = 0;
    float m_fVolume = 0, m_fAmount = 0, m_fExtra = 0;
    float m_fBuyPrice[3] = {}, m_fBuyVolume[3] = {}, m_fSellPrice[3] = {}, m_fSellVolume[3] = {};
    float m_fCurVolume = 0;    // volume of the latest trade
    float m_fInnerVolume = 0;  // traded at the bid
    float m_fOuterVolume = 0;  // traded at the ask
    float m_fAvgPrice = 0, m_fVolumeRatio = 0, m_fChange = 0, m_fRisePercent = 0;
    float m_fOrderRatio = 0, m_fOrderDiff = 0, m_fAmplitude = 0, m_fTurnover = 0, m_fPE = 0;

    // Financial record beside the shares above (NY_FINANCE_... units).
    float m_fStateShares = 0, m_fLegalShares = 0, m_fTotalAssets = 0, m_fCapitalReserve = 0;
    float m_fReservePerShare = 0, m_fEquity = 0, m_fMainProfit = 0, m_fTotalProfit = 0;
    float m_fNetProfit = 0, m_fUndistributed = 0, m_fEPS = 0, m_fNetAssetsPerShare = 0;

    long GetID() const { return m_lStockID; }

    BOOL IsHandUnit() const { return (m_dwKind & NY_KIND_HAND_UNIT) != 0; }
    BOOL IsZQ() const { return (m_dwKind & NY_KIND_BOND) != 0; }
    BOOL IsIndex() const { return (m_dwKind & NY_KIND_INDEX) != 0; }

    // The same tests by id; an unknown id is none of them.
    static BOOL IsHandUnit(long id);
    static BOOL IsZQ(long id);

    // A quote field by its code (NY_QUOTE_...); 0 for an unknown code.
    float GetValue(short code) const;
    // Sets a quote field by its code; FALSE for an unknown code.
    BOOL SetValue(short code, float value);
    // A figure of the stock's financial record by its item (NY_FINANCE_...): item 94 is the
    // circulating shares, item 1 the total shares; 0 for an unknown item.
    float GetFinanceValue(short item) const;
    // Sets a figure of the financial record; FALSE for an unknown item.
    BOOL SetFinanceValue(short item, float value);

    // Stored files of the stock, under g_MyExePath.
    CString GetDayFilePath() const;            // CHisDay records, one a day
    CString GetMin5FilePath() const;           // CHisDay records, one per 5 minutes
    CString GetMinuteFilePath() const;         // CHisDay records of the current day, one a minute
    CString GetExtDayFilePath() const;         // 260-byte order-flow records, one a day
    CString GetPowerFilePath() const;          // CPowerData records, oldest first
    CString GetOptInfoFilePathLocal() const;   // the stock's expert settings

    // The stamp of the period that holds a minute time, both YYMMDDHHMM: kind 0 = 5 minutes,
    // 1 = 15, 2 = 30, 3 = 60. A slot is stamped with its last minute; the first minute of a
    // session joins the first slot, times in a break or after the close join the slot before.
    static int Time2Time(int time, int kind, char market);
    // The YYYYMMDD date of a YYMMDDHHMM minute time.
    static int Min5Time2Day(int time);
};

// All stocks of the installation, owned, in the order of the stock list.
extern std::vector<CStock*> g_MyStocksArray;

// The stock of an id, or null. Stocks appended to g_MyStocksArray by hand are found too.
CStock* g_MyGetStock(long id);

// A market index: its day bars, read from its day file on first use.
class CIndex {
public:
    explicit CIndex(int stockId) : m_lStockID(stockId) {}

    int m_lStockID;

    // The bar of a date, or null. Safe from several threads.
    const CHisDay* GetDay(long date);
    CString GetDayFilePath() const;
    // Drops the loaded bars; the next GetDay reads the file again. Not while others use the index.
    void Reset();

private:
    std::mutex m_lock;
    std::atomic<bool> m_bLoaded{false};
    std::vector<CHisDay> m_arDays;
};

// The Shanghai index (code 000001) and the Shenzhen index (code 399001).
extern CIndex g_MyIndexSH;
extern CIndex g_MyIndexSZ;

namespace ny {
// The GetValue code of the quote field that DYNAINFO(n) reads (3 previous close, 7 latest ...),
// also the sort column of a block ranked by that number; -1 for a number without a field.
short DynaInfoQuoteCode(int n);
// The path of a stored file of a stock id: data/<sh|sz|hk>/<folder>/<code><extension>.
CString StockFilePath(long id, const char* folder, const char* extension);
// Stock id from the text form "SH600001" / "SZ000001" / "HK000001"; 0 if malformed.
int ParseStockCode(const std::string& text);
// The text form of a stock id, "SH600001".
std::string FormatStockCode(long id);
// Rebuilds the id index after g_MyStocksArray was refilled.
void IndexStocks();
// Deletes all stocks.
void ClearStocks();
}  // namespace ny
