#pragma once
// Runs the built nyind as a user would, and gives temporary installations to the tests that
// write.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "host/encoding.h"
#include "host/files.h"

namespace nyind_test {

namespace fs = std::filesystem;

inline const std::string kNyind = NY_BINARY_DIR "/cli/nyind";
inline const std::string kInstall = NY_BINARY_DIR "/install";
inline const std::string kFormulaSources = NY_SOURCE_DIR "/data/formulas";

// Literals of the tests are GBK (the build's execution character set); nyind speaks UTF-8.
inline std::string U8(const char* gbk) { return ny::GbkToUtf8(gbk); }

struct RunResult {
    int status = -1;
    std::string out, err;
};

inline std::string ReadText(const fs::path& path) {
    std::string bytes;
    ny::ReadWholeFile(path.string(), &bytes);
    return bytes;
}

inline void WriteText(const fs::path& path, const std::string& text) { ny::WriteFileAtomic(path.string(), text, nullptr, false); }

// A directory of its own for one test, removed afterwards. Unlike a host test's temporary
// installation it leaves the open installation alone: runs of nyind make them all the time.
class TempDir {
public:
    TempDir() {
        std::string pattern = (fs::temp_directory_path() / "nyind_test_XXXXXX").string();
        m_path = mkdtemp(pattern.data());
    }
    ~TempDir() {
        std::error_code ec;
        fs::remove_all(m_path, ec);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const fs::path& path() const { return m_path; }

private:
    fs::path m_path;
};

// A copy of the embedded installation's stock list, quotes, finance table and formula sets: enough for every
// command that does not read the bars of other stocks.
inline void CopyInstallationBasics(const fs::path& home) {
    fs::create_directories(home / "data");
    fs::copy(kInstall + "/data/stocks.csv", home / "data/stocks.csv");
    fs::copy(kInstall + "/data/quotes.csv", home / "data/quotes.csv");
    fs::copy(kInstall + "/data/finance.csv", home / "data/finance.csv");
    fs::create_directories(home / "defineuser/indi");
    fs::copy(kInstall + "/defineuser/indi", home / "defineuser/indi", fs::copy_options::recursive);
}

// A whole installation whose market files are links to the embedded one, and whose blocks and
// formula sets are copies: for the commands that read every stock and write a block.
inline void LinkInstallation(const fs::path& home) {
    fs::create_directories(home / "data");
    for (const auto& entry : fs::directory_iterator(kInstall + "/data")) {
        if (entry.path().filename() == "blocks")
            fs::copy(entry.path(), home / "data/blocks", fs::copy_options::recursive);
        else
            fs::create_symlink(entry.path(), home / "data" / entry.path().filename());
    }
    fs::copy(kInstall + "/defineuser", home / "defineuser", fs::copy_options::recursive);
}

// Runs nyind with the arguments (a shell fragment) and the given standard input; `environment`
// is put before the command ("NAME=value ...").
inline RunResult Nyind(const std::string& args, const std::string& input = std::string(),
                       const std::string& environment = std::string()) {
    TempDir io;
    WriteText(io.path() / "in", input);
    const std::string command = environment + " " + kNyind + " " + args + " <" + (io.path() / "in").string() + " >" +
                                (io.path() / "out").string() + " 2>" + (io.path() / "err").string();
    const int raw = std::system(command.c_str());
    RunResult result;
    result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    result.out = ReadText(io.path() / "out");
    result.err = ReadText(io.path() / "err");
    return result;
}

// The codes that `pick ARGS --json` picks over `home`, a linked installation made on first use.
inline std::set<std::string> PickedCodes(const fs::path& home, const std::string& args) {
    if (!fs::exists(home)) LinkInstallation(home);
    const RunResult r = Nyind("--home " + home.string() + " pick " + args + " --json");
    EXPECT_EQ(r.status, 0) << r.err;
    std::set<std::string> codes;
    const nlohmann::json out = nlohmann::json::parse(r.out);
    for (const auto& stock : out["stocks"]) codes.insert(stock["code"].get<std::string>());
    return codes;
}

}  // namespace nyind_test
