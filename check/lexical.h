#pragma once
// The contract between the lexer module (libny_lexical.so, opened at run time by the script
// editor) and its clients: the syntax test, the translation, the painter and the tips.
//
// A client hands the lexer a text and a sink; the lexer calls AddToken once for each token, in the
// order of the text. Positions and lengths count bytes of the GBK text.

#include <vector>

// One token: its code, the offset of its first byte and its length in bytes.
struct LEX_TOKEN {
    short nType;
    short nPos;
    short nLen;
};

// Token codes. Codes not named here (19 to 21, 23, 25, 26) carry no meaning for the clients;
// the lexer uses 19 for white space, which only the painting entry point reports.
enum : short {
    NY_TOKEN_PLUS = 0,
    NY_TOKEN_MINUS = 1,          // the only operator that may also stand before its operand
    NY_TOKEN_TIMES = 2,
    NY_TOKEN_DIVIDE = 3,
    NY_TOKEN_CALL = 4,           // a name followed by "(", or an argument-less function alone
    NY_TOKEN_NUMBER = 5,
    NY_TOKEN_AND = 6,            // AND, &&
    NY_TOKEN_OR = 7,             // OR, ||
    NY_TOKEN_GREATER = 8,        // >
    NY_TOKEN_GREATER_EQUAL = 9,  // >=
    NY_TOKEN_LESS = 10,          // <  (a minus may follow it directly: X<-5)
    NY_TOKEN_LESS_EQUAL = 11,    // <=
    NY_TOKEN_EQUAL = 12,         // =, ==
    NY_TOKEN_NOT_EQUAL = 13,     // !=
    NY_TOKEN_OUTPUT = 14,        // :
    NY_TOKEN_ASSIGN = 15,        // :=
    NY_TOKEN_LPAREN = 16,
    NY_TOKEN_RPAREN = 17,
    NY_TOKEN_COMMA = 18,
    NY_TOKEN_BLANK = 19,         // a run of blanks, tabs, CR and LF (painting only)
    NY_TOKEN_WORD = 22,          // any other name, dotted ones included
    NY_TOKEN_OTHER = 24,         // quotes, and any byte that no other class claims
    NY_TOKEN_LOGIC_A = 27,       // reserved for further binary operators: the test reads them
    NY_TOKEN_LOGIC_B = 28,       // as relational ones; the lexer gives them to nothing
    NY_TOKEN_COMMENT = 29,       // from "{" to the first "}" or the end of the text
};

// The sink. The slot order of the virtual operations is part of the contract.
class IMyLexicalAnalysis {
public:
    virtual int GetTokenCount() = 0;
    virtual void AddToken(short nType, short nPos, short nLen) = 0;
    // The token number index; index must be below the count.
    virtual LEX_TOKEN* GetTokenPtr(unsigned index) = 0;
    // Removes token number index if there is one; always returns 1.
    virtual int RemoveToken(unsigned index) = 0;
    virtual void Finish() = 0;

protected:
    // Sinks are never deleted through the interface.
    ~IMyLexicalAnalysis() = default;
};

// The sink of all clients: a short-lived local object that collects the tokens in arrival order.
class CMyLexicalAnaly final : public IMyLexicalAnalysis {
public:
    int GetTokenCount() override;
    void AddToken(short nType, short nPos, short nLen) override;
    LEX_TOKEN* GetTokenPtr(unsigned index) override;
    int RemoveToken(unsigned index) override;
    void Finish() override;

    // A copy of token number index; index must be below the count.
    LEX_TOKEN GetToken(unsigned index) const;

private:
    std::vector<LEX_TOKEN> m_arTokens;
};

// The two entry points of the module, exported with C linkage under these names.
extern "C" {
typedef void (*NyLexicalAnalysisFn)(const char* text, IMyLexicalAnalysis* sink);
typedef void (*NyPaintLexicalAnalysisFn)(const char* text, IMyLexicalAnalysis* sink, int mode);
}
constexpr const char* NY_LEXICAL_ENTRY = "MyLexicalAnalysis";
constexpr const char* NY_PAINT_LEXICAL_ENTRY = "MyPainLexicalAnalysis";
// File name of the module.
constexpr const char* NY_LEXICAL_MODULE_FILE = "libny_lexical.so";

// The lexer reads at most this many bytes of a text: positions must fit a 16-bit token.
constexpr int NY_LEXICAL_MAX_TEXT = 32767;
