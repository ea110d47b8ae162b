// Date words over day and minute bars, the weekday, minutes from the opening, and the
// conversions between dates, day numbers, times and seconds with their domains.

#include <cmath>

#include "host/clock.h"
#include "host/files.h"
#include "host/global.h"
#include "host/stockdb.h"
#include "tests/engine/function_fixture.h"
#include "tests/host/temp_installation.h"

namespace {

using Values = std::vector<float>;

class DateTime : public nytest::FunctionTest {
protected:
    // Bars stamped with the given times, in the stamp form of `period`.
    void UseStamps(const std::vector<int>& stamps, short period) {
        UseCloses(Values(stamps.size(), 10.0f));
        for (size_t i = 0; i < stamps.size(); ++i) bars[i].m_lTime = stamps[i];
        ind.m_nPeriod = period;
    }
};

TEST_F(DateTime, DayBarWords) {
    UseStamps({20011208, 20240131}, NY_PERIOD_DAY);
    EXPECT_EQ(Series("DATE", 0, 1), (Values{1011208, 1240131}));
    EXPECT_EQ(Series("YEAR", 0, 1), (Values{2001, 2024}));
    EXPECT_EQ(Series("MONTH", 0, 1), (Values{12, 1}));
    EXPECT_EQ(Series("DAY", 0, 1), (Values{8, 31}));
    EXPECT_EQ(Series("TIME", 0, 1), (Values{0, 0}));
    EXPECT_EQ(Series("HOUR", 0, 1), (Values{0, 0}));
    EXPECT_EQ(Series("MINUTE", 0, 1), (Values{0, 0}));
    EXPECT_EQ(Series("PERIOD", 0, 1), (Values{5, 5}));
}

TEST_F(DateTime, MinuteBarWords) {
    UseStamps({1203151030, 1203151455}, NY_PERIOD_MIN5);
    EXPECT_EQ(Series("DATE", 0, 1), (Values{1120315, 1120315}));
    EXPECT_EQ(Series("TIME", 0, 1), (Values{1030, 1455}));
    EXPECT_EQ(Series("HOUR", 0, 1), (Values{10, 14}));
    EXPECT_EQ(Series("MINUTE", 0, 1), (Values{30, 55}));
    EXPECT_EQ(Series("YEAR", 0, 1), (Values{12, 12}));
    EXPECT_EQ(Series("MONTH", 0, 1), (Values{3, 3}));
    EXPECT_EQ(Series("DAY", 0, 1), (Values{15, 15}));
    EXPECT_EQ(Series("PERIOD", 0, 1), (Values{1, 1}));
}

TEST_F(DateTime, PeriodNumbers) {
    const std::pair<short, float> periods[] = {{NY_PERIOD_DAY, 5},  {NY_PERIOD_WEEK, 6},
                                               {NY_PERIOD_MONTH, 7}, {NY_PERIOD_QUARTER, 8},
                                               {NY_PERIOD_YEAR, 9}, {NY_PERIOD_MIN1, 0},
                                               {NY_PERIOD_MIN15, 2}, {NY_PERIOD_MIN30, 3},
                                               {NY_PERIOD_MIN60, 4}};
    for (const auto& [period, expected] : periods) {
        UseStamps({20240105}, period);
        EXPECT_EQ(Series("PERIOD", 0, 0), Values{expected}) << period;
    }
}

TEST_F(DateTime, WeekdayCountsFromSunday) {
    // 2024-01-06 is a Saturday, 2024-01-07 a Sunday, 2024-01-08 a Monday, 2001-12-08 a Saturday.
    UseStamps({20240106, 20240107, 20240108, 20011208, 0, 20241301}, NY_PERIOD_DAY);
    EXPECT_EQ(Series("WEEKDAY", 0, 5), (Values{6, 0, 1, 6, 0, 0}));
    EXPECT_EQ(Series("WEEKDAY+1", 0, 5), (Values{7, 1, 2, 7, 1, 1}));
    // 2012-03-15, a Thursday, on 5-minute bars.
    UseStamps({1203151030}, NY_PERIOD_MIN5);
    EXPECT_EQ(Series("WEEKDAY", 0, 0), (Values{4}));
}

TEST_F(DateTime, MinutesFromTheOpening) {
    UseStamps({1201050915, 1201050930, 1201051000, 1201051130, 1201051200, 1201051300,
               1201051301, 1201051500, 1201051530},
              NY_PERIOD_MIN1);
    EXPECT_EQ(Series("FROMOPEN", 0, 8), (Values{0, 1, 31, 121, 121, 121, 122, 241, 241}));
}

TEST_F(DateTime, MinutesFromTheOpeningOnDayBarsFollowTheClock) {
    CClockModule::SetClock(20240104, 100000);
    UseStamps({20240102, 20240103, 20240104}, NY_PERIOD_DAY);
    // Past sessions are over; today's has run from 09:30 to 10:00.
    EXPECT_EQ(Series("FROMOPEN", 0, 2), (Values{241, 241, 31}));
    CClockModule::SetClock(20240104, 91000);
    EXPECT_EQ(Series("FROMOPEN", 0, 2), (Values{241, 241, 0}));
    CClockModule::UseSystemClock();
}

TEST_F(DateTime, DateWordsKeepTheRange) {
    UseStamps({20240102, 20240103, 20240104, 20240105}, NY_PERIOD_DAY);
    AddSeries("LATE", {0, 0, 1, 1}, 2, 4);
    EXPECT_EQ(Series("LATE+DAY", 2, 3), (Values{5, 6}));
}

TEST_F(DateTime, ConversionsAreArithmeticNotCalendar) {
    UseStamps({20240102, 20240103, 20240104}, NY_PERIOD_DAY);
    EXPECT_EQ(Series("DATETODAY(901220)", 0, 2), (Values{1, 1, 1}));
    EXPECT_EQ(Series("DATETODAY(910101)", 0, 2), (Values{8882, 8882, 8882}));
    EXPECT_EQ(Series("DATETODAY(1341231)", 0, 2), (Values{440012, 440012, 440012}));
    EXPECT_EQ(Series("DAYTODATE(13)", 0, 2), (Values{901232, 901232, 901232}));
    EXPECT_EQ(Series("DAYTODATE(0)", 0, 2), (Values{901219, 901219, 901219}));
    EXPECT_EQ(Series("TIMETOSEC(93000)", 0, 2), (Values{34200, 34200, 34200}));
    EXPECT_EQ(Series("TIMETOSEC(235959)", 0, 2), (Values{86399, 86399, 86399}));
    EXPECT_EQ(Series("SECTOTIME(34200)", 0, 2), (Values{93000, 93000, 93000}));
    EXPECT_EQ(Series("SECTOTIME(86399)", 0, 2), (Values{235959, 235959, 235959}));
    // A series argument counts by its first element only.
    EXPECT_EQ(Series("DATETODAY(DATE)", 0, 2), (Values{338883, 338883, 338883}));
}

TEST_F(DateTime, OutsideTheDomainLeavesOneBarOfZero) {
    UseStamps({20240102, 20240103, 20240104}, NY_PERIOD_DAY);
    for (const char* text : {"DATETODAY(901218)", "DATETODAY(1341232)", "DAYTODATE(20001)",
                             "DAYTODATE(-1)", "TIMETOSEC(236000)", "SECTOTIME(86400)"}) {
        EXPECT_EQ(Series(text, 2, 2), (Values{0})) << text;
    }
}

TEST_F(DateTime, ConversionCallCodes) {
    UseStamps({20240102}, NY_PERIOD_DAY);
    EXPECT_EQ(Code("DATETODAY"), 7);
    EXPECT_EQ(Code("DATETODAY(1,2)"), 11);
    EXPECT_EQ(Code("TIMETOSEC(NOWORD)"), 7);
    EXPECT_EQ(CallReader(&CIndicator::ReadDATETODAY, "DATETODAY", "(1;"), 10);
}

TEST_F(DateTime, TFiltIsAnOrdinaryName) {
    UseStamps({20240102, 20240103}, NY_PERIOD_DAY);
    EXPECT_EQ(Code("TFILT(CLOSE,1040101,1025,1040101,1345)"), 7);
    AddSeries("TFILT", {3, 4}, 0, 2);
    EXPECT_EQ(Series("TFILT", 0, 1), (Values{3, 4}));
}

// ---- BETA against the index of the stock's market ----

class Beta : public DateTime {
protected:
    void SetUp() override {
        m_savedPath = g_MyExePath;
        g_MyExePath = m_dir.Path();
        DropIndexBars();
    }
    void TearDown() override { g_MyExePath = m_savedPath; }

