#pragma once
// The host's clock and trading date.

#include <string>

namespace ny {
// A clock reading that follows the system clock until it is fixed. It reads like an int: the
// date as YYYYMMDD or the time as HHMMSS, in local time.
class ClockValue {
public:
    explicit ClockValue(bool isDate) : m_bDate(isDate) {}
    operator int() const;
    // Fixes this reading to a value; the clock no longer follows the system for it.
    ClockValue& operator=(int value);
    // Follows the system clock again.
    void Follow();

private:
    bool m_bDate;
    bool m_bFixed = false;
    int m_nValue = 0;
};
}  // namespace ny

class CClockModule {
public:
    static ny::ClockValue m_SystemDate;  // YYYYMMDD
    static ny::ClockValue m_SystemTime;  // HHMMSS

    // Fixes both readings, for tests and for a command-line option.
    static void SetClock(int date, int time);
    // Both readings follow the system clock again.
    static void UseSystemClock();
};

// The current trading date, YYYYMMDD: the date of the installation's quotes, or else the last
// weekday on or before the clock's date. Set when an installation is opened.
extern int g_MyCurTradeDate;

namespace ny {
// Days since 1970-01-01 of a valid YYYYMMDD date.
long DayNumber(int date);
// 1 = Sunday ... 7 = Saturday, for a YYYYMMDD date; 0 for an invalid date.
int WeekDay(int date);
// The last weekday on or before a YYYYMMDD date.
int LastWeekdayOnOrBefore(int date);
// The weekday after a YYYYMMDD date.
int NextWeekday(int date);
// Fixes the clock from a text such as "2021-06-30 14:30", "20210630143000" or "2021-06-30" (the
// separators don't matter, the seconds are optional; a date alone fixes only the date). False,
// with the clock untouched, for anything else or an impossible date or time.
bool SetClockFromText(const std::string& text);
}  // namespace ny
