// The table of periods: lookups by number and by command-line name agree, and a number or name
// outside the ten periods has no row (the picker and nyind refuse it on that answer).

#include <gtest/gtest.h>

#include "model/period.h"

TEST(Periods, NumbersAndNamesFindTheSameRow) {
    const struct {
        short number;
        const char* name;
        bool minute;
    } rows[] = {{1, "day", false},  {2, "week", false}, {3, "month", false}, {4, "quarter", false},
                {5, "year", false}, {6, "1min", true},  {7, "5min", true},   {8, "15min", true},
                {9, "30min", true}, {10, "60min", true}};
    for (const auto& row : rows) {
        const ny::PeriodRow* found = ny::FindPeriod(row.number);
        ASSERT_NE(found, nullptr) << row.number;
        EXPECT_EQ(ny::FindPeriodByName(row.name), found) << row.name;
        EXPECT_EQ(ny::IsMinutePeriod(row.number), row.minute) << row.number;
    }
    for (const short number : {-1, 0, 11}) {
        EXPECT_EQ(ny::FindPeriod(number), nullptr) << number;
        EXPECT_FALSE(ny::IsMinutePeriod(number)) << number;
    }
    for (const char* name : {"", "DAY", "fortnight", "2min"}) EXPECT_EQ(ny::FindPeriodByName(name), nullptr) << name;
}
