// The bar pipeline: the cases of bars.txt (stored bars, today's data, period grouping, merging,
// runs up and down, ex-rights adjustment), stepping through the ex-rights list, and the whole
// pipeline over a generated market against an aggregation and adjustment of our own.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>
#include <tuple>

#include "host/clock.h"
#include "host/sample_market.h"
#include "host/stockdb.h"
#include "model/period.h"
#include "tests/picker/picker_fixture.h"
#include "tests/case_file.h"

namespace {

using pickertest::Event;

// The period of a name as the command line gives it ("day", "15min").
short PeriodNumber(const std::string& name) {
    const ny::PeriodRow* row = ny::FindPeriodByName(name);
    EXPECT_NE(row, nullptr) << name;
    return row != nullptr ? row->number : 0;
}

// One case of bars.txt: a fresh installation, a fresh engine and the bars of the last load.
struct BarCase {
    pickertest::Market market{"SH600001,Share,GP,A\nSZ000002,Two,ET,A\nHK000005,Hk,HK,STOCK\n"};
    pickertest::Engine engine;
    std::vector<CHisDay> loaded;

    // Runs one line of the case, its expectation after "->" in `want`.
    void Run(const std::string& command, std::istringstream& in, const std::string& want) {
        std::string first, rest, word;
        in >> first >> std::ws;
        std::getline(in, rest);
        if (command == "file") {
            const size_t plus = rest.find('+');
            const size_t stray = plus == std::string::npos ? 0 : std::stoul(rest.substr(plus + 1));
            market.Write(first, ny::EncodeBars(pickertest::Bars(rest.substr(0, plus))) + std::string(stray, 'x'));
        } else if (command == "power") {
            std::vector<CPowerData> records;
            std::istringstream items(rest);
            for (std::string item; items >> item;) {
                std::replace(item.begin(), item.end(), ':', ' ');
                std::istringstream fields(item);
                int date = 0;
                float profit = 0, give = 0, capital = 0;
                fields >> date >> profit >> give >> capital;
                records.push_back(Event(date, profit, give, capital));
            }
            market.Power(first, records);
        } else if (command == "quote") {
            market.Write("data/quotes.csv", "date=" + first + "\ncode,open,high,low,last,volume,amount\n" + rest + "\n");
        } else if (command == "buffer") {
            EXPECT_EQ(engine.m_nBufSize, std::stoi(first));
        } else if (std::isdigit(command[0]) != 0) {
            const size_t index = std::stoul(command);
            ASSERT_LT(index, loaded.size());
            pickertest::ExpectBar(loaded[index], first + " " + rest);
        } else {
            ASSERT_TRUE(market.Open());
            const int id = ny::ParseStockCode(first);
            std::istringstream words(rest);
            if (command == "load") {
                words >> word;
                const std::string flags = rest.substr(word.size());
                loaded = engine.Load(id, PeriodNumber(word), flags.find("adjusted") != std::string::npos,
                                     flags.find("runs") != std::string::npos);
                EXPECT_EQ(loaded.size(), std::stoul(want));
            } else if (command == "records") {
                engine.m_lStockID = id;
                engine.LoadPower();
                std::vector<float> profits, expected;
                for (const CPowerData& record : engine.m_arPower) profits.push_back(record.m_fProfit);
                std::istringstream values(want);
                for (float value; values >> value;) expected.push_back(value);
                EXPECT_EQ(profits, expected);
            } else {
                ASSERT_EQ(command, "same");
                int a = 0, b = 0;
                words >> word >> a >> b;
                engine.m_lStockID = id;
                engine.m_nPeriod = PeriodNumber(word);
                EXPECT_EQ(engine.IsSamePeriod(a, b) ? "yes" : "no", want);
            }
        }
    }
};

TEST(BarCases, EveryCaseOfTheTable) {
    std::unique_ptr<BarCase> current;
    testcases::ForEachRow("picker/bars.txt", [&](const std::string& line) {
        if (line.rfind("== ", 0) == 0) {
            current = std::make_unique<BarCase>();
            return;
        }
        ASSERT_TRUE(current);
        std::string text = line, want;
        testcases::SplitAtArrow(line, &text, &want);
        std::istringstream in(text);
        std::string command;
        in >> command;
        current->Run(command, in, want);
    });
}

// The record in force on a day and stepping through the list, newest first.
TEST(BarCases, RecordInForceAndSteppingNewestFirst) {
    pickertest::Engine engine;
    engine.m_arPower = {Event(20210601, 1), Event(20200601, 2), Event(20190601, 3)};
    CPowerData record = Event(7, 7);
    EXPECT_EQ(engine.GetStartCQ(20180101, record), -1);
    EXPECT_EQ(record.m_lDate, 7);  // untouched when nothing qualifies
    EXPECT_EQ(engine.GetStartCQ(20200601, record), 1);
    EXPECT_EQ(engine.GetStartCQ(20991231, record), 0);
    EXPECT_EQ(engine.GetNextCQ(0, record, 0), 1);
    EXPECT_FLOAT_EQ(record.m_fProfit, 2);
    EXPECT_EQ(engine.GetNextCQ(2, record, 0), -1);
    EXPECT_FLOAT_EQ(record.m_fProfit, 2);
    EXPECT_EQ(engine.GetNextCQ(2, record, 1), 1);
    EXPECT_EQ(engine.GetNextCQ(0, record, 1), -1);
}

// ---- The generated market ----

class SampleMarketBars : public GeneratedMarketTest {
protected:
    void SetUp() override {
        GeneratedMarketTest::SetUp();
        shares = Shares();
    }

