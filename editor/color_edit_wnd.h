#pragma once
// The script editor. So far it holds what the syntax test needs: the editor's text, the lexer
// module and the word classes; the test itself (check/syntax_checker.h) runs over those. None of
// it needs a window.

#include <vector>

#include "check/lexical.h"
#include "check/syntax_result.h"
#include "model/indicator.h"
#include "model/types.h"

class ColorEditWnd {
public:
    ColorEditWnd() = default;
    ~ColorEditWnd();
    ColorEditWnd(const ColorEditWnd&) = delete;
    ColorEditWnd& operator=(const ColorEditWnd&) = delete;

    // What creating the editor does for its language, after the font: loads the keywords and
    // opens the lexer module from the first place that has it (see LexicalModulePaths).
    void PrepareLanguage();

    // Opens the lexer module at `path` and looks up its entry points, closing any module opened
    // before. False, with both entry points null, if the file does not open; an entry point that
    // the module lacks stays null.
    BOOL OpenLexical(const CString& path);
    void CloseLexical();
    // Where the module is looked for, in order: beside the running program, in the installation
    // (g_MyExePath), in the build tree that this library was built with.
    static std::vector<CString> LexicalModulePaths();

    // The editor's text: its lines joined by blank, CR, LF.
    CString GetText() const;
    void SetText(const CString& text);

    // ---- Word classes. ----
    void LoadKeyWord();
    // Word, without leading white space, is a keyword; case counts.
    BOOL IsKeyWord(const CString& word) const;
    // The catalog has a row of that exact word (FINANCE(7), not FINANCE).
    BOOL IsFunName(const CString& word) const;
    // Word, without leading white space, names one of the parameters; case does not count.
    BOOL IsParamName(const std::vector<CParam>& params, const CString& word) const;
    // Word, without white space at either end, names a statement that passed the test so far.
    BOOL IsIdentifyName(const char* word) const;
    // The library's indicator (of kind 0) that word refers to, or null. A dotted word names an
    // indicator and one of its lines: kind 1, `indicator` and `line` in upper case. Otherwise kind
    // is 2 and `indicator` the word as given.
    CIndicator* IsIndicatorName(const char* word, char& kind, CString& indicator, CString& line) const;
    // Colour of a colour class: 1 numbers, 2 keywords, 3 functions, other plain text.
    int GetColor(int colourClass) const;

    // ---- Syntax test: CSyntaxChecker over the text, m_arIdentifiers and the lexer. ----
    // Tests the editor's text and cuts it into statements; params are the formula's parameters.
    SYNTestResult GetTestResult(const std::vector<CParam>& params);
    // Tests one upper-cased statement. A statement that passes adds its name to m_arIdentifiers.
    SYNTestLineResult GetLineTestResult(const char* line, const std::vector<CParam>& params);
    // Tests that an expression reduces to one value, and each argument of its calls too.
    SYNTestLineResult CheckLineExpress(const char* express, const std::vector<CParam>& params);
    // The postfix list reduces to exactly one value.
    static int IsValidAfExpress(const std::vector<AfPressItem>& items);
    // The stack holds an opening parenthesis.
    static int CheckLParen(const std::vector<OPITEM>& ops);

    // ---- Translation. ----
    // The sentences of the editor's text, one line per statement (see ny::FormulaTranslator).
    // Run after each keystroke; never fails.
    CString GetTranslate();

    // The lexer module and its entry points; null when it did not open.
    void* m_hLexical = nullptr;
    NyLexicalAnalysisFn m_pfnLexical = nullptr;
    NyPaintLexicalAnalysisFn m_pfnPaintLexical = nullptr;

    std::vector<CString> m_arKeyWords;
    // Names of the statements of the current formula that have passed the test so far.
    std::vector<CString> m_arIdentifiers;

    // Colours, red in the low byte.
    int m_crText = 0x000000;
    int m_crNumber = 0x0080FF;
    int m_crKeyWord = 0x009600;
    int m_crFunction = 0xC08000;

private:
    CString m_strText;
};
