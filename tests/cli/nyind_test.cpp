// The command-line tool as a user meets it: the real binary, its output and its exit statuses.

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "host/encoding.h"
#include "host/files.h"
#include "nyind_runner.h"

namespace nyind_test {
namespace {

using nlohmann::json;

TEST(NyindCalc, MacdOfASampleStockMatchesATextbookComputation) {
    const RunResult r = Nyind("calc --formula MACD --stock SH600001 --json --last 3");
    ASSERT_EQ(r.status, 0) << r.err;
    const json out = json::parse(r.out);
    const std::vector<CHisDay> bars = ny::ReadBarFile(kInstall + "/data/sh/day/600001.day");
    ASSERT_GT(bars.size(), 100u);
    double fast = bars[0].m_fClose, slow = bars[0].m_fClose;
    std::vector<double> dif;
    for (const CHisDay& bar : bars) {
        fast += (bar.m_fClose - fast) * 2 / 13;
        slow += (bar.m_fClose - slow) * 2 / 27;
        dif.push_back(fast - slow);
    }
    ASSERT_EQ(out["bars"], bars.size());
    const json& statement = out["statements"][0];
    EXPECT_EQ(statement["name"], "DIF");
    ASSERT_EQ(statement["values"].size(), 3u);
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(statement["values"][i].get<double>(), dif[bars.size() - 3 + i], 2e-3);
    EXPECT_EQ(out["statements"][2]["type"], 3);  // COLORSTICK
}

TEST(NyindCalc, CsvBarsWithParametersAndTheValidRange) {
    const std::string bars =
        "date,open,high,low,close,volume\n"
        "2021-06-01,10,10,10,10,100\n"
        "20210602,11,11,11,11,100\n"
        "2021-06-03,12,12,12,12,100\n"
        "2021-06-04,13,14,12,13,100\n";
    TempDir dir;
    WriteText(dir.path() / "bars.csv", bars);
    const RunResult r = Nyind("calc --source - --param N=3 --bars " + (dir.path() / "bars.csv").string() + " --json",
                            "D:C-REF(C,1);\nM:MA(CLOSE,N);");
    ASSERT_EQ(r.status, 0) << r.err;
    const json out = json::parse(r.out);
    EXPECT_EQ(out["times"], json({"2021-06-01", "2021-06-02", "2021-06-03", "2021-06-04"}));
    EXPECT_EQ(out["statements"][0]["values"], json({nullptr, 1.0, 1.0, 1.0}));
    EXPECT_EQ(out["statements"][1]["values"], json({nullptr, nullptr, 11.0, 12.0}));
    EXPECT_EQ(out["statements"][1]["first"], 2);
}

// A source too long for the short form of the everyday set fits the long form of the distinctive one.
TEST(NyindLib, BuildRefusesASourceTooLongForTheShortForm) {
    TempDir dir;
    CopyInstallationBasics(dir.path() / "home");
    const std::string build = "--home " + (dir.path() / "home").string() + " lib build " + (dir.path() / "src").string() +
                              " -o " + (dir.path() / "set").string();
    const std::string longSource = "X:C" + std::string(2045, ' ') + ";\n";  // 2,049 bytes
    WriteText(dir.path() / "src/a.fml", U8("name: GOOD\nkind: 五彩K线\n[source]\nC>O;\n"));
    WriteText(dir.path() / "src/b.fml", U8("name: BIG\nkind: 技术指标\ngroup: 趋向指标\n[source]\n") + longSource);
    RunResult r = Nyind(build);
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("b.fml: the source has 2049 bytes; the short form of nysys.dat holds at most 2047"), std::string::npos) << r.err;
    EXPECT_FALSE(fs::exists(dir.path() / "set/nysys.dat"));
    WriteText(dir.path() / "src/b.fml", U8("name: BIG\nkind: 技术指标\ngroup: 特色指标\n[source]\n") + longSource);
    r = Nyind(build);
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(fs::file_size(dir.path() / "set/nybase.dat"), 12u + 12205 + 552);
    EXPECT_EQ(fs::file_size(dir.path() / "set/nysys.dat"), 12u + 4013 + 552);
}

// lib show writes the sentences as a section of the readable form, which reads back unchanged.
TEST(NyindExplain, LibraryFormulaShownWithItsSentences) {
    const RunResult shown = Nyind("lib show MACD --kind indicator");
    ASSERT_EQ(shown.status, 0) << shown.err;
    EXPECT_NE(shown.out.find(U8("\n[sentences]\n")), std::string::npos) << shown.out;
    EXPECT_NE(shown.out.find(U8("指数移动平均")), std::string::npos) << shown.out;

    const TempDir dir;
    WriteText(dir.path() / "MACD.fml", shown.out);
    const RunResult reread = Nyind("check " + (dir.path() / "MACD.fml").string());
    EXPECT_EQ(reread.status, 0) << reread.out << reread.err;
}

}  // namespace
}  // namespace nyind_test
