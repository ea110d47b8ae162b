// COST behind a statement that narrowed the range: the records of the chip distribution no
// longer line up with the bars, so the result is 0, and no failure. The readings of WINNER and
// COST are rows of market_detail.txt.

#include <gtest/gtest.h>

#include "tests/engine/formula_fixture.h"
#include "tests/host/temp_installation.h"

namespace {

TEST(Chips, NarrowedRangeGivesZero) {
    TempInstallation home;
    home.Write("data/stocks.csv", "code,name,pinyin,kind,capital,total_capital\nSH600001,AAA,AAA,A,1,1\n");
    ASSERT_TRUE(ny::OpenInstallation(home.Path()));
    nytest::Formula f({{"A", "MA(C,2)"}, {"B", "COST(100)"}});
    f.ind.m_lStockID = 600001;
    f.Run(nytest::MakeBars({10, 20, 41}));
    EXPECT_EQ(f["B"].m_cComputed, 1);
    EXPECT_EQ(f["B"].m_nFirst, 1);
    EXPECT_EQ(f.At("B", 1), 0.0f);
    EXPECT_EQ(f.At("B", 2), 0.0f);
}

}  // namespace
