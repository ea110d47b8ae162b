#include "host/clock.h"

#include <ctime>

ny::ClockValue CClockModule::m_SystemDate(true);
ny::ClockValue CClockModule::m_SystemTime(false);
int g_MyCurTradeDate = 0;

ny::ClockValue::operator int() const {
    if (m_bFixed) return m_nValue;
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    if (m_bDate) return (local.tm_year + 1900) * 10000 + (local.tm_mon + 1) * 100 + local.tm_mday;
    return local.tm_hour * 10000 + local.tm_min * 100 + local.tm_sec;
}

ny::ClockValue& ny::ClockValue::operator=(int value) {
    m_bFixed = true;
    m_nValue = value;
    return *this;
}

void ny::ClockValue::Follow() { m_bFixed = false; }

void CClockModule::SetClock(int date, int time) {
    m_SystemDate = date;
    m_SystemTime = time;
}

void CClockModule::UseSystemClock() {
    m_SystemDate.Follow();
    m_SystemTime.Follow();
}

namespace ny {
namespace {

// Days since 1970-01-01 of a civil date (proleptic Gregorian).
long DaysFromCivil(int year, int month, int day) {
    year -= month <= 2;
    const long era = (year >= 0 ? year : year - 399) / 400;
    const long yoe = year - era * 400;
    const long doy = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

int CivilFromDays(long days) {
    days += 719468;
    const long era = (days >= 0 ? days : days - 146096) / 146097;
    const long doe = days - era * 146097;
    const long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const long mp = (5 * doy + 2) / 153;
    const int day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    const int month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    const int year = static_cast<int>(yoe + era * 400 + (month <= 2));
    return year * 10000 + month * 100 + day;
}

bool ValidDate(int date) {
    const int year = date / 10000, month = date / 100 % 100, day = date % 100;
    if (year < 1 || month < 1 || month > 12 || day < 1) return false;
    return CivilFromDays(DaysFromCivil(year, month, day)) == date;
}

}  // namespace

long DayNumber(int date) { return DaysFromCivil(date / 10000, date / 100 % 100, date % 100); }

int WeekDay(int date) {
    if (!ValidDate(date)) return 0;
    // 1970-01-01 was a Thursday, weekday number 5.
    long index = (DayNumber(date) + 4) % 7;  // 0 = Sunday
    if (index < 0) index += 7;
    return static_cast<int>(index) + 1;
}

int LastWeekdayOnOrBefore(int date) {
    long day = DayNumber(date);
    while (WeekDay(CivilFromDays(day)) == 1 || WeekDay(CivilFromDays(day)) == 7) --day;
    return CivilFromDays(day);
}

int NextWeekday(int date) {
    long day = DayNumber(date) + 1;
    while (WeekDay(CivilFromDays(day)) == 1 || WeekDay(CivilFromDays(day)) == 7) ++day;
    return CivilFromDays(day);
}

bool SetClockFromText(const std::string& text) {
    std::string digits;
    for (char c : text) {
        if (c >= '0' && c <= '9') digits += c;
        else if (c != '-' && c != ':' && c != ' ' && c != 'T' && c != '/') return false;
    }
    if (digits.size() != 8 && digits.size() != 12 && digits.size() != 14) return false;
    const int date = std::stoi(digits.substr(0, 8));
    if (WeekDay(date) == 0) return false;
    if (digits.size() == 8) {
        CClockModule::m_SystemDate = date;
        return true;
    }
    const int time = std::stoi(digits.substr(8)) * (digits.size() == 12 ? 100 : 1);
    if (time / 10000 > 23 || time / 100 % 100 > 59 || time % 100 > 59) return false;
    CClockModule::SetClock(date, time);
    return true;
}

}  // namespace ny
