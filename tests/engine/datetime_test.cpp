// FROMOPEN on day bars, which follows the clock, and BETA against the index of the stock's
// market.

#include <cmath>

#include "host/clock.h"
#include "host/files.h"
#include "host/global.h"
#include "host/stockdb.h"
#include "tests/engine/function_fixture.h"
#include "tests/host/temp_installation.h"

namespace {

using Values = std::vector<float>;

class DateTime : public nytest::FunctionTest {};

TEST_F(DateTime, MinutesFromTheOpeningOnDayBarsFollowTheClock) {
    CClockModule::SetClock(20240104, 100000);
    UseCloses({10, 10, 10});  // dated 2024-01-02 to 2024-01-04
    // Past sessions are over; today's has run from 09:30 to 10:00.
    EXPECT_EQ(Series("FROMOPEN", 0, 2), (Values{241, 241, 31}));
    CClockModule::SetClock(20240104, 91000);
    EXPECT_EQ(Series("FROMOPEN", 0, 2), (Values{241, 241, 0}));
    CClockModule::UseSystemClock();
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
    EXPECT_EQ(Read("BETA(3000000000)").code, NY_EVAL_OK);
    EXPECT_EQ(Read("BETA(2,3)").code, NY_EVAL_ARGUMENT_COUNT);
}

}  // namespace
