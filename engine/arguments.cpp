// Reading the arguments of a function call: the opening parenthesis and the comma count first,
// then each argument as an expression of its own with a private copy of the bar range.

#include "engine/eval_code.h"
#include "engine/eval_context.h"
#include "engine/eval_util.h"
#include "model/indicator.h"

char CIndicator::BeginCall(int argumentCount) {
    while (*Context().m_pCursor == ' ') ++Context().m_pCursor;
    if (*Context().m_pCursor != '(') return NY_EVAL_UNKNOWN_WORD;
    ++Context().m_pCursor;
    const unsigned char commas = static_cast<unsigned char>(CountCuma());
    if (commas == 255) return NY_EVAL_UNTERMINATED;
    if (commas != argumentCount - 1) return NY_EVAL_ARGUMENT_COUNT;
    return 0;
}

char CIndicator::ReadValueArgument(float* out, short* from, short* to, char* isSeries,
                                   char allowSeries, bool last) {
    char flag = static_cast<char>((allowSeries ? 1 : 0) + (last ? 2 : 0));
    const char rc = ReadExp(out, from, to, &flag, nullptr);
    *isSeries = flag;
    return rc;
}

char CIndicator::ReadConditionArgument(char* out, short* from, short* to, char* isSeries,
                                       char allowSeries, bool last) {
    char flag = static_cast<char>((allowSeries ? 1 : 0) + (last ? 2 : 0));
    const char rc = ReadLogical(out, from, to, &flag);
    *isSeries = flag;
    return rc;
}

char CIndicator::MergeRange(short* from, short* to, short argumentFrom, short argumentTo) {
    if (argumentFrom > *from) *from = argumentFrom;
    if (argumentTo < *to) *to = argumentTo;
    return *from > *to ? NY_EVAL_EMPTY_RANGE : 0;
}

char CIndicator::ReadSoleArgument(float* out, short* from, short* to, char* isSeries, char allowSeries) {
    if (const char rc = BeginCall(1)) return rc;
    return ReadValueArgument(out, from, to, isSeries, allowSeries, true);
}

char CIndicator::ReadSoleCondition(char* out, short* from, short* to, char* isSeries) {
    if (const char rc = BeginCall(1)) return rc;
    return ReadConditionArgument(out, from, to, isSeries, 1, true);
}
