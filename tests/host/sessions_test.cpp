#include <gtest/gtest.h>

#include <set>

#include "host/clock.h"
#include "host/stockdb.h"

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
    struct Case {
        int time, kind, stamp;
        char market = NY_MARKET_SH;
    } cases[] = {
        {930, 0, 935},   {931, 0, 935},   {935, 0, 935},   {936, 0, 940},   {1129, 0, 1130},
        {1130, 0, 1130}, {1200, 0, 1130}, {1259, 0, 1130}, {1300, 0, 1305}, {1301, 0, 1305},
        {1500, 0, 1500}, {1512, 0, 1500}, {915, 0, 935},   {945, 1, 945},   {946, 1, 1000},
        {1300, 1, 1315}, {959, 2, 1000},  {1001, 2, 1030}, {1445, 2, 1500}, {930, 3, 1030},
        {1030, 3, 1030}, {1031, 3, 1130}, {1230, 3, 1130}, {1300, 3, 1400}, {1401, 3, 1500},
        {1145, 0, 1130}, {1031, 3, 1130, NY_MARKET_SZ}, {1145, 0, 1145, NY_MARKET_HK},
        {1131, 3, 1200, NY_MARKET_HK}, {1555, 2, 1600, NY_MARKET_HK},
        {1001, 4, 1001}, {1001, -1, 1001},  // an unknown kind leaves the time
    };
    for (const Case& c : cases)
        EXPECT_EQ(CStock::Time2Time(At(c.time), c.kind, c.market), At(c.stamp)) << c.time << " kind " << c.kind;
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

TEST(Clock, FixedAndFollowingTheSystem) {
    CClockModule::SetClock(20210630, 113001);
    EXPECT_EQ(CClockModule::m_SystemDate, 20210630);
    EXPECT_EQ(CClockModule::m_SystemTime, 113001);
    CClockModule::UseSystemClock();
    EXPECT_GT(CClockModule::m_SystemDate, 20240000);
    EXPECT_LT(CClockModule::m_SystemTime, 240000);
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
