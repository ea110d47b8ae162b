// The losses users met with damaged files, full disks, special files and several tools at once,
// each reproduced through the real binary: nothing is lost, and every failure is reported with
// exit status 1.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <functional>
#include <nlohmann/json.hpp>

#include "host/encoding.h"
#include "host/files.h"
#include "nyind_runner.h"
#include "platform/file_system.h"

namespace nyind_test {
namespace {

// A copy of the installation with one formula of the user's, KEEP.
class SafetyTest : public ::testing::Test {
protected:
    void SetUp() override {
        CopyInstallationBasics(m_home);
        ASSERT_EQ(Add("KEEP").status, 0);
    }
    std::string Home() const { return "--home " + m_home.string() + " "; }
    fs::path UserFile() const { return m_home / "defineuser/indi/nyuser.dat"; }
    std::string Formula(const std::string& name) const {
        const fs::path path = m_dir.path() / (name + ".fml");
        WriteText(path, "name: " + name + "\nkind: " + U8("技术指标") + "\n\n[source]\nA:MA(C,5);\n");
        return path.string();
    }
    RunResult Add(const std::string& name, const std::string& environment = "") const {
        return Nyind(Home() + "lib add " + Formula(name), "", environment);
    }
    // The names of the user's formulas, as `lib list` shows them, each followed by a blank.
    std::string UserNames() const {
        std::string names;
        for (const auto& f : nlohmann::json::parse(Nyind(Home() + "lib list --json").out))
            if (!f["system"].get<bool>()) names += f["name"].get<std::string>() + " ";
        return names;
    }
    size_t Temporaries(const fs::path& folder) const {
        size_t count = 0;
        for (const auto& entry : fs::directory_iterator(folder))
            count += entry.path().filename().string().find(".tmp-") != std::string::npos;
        return count;
    }

