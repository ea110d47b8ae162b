// nyind data quotes / finance / blocks: good files land in the installation, a file with bad lines
// names each of them and leaves every file as it was.

#include <gtest/gtest.h>

#include "host/encoding.h"
#include "nyind_runner.h"

namespace nyind_test {
namespace {

TEST(NyindDataTables, ImportGoodFilesAndRefuseBadOnesWhole) {
    const struct {
        const char* command;
        const char* csv;
        int status;
        const char* file;                 // below the home
        std::vector<std::string> shown;  // in the output, the errors or the file after
    } rows[] = {
        {"quotes", "date=20210629\ncode,last,pe\nSH600000,12.5,30\n", 0, "data/quotes.csv",
         {"1 stocks imported", "date=20210629\n", "\nSH600000,", ",12.5,"}},
        {"quotes", "date=2021\ncode,last,bogus\nSH999999,1\nSH600000,x,2\nSZ000001,3,4\n", 1, "data/quotes.csv",
         {"csv:1: bad date", "csv:2: unknown column \"bogus\"", "csv:3: expected 3 fields", "csv:4: a value is not a number",
          "nothing imported"}},
        {"finance", "code,eps,equity\nSZ000001,0.75,123456\n", 0, "data/finance.csv", {"\nSZ000001,", ",123456,", ",0.75,"}},
        {"blocks", "category,block,code\n行业,新块,SH600000\n行业,新块,sz000001\n行业,新块,SH600000\n", 0,
         "data/blocks/行业/新块.blk", {"行业/新块: 2 stocks", "NYBK"}},
        {"blocks", "行业,a/b,SH600000\n行业,x\n,x,SH600000\n行业,x,SH999999\n", 1, "data/blocks/行业/x.blk",
         {"csv:1: a category or block may not", "csv:2: expected 3 fields", "csv:3: category and block must",
          "csv:4: unknown stock", "nothing imported"}},
    };
    TempDir dir;
    CopyInstallationBasics(dir.path() / "home");
    fs::copy(kInstall + "/data/finance.csv", dir.path() / "home/data/finance.csv");
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.command) + ": " + row.csv);
        // The sources are GBK; files and the terminal are UTF-8.
        const fs::path file = dir.path() / "home" / ny::GbkToUtf8(row.file);
        const std::string before = ReadText(file);
        WriteText(dir.path() / "in.csv", ny::GbkToUtf8(row.csv));
        const RunResult r = Nyind("--home " + (dir.path() / "home").string() + " data " + row.command + " " +
                                  (dir.path() / "in.csv").string());
        EXPECT_EQ(r.status, row.status) << r.err;
        const std::string after = ReadText(file);
        if (row.status != 0) {
            EXPECT_EQ(after, before);
        }
        for (const std::string& text : row.shown)
            EXPECT_NE((r.out + r.err + after).find(ny::GbkToUtf8(text)), std::string::npos) << text;
    }
    EXPECT_EQ(ReadText(dir.path() / "home" / ny::GbkToUtf8("data/blocks/行业/新块.blk")).size(), 84u + 8);
}

}  // namespace
}  // namespace nyind_test
