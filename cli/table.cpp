#include "cli/table.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace nyind {

size_t DisplayWidth(const std::string& utf8) {
    size_t width = 0;
    for (size_t i = 0; i < utf8.size();) {
        const unsigned char lead = static_cast<unsigned char>(utf8[i]);
        const size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        uint32_t code = length == 1 ? lead : lead & (0x3F >> (length - 1));
        for (size_t k = 1; k < length && i + k < utf8.size(); ++k)
            code = (code << 6) | (static_cast<unsigned char>(utf8[i + k]) & 0x3F);
        const bool wide = (code >= 0x1100 && code <= 0x115F) || (code >= 0x2E80 && code <= 0xA4CF) ||
                          (code >= 0xAC00 && code <= 0xD7A3) || (code >= 0xF900 && code <= 0xFAFF) ||
                          (code >= 0xFE30 && code <= 0xFE4F) || (code >= 0xFF00 && code <= 0xFF60) ||
                          (code >= 0xFFE0 && code <= 0xFFE6);
        width += wide ? 2 : 1;
        i += length;
    }
    return width;
}

std::string TextTable::Render() const {
    std::vector<size_t> widths(m_header.size(), 0);
    auto measure = [&](const std::vector<std::string>& row) {
        for (size_t c = 0; c < row.size() && c < widths.size(); ++c)
            widths[c] = std::max(widths[c], DisplayWidth(row[c]));
    };
    measure(m_header);
    for (const auto& row : m_rows) measure(row);
    std::string out;
    auto emit = [&](const std::vector<std::string>& row) {
        std::string line;
        for (size_t c = 0; c < widths.size(); ++c) {
            const std::string cell = c < row.size() ? row[c] : std::string();
            const std::string pad(widths[c] - DisplayWidth(cell), ' ');
            if (c > 0) line += "  ";
            line += c >= m_rightFrom ? pad + cell : cell + pad;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out += line + "\n";
    };
    emit(m_header);
    for (const auto& row : m_rows) emit(row);
    return out;
}

std::string CsvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

std::string TextTable::RenderCsv() const {
    std::string out;
    auto emit = [&](const std::vector<std::string>& row) {
        for (size_t c = 0; c < row.size(); ++c) out += (c > 0 ? "," : "") + CsvField(row[c]);
        out += "\n";
    };
    emit(m_header);
    for (const auto& row : m_rows) emit(row);
    return out;
}

int DecimalsFor(double largest) { return largest >= 100000 ? 0 : largest >= 1000 ? 2 : 3; }

std::string FormatNumber(double value, int decimals) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
    return buffer;
}

}  // namespace nyind
