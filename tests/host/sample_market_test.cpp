#include "host/sample_market.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>

#include "host/clock.h"
#include "host/encoding.h"
#include "host/files.h"
#include "host/group.h"
#include "host/installation.h"
#include "host/power.h"
#include "host/stockdb.h"
#include "tests/checksum.h"
#include "tests/host/generated_market.h"
#include "tests/host/temp_installation.h"

namespace {

// A checksum of the relative path and the bytes of every file, in path order.
uint64_t TreeChecksum(const std::string& root) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
        if (entry.is_regular_file()) files.push_back(std::filesystem::relative(entry.path(), root).string());
    std::sort(files.begin(), files.end());
    testcases::Checksum sum;
    for (const std::string& file : files) {
        std::string bytes;
        ny::ReadWholeFile(root + "/" + file, &bytes);
        sum.Add(file);
        sum.Add(bytes);
    }
    return sum.Value();
}

TEST(SampleMarketGeneration, SameOptionsGiveTheSameFiles) {
    TempInstallation first, second;
    std::string error;
    ASSERT_TRUE(ny::MakeSampleMarket(first.Path(), SmallMarket(), &error)) << error;
    ASSERT_TRUE(ny::MakeSampleMarket(second.Path(), SmallMarket(), &error)) << error;
    const uint64_t checksum = TreeChecksum(first.Path());
    EXPECT_EQ(checksum, TreeChecksum(second.Path()));
    // Changes only when the generator is changed on purpose.
    EXPECT_EQ(checksum, 12195954697895051449ULL);
}

TEST(SampleMarketGeneration, RefusesDatesThatMinuteTimesCantHold) {
    TempInstallation dir;
    ny::SampleMarketOptions options = SmallMarket();
    options.lastDate = 20220104;
    std::string error;
    EXPECT_FALSE(ny::MakeSampleMarket(dir.Path(), options, &error));
    EXPECT_FALSE(error.empty());
}

class SampleMarket : public GeneratedMarketTest {};

TEST_F(SampleMarket, ListsSharesBondsFundsAndIndexesWithoutProblems) {
    EXPECT_TRUE(ny::InstallationProblems().empty());
    EXPECT_EQ(Shares().size(), 40u);
    int bonds = 0, handUnits = 0;
    for (const CStock* stock : g_MyStocksArray) {
        bonds += stock->IsZQ();
        handUnits += stock->IsHandUnit() && !stock->IsIndex();
    }
    EXPECT_EQ(bonds, 4);
    EXPECT_EQ(handUnits, 4);
    ASSERT_NE(g_MyGetStock(1), nullptr);
    EXPECT_TRUE(g_MyGetStock(1)->IsIndex());
    EXPECT_TRUE(g_MyGetStock(1399001)->IsIndex());
    EXPECT_EQ(g_MyCurTradeDate, 20210331);
    std::string settings;
    ASSERT_TRUE(ny::ReadWholeFile(s_dir->Path() + "config_main.ini", &settings));
    EXPECT_NE(settings.find("[DayItem]\nBeginTime=20190102\nEndTime=20210331\n[Min5Item]\nEndTime=20210331\n"),
              std::string::npos);
    std::string readme;
    ASSERT_TRUE(ny::ReadWholeFile(s_dir->Path() + "data/README.txt", &readme));
    EXPECT_EQ(readme.rfind(ny::kSampleMarketLabel, 0), 0u);
}

TEST_F(SampleMarket, BarsAreWeekdaysWithPricesInsideTheirRange) {
    for (const CStock* stock : g_MyStocksArray) {
        const std::vector<CHisDay> days = ny::ReadBarFile(stock->GetDayFilePath());
        ASSERT_GT(days.size(), 100u) << stock->m_lStockID;
        EXPECT_EQ(days.back().m_lTime, 20210331);
        for (size_t i = 0; i < days.size(); ++i) {
            const CHisDay& bar = days[i];
            EXPECT_GE(ny::WeekDay(bar.m_lTime), 2);
            EXPECT_LE(ny::WeekDay(bar.m_lTime), 6);
            if (i > 0) {
                EXPECT_GT(bar.m_lTime, days[i - 1].m_lTime);
            }
            EXPECT_LE(bar.m_fLow, std::min(bar.m_fOpen, bar.m_fClose));
            EXPECT_GE(bar.m_fHigh, std::max(bar.m_fOpen, bar.m_fClose));
            EXPECT_GT(bar.m_fLow, 0);
            EXPECT_GT(bar.m_fVolume, 0);
        }
    }
}

