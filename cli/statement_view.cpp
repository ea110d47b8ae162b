#include "cli/statement_view.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "cli/context.h"

namespace nyind {

std::string ColorText(int color) {
    if (color == -1) return std::string();
    char text[8];
    std::snprintf(text, sizeof text, "#%02X%02X%02X", color & 0xFF, (color >> 8) & 0xFF, (color >> 16) & 0xFF);
    return text;
}

std::string BarTimeText(int stamp, bool minute) {
    char text[24];
    if (minute) {
        const int date = 20000000 + stamp / 10000;
        std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d", date / 10000, date / 100 % 100, date % 100,
                      stamp / 100 % 100, stamp % 100);
    } else {
        std::snprintf(text, sizeof text, "%04d-%02d-%02d", stamp / 10000, stamp / 100 % 100, stamp % 100);
    }
    return text;
}

nlohmann::ordered_json JsonNumber(float value) {
    if (!std::isfinite(value)) return nullptr;
    char text[32];
    std::snprintf(text, sizeof text, "%.7g", static_cast<double>(value));
    return std::strtod(text, nullptr);
}

nlohmann::ordered_json StatementDefinition(const CExpression& s) {
    return {{"name", ToTerminal(s.m_strName)},
            {"text", ToTerminal(s.m_strText)},
            {"type", s.m_nType},
            {"color", s.m_lColor == -1 ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(ColorText(s.m_lColor))},
            {"width", s.m_nWidth}};
}

std::string StatementHeading(const CExpression& s) {
    return ToTerminal(s.m_strName.empty() ? s.m_strText : s.m_strName);
}

}  // namespace nyind
