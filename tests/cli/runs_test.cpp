// The runs of nyind in runs.txt: each row's command line, standard input, exit status and what its
// output must or must not hold. See the head of runs.txt for the columns.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>

#include "nyind_runner.h"
#include "tests/case_file.h"

namespace nyind_test {
namespace {

void Replace(std::string& text, const std::string& what, const std::string& by) {
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size()))
        text.replace(at, what.size(), by);
}

// One check of a row against the run: "out~text" (standard output holds it), "out!text" (does
// not), "out=text" (is exactly it), "out^text" (starts with it), "out$text" (ends with it); the
// same with "err" for the error output. "@name" instead of "out" checks the file of that name in
// the row's folder ("<none>" if it is not a regular file), and "@name#size" its size.
void Check(const RunResult& r, const fs::path& dir, const std::string& check, const std::string& where) {
    const size_t op = check.find_first_of("~!=^$#");
    ASSERT_NE(op, std::string::npos) << where;
    const std::string name = check.substr(0, op), text = check.substr(op + 1);
    const std::string stream = name == "err"   ? r.err
                               : name == "out" ? r.out
                               : fs::is_regular_file(dir / name.substr(1)) ? ReadText(dir / name.substr(1))
                                                                          : "<none>";
    const size_t found = stream.find(text);
    switch (check[op]) {
        case '~': EXPECT_NE(found, std::string::npos) << where << ": " << check << "\n" << stream; break;
        case '!': EXPECT_EQ(found, std::string::npos) << where << ": " << check << "\n" << stream; break;
        case '=': EXPECT_EQ(stream, text) << where; break;
        case '#': EXPECT_EQ(stream.size(), std::stoul(text)) << where << ": " << check; break;
        case '^': EXPECT_EQ(stream.substr(0, text.size()), text) << where; break;
        case '$':
            EXPECT_TRUE(stream.size() >= text.size() && stream.compare(stream.size() - text.size(), text.size(), text) == 0)
                << where << ": " << check << "\n" << stream;
            break;
        default: ADD_FAILURE() << where << ": no such check " << check;
    }
}

// A row's fields: command line, standard input, status, then its files ("<name=contents", written
// into the row's folder) and checks. In the command line {dir} is that folder, {dir}/fifo a FIFO
// in it, and {home} and {home2} copies of the installation's basics in it. A command line that
// begins with "+ " goes on in the folder of the row before.
TEST(NyindRuns, EachRowGivesItsStatusAndOutput) {
    std::unique_ptr<TempDir> dir;
    for (const testcases::Row& row : testcases::ReadRows("cli/runs.txt", "run")) {
        std::string args = row[0];
        if (args.rfind("+ ", 0) == 0) {
            args.erase(0, 2);
        } else {
            dir = std::make_unique<TempDir>();
            ASSERT_EQ(mkfifo((dir->path() / "fifo").c_str(), 0600), 0);
        }
        for (const char* home : {"home", "home2"}) {
            const std::string mark = std::string("{") + home + "}";
            if (args.find(mark) != std::string::npos && !fs::exists(dir->path() / home))
                CopyInstallationBasics(dir->path() / home);
            Replace(args, mark, (dir->path() / home).string());
        }
        Replace(args, "{dir}", dir->path().string());
        for (size_t i = 3; i < row.size(); ++i)
            if (row[i][0] == '<') WriteText(dir->path() / row[i].substr(1, row[i].find('=') - 1), row[i].substr(row[i].find('=') + 1));
        const RunResult r = Nyind(args, row[1]);
        EXPECT_EQ(r.status, row.Int(2)) << row.where << ": " << args << "\n" << r.err;
        for (size_t i = 3; i < row.size(); ++i)
            if (row[i][0] != '<') Check(r, dir->path(), row[i], row.where);
    }
}

}  // namespace
}  // namespace nyind_test
