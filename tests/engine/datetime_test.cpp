// BETA against the index of the stock's market, against a slope computed here.

#include <cmath>

#include "host/files.h"
#include "host/global.h"
#include "host/stockdb.h"
#include "tests/engine/function_fixture.h"
#include "tests/host/temp_installation.h"

namespace {

using Values = std::vector<float>;

class Beta : public nytest::FunctionTest {
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

}  // namespace
