#include "host/group.h"

#include <algorithm>

void CGroup::AppendPy(std::vector<CString>& codes, char letter) {
    if (codes.empty()) codes.emplace_back();
    for (CString& code : codes) code.push_back(letter);
}

void CGroup::DoublePy(std::vector<CString>& codes, char letter) {
    // With a third reading the list already holds a copy per reading; each prefix gets the new
    // letter once.
    const size_t count = codes.size();
    for (size_t i = 0; i < count; ++i) {
        if (codes[i].empty()) continue;
        CString copy = codes[i];
        copy.back() = letter;
        if (std::find(codes.begin(), codes.end(), copy) == codes.end()) codes.push_back(copy);
    }
}
