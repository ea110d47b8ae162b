// The table of periods: lookups by number and by command-line name agree, and a number or name
// outside the ten periods has no row (the picker and nyind refuse it on that answer).

#include <gtest/gtest.h>

#include "model/period.h"
#include "tests/case_file.h"

TEST(Periods, NumbersAndNamesFindTheSameRow) {
    for (const testcases::Row& row : testcases::ReadRows("model/cases.txt", "period")) {
        const ny::PeriodRow* found = ny::FindPeriod(static_cast<short>(row.Int(0)));
        ASSERT_NE(found, nullptr) << row.where;
        EXPECT_EQ(ny::FindPeriodByName(row[1]), found) << row.where;
        EXPECT_EQ(ny::IsMinutePeriod(static_cast<short>(row.Int(0))), row.Int(2) == 1) << row.where;
    }
    for (const short number : {-1, 0, 11}) {
        EXPECT_EQ(ny::FindPeriod(number), nullptr) << number;
        EXPECT_FALSE(ny::IsMinutePeriod(number)) << number;
    }
    for (const char* name : {"", "DAY", "fortnight", "2min"}) EXPECT_EQ(ny::FindPeriodByName(name), nullptr) << name;
}
