// Bars in CSV text: the accepted forms, and each refused row with its line.

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "host/bar_csv.h"

namespace {

// Each accepted form with the bars it gives: time, then low, close, volume and amount.
TEST(BarCsv, AcceptedForms) {
    const struct {
        const char* text;
        bool minute;
        std::vector<std::pair<int, std::array<float, 4>>> bars;
    } rows[] = {
        // Columns in any order, both date forms, a byte-order mark, a comment, a blank line, no amount.
        {"\xEF\xBB\xBF# my bars\r\nClose,DATE,open,high,low,volume\r\n10.5,2021-06-01,10,11,9.5,1200\r\n\r\n"
         "11,20210602,10.5,11.2,10.4,900\r\n",
         false, {{20210601, {9.5f, 10.5f, 1200, 0}}, {20210602, {10.4f, 11, 900, 0}}}},
        // Minute rows are stamped like the minute files.
        {"date,open,high,low,close,volume,amount\n2021-06-30 09:35,10,10,10,10,5,50\n20210630 15:00,10,10,9,10,5,50\n",
         true, {{2106300935, {10, 10, 5, 50}}, {2106301500, {9, 10, 5, 50}}}},
    };
    for (const auto& row : rows) {
        const ny::BarCsv csv = ny::ParseBarCsv(row.text);
        EXPECT_TRUE(csv.problems.empty()) << row.text;
        EXPECT_EQ(csv.minute, row.minute) << row.text;
        std::vector<std::pair<int, std::array<float, 4>>> bars;
        for (const CHisDay& bar : csv.bars) bars.push_back({bar.m_lTime, {bar.m_fLow, bar.m_fClose, bar.m_fVolume, bar.m_fAmount}});
        EXPECT_EQ(bars, row.bars) << row.text;
    }
}

TEST(BarCsv, EveryRefusedRowIsNamedAndLeftOut) {
    const ny::BarCsv csv = ny::ParseBarCsv(
        "date,open,high,low,close,volume\n"
        "2021-02-26,10,10,10,10,1\n"   // 2 good
        "2021-02-30,10,10,10,10,1\n"   // 3 no such day
        "2021-03-01,10,10,10,10\n"     // 4 a field short
        "2021-03-01,10,9,10,10,1\n"    // 5 high below low
        "2021-03-01,10,10,10,10,-1\n"  // 6 negative volume
        "2021-02-25,10,10,10,10,1\n"   // 7 out of order
        "2021-03-02 10:00,10,10,10,10,1\n"  // 8 minute row among day rows
        "2021-03-03,10,10,10,abc,1\n"  // 9 not a number
        "2021-03-04,0,0,0,0,1\n"       // 10 no price
        "2021-03-05,10,10,10,10,1\n");  // 11 good
    ASSERT_EQ(csv.bars.size(), 2u);
    EXPECT_EQ(csv.bars[1].m_lTime, 20210305);
    std::vector<int> lines;
    for (const ny::BarCsvProblem& p : csv.problems) lines.push_back(p.line);
    EXPECT_EQ(lines, (std::vector<int>{3, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(csv.problems[1].message, "expected 6 fields, found 5");
    EXPECT_EQ(csv.problems[4].message, "not later than the row before");
}

// Files refused as a whole, with the one problem named.
TEST(BarCsv, FilesRefusedWhole) {
    const struct {
        const char* text;
        int line;
        const char* message;
    } rows[] = {
        {"date,open,high,low,close\n20210601,1,1,1,1\n", 1, "header: no column \"volume\""},
        {"date,open,high,low,close,volume\n2022-01-03 10:00,1,1,1,1,1\n", 2,
         "minute bars can only be dated 2000-01-01 to 2021-12-31"},
    };
    for (const auto& [text, line, message] : rows) {
        const ny::BarCsv csv = ny::ParseBarCsv(text);
        ASSERT_EQ(csv.problems.size(), 1u) << text;
        EXPECT_EQ(csv.problems[0].line, line) << text;
        EXPECT_EQ(csv.problems[0].message, message);
        EXPECT_TRUE(csv.bars.empty()) << text;
    }
}

}  // namespace
