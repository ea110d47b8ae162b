#pragma once
// Reads the tables of cases kept as text files under tests/: one row a line, blank lines and
// lines starting with "#" left out, each row checked under a trace naming its file and line.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <string>

namespace nytest {

// Calls `row` with each row of the file tests/<path>.
inline void ForEachRow(const std::string& path, const std::function<void(const std::string&)>& row) {
    std::ifstream file(NY_SOURCE_DIR "/tests/" + path);
    EXPECT_TRUE(file.is_open()) << path;
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        if (line.empty() || line[0] == '#') continue;
        SCOPED_TRACE(path + ":" + std::to_string(number) + ": " + line);
        row(line);
    }
}

// Cuts a row "TEXT -> EXPECTED" at its first arrow; false for a row without one.
inline bool SplitAtArrow(const std::string& row, std::string* text, std::string* expected) {
    const size_t arrow = row.find(" ->");
    if (arrow == std::string::npos) return false;
    *text = row.substr(0, arrow);
    *expected = row.substr(std::min(row.size(), arrow + (row.compare(arrow, 4, " -> ") == 0 ? 4 : 3)));
    return true;
}

}  // namespace nytest
