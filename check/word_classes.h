#pragma once
// The word classes of the formula language: what a word of a formula is. They read the catalog,
// the library and the lists handed to them, never a window; the syntax test and the script editor
// share them. Nothing here owns what it returns: an indicator found stays the library's.

#include <vector>

#include "model/indicator.h"
#include "host/types.h"

namespace ny {

// The market keywords in the order of their list, read once; safe from any thread.
const std::vector<CString>& KeyWords();

// Word, without leading white space, is one of `keywords`; case counts.
bool IsKeyWord(const std::vector<CString>& keywords, const CString& word);
// The catalog has a row of that exact word (FINANCE(7), not FINANCE).
bool IsFunName(const CString& word);
// Word, without leading white space, names one of the parameters; case does not count.
bool IsParamName(const std::vector<CParam>& params, const CString& word);
// Word, without white space at either end, is one of `identifiers`.
bool IsIdentifyName(const std::vector<CString>& identifiers, const char* word);
// The library's indicator (of kind 0) that word refers to, or null. A dotted word names an
// indicator and one of its lines: kind 1, `indicator` and `line` in upper case. Otherwise kind
// is 2 and `indicator` the word as given.
CIndicator* IsIndicatorName(const char* word, char& kind, CString& indicator, CString& line);

}  // namespace ny