    // An index whose closes are those given, on the dates of MakeBars; a close of 0 leaves the
    // date out of the file.
    void WriteIndex(const char* file, const Values& closes) {
        std::vector<CHisDay> days;
        for (const CHisDay& day : nytest::MakeBars(closes))
            if (day.m_fClose != 0) days.push_back(day);
        m_dir.Write(file, ny::EncodeBars(days));
        DropIndexBars();
    }
    static void DropIndexBars() {
        g_MyIndexSH.Reset();
        g_MyIndexSZ.Reset();
    }

    TempInstallation m_dir;  // drops the indexes' bars when it goes
    CString m_savedPath;
};

// Covariance of the two series over the window ending at `last`, over the variance of the second.
double SlopeOver(const Values& x, const Values& y, int last, int n) {
    double mx = 0, my = 0, mxy = 0, vy = 0;
    for (int j = last - n + 1; j <= last; ++j) mx += x[j] / n, my += y[j] / n, mxy += x[j] * y[j] / n;
    for (int j = last - n + 1; j <= last; ++j) vy += (y[j] - my) * (y[j] - my) / n;
    return (mxy - mx * my) / vy;
}

TEST_F(Beta, SlopeOfTheCloseOnTheIndexOfItsMarket) {
    const Values closes = {10, 11, 13, 12, 14, 15, 13, 16};
    Values doubled, same = closes;
    for (float c : closes) doubled.push_back(2 * c + 100);
    WriteIndex("data/sh/day/000001.day", doubled);
    WriteIndex("data/sz/day/399001.day", same);
    UseCloses(closes);
    ind.m_lStockID = 600000;
    for (float v : Series("BETA(3)", 2, 7)) EXPECT_NEAR(v, 0.5f, 1e-4);  // float sums of products
    ind.m_lStockID = 1000001;
    for (float v : Series("BETA(3)", 2, 7)) EXPECT_NEAR(v, 1.0f, 1e-5);
}

TEST_F(Beta, DaysTheIndexLacksCountAsZero) {
    const Values closes = {10, 11, 13, 12, 14, 15, 13, 16};
    const Values index = {3000, 3010, 0, 3050, 3040, 3080, 3070, 3100};
    WriteIndex("data/sh/day/000001.day", index);
    UseCloses(closes);
    ind.m_lStockID = 600000;
    const Values beta = Series("BETA(4)", 3, 7);
    ASSERT_EQ(beta.size(), 5u);
    for (int i = 3; i <= 7; ++i)
        EXPECT_NEAR(beta[i - 3], SlopeOver(closes, index, i, 4), 1e-4 * std::fabs(SlopeOver(closes, index, i, 4))) << i;
}

TEST_F(Beta, DegeneratePeriods) {
    UseCloses({10, 11, 13, 12});
    ind.m_lStockID = 600000;
    // No index file: a flat index of zeros has no variance.
    EXPECT_EQ(Series("BETA(2)", 1, 3), (Values{0, 0, 0}));
    WriteIndex("data/sh/day/000001.day", {3000, 3010, 3020, 3030});
    EXPECT_EQ(Series("BETA(1)", 0, 3), (Values{0, 0, 0, 0}));
    for (float v : Series("BETA(0)", 0, 3)) EXPECT_TRUE(std::isnan(v));
    EXPECT_EQ(Series("BETA(-3)", 0, 3), (Values{0, 0, 0, 0}));
    EXPECT_EQ(Read("BETA(3000000000)").code, 0);
    EXPECT_EQ(Code("BETA(2,3)"), 11);
}

}  // namespace
