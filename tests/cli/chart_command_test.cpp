// nyind chart as a user runs it: a picture of each format, and the refusals.

#include <gtest/gtest.h>

#include "nyind_runner.h"

namespace nyind_test {
namespace {

TEST(ChartCommand, WritesEachFormatAndRefusesWhatItCannotDo) {
    TempDir dir;
    const std::string base = "chart --formula MACD --stock SH600001 -o " + dir.path().string();
    struct Case {
        std::string args;
        int status;
        std::string header;  // the file's first bytes, empty: no file may exist
    } cases[] = {
        {base + "/macd.png", 0, "\x89PNG"},
        {base + "/macd.svg --theme light --last 40", 0, "<?xml"},
        {base + "/macd.pdf --size 640x480", 0, "%PDF"},
        {base + "/panes.png --pane VOL --pane KDJ", 0, "\x89PNG"},
        {base + "/nopane.png --pane NOSUCH", 1, ""},
        {base + "/macd.png/inner.png", 1, ""},  // a folder that is a file
        {base + "/macd.gif", 2, ""},
        {base + "/small.png --size 10x10", 2, ""},
    };
    for (const Case& c : cases) {
        const RunResult result = Nyind(c.args);
        EXPECT_EQ(result.status, c.status) << c.args << "\n" << result.err;
        const std::string written = c.args.substr(base.size(), c.args.find(' ', base.size()) - base.size());
        if (c.header.empty())
            EXPECT_FALSE(fs::is_regular_file(dir.path().string() + written)) << c.args;
        else
            EXPECT_EQ(ReadText(dir.path().string() + written).substr(0, c.header.size()), c.header) << c.args;
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()), 4);
}

}  // namespace
}  // namespace nyind_test
