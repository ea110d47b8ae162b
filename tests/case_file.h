#pragma once
// Tables of test cases kept as text files under tests/, UTF-8, one case a line; empty lines and
// lines starting with '#' are skipped. Two row forms:
// - free rows, walked by ForEachRow, often "TEXT -> EXPECTED" (SplitAtArrow);
// - named rows, read by ReadRows: fields separated by '|' and trimmed of blanks, the first field
//   naming the table, so that one file can hold the tables of several tests. Inside a field
//   \n \r \t \| \\ and \xHH stand for their bytes, and a field in double quotes keeps its blanks.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "host/encoding.h"

namespace testcases {

struct Row {
    std::string where;                // "file:line", for messages
    std::vector<std::string> fields;  // after the table's name

    const std::string& operator[](size_t i) const { return fields.at(i); }
    int Int(size_t i) const { return std::stoi(fields.at(i)); }
    // The field as the system's own GBK text; bytes that are not UTF-8 are taken as they stand.
    std::string Gbk(size_t i) const {
        std::string gbk;
        return ny::TryUtf8ToGbk(fields.at(i), &gbk) ? gbk : fields.at(i);
    }
    size_t size() const { return fields.size(); }
};

inline std::string Unescape(std::string field) {
    const size_t first = field.find_first_not_of(" \t"), last = field.find_last_not_of(" \t");
    field = first == std::string::npos ? std::string() : field.substr(first, last - first + 1);
    if (field.size() >= 2 && field.front() == '"' && field.back() == '"') field = field.substr(1, field.size() - 2);
    std::string out;
    for (size_t i = 0; i < field.size(); ++i) {
        if (field[i] != '\\' || i + 1 == field.size()) {
            out += field[i];
            continue;
        }
        const char c = field[++i];
        if (c == 'x' && i + 2 < field.size()) {
            out += static_cast<char>(std::stoi(field.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            out += c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : c;
        }
    }
    return out;
}

// Calls `visit` with each line of tests/<file> that is not empty or a comment, and its number.
inline void ForEachLine(const std::string& file, const std::function<void(const std::string&, int)>& visit) {
    std::ifstream in(NY_SOURCE_DIR "/tests/" + file);
    EXPECT_TRUE(in.good()) << "cannot read tests/" << file;
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (!line.empty() && line[0] != '#') visit(line, number);
    }
}

// Calls `row` with each row of tests/<file>, under a trace naming its file and line.
inline void ForEachRow(const std::string& file, const std::function<void(const std::string&)>& row) {
    ForEachLine(file, [&](const std::string& line, int number) {
        SCOPED_TRACE(file + ":" + std::to_string(number) + ": " + line);
        row(line);
    });
}

// Cuts a row "TEXT -> EXPECTED" at its first arrow; false for a row without one.
inline bool SplitAtArrow(const std::string& row, std::string* text, std::string* expected) {
    const size_t arrow = row.find(" ->");
    if (arrow == std::string::npos) return false;
    *text = row.substr(0, arrow);
    *expected = row.substr(std::min(row.size(), arrow + (row.compare(arrow, 4, " -> ") == 0 ? 4 : 3)));
    return true;
}

// The rows of `table` in tests/<file>; a missing file or table fails the test.
inline std::vector<Row> ReadRows(const std::string& file, const std::string& table) {
    std::vector<Row> rows;
    ForEachLine(file, [&](const std::string& line, int number) {
        if (line.find_first_not_of(" \t\r") == std::string::npos) return;
        std::vector<std::string> raw(1);
        for (size_t i = 0; i < line.size(); ++i) {
            if (line[i] == '|') raw.emplace_back();
            else if (line[i] == '\\' && i + 1 < line.size()) raw.back() += line.substr(i++, 2);
            else if (line[i] != '\r') raw.back() += line[i];
        }
        if (Unescape(raw[0]) != table) return;
        Row row{file + ":" + std::to_string(number), {}};
        for (size_t i = 1; i < raw.size(); ++i) row.fields.push_back(Unescape(raw[i]));
        rows.push_back(std::move(row));
    });
    EXPECT_FALSE(rows.empty()) << "no rows of table " << table << " in tests/" << file;
    return rows;
}

}  // namespace testcases
