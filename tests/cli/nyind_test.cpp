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

TEST(NyindLib, AddExportImportRemoveRoundTrip) {
    TempDir a, b;
    CopyInstallationBasics(a.path() / "home");
    CopyInstallationBasics(b.path() / "home");
    const std::string homeA = "--home " + (a.path() / "home").string();
    const std::string homeB = "--home " + (b.path() / "home").string();
    WriteText(a.path() / "mine.fml",
              U8("name: MYLINE\nkind: 技术指标\ngroup: 自定指标\ntitle: 我的线\nparam: N 1 100 7\n\n[source]\nL1:MA(C,N);\n"));
    RunResult r = Nyind(homeA + " lib add " + (a.path() / "mine.fml").string());
    ASSERT_EQ(r.status, 0) << r.err;
    r = Nyind(homeA + " lib add " + (a.path() / "mine.fml").string());
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find(U8("名称与已有的公式名称重名")), std::string::npos) << r.err;

    r = Nyind(homeA + " lib export MYLINE -o " + (a.path() / "myline.dat").string());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(fs::file_size(a.path() / "myline.dat"), 12u + 4009u + 552u + 2u + 58u + 2u);
    r = Nyind(homeB + " lib import " + (a.path() / "myline.dat").string());
    ASSERT_EQ(r.status, 0) << r.err;
    r = Nyind(homeB + " lib show MYLINE --json");
    ASSERT_EQ(r.status, 0);
    const json shown = json::parse(r.out);
    EXPECT_EQ(shown["title"], U8("我的线"));
    EXPECT_EQ(shown["params"][0]["default"], 7);
    EXPECT_EQ(shown["statements"][0]["text"], "MA(C,N)");
    EXPECT_EQ(shown["system"], false);

    r = Nyind(homeB + " lib remove MYLINE");
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(Nyind(homeB + " lib show MYLINE").status, 1);
    r = Nyind(homeB + " lib remove MACD");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find(U8("系统公式不能更改")), std::string::npos);
}

TEST(NyindLib, BuildFailsOnAFormulaThatDoesNotPassAndNamesIt) {
    TempDir dir;
    CopyInstallationBasics(dir.path() / "home");
    const std::string build = "--home " + (dir.path() / "home").string() + " lib build " + (dir.path() / "src").string() +
                              " -o " + (dir.path() / "set").string();
    const std::string longSource = "X:C" + std::string(2045, ' ') + ";\n";  // 2,049 bytes
    struct Case {
        const char* second;  // UTF-8 source of the second formula, b.fml
        std::string error;
    } cases[] = {
        {"name: BAD\nkind: 五彩K线\n[source]\nC>O AND;\n", "b.fml: " + U8("当前公式: BAD")},
        {"name: BAD\nkind: 五彩K线\ngroup: 指标选股\n[source]\nC>O;\n", "b.fml:3: trade systems and candle rules have no group"},
        {"name: BIG\nkind: 技术指标\ngroup: 趋向指标\n[source]\n", "b.fml: the source has 2049 bytes; the short form of nysys.dat holds at most 2047"},
    };
    WriteText(dir.path() / "src/a.fml", U8("name: GOOD\nkind: 五彩K线\n[source]\nC>O;\n"));
    for (const Case& c : cases) {
        WriteText(dir.path() / "src/b.fml", U8(c.second) + (c.error.find("2049") != std::string::npos ? longSource : ""));
        const RunResult r = Nyind(build);
        EXPECT_EQ(r.status, 1);
        EXPECT_NE(r.err.find(c.error), std::string::npos) << r.err;
        EXPECT_FALSE(fs::exists(dir.path() / "set/nysys.dat"));
    }
    // The long form of the distinctive set has room for it.
    WriteText(dir.path() / "src/b.fml", U8("name: BIG\nkind: 技术指标\ngroup: 特色指标\n[source]\n") + longSource);
    const RunResult r = Nyind(build);
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(fs::file_size(dir.path() / "set/nybase.dat"), 12u + 12205 + 552);
    EXPECT_EQ(fs::file_size(dir.path() / "set/nysys.dat"), 12u + 4013 + 552);
}

TEST(NyindData, ImportAddsAStockAndItsBarsOrNamesTheBadLine) {
    TempDir dir;
    CopyInstallationBasics(dir.path() / "home");
    const std::string home = "--home " + (dir.path() / "home").string();
    WriteText(dir.path() / "bad.csv", "date,open,high,low,close,volume,amount\n20210601,10,11,9,10.5,1000,10500\n"
                                      "20210602,10,11,9,x,1000,10500\n");
    RunResult r = Nyind(home + " data import SH688001 --name " + U8("新股甲") + " --day " + (dir.path() / "bad.csv").string());
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("bad.csv:3: bad close \"x\""), std::string::npos) << r.err;
    EXPECT_FALSE(fs::exists(dir.path() / "home/data/sh/day/688001.day"));

    WriteText(dir.path() / "good.csv", "date,open,high,low,close,volume,amount\n20210601,10,11,9,10.5,1000,10500\n"
                                       "20210602,10.5,12,10,12,2000,23000\n");
    r = Nyind(home + " data import SH688001 --name " + U8("新股甲") + " --day " + (dir.path() / "good.csv").string());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(fs::file_size(dir.path() / "home/data/sh/day/688001.day"), 80u);
    r = Nyind(home + " data import SH688002 --name X --kind A+NONSENSE --day " + (dir.path() / "good.csv").string());
    EXPECT_EQ(r.status, 2);
    EXPECT_FALSE(fs::exists(dir.path() / "home/data/sh/day/688002.day"));
    r = Nyind(home + " calc --source - --stock SH688001 --csv", "R:C/REF(C,1);");
    EXPECT_EQ(r.out, "date,R\n2021-06-01,\n2021-06-02,1.143\n");

    // A second file merges by date: the day given again is replaced, the others stay.
    WriteText(dir.path() / "more.csv", "date,open,high,low,close,volume\n20210602,10.5,12,10,11,2000\n"
                                       "20210603,11,11,10,10,500\n");
    r = Nyind(home + " data import SH688001 --day " + (dir.path() / "more.csv").string());
    ASSERT_EQ(r.status, 0) << r.err;
    const std::vector<CHisDay> stored = ny::ReadBarFile((dir.path() / "home/data/sh/day/688001.day").string());
    ASSERT_EQ(stored.size(), 3u);
    EXPECT_EQ(stored[1].m_fClose, 11.0f);
    EXPECT_EQ(stored[2].m_lTime, 20210603);
    EXPECT_NE(ReadText(dir.path() / "home/data/stocks.csv").find("SH688001," + U8("新股甲") + ",XGJ,A\n"), std::string::npos);
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
