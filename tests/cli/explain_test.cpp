// The formula told in words on the command line: explain, check --explain and lib show.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "host/encoding.h"
#include "nyind_runner.h"

namespace nyind_test {
namespace {

std::string U8(const char* gbk) { return ny::GbkToUtf8(gbk); }

bool EndsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

TEST(NyindExplain, EachStatementWithItsSentenceAndAnyFailure) {
    const struct {
        const char* args;
        const char* input;
        int status;
        const char* outEnd;  // GBK
    } cases[] = {
        {"explain -", "A:=MA(C,5);\r\nB:FOO(A)\n", 1,
         "1. A:=MA(C,5)\n   = A赋值:收盘价的5日简单移动平均\n"
         "2. B:FOO(A)\n   = B输出:FOO(A)\n   ! 当前公式: FORMULA\n     FOO函数名错误\n"},
        {"explain -", "X:MA(C", 1, "1. X:MA(C\n   = X输出:收盘价的?日简单移动平均\n   ! 当前公式: FORMULA\n     函数式子不完整\n"},
        {"check --explain -", "A:C>O;", 0, "\n1. A:C>O\n   = A输出:收盘价>今开价\n"},
    };
    for (const auto& c : cases) {
        const RunResult r = Nyind(c.args, c.input);
        EXPECT_EQ(r.status, c.status) << c.args << r.err;
        EXPECT_TRUE(EndsWith(r.out, U8(c.outEnd))) << c.args << "\n" << r.out;
    }
}

TEST(NyindExplain, JsonAndEmptyText) {
    RunResult r = Nyind("explain --json -", "A:FINANCE(7)\n");
    ASSERT_EQ(r.status, 0) << r.err;
    const nlohmann::json out = nlohmann::json::parse(r.out);
    EXPECT_EQ(out["passed"], true);
    EXPECT_EQ(out["statements"][0]["statement"], "A:FINANCE(7)");
    EXPECT_EQ(out["statements"][0]["sentence"], U8("A输出:流通股本(万股)"));

    r = Nyind("explain -", " ; ");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find(U8("无编译内容")), std::string::npos) << r.err;
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
