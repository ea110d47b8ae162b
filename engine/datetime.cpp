// The date words that read each bar's time stamp, the conversions between the language's date,
// day, time and second numbers, and BETA against the market index.
//
// A day-based bar (periods 1 to 5) is stamped YYYYMMDD, a minute bar YYMMDDHHMM counted from
// 2000. The language's dates count from 1900 (1011208 is 2001-12-08), its times are HHMM.

#include <algorithm>
#include <cstring>
#include <string_view>
#include <unordered_map>

#include "engine/eval_context.h"
#include "engine/eval_util.h"
#include "engine/function_util.h"
#include "host/clock.h"
#include "host/stockdb.h"
#include "model/indicator.h"

namespace {

enum class DateWord { Period, Date, Time, Year, Month, Day, WeekDay, Hour, Minute, FromOpen };

DateWord FindDateWord(const char* word) {
    static const std::unordered_map<std::string_view, DateWord> words = {
        {"PERIOD", DateWord::Period}, {"DATE", DateWord::Date}, {"TIME", DateWord::Time},
        {"YEAR", DateWord::Year}, {"MONTH", DateWord::Month}, {"DAY", DateWord::Day},
        {"WEEKDAY", DateWord::WeekDay}, {"HOUR", DateWord::Hour}, {"MINUTE", DateWord::Minute},
        {"FROMOPEN", DateWord::FromOpen},
    };
    const auto found = words.find(word);
    return found == words.end() ? DateWord::FromOpen : found->second;
}

// Day of the week of a calendar date, 0 Sunday to 6 Saturday.
int DayOfWeek(int year, int month, int day) {
    static const int offsets[12] = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
    if (month < 3) --year;
    return (year + year / 4 - year / 100 + year / 400 + offsets[month - 1] + day) % 7;
}

// The trading minute that a time of day falls in, counting 09:30 as the first: 31 at 10:00, 121
// from 11:30 through the midday break to 13:00, 122 at 13:01, 241 at the close and after; 0
// before the opening.
int MinutesFromOpen(int hhmm) {
    constexpr int kMorningOpen = 9 * 60 + 30, kMorningClose = 11 * 60 + 30;
    constexpr int kAfternoonOpen = 13 * 60, kAfternoonClose = 15 * 60;
    constexpr int kMorningMinutes = kMorningClose - kMorningOpen;
    const int minute = (hhmm / 100) * 60 + hhmm % 100;
    if (minute < kMorningOpen) return 0;
    if (minute <= kMorningClose) return minute - kMorningOpen + 1;
    if (minute <= kAfternoonOpen) return kMorningMinutes + 1;
    if (minute <= kAfternoonClose) return kMorningMinutes + 1 + minute - kAfternoonOpen;
    return kMorningMinutes + 1 + kAfternoonClose - kAfternoonOpen;
}

// FROMOPEN of a day-based bar: a session before the clock's date is over, one of the clock's
// date (or later) has run up to the clock's time.
int SessionMinutesOfDay(int date) {
    const int fullSession = MinutesFromOpen(1500);
    if (date < CClockModule::m_SystemDate) return fullSession;
    return MinutesFromOpen(CClockModule::m_SystemTime / 100);
}

// The parts of one bar's stamp.
struct Stamp {
    int date;  // the language's date, 1YYMMDD
    int year;  // four digits
    int month;
    int day;
    int hhmm;  // 0 on day-based bars
};

Stamp ReadStamp(int t, bool minuteBars) {
    if (minuteBars)
        return {t / 10000 + 1000000, t / 100000000 + 2000, (t / 1000000) % 100, (t / 10000) % 100,
                t % 10000};
    return {t - 19000000, t / 10000, (t / 100) % 100, t % 100, 0};
}

enum class Conversion { DateToDay, DayToDate, TimeToSec, SecToTime, Beta };

Conversion FindConversion(const char* word) {
    if (std::strcmp(word, "DATETODAY") == 0) return Conversion::DateToDay;
    if (std::strcmp(word, "DAYTODATE") == 0) return Conversion::DayToDate;
    if (std::strcmp(word, "TIMETOSEC") == 0) return Conversion::TimeToSec;
    if (std::strcmp(word, "SECTOTIME") == 0) return Conversion::SecToTime;
    return Conversion::Beta;
}

// The converted value, or false when v lies outside the conversion's domain. Day numbers are the
// plain difference from 901219, not a count of calendar days.
bool Convert(Conversion kind, int v, int* result) {
    constexpr int kDayZero = 901219;
    switch (kind) {
        case Conversion::DateToDay:
            if (v < kDayZero || v > 1341231) return false;
            *result = v - kDayZero;
            return true;
        case Conversion::DayToDate:
            if (v < 0 || v > 20000) return false;
            *result = v + kDayZero;
            return true;
        case Conversion::TimeToSec:
            if (v < 0 || v > 235959) return false;
            *result = (v / 10000) * 3600 + ((v % 10000) / 100) * 60 + v % 100;
            return true;
        case Conversion::SecToTime:
            if (v < 0 || v > 86399) return false;
            *result = (v / 3600) * 10000 + ((v % 3600) / 60) * 100 + v % 60;
            return true;
        case Conversion::Beta:
            break;
    }
    return false;
}

// The index of the stock's market: Shenzhen for ids above 1000000, else Shanghai.
CIndex& MarketIndex(int stockId) { return stockId > 1000000 ? g_MyIndexSZ : g_MyIndexSH; }

}  // namespace

