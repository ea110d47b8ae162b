#pragma once
// The host's blocks of stocks, and the helpers that build pinyin initials of names.

#include <vector>

#include "model/types.h"

class CGroup {
public:
    // Adds a letter to the end of every string; makes a first string if the list is empty.
    static void AppendPy(std::vector<CString>& codes, char letter);
    // Called right behind AppendPy for the same character with its other reading: adds, for
    // every string, a copy that ends in this letter instead.
    static void DoublePy(std::vector<CString>& codes, char letter);
};
