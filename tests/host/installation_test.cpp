#include "host/installation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <thread>
#include <tuple>

#include "host/clock.h"
#include "host/files.h"
#include "host/global.h"
#include "host/stockdb.h"
#include "tests/host/temp_installation.h"

namespace {

bool HasProblem(const std::string& fragment) {
    const auto& problems = ny::InstallationProblems();
    return std::any_of(problems.begin(), problems.end(),
                       [&](const std::string& text) { return text.find(fragment) != std::string::npos; });
}

class InstallationTest : public ::testing::Test {
protected:
    // The stock list and quotes of tiny_market/: a few good lines, then one of each fault.
    void SetUp() override {
        std::filesystem::create_directories(m_dir.Path() + "data");
        for (const char* file : {"stocks.csv", "quotes.csv"})
            std::filesystem::copy(std::string(NY_SOURCE_DIR "/tests/host/tiny_market/") + file, m_dir.Path() + "data/" + file);
        ASSERT_TRUE(ny::OpenInstallation(m_dir.Path()));
    }
    TempInstallation m_dir;
};

TEST_F(InstallationTest, ReadsTheStockListAndSkipsBadLines) {
    ASSERT_EQ(g_MyStocksArray.size(), 5u);
    const CStock* stock = g_MyGetStock(600001);
    ASSERT_NE(stock, nullptr);
    // 东岳 in GBK; finance item 94 is the tradable shares, 1 the total shares, 2 has no value here.
    EXPECT_EQ(std::tuple(stock->m_strCode, stock->m_strName, stock->m_strPyCode), std::tuple("600001", "\xB6\xAB\xD4\xC0", "DY"));
    EXPECT_EQ(std::tuple(stock->GetFinanceValue(94), stock->GetFinanceValue(1), stock->GetFinanceValue(2), stock->m_fTotalCapital),
              std::tuple(5000.0f, 8000.0f, 0.0f, 8000.0f));
    const CStock* shenzhen = g_MyGetStock(1000002);
    ASSERT_NE(shenzhen, nullptr);
    // Market, kind and tradable shares of each listed share.
    for (const auto& [share, market, kind, capital] : {std::tuple(stock, 0, NY_KIND_SH_A, 5000.0f),
                                                       std::tuple(shenzhen, 1, NY_KIND_SZ_A, 1200.5f)})
        EXPECT_EQ(std::tuple(int(share->m_cMarket), share->m_dwKind, share->m_fCapital), std::tuple(market, kind, capital));

    for (const char* fragment : {"line 8: bad code", "line 9: unknown kind", "line 10: expected 4 to 6 fields",
                                 "line 11: stock SH600001 listed twice", "line 12: shares are not numbers"})
        EXPECT_TRUE(HasProblem(fragment)) << fragment;
    EXPECT_EQ(g_MyGetStock(600009), nullptr);
    EXPECT_EQ(g_MyGetStock(600011), nullptr);
    EXPECT_EQ(g_MyGetStock(123456), nullptr);
}

TEST_F(InstallationTest, KindsAnswerTheUnitRules) {
    const struct { int id; bool index, hand, bond; } cases[] = {
        {1, true, true, false}, {110001, false, false, true}, {2000005, false, true, false},
        {600001, false, false, false}, {999999, false, false, false}};  // the last one unknown
    for (const auto& c : cases) {
        EXPECT_EQ(static_cast<bool>(CStock::IsHandUnit(c.id)), c.hand) << c.id;
        EXPECT_EQ(static_cast<bool>(CStock::IsZQ(c.id)), c.bond) << c.id;
        const CStock* stock = g_MyGetStock(c.id);
        EXPECT_EQ(stock != nullptr && stock->IsIndex(), c.index) << c.id;
    }
    EXPECT_EQ(g_MyGetStock(2000005)->m_cMarket, 2);
    EXPECT_EQ(g_MyGetStock(2000005)->m_dwKind, NY_KIND_HAND_UNIT);
}

TEST_F(InstallationTest, QuotesFillTheStocksAndSetTheTradeDate) {
    EXPECT_EQ(g_MyCurTradeDate, 20210630);
    const CStock* stock = g_MyGetStock(600001);
    // previous close, open, latest, high, low, volume, amount, inner and outer volume; 99 is no field
    const std::pair<short, float> fields[] = {{0, 10},     {1, 10.1f},     {2, 10.2f},  {3, 10.5f}, {4, 9.9f},
                                              {5, 12300},  {6, 125000},    {51, 5000},  {66, 7300}, {99, 0}};
    for (const auto& [code, value] : fields) EXPECT_FLOAT_EQ(stock->GetValue(code), value) << code;
    EXPECT_FLOAT_EQ(stock->m_fInnerVolume, 5000);
    EXPECT_FLOAT_EQ(stock->m_fOuterVolume, 7300);
    EXPECT_FLOAT_EQ(g_MyGetStock(1000002)->GetValue(2), 5.05f);
    for (const char* fragment : {"line 3: unknown column \"bogus\"", "line 6: unknown stock \"SH600099\"",
                                 "line 7: a value is not a number", "line 8: expected 11 fields"})
        EXPECT_TRUE(HasProblem(fragment)) << fragment;
    EXPECT_FLOAT_EQ(g_MyGetStock(110001)->GetValue(0), 0);  // the bad line left nothing behind
}

TEST_F(InstallationTest, SetValueWritesTheFieldThatGetValueReads) {
    CStock* stock = g_MyGetStock(600001);
    for (short code : {8, 13, 18, 23, 48, 60, 61, 62, 63, 64, 65, 67, 70, 71}) {
        EXPECT_TRUE(stock->SetValue(code, code + 0.5f));
        EXPECT_FLOAT_EQ(stock->GetValue(code), code + 0.5f);
    }
    EXPECT_FLOAT_EQ(stock->m_fBuyPrice[0], 8.5f);
    EXPECT_FLOAT_EQ(stock->m_fBuyVolume[2], 13.5f);
    EXPECT_FLOAT_EQ(stock->m_fSellPrice[0], 18.5f);
    EXPECT_FLOAT_EQ(stock->m_fSellVolume[2], 23.5f);
    EXPECT_FLOAT_EQ(stock->m_fTurnover, 71.5f);
    EXPECT_FALSE(stock->SetValue(14, 1));
    EXPECT_FALSE(stock->SetValue(-1, 1));
}

TEST_F(InstallationTest, StoredFilesLiveUnderTheMarketFolders) {
    const CStock* stock = g_MyGetStock(1000002);
    const std::pair<CString, std::string> paths[] = {
        {stock->GetDayFilePath(), "sz/day/000002.day"},      {stock->GetMin5FilePath(), "sz/min5/000002.mn5"},
        {stock->GetMinuteFilePath(), "sz/min1/000002.mn1"},  {stock->GetExtDayFilePath(), "sz/dayext/000002.ext"},
        {stock->GetPowerFilePath(), "sz/power/000002.pwr"},  {g_MyGetStock(600001)->GetDayFilePath(), "sh/day/600001.day"},
        {g_MyIndexSZ.GetDayFilePath(), "sz/day/399001.day"}};
    for (const auto& [path, expected] : paths) EXPECT_EQ(path, m_dir.Path() + "data/" + expected);
}

TEST_F(InstallationTest, BarFilesKeepWholeRecordsOnly) {
    const std::string bytes = ny::EncodeBars({{.m_lTime = 20210629, .m_fClose = 10}, {.m_lTime = 20210630, .m_fClose = 10}});
    ASSERT_EQ(bytes.size(), 80u);
    m_dir.Write("data/sh/day/600001.day", bytes + "12345");  // truncated third record
    const std::vector<CHisDay> bars = ny::ReadBarFile(g_MyGetStock(600001)->GetDayFilePath());
    ASSERT_EQ(bars.size(), 2u);
    EXPECT_EQ(bars[1].m_lTime, 20210630);
    EXPECT_TRUE(HasProblem("600001.day: length 85 is not a multiple of 40"));
    EXPECT_TRUE(ny::ReadBarFile(g_MyGetStock(1000002)->GetDayFilePath()).empty());  // missing file
}

TEST_F(InstallationTest, IndexGivesTheBarOfADate) {
    m_dir.Write("data/sh/day/000001.day", ny::EncodeBars({{.m_lTime = 20210628, .m_fClose = 3500, .m_lAdvDec = 700 | (250 << 10)},
                                                          {.m_lTime = 20210629, .m_fClose = 3510}}));
    const CHisDay* day = g_MyIndexSH.GetDay(20210628);
    ASSERT_NE(day, nullptr);
    EXPECT_FLOAT_EQ(day->m_fClose, 3500);
    EXPECT_EQ(day->m_lAdvDec % 1024, 700);
    EXPECT_EQ(day->m_lAdvDec / 1024 % 1024, 250);
    EXPECT_FLOAT_EQ(g_MyIndexSH.GetDay(20210629)->m_fClose, 3510);
    EXPECT_EQ(g_MyIndexSH.GetDay(20210630), nullptr);
    EXPECT_EQ(g_MyIndexSH.GetDay(20210627), nullptr);
    EXPECT_EQ(g_MyIndexSZ.GetDay(20210628), nullptr);  // no file
}

TEST_F(InstallationTest, IndexIsReadOnceFromSeveralThreads) {
    std::vector<CHisDay> bars;
    for (int i = 0; i < 500; ++i) bars.push_back({.m_lTime = 20000000 + i, .m_fClose = static_cast<float>(i)});
    m_dir.Write("data/sz/day/399001.day", ny::EncodeBars(bars));
    std::vector<std::thread> readers;
    std::vector<float> sums(4, 0);
    for (int t = 0; t < 4; ++t)
        readers.emplace_back([t, &sums] {
            for (int i = 0; i < 500; ++i) sums[t] += g_MyIndexSZ.GetDay(20000000 + i)->m_fClose;
        });
    for (std::thread& reader : readers) reader.join();
    for (float sum : sums) EXPECT_FLOAT_EQ(sum, 499 * 500 / 2);
}

TEST(Installation, MissingStockListGivesAnEmptyMarket) {
    TempInstallation dir;
    CClockModule::SetClock(20210703, 100000);  // a Saturday
    EXPECT_FALSE(ny::OpenInstallation(dir.Path()));
    CClockModule::UseSystemClock();
    EXPECT_TRUE(g_MyStocksArray.empty());
    EXPECT_EQ(g_MyGetStock(600001), nullptr);
    EXPECT_EQ(g_MyCurTradeDate, 20210702);  // no quotes: the last weekday by the clock
    EXPECT_TRUE(HasProblem("stocks.csv: can't be read"));
}

TEST(Installation, ReopeningReplacesTheMarket) {
    TempInstallation first, second;
    first.Write("data/stocks.csv", "SH600001,A,A,A\nSH600002,B,B,A\n");
    second.Write("data/stocks.csv", "SZ000001,C,C,A\n");
    ASSERT_TRUE(ny::OpenInstallation(first.Path()));
    EXPECT_EQ(g_MyStocksArray.size(), 2u);
    EXPECT_NE(g_MyGetStock(600001), nullptr);  // remembered, and must be forgotten on reopening
    ASSERT_TRUE(ny::OpenInstallation(second.Path().substr(0, second.Path().size() - 1)));  // no '/'
    EXPECT_EQ(g_MyExePath, second.Path());
    EXPECT_EQ(g_MyStocksArray.size(), 1u);
    EXPECT_EQ(g_MyGetStock(600001), nullptr);
    EXPECT_NE(g_MyGetStock(1000001), nullptr);
}

TEST(Installation, StocksAddedByHandAreFound) {
    ny::CloseInstallation();
    auto* stock = new CStock;
    stock->m_lStockID = 1300001;
    g_MyStocksArray.push_back(stock);
    EXPECT_EQ(g_MyGetStock(1300001), stock);
    ny::CloseInstallation();
    EXPECT_EQ(g_MyGetStock(1300001), nullptr);
}

}  // namespace
