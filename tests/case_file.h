#pragma once
// Tables of test cases kept as text files under tests/, UTF-8: one case a line, its fields
// separated by '|' and trimmed of blanks; blank lines and lines starting with '#' are skipped.
// The first field names the table, so that one file can hold the tables of several tests.
// Inside a field \n \r \t \| \\ and \xHH stand for their bytes, and a field in double quotes
// keeps its blanks.

#include <gtest/gtest.h>

#include <fstream>
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

// The rows of `table` in tests/<file>; a missing file or table fails the test.
inline std::vector<Row> ReadRows(const std::string& file, const std::string& table) {
    std::ifstream in(NY_SOURCE_DIR "/tests/" + file);
    EXPECT_TRUE(in.good()) << "cannot read tests/" << file;
    std::vector<Row> rows;
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (line.find_first_not_of(" \t\r") == std::string::npos || line[0] == '#') continue;
        std::vector<std::string> raw(1);
        for (size_t i = 0; i < line.size(); ++i) {
            if (line[i] == '|') raw.emplace_back();
            else if (line[i] == '\\' && i + 1 < line.size()) raw.back() += line.substr(i++, 2);
            else if (line[i] != '\r') raw.back() += line[i];
        }
        if (Unescape(raw[0]) != table) continue;
        Row row{file + ":" + std::to_string(number), {}};
        for (size_t i = 1; i < raw.size(); ++i) row.fields.push_back(Unescape(raw[i]));
        rows.push_back(std::move(row));
    }
    EXPECT_FALSE(rows.empty()) << "no rows of table " << table << " in tests/" << file;
    return rows;
}

}  // namespace testcases
