#pragma once
// The codes with which the evaluator's levels (CalExp and every Read* method) end: 0 for
// success, the rest a failure that leaves the statement uncomputed. The numbers are part of the
// evaluator's contract and never change; EvalCodeName and EvalCodeText give each a name and a
// short text in words for tools that report a failed statement. Any thread may call them.

enum EvalCode : char {
    NY_EVAL_OK = 0,
    NY_EVAL_BAD_LENGTH = 1,           // the statement is empty, or 512 bytes or longer
    NY_EVAL_PARENTHESES = 3,          // unbalanced, missing or misplaced parentheses
    NY_EVAL_MISPLACED_OPERATOR = 4,   // an operator where an operand must stand, or two operands
    NY_EVAL_MISSING_TERM_OPERATOR = 5,  // two operands without "*", "/" (or in a condition)
    NY_EVAL_BAD_WORD = 6,             // an empty word or a malformed number
    NY_EVAL_UNKNOWN_WORD = 7,         // an unknown word, a call without "(", an uncomputed statement
    NY_EVAL_LONE_OPERATOR = 8,        // a lone "&", "|" or "!"
    NY_EVAL_UNTERMINATED = 10,        // the statement ends before a needed ")" or ","
    NY_EVAL_ARGUMENT_COUNT = 11,      // wrong number of arguments
    NY_EVAL_SERIES_NOT_ALLOWED = 12,  // a series where only a constant will do
    NY_EVAL_MISSING_SUM_OPERATOR = 13,  // two operands without "+", "-"
    NY_EVAL_EMPTY_RANGE = 14,         // the bar range became empty, or the function can't be used here
    NY_EVAL_BAD_PERIOD = 15,          // a period or similar argument is not whole or out of range
    NY_EVAL_CONSTANT_ARGUMENT = 16,   // a constant where a series or condition must stand
    NY_EVAL_ZERO_DIVISOR = 17,        // division by a constant zero, and the like
    NY_EVAL_DRAW_NESTED = 18,         // a draw command that no statement receives
    NY_EVAL_NO_DATA = 19,             // the stock's data is missing, or the function doesn't fit it
    NY_EVAL_TEXT_COLUMN = 20,         // a strategy column that holds no number
    NY_EVAL_NOT_FOUND = 21,           // a block or column not found
    NY_EVAL_OUT_OF_RANGE = 25,        // a number out of range
};

namespace ny {

// The constant's name without its prefix ("UNKNOWN_WORD"), or null for a number that is no code.
const char* EvalCodeName(int code);
// A short GBK text of what went wrong, or null for a number that is no code.
const char* EvalCodeText(int code);

}  // namespace ny
