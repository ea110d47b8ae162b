#include "host/group.h"

void CGroup::AppendPy(std::vector<CString>& codes, char letter) {
    if (codes.empty()) codes.emplace_back();
    for (CString& code : codes) code.push_back(letter);
}

void CGroup::DoublePy(std::vector<CString>& codes, char letter) {
    const size_t count = codes.size();
    for (size_t i = 0; i < count; ++i) {
        CString copy = codes[i];
        if (!copy.empty()) copy.back() = letter;
        codes.push_back(copy);
    }
}