char CIndicator::ReadDATETIME(char* word, float* out, short* from, short* to, char, char*) {
    const DateWord kind = FindDateWord(word);
    const ny::PeriodRow* period = ny::FindPeriod(m_nPeriod);
    const bool minuteBars = ny::IsMinutePeriod(m_nPeriod);
    const ny::BarSpan span(*from, *to, m_nBarCount);
    for (int i = span.first; i <= span.last; ++i) {
        const Stamp s = ReadStamp(m_pHisDay[i].m_lTime, minuteBars);
        int value = 0;
        switch (kind) {
            case DateWord::Period:
                value = period != nullptr ? period->listIndex : 0;
                break;
            case DateWord::Date: value = s.date; break;
            case DateWord::Time: value = s.hhmm; break;
            case DateWord::Year: value = minuteBars ? s.year - 2000 : s.year; break;
            case DateWord::Month: value = s.month; break;
            case DateWord::Day: value = s.day; break;
            case DateWord::Hour: value = s.hhmm / 100; break;
            case DateWord::Minute: value = s.hhmm % 100; break;
            case DateWord::WeekDay:
                // A stamp that is no calendar date leaves the bar as it is.
                if (s.year < 1900 || s.month < 1 || s.month > 12 || s.day < 1 || s.day > 31) continue;
                value = DayOfWeek(s.year, s.month, s.day);
                break;
            case DateWord::FromOpen:
                value = minuteBars ? MinutesFromOpen(s.hhmm) : SessionMinutesOfDay(m_pHisDay[i].m_lTime);
                break;
        }
        out[i] = static_cast<float>(value);
    }
    return 0;
}

char CIndicator::ReadDATETODAY(char* word, float* out, short* from, short* to, char, char*) {
    const Conversion kind = FindConversion(word);
    ny::PooledBuffer argument(Context().pool, m_nBarCount);
    short argFrom = *from, argTo = *to;
    char argSeries = 0;
    if (const char rc = ReadSoleArgument(argument.floats(), &argFrom, &argTo, &argSeries, 1)) return rc;
    // Only element 0 counts, also for a series: the result is a constant spread over the range.
    const int v = ny::TruncToInt(argument.floats()[0]);
    if (kind == Conversion::Beta) return ReadBeta(v, out, from, to);
    int result = 0;
    if (!Convert(kind, v, &result)) {
        *from = *to;  // outside the domain: one valid bar, holding 0
        return 0;
    }
    out[0] = static_cast<float>(result);
    ny::Spread(out, *from, *to, m_nBarCount);
    return 0;
}

// BETA(N): the stock's close against its market index's close over N bars, the covariance over
// the index's variance, 0 where that variance is exactly 0. A bar whose date the index lacks has
// an index close of 0. N of 0 gives NaN; the range never widens.
char CIndicator::ReadBeta(int period, float* out, short* from, short* to) {
    // Beyond 16-bit bar numbers no window differs; the limit keeps the bar arithmetic in range.
    const int n = std::clamp(period, -ny::kLongestPeriod, ny::kLongestPeriod);
    ny::PooledBuffer stockBuffer(Context().pool, m_nBarCount);
    ny::PooledBuffer indexBuffer(Context().pool, m_nBarCount);
    float* stock = stockBuffer.floats();
    float* index = indexBuffer.floats();
    CIndex& marketIndex = MarketIndex(m_lStockID);
    const ny::BarSpan all(*from, *to, m_nBarCount);
    for (int i = all.first; i <= all.last; ++i) {
        stock[i] = m_pHisDay[i].m_fClose;
        if (const CHisDay* day = marketIndex.GetDay(m_pHisDay[i].m_lTime)) index[i] = day->m_fClose;
    }
    if (n > 0) *from = ny::ClampBar(*from + n - 1);
    const ny::BarSpan span(*from, *to, m_nBarCount);
    for (int i = std::max(span.first, n - 1); i <= span.last; ++i) {
        const ny::WindowFigures f = ny::MeasureWindow(stock, index, i, n);
        out[i] = f.varianceB == 0.0f ? 0.0f
                                     : static_cast<float>(static_cast<double>(f.covariance) / f.varianceB);
    }
    return 0;
}
