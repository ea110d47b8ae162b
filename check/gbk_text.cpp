#include "check/gbk_text.h"

namespace ny {

std::string UpperGbk(std::string_view text) {
    std::string upper(text);
    for (size_t i = 0; i < upper.size(); ++i) {
        const auto byte = static_cast<unsigned char>(upper[i]);
        if (IsGbkLeadByte(byte) && i + 1 < upper.size() &&
            IsGbkTrailByte(static_cast<unsigned char>(upper[i + 1]))) {
            ++i;
        } else if (byte >= 'a' && byte <= 'z') {
            upper[i] = static_cast<char>(byte - 'a' + 'A');
        }
    }
    return upper;
}

std::string_view TrimBytes(std::string_view text, std::string_view bytes) {
    const size_t first = text.find_first_not_of(bytes);
    if (first == std::string_view::npos) return {};
    const size_t last = text.find_last_not_of(bytes);
    return text.substr(first, last - first + 1);
}

}  // namespace ny
