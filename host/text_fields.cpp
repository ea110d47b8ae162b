#include "host/text_fields.h"

#include <cerrno>
#include <cstdlib>

namespace ny {

std::string Trim(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos) return std::string();
    const size_t last = text.find_last_not_of(" \t\r");
    return text.substr(first, last - first + 1);
}

std::vector<std::string> SplitFields(const std::string& line) {
    std::vector<std::string> fields;
    size_t start = 0;
    for (;;) {
        const size_t comma = line.find(',', start);
        fields.push_back(Trim(line.substr(start, comma == std::string::npos ? std::string::npos : comma - start)));
        if (comma == std::string::npos) return fields;
        start = comma + 1;
    }
}

std::string UpperAscii(std::string text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

bool ParseFloat(const std::string& text, float* value) {
    if (text.empty()) return false;
    char* end = nullptr;
    errno = 0;
    const float parsed = std::strtof(text.c_str(), &end);
    if (errno != 0 || end != text.c_str() + text.size()) return false;
    *value = parsed;
    return true;
}

std::vector<NumberedLine> SplitTextLines(std::string text) {
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) text.erase(0, 3);
    std::vector<NumberedLine> lines;
    int number = 0;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        ++number;
        std::string line = Trim(text.substr(start, end - start));
        if (!line.empty() && line[0] != '#') lines.push_back({number, std::move(line)});
        start = end + 1;
    }
    return lines;
}

}  // namespace ny
