#pragma once
// Output forms of nyind: an aligned text table for people, CSV for programs, and numbers
// formatted alike in both. All text is UTF-8.

#include <string>
#include <vector>

namespace nyind {

class TextTable {
public:
    explicit TextTable(std::vector<std::string> header) : m_header(std::move(header)) {}
    void AddRow(std::vector<std::string> row) { m_rows.push_back(std::move(row)); }
    // Columns from `first` on are aligned to the right (numbers).
    void AlignRightFrom(size_t first) { m_rightFrom = first; }
    size_t RowCount() const { return m_rows.size(); }
    std::string Render() const;
    std::string RenderCsv() const;

private:
    std::vector<std::string> m_header;
    std::vector<std::vector<std::string>> m_rows;
    size_t m_rightFrom = SIZE_MAX;
};

// Columns a UTF-8 text takes on a terminal: two for the wide characters of the CJK ranges.
size_t DisplayWidth(const std::string& utf8);

// A CSV field, quoted when it holds a comma, a quote or a line break.
std::string CsvField(const std::string& text);

// The number of decimals that suit a column whose largest magnitude is `largest`.
int DecimalsFor(double largest);
std::string FormatNumber(double value, int decimals);

}  // namespace nyind