    std::vector<const CStock*> shares;
    pickertest::Engine engine;
};

void ExpectSameBars(const std::vector<std::pair<int, CHisDay>>& expected, const std::vector<CHisDay>& got,
                    bool stampIsKey, const std::string& what) {
    ASSERT_EQ(expected.size(), got.size()) << what;
    for (size_t i = 0; i < got.size(); ++i) {
        const CHisDay& want = expected[i].second;
        const auto fields = [](const CHisDay& bar) {
            return std::make_tuple(bar.m_fOpen, bar.m_fHigh, bar.m_fLow, bar.m_fClose, bar.m_fVolume);
        };
        EXPECT_EQ(got[i].m_lTime, stampIsKey ? expected[i].first : want.m_lTime) << what << " bar " << i;
        EXPECT_EQ(fields(got[i]), fields(want)) << what << " bar " << i;
        if (i > 0) {
            EXPECT_EQ(got[i].m_fPreClose, expected[i - 1].second.m_fClose) << what << " bar " << i;
        }
    }
}

TEST_F(SampleMarketBars, DayBasedPeriodsAgreeWithCalendarGroups) {
    // Weeks start on Monday: day numbers from a Monday, in sevens.
    const std::pair<short, int (*)(int)> periods[] = {
        {NY_PERIOD_WEEK, [](int date) { return static_cast<int>((ny::DayNumber(date) + 3) / 7); }},
        {NY_PERIOD_MONTH, [](int date) { return date / 100; }},
        {NY_PERIOD_QUARTER, [](int date) { return date / 10000 * 10 + (date / 100 % 100 - 1) / 3; }},
        {NY_PERIOD_YEAR, [](int date) { return date / 10000; }}};
    for (const CStock* stock : shares) {
        const std::vector<CHisDay> stored = ny::ReadBarFile(stock->GetDayFilePath());
        const std::string code = ny::FormatStockCode(stock->m_lStockID);
        EXPECT_EQ(engine.Load(stock->m_lStockID, NY_PERIOD_DAY).size(), stored.size()) << code;
        for (const auto& [period, key] : periods)
            ExpectSameBars(Aggregate(stored, key), engine.Load(stock->m_lStockID, period), false,
                           code + " period " + std::to_string(period));
    }
}

TEST_F(SampleMarketBars, MinutePeriodsAgreeWithTradingSlots) {
    // The slot of a 5-minute stamp, as its own end stamp: sessions 09:30-11:30 and 13:00-15:00.
    const auto slot = [](int minutes) {
        return [minutes](int time) {
            const int of = time % 10000 / 100 * 60 + time % 100;
            const int open = of <= 11 * 60 + 30 ? 9 * 60 + 30 : 13 * 60;
            const int close = open + 120;
            const int end = std::min(open + ((of - open - 1) / minutes + 1) * minutes, close);
            return time / 10000 * 10000 + end / 60 * 100 + end % 60;
        };
    };
    const std::pair<short, int> periods[] = {
        {NY_PERIOD_MIN5, 5}, {NY_PERIOD_MIN15, 15}, {NY_PERIOD_MIN30, 30}, {NY_PERIOD_MIN60, 60}};
    for (const CStock* stock : shares) {
        const std::vector<CHisDay> stored = ny::ReadBarFile(stock->GetMin5FilePath());
        const std::string code = ny::FormatStockCode(stock->m_lStockID);
        ASSERT_FALSE(stored.empty()) << code;
        for (const auto& [period, minutes] : periods)
            ExpectSameBars(Aggregate(stored, slot(minutes)), engine.Load(stock->m_lStockID, period), true,
                           code + " " + std::to_string(minutes));
        EXPECT_EQ(engine.Load(stock->m_lStockID, NY_PERIOD_MIN1).size(), 241u) << code;
    }
}

TEST_F(SampleMarketBars, AdjustedPricesRunSmoothlyAcrossEvents) {
    int bonusEvents = 0;
    for (const CStock* stock : shares) {
        const std::vector<CHisDay> stored = ny::ReadBarFile(stock->GetDayFilePath());
        const std::vector<CPowerData> events = ny::ReadPowerFile(stock->GetPowerFilePath());
        const std::vector<CHisDay> adjusted = engine.Load(stock->m_lStockID, NY_PERIOD_DAY, 1);
        ASSERT_EQ(adjusted.size(), stored.size());
        // Our own factor per bar: every event after the bar's day, by the close before it.
        std::vector<double> factor(stored.size(), 1.0);
        for (const CPowerData& event : events) {
            size_t at = 0;
            while (at < stored.size() && stored[at].m_lTime < event.m_lDate) ++at;
            if (at == 0 || at == stored.size()) continue;
            const float close = stored[at - 1].m_fClose;
            const double ratio = static_cast<double>(event.Adjust(close)) / close;
            if (std::fabs(ratio - 1) * close < 0.0001) continue;
            for (size_t b = 0; b < at; ++b) factor[b] *= ratio;
            const double rawMove = stored[at].m_fClose / stored[at - 1].m_fClose;
            const double adjustedMove = adjusted[at].m_fClose / adjusted[at - 1].m_fClose;
            EXPECT_NEAR(adjustedMove, 1, 0.2)
                << ny::FormatStockCode(stock->m_lStockID) << " " << event.m_lDate;
            if (event.m_fGive >= 4) {
                ++bonusEvents;
                EXPECT_LT(rawMove, 0.8);
            }
        }
        for (size_t b = 0; b < stored.size(); ++b)
            ASSERT_NEAR(adjusted[b].m_fClose, stored[b].m_fClose * factor[b], 2e-5 * stored[b].m_fClose)
                << ny::FormatStockCode(stock->m_lStockID) << " bar " << b;
    }
    EXPECT_GT(bonusEvents, 0);
}

}  // namespace
