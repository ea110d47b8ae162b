#include <gtest/gtest.h>

#include <set>

#include "host/clock.h"
#include "host/stockdb.h"
#include "tests/case_file.h"

namespace {

constexpr int kDay = 2106300000;  // 2021-06-30 as YYMMDD0000

int At(int hhmm) { return kDay + hhmm; }

// Every minute of the two sessions, as HHMM.
std::vector<int> SessionMinutes() {
    std::vector<int> minutes;
    for (int m = 9 * 60 + 30; m <= 11 * 60 + 30; ++m) minutes.push_back(m / 60 * 100 + m % 60);
    for (int m = 13 * 60; m <= 15 * 60; ++m) minutes.push_back(m / 60 * 100 + m % 60);
    return minutes;
}

int MinuteOfDay(int hhmm) { return hhmm / 100 * 60 + hhmm % 100; }

TEST(Time2Time, KnownStamps) {
    for (const testcases::Row& row : testcases::ReadRows("host/cases.txt", "stamp")) {
        const std::string name = row.size() > 3 ? row[3] : "SH";
        const char market = name == "SZ" ? NY_MARKET_SZ : name == "HK" ? NY_MARKET_HK : NY_MARKET_SH;
        EXPECT_EQ(CStock::Time2Time(At(row.Int(0)), row.Int(1), market), At(row.Int(2))) << row.where;
    }
    EXPECT_EQ(CStock::Min5Time2Day(2106301500), 20210630);
    EXPECT_EQ(CStock::Min5Time2Day(101080935), 20010108);
}

TEST(Time2Time, EveryMinuteHasOneStampOfItsSlot) {
    const int periods[] = {5, 15, 30, 60};
    const int slotsPerDay[] = {48, 16, 8, 4};
    for (int kind = 0; kind < 4; ++kind) {
        std::set<int> stamps;
        for (int hhmm : SessionMinutes()) {
            const int stamp = CStock::Time2Time(At(hhmm), kind, NY_MARKET_SH);
            ASSERT_EQ(stamp / 10000, kDay / 10000);
            const int gap = MinuteOfDay(stamp % 10000) - MinuteOfDay(hhmm);
            // A slot is stamped with its last minute; the opening minutes join the first slot.
            EXPECT_GE(gap, 0) << hhmm;
            EXPECT_LE(gap, periods[kind]) << hhmm;
            if (hhmm != 930 && hhmm != 1300) {
                EXPECT_LT(gap, periods[kind]) << hhmm;
            }
            // The stamp is its own slot's stamp.
            EXPECT_EQ(CStock::Time2Time(stamp, kind, NY_MARKET_SH), stamp);
            stamps.insert(stamp);
        }
        EXPECT_EQ(static_cast<int>(stamps.size()), slotsPerDay[kind]) << kind;
    }
}

TEST(Clock, SetFromText) {
    EXPECT_TRUE(ny::SetClockFromText("2021-06-30 14:30"));
    EXPECT_EQ(CClockModule::m_SystemDate, 20210630);
    EXPECT_EQ(CClockModule::m_SystemTime, 143000);
    EXPECT_TRUE(ny::SetClockFromText("20210702T093015"));
    EXPECT_EQ(CClockModule::m_SystemTime, 93015);
    EXPECT_TRUE(ny::SetClockFromText("2021-07-05"));
    EXPECT_EQ(CClockModule::m_SystemDate, 20210705);
    EXPECT_EQ(CClockModule::m_SystemTime, 93015);  // a date alone leaves the time
    for (const char* bad : {"2021-02-30 10:00", "2021-06-30 24:00", "2021-06-30 10:61", "yesterday", "2021-06", ""})
        EXPECT_FALSE(ny::SetClockFromText(bad)) << bad;
    EXPECT_EQ(CClockModule::m_SystemDate, 20210705);
    CClockModule::UseSystemClock();
}

TEST(Clock, Weekdays) {
    const std::pair<int, int> weekdays[] = {{20210627, 1}, {20210630, 4}, {20210703, 7}, {20210230, 0}, {20000229, 3}};
    for (const auto& [date, day] : weekdays) EXPECT_EQ(ny::WeekDay(date), day) << date;  // 1 Sunday, 0 no such day
    EXPECT_EQ(ny::LastWeekdayOnOrBefore(20210704), 20210702);
    EXPECT_EQ(ny::LastWeekdayOnOrBefore(20210630), 20210630);
    EXPECT_EQ(ny::NextWeekday(20210702), 20210705);
    EXPECT_EQ(ny::NextWeekday(20201231), 20210101);
}

}  // namespace
