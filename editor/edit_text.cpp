// Byte walks over GBK lines.

#include "editor/edit_text.h"

#include <cctype>

#include "editor/color_edit_wnd.h"

bool IsCharStart(const char* bytes, int length, int x) {
    if (x < 1 || x >= length) return true;
    int column = 0;
    while (column < x) column += ny::IsWideByte(static_cast<unsigned char>(bytes[column])) ? 2 : 1;
    return column == x;
}

namespace ny {

std::string NormaliseLineEnds(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r') {
            out += text[i];
        } else if (i + 1 >= text.size() || text[i + 1] != '\n') {
            out += '\n';
        }
    }
    return out;
}

bool IsSpaceByte(char byte) {
    const unsigned char c = static_cast<unsigned char>(byte);
    return c < 0x80 && std::isspace(c);
}

bool IsAlnumByte(char byte) {
    const unsigned char c = static_cast<unsigned char>(byte);
    return c < 0x80 && std::isalnum(c);
}

}  // namespace ny
