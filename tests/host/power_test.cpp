#include "host/power.h"

#include <gtest/gtest.h>

#include "host/installation.h"
#include "host/stockdb.h"
#include "tests/host/temp_installation.h"

namespace {

CPowerData Event(int date, float profit, float give, float pei = 0, float peiPrice = 0) {
    return {.m_lDate = date, .m_fGive = give, .m_fPei = pei, .m_fPeiPrice = peiPrice, .m_fProfit = profit};
}

TEST(PowerAdjust, DividendBonusAndRightsInThatOrder) {
    const struct { CPowerData event; float before, after; } cases[] = {
        {Event(0, 2, 0), 10.0f, 9.8f}, {Event(0, 0, 10), 10.0f, 5.0f}, {Event(0, 2, 10), 10.2f, 5.0f},
        {Event(0, 0, 0, 3, 80), 10.0f, 12.4f / 1.3f},  // three rights shares per ten at 8.00 (stored as 80)
        {Event(0, 0, 0, 3, 0), 10.0f, 10.0f},          // rights without a price
        {Event(0, 0, 0), 7.77f, 7.77f}};
    for (const auto& c : cases) EXPECT_NEAR(c.event.Adjust(c.before), c.after, 1e-5) << c.before;
    EXPECT_TRUE(g_MyValueIsZero(0.00005f, 0.0001f));
    EXPECT_TRUE(g_MyValueIsZero(-0.00005f, 0.0001f));
    EXPECT_FALSE(g_MyValueIsZero(0.0002f, 0.0001f));
    EXPECT_TRUE(g_MyValueIsZero(0.0f, 0.0f));
}

class PowerFiles : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir.Write("data/stocks.csv",
                    "SH000001,Index,ZS,INDEX\nSH600001,Share,GP,A\nSZ000001,Other,QT,A\nSZ000002,Two,ET,A\n");
        std::vector<CPowerData> shanghai = {Event(20190610, 1, 0), Event(20200612, 2, 5)};
        shanghai[1].m_fCapital = 7500;
        m_dir.Write("data/sh/power/600001.pwr", ny::EncodePower(shanghai));
        m_dir.Write("data/sz/power/000001.pwr", ny::EncodePower({Event(20180101, 3, 0)}));
        m_dir.Write("data/sz/power/000002.pwr", ny::EncodePower({Event(20180101, 4, 0)}) + "xyz");
        ASSERT_TRUE(ny::OpenInstallation(m_dir.Path()));
    }
    TempInstallation m_dir;
};

TEST_F(PowerFiles, RecordsComeNewestFirstAndAreAppended) {
    std::vector<CPowerData> records(1);  // something already there stays
    EXPECT_EQ(g_MyLoadPowerById(records, 600001), 2);
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[1].m_lDate, 20200612);
    EXPECT_FLOAT_EQ(records[1].m_fGive, 5);
    EXPECT_FLOAT_EQ(records[1].m_fCapital, 7500);
    EXPECT_EQ(records[2].m_lDate, 20190610);
}

TEST_F(PowerFiles, ShenzhenStocksAreReachedByCodeAndByFullId) {
    std::vector<CPowerData> byCode, byId;
    // Code 1 is the Shanghai index and the Shenzhen share 000001: the share has the records.
    EXPECT_EQ(g_MyLoadPowerById(byCode, 1), 1);
    ASSERT_EQ(byCode.size(), 1u);
    EXPECT_FLOAT_EQ(byCode[0].m_fProfit, 3);
    EXPECT_EQ(g_MyLoadPowerById(byId, 1000001), 1);
    EXPECT_FLOAT_EQ(byId[0].m_fProfit, 3);
}

TEST_F(PowerFiles, UnknownStocksMissingAndTruncatedFiles) {
    std::vector<CPowerData> records;
    EXPECT_EQ(g_MyLoadPowerById(records, 777777), 0);
    EXPECT_EQ(g_MyLoadPowerById(records, 1777777), 0);
    EXPECT_TRUE(records.empty());
    EXPECT_EQ(g_MyLoadPowerById(records, 1000002), 1);  // trailing 3 bytes dropped
    EXPECT_FLOAT_EQ(records[0].m_fProfit, 4);
    ASSERT_FALSE(ny::InstallationProblems().empty());
    EXPECT_NE(ny::InstallationProblems().back().find("000002.pwr: length 43"), std::string::npos);
}

TEST(PowerRecord, FieldsLieInTheirStoredOrder) {
    CPowerData record = Event(20200612, 2, 5, 3, 80);
    record.m_lStockID = 600001;
    record.m_fTotalCapital = 9000;
    record.m_fCapital = 7500;
    const std::string bytes = ny::EncodePower({record});
    ASSERT_EQ(bytes.size(), 40u);
    EXPECT_EQ(ny::LoadInt(bytes.data()), 600001);
    EXPECT_EQ(ny::LoadInt(bytes.data() + 4), 20200612);
    // bonus, rights, rights price, dividend, total and tradable capital
    const float floats[] = {5, 3, 80, 2, 9000, 7500};
    for (int i = 0; i < 6; ++i) EXPECT_FLOAT_EQ(ny::LoadFloat(bytes.data() + 8 + 4 * i), floats[i]) << i;
}

}  // namespace
