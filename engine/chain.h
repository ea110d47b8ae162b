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

// Words of the chain that read as a series of zeros (POS, the fund-flow words, DDX...): kept so
// that formulas written elsewhere still run, but the catalog has no row for them, so the syntax
// test refuses them in a new formula rather than let it read zeros without a word.
bool IsReservedMarketWord(const char* word);

// Words the editor knows, as catalog rows or market keywords, that the chain leaves out on
// purpose: they fall through to parameters, statements and other formulas like any name, and
// otherwise fail as unknown words. Each gets a chain entry when its reader is written.
const std::vector<const char*>& WordsOutsideTheChain();

}  // namespace ny
