#pragma once
// The bar periods, one row each: the number that m_nPeriod and CParam::m_nPeriodValue use, the
// command line's name, the label the picking dialog shows, the bar length in minutes, the stored
// file a period's bars are built from and how stored bars group into one of its bars. The rows
// are constant; any thread may read them. A number outside 1..10 has no row (nullptr).

#include <string_view>

// Period numbers (m_nPeriod and the index of CParam::m_nPeriodValue).
enum : short {
    NY_PERIOD_DAY = 1, NY_PERIOD_WEEK, NY_PERIOD_MONTH, NY_PERIOD_QUARTER, NY_PERIOD_YEAR,
    NY_PERIOD_MIN1, NY_PERIOD_MIN5, NY_PERIOD_MIN15, NY_PERIOD_MIN30, NY_PERIOD_MIN60
};

namespace ny {

// The stored bar file a period reads.
enum class BarFileKind : char { Day, Minute1, Minute5 };

// How consecutive stored bars make one bar of the period.
enum class BarGrouping : char {
    OneToOne,     // each stored bar is one bar
    SameTime,     // stored bars of equal time stamps
    Week,         // days of one calendar week
    Month,        // days of one calendar month
    Quarter,      // days of one calendar quarter
    Year,         // days of one calendar year
    MinuteSlots,  // 5-minute bars of one slot of the trading session (CStock::Time2Time)
};

struct PeriodRow {
    short number;
    const char* name;   // on the command line: "day", "5min"
    const char* label;  // in the picking dialog: "日线", "5分钟线"
    short minutes;      // bar length of a minute period; 0 for periods of a day or more
    BarFileKind file;
    BarGrouping grouping;
    // The kind of CStock::Time2Time that stamps a bar of 5-minute data with its slot (0..3 for
    // 5, 15, 30 and 60 minutes); -1 where bars keep their stored times.
    short slotKind;
    // The position in the picking dialog's list, which is also the PERIOD word's value: the
    // minute periods first (0..4), then day to year (5..9).
    short listIndex;
};

// The ten rows in number order.
extern const PeriodRow kPeriods[10];

const PeriodRow* FindPeriod(short number);
const PeriodRow* FindPeriodByName(std::string_view name);
// True for the periods of minute bars (1 to 60 minutes), false for day to year and for a number
// with no row.
bool IsMinutePeriod(short number);

}  // namespace ny