    TempDir m_dir;
    fs::path m_home = m_dir.path() / "home";
};

// The damage is done to a copy that holds KEEP; the file must be exactly as it was afterwards.
TEST_F(SafetyTest, ALibraryFileNotReadCompletelyIsNeverReplaced) {
    const auto patch = [](const fs::path& path, size_t at, const std::string& bytes) {
        std::string text = ReadText(path);
        text.replace(at, bytes.size(), bytes);
        WriteText(path, text);
    };
    const struct {
        const char* name;
        std::function<void(const fs::path& home, const fs::path& user)> damage;
        const char* reason;
    } rows[] = {
        {"user file with a bad magic", [&](auto&, auto& user) { patch(user, 4, "MYOK"); }, "its header is not that of"},
        {"more formulas counted than held", [&](auto&, auto& user) { patch(user, 2, std::string("\x05\x00", 2)); },
         "whole formulas of the 5"},
        {"user file cut short", [](auto&, auto& user) { fs::resize_file(user, fs::file_size(user) - 100); }, "whole formulas"},
        {"bytes behind the last formula", [](auto&, auto& user) { WriteText(user, ReadText(user) + std::string(50, '\0')); },
         "has 50 bytes behind"},
        {"system set with a bad magic", [](auto& home, auto&) { WriteText(home / "defineuser/indi/nysys.dat", "junk"); },
         "is not a formula file"},
        {"system set of zero length", [](auto& home, auto&) { WriteText(home / "defineuser/indi/nysys.dat", ""); },
         "is not a formula file"},
        {"user file replaced by a FIFO", [](auto&, auto& user) { fs::remove(user); mkfifo(user.c_str(), 0600); },
         "is not a regular file"},
    };
    for (const auto& row : rows) {
        TempDir copy;
        const fs::path home = copy.path() / "home";
        fs::copy(m_home, home, fs::copy_options::recursive);
        const fs::path user = home / "defineuser/indi/nyuser.dat";
        row.damage(home, user);
        const std::string before = fs::is_regular_file(user) ? ReadText(user) : "fifo";
        // A remove finds KEEP only if the damage spared it; either way nothing may be written.
        for (const std::string& command : {"lib add " + Formula("NEW"), std::string("lib remove KEEP")}) {
            const RunResult r = Nyind("--home " + home.string() + " " + command);
            EXPECT_EQ(r.status, 1) << row.name << ": " << command;
            if (command.find("add") != std::string::npos) {
                EXPECT_NE(r.err.find("not saved"), std::string::npos) << row.name << ": " << r.err;
                EXPECT_NE(r.err.find(row.reason), std::string::npos) << row.name << ": " << r.err;
            }
            EXPECT_EQ(fs::is_regular_file(user) ? ReadText(user) : "fifo", before) << row.name;
        }
    }
}

TEST_F(SafetyTest, TwentyWritersAtOnceLoseNothing) {
    std::string adds, removes, expected;
    for (int i = 1; i <= 20; ++i) {
        const std::string name = "F" + std::to_string(i);
        adds += kNyind + " " + Home() + "lib add " + Formula(name) + " >/dev/null 2>&1 || echo failed & ";
        removes += kNyind + " " + Home() + "lib remove " + name + " >/dev/null 2>&1 || echo failed & ";
    }
    const auto run = [](const std::string& commands) {
        TempDir io;
        std::system(("(" + commands + "wait) >" + (io.path() / "out").string()).c_str());
        return ReadText(io.path() / "out");
    };
    EXPECT_EQ(run(adds), "");
    const std::string names = UserNames();
    for (int i = 1; i <= 20; ++i) EXPECT_NE(names.find("F" + std::to_string(i) + " "), std::string::npos) << names;
    EXPECT_EQ(run(removes), "");
    EXPECT_EQ(UserNames(), "KEEP ");
    EXPECT_EQ(Temporaries(UserFile().parent_path()), 0u);
}

TEST_F(SafetyTest, AWriterThatCannotGetTheLockChangesNothing) {
    const std::string before = ReadText(UserFile());
    ny::FileLock held;
    std::string error;
    ASSERT_TRUE(held.Acquire(UserFile().string(), 1000, &error)) << error;
    const RunResult r = Add("NEW");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("is in use by another program"), std::string::npos) << r.err;
    EXPECT_EQ(ReadText(UserFile()), before);
}

// Each failure of the careful writer, injected into the real binary by a preloaded library.
TEST_F(SafetyTest, FailedWritesAreReportedAndKeepTheOldFiles) {
    const std::string csv = (m_dir.path() / "bars.csv").string();
    WriteText(csv, "date,open,high,low,close,volume\n20210701,10,11,9,10.5,1000\n");
    const fs::path day = m_home / "data/sh/day/600001.day";
    WriteText(day, ny::EncodeBars({}));
    const std::string exported = (m_dir.path() / "out.dat").string();
    const struct {
        std::string command;
        fs::path file;  // the file that must stay as it was
    } commands[] = {
        {"lib add " + Formula("NEW"), UserFile()},
        {"lib remove KEEP", UserFile()},
        {"lib export KEEP -o " + exported, exported},
        {"data import SH600001 --day " + csv, day},
    };
    for (const char* fault : {"create", "write", "fsync", "rename"}) {
        for (const auto& row : commands) {
            const std::string before = fs::exists(row.file) ? ReadText(row.file) : "missing";
            const RunResult r = Nyind(Home() + row.command, "",
                                      std::string("NY_FAULT=") + fault + " LD_PRELOAD=" + NY_FAULT_SHIM +
                                          " ASAN_OPTIONS=verify_asan_link_order=0");
            EXPECT_EQ(r.status, 1) << fault << ": " << row.command << "\n" << r.err;
            EXPECT_NE(r.err.find("cannot write " + row.file.string()), std::string::npos) << fault << ": " << r.err;
            EXPECT_EQ(fs::exists(row.file) ? ReadText(row.file) : "missing", before) << fault << ": " << row.command;
            EXPECT_EQ(Temporaries(row.file.parent_path()), 0u) << fault << ": " << row.command;
        }
    }
}

TEST_F(SafetyTest, DataImportRefusesToReplaceWhatItCannotRead) {
    const std::string csv = (m_dir.path() / "bars.csv").string();
    WriteText(csv, "date,open,high,low,close,volume\n20210701,10,11,9,10.5,1000\n");
    const CHisDay bar{.m_lTime = 20210630, .m_fOpen = 10, .m_fHigh = 10, .m_fLow = 10, .m_fClose = 10};
    CHisDay nan = bar;
    nan.m_fClose = std::nanf("");
    const fs::path stocks = m_home / "data/stocks.csv";
    const struct {
        const char* name;
        fs::path file;
        std::string contents;  // empty: a FIFO
        std::string args;
        const char* reason;
    } rows[] = {
        {"day file cut short", m_home / "data/sh/day/600001.day", ny::EncodeBars({bar, bar}).substr(0, 70),
         "SH600001", "600001.day: length 70 is not a multiple of 40"},
        {"day file with a NaN price", m_home / "data/sh/day/600001.day", ny::EncodeBars({bar, nan}), "SH600001",
         "600001.day: record 2: a price is not a number"},
        {"day file that is a FIFO", m_home / "data/sh/day/600001.day", "", "SH600001", "is not a regular file"},
        {"stock list that is a FIFO", stocks, "", "SH688999 --name NEWSTOCK", "stocks.csv is not a regular file"},
    };
    for (const auto& row : rows) {
        const std::string saved = ReadText(stocks);
        fs::create_directories(row.file.parent_path());
        fs::remove(row.file);
        if (row.contents.empty()) mkfifo(row.file.c_str(), 0600);
        else WriteText(row.file, row.contents);
        const RunResult r = Nyind(Home() + "data import " + row.args + " --day " + csv);
        EXPECT_EQ(r.status, 1) << row.name;
        EXPECT_NE(r.err.find(row.reason), std::string::npos) << row.name << ": " << r.err;
        EXPECT_NE(r.err.find("nothing imported"), std::string::npos) << row.name << ": " << r.err;
        if (!row.contents.empty()) EXPECT_EQ(ReadText(row.file), row.contents) << row.name;
        else EXPECT_TRUE(fs::is_fifo(row.file)) << row.name;
        fs::remove(row.file);
        WriteText(stocks, saved);
    }
}

// Special files are refused as runs.txt shows; a long file is refused without being read whole.
TEST_F(SafetyTest, OversizedInputIsRefused) {
    const fs::path big = m_dir.path() / "big.txt";
    WriteText(big, "A:C;\n" + std::string(70000, ' '));
    const RunResult r = Nyind(Home() + "check " + big.string());
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("is larger than 65536 bytes"), std::string::npos) << r.err;
}

