#pragma once
// What nyquoted serves: the quotes of the installation's stocks and their 1-minute bars of the
// day, either as stored (live mode: quotes from data/quotes.csv as loaded, 1-minute files read at
// each request) or replayed from the stored 1-minute bars by a clock that moves through the
// trading day at a chosen speed, so that quotes and bars change as in a session.
//
// Used from the server's one thread.

#include <chrono>
#include <vector>

#include "host/hisday.h"

namespace nyquoted {

struct ReplayOptions {
    bool enabled = false;
    int startTime = 93000;  // HHMMSS of the replayed day at which the replay starts
    double speed = 60;      // replayed seconds per real second; 0 stands still
};

// The trading minute of an HHMM time: 09:30 to 11:30 are 0 to 120, 13:01 to 15:00 are 121 to 240;
// -1 before the open, 120 during the break, 240 after the close.
int TradingMinute(int hhmm);

class QuoteBook {
public:
    // Takes the stocks of the open installation; in replay mode reads every 1-minute file now.
    explicit QuoteBook(const ReplayOptions& replay);

    // Stock ids in the order of the stock list.
    const std::vector<int>& Ids() const { return m_ids; }
    // The values of the field codes of a quote request for the stock at `index` of Ids(), at a
    // trading minute of the replay (ignored in live mode). One request reads one minute.
    void Values(size_t index, int minute, const std::vector<short>& fieldCodes, std::vector<float>* out);
    // Today's 1-minute bars of a stock up to a trading minute of the replay (live mode: all that
    // are stored); empty for an unknown stock or one without bars.
    std::vector<CHisDay> Minutes(int stockId, int minute);
    // The replay clock: the last trading minute that has passed (-1 before the open).
    int ReplayMinute() const;

private:
    struct DayQuote {
        float open = 0, high = 0, low = 0, last = 0, volume = 0, amount = 0, inner = 0, outer = 0;
    };
    DayQuote QuoteSoFar(size_t index, int minute) const;
    float ValueOf(size_t index, short valueCode, const DayQuote& quote) const;

    ReplayOptions m_replay;
    std::chrono::steady_clock::time_point m_started;
    std::vector<int> m_ids;
    std::vector<std::vector<CHisDay>> m_minutes;  // replay mode: each stock's stored 1-minute bars
};

}  // namespace nyquoted
