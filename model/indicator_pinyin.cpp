// Pinyin initials of a formula's name: one string per combination of the readings of its
// polyphonic characters.
#include "host/group.h"
#include "host/pinyin.h"
#include "model/library.h"

namespace {

bool IsLeadByte(unsigned char byte) { return byte >= 0x80; }

// Position of the double-byte character `g` among the characters of `text` from `from` on,
// stepping character by character so that a trail byte and the next lead byte never match.
size_t FindCharacter(const CString& text, size_t from, const char* g) {
    for (size_t i = from; i + 1 < text.size(); i += IsLeadByte(text[i]) ? 2 : 1)
        if (text[i] == g[0] && text[i + 1] == g[1]) return i;
    return CString::npos;
}

size_t LeadingLetters(const CString& entry) {
    size_t count = 0;
    while (count < entry.size() && !IsLeadByte(entry[count])) ++count;
    return count;
}

bool FromPolyphones(std::vector<CString>& codes, const char* g) {
    for (const CString& entry : g_MyArrayppword) {
        const size_t letters = LeadingLetters(entry);
        if (entry.size() <= 1 || letters == 0 || FindCharacter(entry, letters, g) == CString::npos)
            continue;
        CGroup::AppendPy(codes, entry[letters - 1]);
        for (size_t j = letters - 1; j-- > 0;) CGroup::DoublePy(codes, entry[j]);
        return true;
    }
    return false;
}

unsigned CodeAt(const char* bytes) {
    return static_cast<unsigned char>(bytes[0]) << 8 | static_cast<unsigned char>(bytes[1]);
}

// The runs hold GB2312 codes only; a GBK extension code between two of them (trail byte below
// 0xA1) has no place in their order.
bool FromCodeRuns(std::vector<CString>& codes, const char* g) {
    const unsigned code = CodeAt(g);
    if ((code & 0xFF) < 0xA1) return false;
    bool found = false;
    for (const char* entry : g_MypPYCODE) {
        if ((CodeAt(entry) <= code && CodeAt(entry + 2) >= code) || CodeAt(entry + 4) == code) {
            CGroup::AppendPy(codes, entry[6]);
            found = true;
        }
    }
    return found;
}

bool FromExceptions(std::vector<CString>& codes, const char* g) {
    for (const CString& entry : g_MyArrayNotPpword) {
        if (entry.size() > 1 && FindCharacter(entry, 1, g) != CString::npos) {
            CGroup::AppendPy(codes, entry[0]);
            return true;
        }
    }
    return false;
}

}  // namespace

void g_MyMakeIndicatorPY(CIndicator* p) {
    std::vector<CString>& codes = p->m_arPYCodes;
    codes.clear();
    const CString& name = p->m_strName;
    for (size_t i = 0; i < name.size() && name[i] != 0;) {
        const char byte = name[i];
        if (IsLeadByte(byte)) {
            if (i + 1 < name.size()) {
                const char* g = name.data() + i;
                if (!FromPolyphones(codes, g) && !FromCodeRuns(codes, g)) FromExceptions(codes, g);
            }
            i += 2;
            continue;
        }
        if ((byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9')) CGroup::AppendPy(codes, byte);
        else if (byte >= 'a' && byte <= 'z') CGroup::AppendPy(codes, static_cast<char>(byte - 'a' + 'A'));
        ++i;
    }
}