// The close before bar i, adjusted by the ex-rights records of the days after it up to bar i's.
float AdjustedPreviousClose(const std::vector<CPowerData>& oldestFirst, const std::vector<CHisDay>& days, size_t i) {
    float reference = days[i - 1].m_fClose;
    for (const CPowerData& record : oldestFirst)
        if (record.m_lDate > days[i - 1].m_lTime && record.m_lDate <= days[i].m_lTime) reference = record.Adjust(reference);
    return reference;
}

// Each price moves from the close before, adjusted by the ex-rights records in between, by no more
// than the daily limit: the records explain every jump.
TEST_F(SampleMarket, PriceJumpsMatchTheExRightsRecords) {
    int bigEvents = 0;
    for (const CStock* stock : Shares()) {
        const std::vector<CPowerData> records = ny::ReadPowerFile(stock->GetPowerFilePath());
        ASSERT_FALSE(records.empty());
        const double limit = stock->m_strCode[0] == '3' ? 0.2 : 0.1;
        const std::vector<CHisDay> days = ny::ReadBarFile(stock->GetDayFilePath());
        for (size_t i = 1; i < days.size(); ++i) {
            const float reference = AdjustedPreviousClose(records, days, i);
            bigEvents += reference < days[i - 1].m_fClose * 0.8f;
            for (const float price : {days[i].m_fClose, days[i].m_fOpen})
                EXPECT_LE(std::fabs(price / reference - 1), limit + 0.01) << stock->m_lStockID << " " << days[i].m_lTime;
        }
    }
    EXPECT_GT(bigEvents, 0);  // bonus shares halve prices now and then
}

TEST_F(SampleMarket, IndexCountsRisingAndFallingShares) {
    for (CIndex* index : {&g_MyIndexSH, &g_MyIndexSZ}) {
        const char market = static_cast<char>(index->m_lStockID / 1000000);
        std::map<int, std::pair<int, int>> counts;  // date -> rising, falling
        for (const CStock* stock : Shares()) {
            if (stock->m_cMarket != market) continue;
            const std::vector<CPowerData> records = ny::ReadPowerFile(stock->GetPowerFilePath());
            const std::vector<CHisDay> days = ny::ReadBarFile(stock->GetDayFilePath());
            for (size_t i = 1; i < days.size(); ++i) {
                const float reference = AdjustedPreviousClose(records, days, i);
                counts[days[i].m_lTime].first += days[i].m_fClose > reference;
                counts[days[i].m_lTime].second += days[i].m_fClose < reference;
            }
        }
        int checked = 0;
        for (const auto& [date, count] : counts) {
            const CHisDay* day = index->GetDay(date);
            ASSERT_NE(day, nullptr) << date;
            EXPECT_EQ(day->m_lAdvDec % 1024, count.first) << date;
            EXPECT_EQ(day->m_lAdvDec / 1024 % 1024, count.second) << date;
            ++checked;
        }
        EXPECT_GT(checked, 500);
    }
}

// A bar folded under its key against a stored one stamped with that key.
void ExpectSameBar(const std::pair<int, CHisDay>& folded, const CHisDay& b) {
    const CHisDay& a = folded.second;
    EXPECT_EQ(folded.first, b.m_lTime);
    EXPECT_FLOAT_EQ(a.m_fOpen, b.m_fOpen) << a.m_lTime;
    EXPECT_FLOAT_EQ(a.m_fHigh, b.m_fHigh) << a.m_lTime;
    EXPECT_FLOAT_EQ(a.m_fLow, b.m_fLow) << a.m_lTime;
    EXPECT_FLOAT_EQ(a.m_fClose, b.m_fClose) << a.m_lTime;
    EXPECT_NEAR(a.m_fVolume, b.m_fVolume, 1e-6 * a.m_fVolume + 1) << a.m_lTime;
    EXPECT_NEAR(a.m_fAmount, b.m_fAmount, 1e-5 * a.m_fAmount + 1) << a.m_lTime;
}

TEST_F(SampleMarket, MinuteBarsAddUpToTheDayBars) {
    for (const CStock* stock : g_MyStocksArray) {
        const std::vector<CHisDay> days = ny::ReadBarFile(stock->GetDayFilePath());
        const std::vector<CHisDay> fives = ny::ReadBarFile(stock->GetMin5FilePath());
        const std::vector<CHisDay> minutes = ny::ReadBarFile(stock->GetMinuteFilePath());
        ASSERT_EQ(minutes.size(), 241u);
        ASSERT_EQ(fives.size() % 48, 0u);
        ASSERT_GE(fives.size(), 48u * 19);
        const auto byDay = Aggregate(fives, CStock::Min5Time2Day);
        ASSERT_LE(byDay.size(), days.size());
        for (size_t i = 0; i < byDay.size(); ++i) ExpectSameBar(byDay[i], days[days.size() - byDay.size() + i]);
        const char market = stock->m_cMarket;
        const auto lastFives = Aggregate(minutes, [market](int time) { return CStock::Time2Time(time, 0, market); });
        ASSERT_EQ(lastFives.size(), 48u);
        for (size_t i = 0; i < 48; ++i) ExpectSameBar(lastFives[i], fives[fives.size() - 48 + i]);
    }
}

