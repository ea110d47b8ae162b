#include "server/quote_book.h"

#include <algorithm>
#include <cmath>

#include "host/files.h"
#include "host/quote_wire.h"
#include "host/stockdb.h"

namespace nyquoted {

namespace {
constexpr int kMorningMinutes = 120;  // 09:30 to 11:30
constexpr int kLastMinute = 240;

int MinuteOfDay(int hhmm) { return hhmm / 100 * 60 + hhmm % 100; }

// Shares in a volume of the stock's bar files.
float SharesPerUnit(const CStock& stock) {
    if (stock.IsZQ()) return 10;
    return stock.IsHandUnit() ? 100 : 1;
}
}  // namespace

int TradingMinute(int hhmm) {
    const int minute = MinuteOfDay(hhmm);
    if (minute < MinuteOfDay(930)) return -1;
    if (minute <= MinuteOfDay(1130)) return minute - MinuteOfDay(930);
    if (minute <= MinuteOfDay(1300)) return kMorningMinutes;
    return std::min(kLastMinute, kMorningMinutes + minute - MinuteOfDay(1300));
}

QuoteBook::QuoteBook(const ReplayOptions& replay) : m_replay(replay), m_started(std::chrono::steady_clock::now()) {
    for (const CStock* stock : g_MyStocksArray) {
        m_ids.push_back(stock->m_lStockID);
        if (m_replay.enabled) m_minutes.push_back(ny::ReadBarFile(stock->GetMinuteFilePath()));
    }
}

int QuoteBook::ReplayMinute() const {
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_started).count();
    const int start = TradingMinute(m_replay.startTime / 100);
    const long moved = static_cast<long>(elapsed * m_replay.speed / 60);
    return static_cast<int>(std::min<long>(kLastMinute, start + moved));
}

// The day's quote from the bars up to a trading minute: the open of the first, the extremes, the
// close of the last, the sums; volume of bars that closed up counts as outer, down as inner,
// unchanged half and half.
QuoteBook::DayQuote QuoteBook::QuoteSoFar(size_t index, int minute) const {
    DayQuote quote;
    bool first = true;
    float previous = 0;
    for (const CHisDay& bar : m_minutes[index]) {
        if (TradingMinute(bar.m_lTime % 10000) > minute) break;
        if (first) {
            quote.open = bar.m_fOpen;
            quote.high = bar.m_fHigh;
            quote.low = bar.m_fLow;
            previous = bar.m_fOpen;
            first = false;
        }
        quote.high = std::max(quote.high, bar.m_fHigh);
        quote.low = std::min(quote.low, bar.m_fLow);
        quote.last = bar.m_fClose;
        quote.volume += bar.m_fVolume;
        quote.amount += bar.m_fAmount;
        if (bar.m_fClose > previous)
            quote.outer += bar.m_fVolume;
        else if (bar.m_fClose < previous)
            quote.inner += bar.m_fVolume;
        else {
            quote.outer += bar.m_fVolume / 2;
            quote.inner += bar.m_fVolume / 2;
        }
        previous = bar.m_fClose;
    }
    return quote;
}

float QuoteBook::ValueOf(size_t index, short valueCode, const DayQuote& quote) const {
    const CStock& stock = *g_MyStocksArray[index];
    if (!m_replay.enabled) return stock.GetValue(valueCode);
    const float preClose = stock.GetValue(NY_QUOTE_PRECLOSE);
    const bool traded = quote.last != 0 && preClose > 0;
    switch (valueCode) {
        case NY_QUOTE_OPEN: return quote.open;
        case NY_QUOTE_HIGH: return quote.high;
        case NY_QUOTE_LOW: return quote.low;
        case NY_QUOTE_LAST: return quote.last;
        case NY_QUOTE_VOLUME: return quote.volume;
        case NY_QUOTE_AMOUNT: return quote.amount;
        case NY_QUOTE_INNER: return quote.inner;
        case NY_QUOTE_OUTER: return quote.outer;
        case NY_QUOTE_RISE_PERCENT: return traded ? (quote.last - preClose) / preClose * 100 : 0;
        case NY_QUOTE_AMPLITUDE: return traded ? (quote.high - quote.low) / preClose * 100 : 0;
        case NY_QUOTE_TURNOVER:
            return stock.m_fCapital > 0 ? quote.volume * SharesPerUnit(stock) / (stock.m_fCapital * 10000) * 100 : 0;
        default: return stock.GetValue(valueCode);
    }
}

void QuoteBook::Values(size_t index, int minute, const std::vector<short>& fieldCodes, std::vector<float>* out) {
    const DayQuote quote = m_replay.enabled ? QuoteSoFar(index, minute) : DayQuote();
    for (short code : fieldCodes) {
        const short valueCode = ny::QuoteValueCode(code);
        out->push_back(valueCode < 0 ? 0 : ValueOf(index, valueCode, quote));
    }
}

std::vector<CHisDay> QuoteBook::Minutes(int stockId, int minute) {
    const auto found = std::find(m_ids.begin(), m_ids.end(), stockId);
    if (found == m_ids.end()) return {};
    const size_t index = static_cast<size_t>(found - m_ids.begin());
    if (!m_replay.enabled) return ny::ReadBarFile(g_MyStocksArray[index]->GetMinuteFilePath());
    std::vector<CHisDay> bars;
    for (const CHisDay& bar : m_minutes[index])
        if (TradingMinute(bar.m_lTime % 10000) <= minute) bars.push_back(bar);
    return bars;
}

}  // namespace nyquoted
