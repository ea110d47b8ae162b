#pragma once
// Byte walks over one GBK line of the editor, shared by editing, painting and tips. Every
// function stays inside the line whatever the bytes are: a lone lead byte at the end of a line
// counts as a character of its own.

#include <string>
#include <string_view>

namespace ny {

// A byte of 129 or more starts a double-byte character in the editor's cell grid.
constexpr bool IsWideByte(unsigned char byte) { return byte >= 129; }

// The length of the character that starts at x: 2 for a wide byte with a byte behind it, else 1.
inline int CharLengthAt(std::string_view line, int x) {
    const size_t at = static_cast<size_t>(x);
    return IsWideByte(static_cast<unsigned char>(line[at])) && at + 1 < line.size() ? 2 : 1;
}

// The text with CR LF and a lone CR turned into LF.
std::string NormaliseLineEnds(std::string_view text);

// The byte classes of the word motions and the double click, for any byte value: bytes of 128
// and more are neither white space nor alphanumeric.
bool IsSpaceByte(char byte);
bool IsAlnumByte(char byte);

}  // namespace ny
