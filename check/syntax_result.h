#pragma once
// Results of the syntax test: what a formula's statements contribute to the formula, and the
// result codes with which the test refuses a text. Also the working records of its two walks.

#include <vector>

#include "host/types.h"
#include "model/indicator.h"

// Result codes of the test and of the formula dialog's own checks. 0 is success.
enum : int {
    NY_TEST_OK = 0,
    NY_TEST_NO_NAME = -1,          // dialog: the formula has no name
    NY_TEST_NAME_TAKEN = -2,       // dialog: the name is taken
    NY_TEST_EMPTY = -3,            // nothing to test
    NY_TEST_BAD_FUNCTION = -4,     // a call of a name that is neither function nor indicator
    NY_TEST_BAD_ARGUMENTS = -5,    // wrong number of arguments to a catalog function
    NY_TEST_OPEN_CALL = -6,        // a call not closed at the end of the statement
    NY_TEST_BAD_MARKER = -7,       // a misplaced or nameless ":" or ":="
    NY_TEST_SECOND_ASSIGN = -8,    // a second ":="
    NY_TEST_UNKNOWN_WORD = -9,     // an unknown word, or a token above 256 bytes
    NY_TEST_TOO_MANY_ARGS = -10,   // more arguments than the called indicator has parameters
    NY_TEST_BAD_EXPRESSION = -11,  // unbalanced operands, operators or parentheses
    NY_TEST_BAD_CHARACTER = -12,   // a character outside the language
    NY_TEST_SECOND_UNKNOWN = -13,  // a second unknown word
    NY_TEST_BAD_START = -14,       // ":" behind a token that may not open a statement
    NY_TEST_NO_LEXER = -15,        // the lexer module could not be opened
    NY_TEST_PARAM_RANGE = -21,     // dialog: a parameter's minimum is not below its maximum
    NY_TEST_PARAM_DEFAULT = -22,   // dialog: a parameter's default is out of range
};

// Fixed sizes of the test.
constexpr int NY_TEST_MAX_TOKEN = 256;       // longest token
constexpr int NY_TEST_MAX_EXPRESSION = 511;  // longest expression of a statement
constexpr int NY_TEST_MAX_NAME = 32;         // longest statement name
constexpr int NY_TEST_MAX_HEAD = 575;        // longest text in front of a statement's marker

// What a statement contributes to the formula: the fields of one CExpression.
struct SYNLineItem {
    CString strName;    // empty for an unnamed output
    CString strExpress;
    int nType = 0;      // 0 assignment, else the line style (1 a plain line)
    int lColor = -1;
    int nWidth = 1;
};

struct SYNTestLineResult {
    int nResult = 0;
    SYNLineItem item;
    CString strError;   // the word the message names
};

struct SYNTestResult {
    int nResult = 0;
    CString strFormula;               // the whole text as typed
    std::vector<SYNLineItem> arItems;  // one per statement, in text order
    CString strError;
};

// An open call in the statement walk.
struct CallFrame {
    CString strName;
    int nParen = 1;  // open parentheses of this call, its own included
    int nArgs = 0;   // commas seen at the call's own depth
};

// An entry on an operator stack of the expression walk.
struct OPITEM {
    short nOp;      // token code of the operator or "("
    short nArity;   // always 2
    short nLevel;   // 2 for an operator, 0 for "("
};

// An entry of a postfix list.
enum : int { NY_AF_OPERAND = 0, NY_AF_OPERATOR = 1, NY_AF_CALL = 2 };
struct AfPressItem {
    int nKind = NY_AF_OPERAND;
    CString strText;  // the token text; for a call the call's name
    short nOp = 0;    // the operator's code, for an operator
};

// An open call in the expression walk, with the lists of its current argument.
struct CallExpress {
    CString strName;
    int nParen = 1;
    int nArgIndex = 0;
    std::vector<AfPressItem> arPostfix;
    std::vector<OPITEM> arOps;
};

namespace ny {

// Appends one statement to `indicator` for each item of a passed test, in order: name, text,
// type, colour and width from the item, nothing drawn yet. The statements belong to the indicator.
void AppendTestedStatements(const SYNTestResult& result, CIndicator& indicator);

}  // namespace ny
