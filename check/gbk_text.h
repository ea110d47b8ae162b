#pragma once
// Byte-level helpers for GBK formula text, shared by the lexer module and the syntax test.

#include <string>
#include <string_view>

namespace ny {

// A byte that starts a double-byte character.
constexpr bool IsGbkLeadByte(unsigned char byte) { return byte >= 0x81 && byte <= 0xFE; }
// A byte that may stand second in a double-byte character.
constexpr bool IsGbkTrailByte(unsigned char byte) { return byte >= 0x40 && byte <= 0xFE && byte != 0x7F; }

// The text with a to z turned to upper case; the second bytes of double-byte characters, which
// may look like lower-case letters, stay as they are.
std::string UpperGbk(std::string_view text);

// The text without the bytes of `bytes` at both ends.
std::string_view TrimBytes(std::string_view text, std::string_view bytes);

// Blanks, tabs, CR and LF.
constexpr std::string_view kWhiteSpace = " \t\r\n";

}  // namespace ny
