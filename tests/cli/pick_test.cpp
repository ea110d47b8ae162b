// nyind pick over the sample market.

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>

#include <nlohmann/json.hpp>

#include "host/encoding.h"
#include "host/files.h"
#include "nyind_runner.h"

namespace nyind_test {
namespace {

using nlohmann::json;

// The Shanghai A shares whose last high is the highest of their last `n` day bars, read from
// the day files directly.
std::set<std::string> NewHighsInShanghai(size_t n) {
    std::set<std::string> codes;
    for (const auto& entry : fs::directory_iterator(kInstall + "/data/sh/day")) {
        const std::string code = entry.path().stem().string();
        if (code[0] != '6') continue;  // A shares only, not the index, bonds or funds
        const std::vector<CHisDay> bars = ny::ReadBarFile(entry.path().string());
        if (bars.size() < n) continue;
        float highest = 0;
        for (size_t i = bars.size() - n; i < bars.size(); ++i) highest = std::max(highest, bars[i].m_fHigh);
        if (bars.back().m_fHigh >= highest) codes.insert("SH" + code);
    }
    return codes;
}

// Picks write their result block: each test works on an installation of its own.
class NyindPick : public ::testing::Test {
protected:
    NyindPick() { LinkInstallation(m_dir.path() / "home"); }
    RunResult Pick(const std::string& args) { return Nyind("--home " + (m_dir.path() / "home").string() + " pick " + args); }
    TempDir m_dir;
};

TEST_F(NyindPick, NewHighsOfShanghaiMatchTheDayFiles) {
    const RunResult r = Pick("--cond XGXG:60 --scope sh --json");
    ASSERT_EQ(r.status, 0) << r.err;
    const json out = json::parse(r.out);
    std::set<std::string> picked;
    for (const json& stock : out["stocks"]) {
        picked.insert(stock["code"].get<std::string>());
        EXPECT_EQ(stock["values"], json({1.0}));
    }
    EXPECT_EQ(picked, NewHighsInShanghai(60));
    EXPECT_FALSE(picked.empty());
    EXPECT_EQ(out["examined"], out["total"]);
    EXPECT_EQ(out["stopped"], false);
    // The picked stocks are stored as the block of the result.
    const std::string block = ReadText(m_dir.path() / "home/data/blocks" / ny::GbkToUtf8("自定义") / (ny::GbkToUtf8("智能选股") + ".blk"));
    ASSERT_GE(block.size(), 84u);
    EXPECT_EQ(block.size(), 84u + 4 * picked.size());
}

TEST_F(NyindPick, ConditionsCombineByAndOrOr) {
    const auto picked = [&](const std::string& args) { return PickedCodes(m_dir.path() / "home", args + " --scope sz"); };
    const std::set<std::string> rising = picked("--cond LXSZ:2");
    const std::set<std::string> quiet = picked("--cond SLXG:10,100");
    const std::set<std::string> both = picked("--cond LXSZ:2 --cond SLXG:10,100");
    const std::set<std::string> either = picked("--cond LXSZ:2 --cond SLXG:10,100 --or");
    std::set<std::string> intersection, all;
    std::set_intersection(rising.begin(), rising.end(), quiet.begin(), quiet.end(),
                          std::inserter(intersection, intersection.end()));
    std::set_union(rising.begin(), rising.end(), quiet.begin(), quiet.end(), std::inserter(all, all.end()));
    EXPECT_EQ(both, intersection);
    EXPECT_EQ(either, all);
    EXPECT_LT(both.size(), rising.size());
    EXPECT_LT(rising.size(), either.size());
}


}  // namespace
}  // namespace nyind_test

namespace nyind_test {
namespace {

// Other periods come through the picker's bar pipeline: a week ends on its last trading day.
TEST(NyindCalcPeriods, WeeksCloseWithTheirLastDay) {
    const std::vector<CHisDay> days = ny::ReadBarFile(kInstall + "/data/sh/day/600001.day");
    const RunResult r = Nyind("calc --source - --stock SH600001 --period week --csv --last 2", "W:C;");
    ASSERT_EQ(r.status, 0) << r.err;
    char expected[64];
    std::snprintf(expected, sizeof expected, "2021-06-30,%.3f\n", days.back().m_fClose);
    EXPECT_NE(r.out.find(expected), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("2021-06-25,"), std::string::npos) << r.out;
}

}  // namespace
}  // namespace nyind_test
