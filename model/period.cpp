#include "model/period.h"

#include <algorithm>
#include <iterator>

namespace ny {

const PeriodRow kPeriods[10] = {
    {NY_PERIOD_DAY, "day", "日线", 0, BarFileKind::Day, BarGrouping::OneToOne, -1, 5},
    {NY_PERIOD_WEEK, "week", "周线", 0, BarFileKind::Day, BarGrouping::Week, -1, 6},
    {NY_PERIOD_MONTH, "month", "月线", 0, BarFileKind::Day, BarGrouping::Month, -1, 7},
    {NY_PERIOD_QUARTER, "quarter", "季线", 0, BarFileKind::Day, BarGrouping::Quarter, -1, 8},
    {NY_PERIOD_YEAR, "year", "年线", 0, BarFileKind::Day, BarGrouping::Year, -1, 9},
    {NY_PERIOD_MIN1, "1min", "1分钟线", 1, BarFileKind::Minute1, BarGrouping::SameTime, -1, 0},
    {NY_PERIOD_MIN5, "5min", "5分钟线", 5, BarFileKind::Minute5, BarGrouping::OneToOne, 0, 1},
    {NY_PERIOD_MIN15, "15min", "15分钟线", 15, BarFileKind::Minute5, BarGrouping::MinuteSlots, 1, 2},
    {NY_PERIOD_MIN30, "30min", "30分钟线", 30, BarFileKind::Minute5, BarGrouping::MinuteSlots, 2, 3},
    {NY_PERIOD_MIN60, "60min", "60分钟线", 60, BarFileKind::Minute5, BarGrouping::MinuteSlots, 3, 4},
};

namespace {

template <typename Matches>
const PeriodRow* FindRow(Matches matches) {
    const PeriodRow* row = std::find_if(std::begin(kPeriods), std::end(kPeriods), matches);
    return row == std::end(kPeriods) ? nullptr : row;
}

}  // namespace

const PeriodRow* FindPeriod(short number) {
    return FindRow([number](const PeriodRow& row) { return row.number == number; });
}

const PeriodRow* FindPeriodByName(std::string_view name) {
    return FindRow([name](const PeriodRow& row) { return name == row.name; });
}

bool IsMinutePeriod(short number) {
    const PeriodRow* row = FindPeriod(number);
    return row != nullptr && row->minutes > 0;
}

}  // namespace ny
