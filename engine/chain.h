#pragma once
// The chain of built-in words that the word leaf tries before parameters, statements and other
// formulas. Its order decides what shadows what; each group names the reader that takes over the
// cursor behind the word, whether the leaf marks the result as a series before calling it, and
// whether the word needs series permission.

#include <vector>

#include "model/indicator.h"

namespace ny {

using FunctionReader = char (CIndicator::*)(char* word, float* out, short* from, short* to,
                                            char permission, char* isSeries);
using DrawReader = char (CIndicator::*)(char* word, float* out, short* from, short* to,
                                        char permission, char* isSeries, CExpression* expr);

struct WordGroup {
    std::vector<const char*> words;
    FunctionReader reader;    // null for a family this build does not evaluate
    DrawReader drawReader;    // readers that also receive the statement
    bool setsSeriesFlag;
    bool needsSeries;
};

// The first group of the chain that holds the word, or null.
const WordGroup* FindBuiltInWord(const char* word);

// All groups in chain order.
const std::vector<WordGroup>& BuiltInChain();

}  // namespace ny
