#pragma once
// The syntax test: decides whether a formula's text is valid, says why not in a result code, and
// cuts a valid text into its statements (SYNLineItem). It works on three things only: the text
// handed to it, the list of statement names that have passed so far (`m_arIdentifiers` of the
// script editor, which the test fills) and the lexer's entry point. It needs no window, reads the
// catalog and the library, and computes nothing. One object serves one thread at a time.

#include <vector>

#include "check/lexical.h"
#include "check/syntax_result.h"
#include "model/indicator.h"
#include "host/types.h"

class CSyntaxChecker {
public:
    // `lexer` may be null: every test then fails with NY_TEST_NO_LEXER. Both arguments must
    // outlive the checker.
    CSyntaxChecker(NyLexicalAnalysisFn lexer, std::vector<CString>& identifiers)
        : m_pfnLexical(lexer), m_arIdentifiers(identifiers) {}

    // Tests a whole text and cuts it into statements; params are the formula's parameters.
    SYNTestResult GetTestResult(const CString& text, const std::vector<CParam>& params);
    // Tests one upper-cased statement. A statement that passes adds its name to the identifiers.
    SYNTestLineResult GetLineTestResult(const char* line, const std::vector<CParam>& params);
    // Tests that an expression reduces to one value, and each argument of its calls too.
    SYNTestLineResult CheckLineExpress(const char* express, const std::vector<CParam>& params);
    // The postfix list reduces to exactly one value: 1, else 0.
    static int IsValidAfExpress(const std::vector<AfPressItem>& items);
    // The stack holds an opening parenthesis: 1, else 0.
    static int CheckLParen(const std::vector<OPITEM>& ops);

    // The tokens of a text as the lexer cuts it.
    CMyLexicalAnaly Tokens(const CString& text) const;
    // The word classes over the identifiers held.
    bool IsIdentifyName(const char* word) const;

    std::vector<CString>& Identifiers() { return m_arIdentifiers; }

private:
    NyLexicalAnalysisFn m_pfnLexical;
    std::vector<CString>& m_arIdentifiers;
};
