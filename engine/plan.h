#pragma once
// What the word leaf learns about a statement's text the first time it reads it, kept with the
// formula so that later runs (the next stock of a pick, the next period of a chart) take each
// word as found instead of cutting it out of the text and looking it up again. A word's place in
// the line decides everything about it but the bars, so the plan is keyed by that place.
//
// The plan belongs to one formula object: a copy makes its own, so threads that evaluate copies
// share nothing. It is checked against the formula at the start of every run and dropped as a
// whole when a statement's name or text, or a parameter's name, has changed.

#include <string>
#include <vector>

#include "model/indicator.h"

namespace ny {

struct WordGroup;

// One word of a statement, as the word leaf resolved it.
struct PlannedWord {
    enum class Kind : char { Unread, Number, BuiltIn, Param, Statement, Other };
    Kind kind = Kind::Unread;
    short length = 0;                  // bytes of text the word takes
    char code = 0;                     // a number's code: 0, or the code of malformed text
    float value = 0.0f;                // a number's value
    const WordGroup* group = nullptr;  // the chain's group of a built-in word
    size_t index = 0;                  // the parameter or statement that the word names
    std::string word;                  // the word itself, for the readers
};

// The words of one statement, by their place in the line.
struct StatementPlan {
    CString name;
    CString text;
    std::vector<PlannedWord> words;
};

// Where an evaluation stands in a plan: the statement being read and the line it is read from.
// It belongs to the evaluation's context, so that the plan itself holds no run state.
struct PlanPlace {
    StatementPlan* statement = nullptr;
    const char* line = nullptr;
    // The planned word at the cursor, or null outside a planned line.
    PlannedWord* WordAt(const char* cursor) const;
};

class FormulaPlan {
public:
    // Keeps the plan if the formula's statements and parameters are those it was made for;
    // otherwise starts an empty one for them.
    void Match(const CIndicator& formula);
    // The plan of statement i read from `line`; words are looked up relative to the line.
    PlanPlace Enter(size_t statement, const char* line);

private:
    std::vector<CString> m_paramNames;
    std::vector<StatementPlan> m_statements;
};

}  // namespace ny