TEST_F(SampleMarket, QuotesAreTheLastDay) {
    for (const CStock* stock : g_MyStocksArray) {
        const CHisDay last = ny::ReadBarFile(stock->GetDayFilePath()).back();
        EXPECT_FLOAT_EQ(stock->GetValue(1), last.m_fOpen);
        EXPECT_FLOAT_EQ(stock->GetValue(2), last.m_fClose);
        EXPECT_FLOAT_EQ(stock->GetValue(3), last.m_fHigh);
        EXPECT_FLOAT_EQ(stock->GetValue(4), last.m_fLow);
        EXPECT_NEAR(stock->GetValue(5), last.m_fVolume, 1e-6 * last.m_fVolume);
        EXPECT_NEAR(stock->m_fInnerVolume + stock->m_fOuterVolume, last.m_fVolume, 1e-6 * last.m_fVolume + 1);
        EXPECT_GT(stock->GetValue(0), 0);
    }
}

TEST_F(SampleMarket, OrderFlowRecordsFollowTheDayBars) {
    for (const CStock* stock : Shares()) {
        std::string bytes;
        ASSERT_TRUE(ny::ReadWholeFile(stock->GetExtDayFilePath(), &bytes));
        // One record for each of the last 30 trading days on which the share traded.
        ASSERT_EQ(bytes.size() % 260, 0u);
        const size_t count = bytes.size() / 260;
        ASSERT_GE(count, 28u);
        ASSERT_LE(count, 30u);
        const std::vector<CHisDay> days = ny::ReadBarFile(stock->GetDayFilePath());
        for (size_t r = 0; r < count; ++r) {
            const char* record = bytes.data() + r * 260;
            const CHisDay& day = days[days.size() - count + r];
            EXPECT_EQ(ny::LoadInt(record), day.m_lTime);
            double volume = 0;
            for (int word = 1; word <= 8; ++word) volume += ny::LoadFloat(record + 4 * word);
            EXPECT_FLOAT_EQ(volume, day.m_fVolume);
            EXPECT_EQ(std::string(record + 100, 160), std::string(160, '\0'));
        }
    }
}

TEST_F(SampleMarket, EveryShareHasAnIndustryAndARegion) {
    std::vector<CString> categories = {"行业", "地区", "概念", "自选", "自定义"};
    std::map<int, int> industries, regions;
    for (const CString& category : categories) {
        std::vector<CString> names;
        CGroup::GetGroup(category, names);
        EXPECT_FALSE(names.empty()) << ny::GbkToUtf8(category);
        for (const CString& name : names) {
            std::vector<CStock*> stocks;
            CGroup::GetStock(category, name, stocks);
            EXPECT_FALSE(stocks.empty());
            for (const CStock* stock : stocks) {
                if (category == "行业") ++industries[stock->m_lStockID];
                if (category == "地区") ++regions[stock->m_lStockID];
            }
        }
    }
    for (const CStock* stock : Shares()) {
        EXPECT_EQ(industries[stock->m_lStockID], 1);
        EXPECT_EQ(regions[stock->m_lStockID], 1);
    }
}

}  // namespace

namespace {

// The installation that the build generates with the default options.
TEST(DefaultInstallation, OpensWithoutProblems) {
    const std::string path = std::string(NY_BINARY_DIR) + "/install/";
    if (!std::filesystem::exists(path + "data/stocks.csv")) GTEST_SKIP() << "sample market not built";
    ASSERT_TRUE(ny::OpenInstallation(path));
    EXPECT_TRUE(ny::InstallationProblems().empty());
    EXPECT_EQ(g_MyCurTradeDate, 20210630);
    EXPECT_EQ(g_MyStocksArray.size(), 300u + 2 + 4 + 4);
    const CHisDay* last = g_MyIndexSH.GetDay(20210630);
    ASSERT_NE(last, nullptr);
    EXPECT_GT(last->m_lAdvDec % 1024 + last->m_lAdvDec / 1024 % 1024, 100);
    const CStock* first = g_MyGetStock(600000);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(ny::ReadBarFile(first->GetMin5FilePath()).size(), 20u * 48);
    EXPECT_GT(ny::ReadBarFile(first->GetDayFilePath()).size(), 3u * 250);
    ny::CloseInstallation();
}

}  // namespace