TEST(NyindPickSafety, TheDefaultClockAllowsAMinutePick) {
    TempDir dir;
    LinkInstallation(dir.path() / "home");
    const std::string home = "--home " + (dir.path() / "home").string() + " ";
    RunResult r = Nyind(home + "pick --cond MACDJC --period 5min --codes SH600001,SH600002");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find(U8("总数: 2")), std::string::npos) << r.out;
    r = Nyind(home + "pick --cond MACDJC --codes SH600001", "",
              std::string("NY_FAULT=rename LD_PRELOAD=") + NY_FAULT_SHIM + " ASAN_OPTIONS=verify_asan_link_order=0");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find(U8("选股结果板块无法保存")), std::string::npos) << r.err;
}

TEST(NyindPickSafety, AStockWithADamagedMarketFileIsLeftOutAndCounted) {
    struct Row {
        const char* file;   // under data/sh/ of the installation
        size_t offset;      // of the float made NaN
        const char* options;
        const char* report;  // empty: the stock is picked as usual
    };
    const Row rows[] = {
        {"day/600001.day", 40 + 16, "", "600001.day: record 2: a price is not a number"},  // close of record 2
        {"power/600001.pwr", 8, " --power", "600001.pwr: record 1: a ratio, price or share count is not a number"},
        {"power/600001.pwr", 8, "", ""},  // without adjustment the records are not read
    };
    for (const Row& row : rows) {
        TempDir dir;
        const fs::path home = dir.path() / "home";
        LinkInstallation(home);
        // Shanghai's files of the installation stay untouched: the pick sees a folder of its own.
        fs::remove(home / "data/sh");
        for (const char* file : {"day/600001.day", "day/600002.day", "power/600001.pwr"}) {
            fs::create_directories((home / "data/sh" / file).parent_path());
            fs::copy(kInstall + "/data/sh/" + file, home / "data/sh" / file);
        }
        std::string damaged = ReadText(kInstall + "/data/sh/" + row.file);
        const float nan = std::nanf("");
        damaged.replace(row.offset, 4, reinterpret_cast<const char*>(&nan), 4);
        WriteText(home / "data/sh" / row.file, damaged);
        const RunResult r =
            Nyind("--home " + home.string() + " pick --cond MACDJC --codes SH600001,SH600002" + row.options);
        EXPECT_EQ(r.status, 0) << r.err;
        const bool leftOut = *row.report != '\0';
        if (leftOut) {
            EXPECT_NE(r.err.find(row.report), std::string::npos) << row.file << r.err;
        }
        EXPECT_EQ(leftOut, r.err.find("1 stocks left out: their bar or ex-rights files are damaged") != std::string::npos)
            << row.file << row.options << r.err;
        EXPECT_NE(r.out.find(U8("总数: 2")), std::string::npos) << r.out;
    }
}

}  // namespace
}  // namespace nyind_test
