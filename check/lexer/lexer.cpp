// The lexer module: cuts formula text into the tokens of check/lexical.h.
//
// Spelling rules:
// - A name is a run of letters, digits, "_", "." and double-byte characters outside the GBK
//   symbol area (lead bytes 0xA1 to 0xA9, where full-width punctuation lives). A run made of
//   digits and full stops only is a number instead: "0", or digits not starting with 0, then at
//   most one full stop and digits (".5" and "5." included). So "007" is read as three numbers and
//   "1.2.3" as two, which the syntax test refuses as it should; "5日线" is a name, as the evaluator
//   reads it.
// - AND and OR are operators. A name followed, after blanks, by "(" is a call (code 4), unless
//   the catalog declares that function without arguments (NOT, RAND, FINANCE ...): then the
//   parentheses are an operand of their own and the name is a word, which lets the test pass
//   NOT(X) and FINANCE(7). A name standing alone is a call if it is an argument-less catalog
//   function other than a market keyword, so that it counts as a value; every other name is a
//   word (code 22).
// - Relational operators: > 8, >= 9, < 10, <= 11, = and == 12, != 13; && and || share the codes
//   of AND and OR.
// - A quote is one token, two adjacent quotes one token of two bytes; a comment runs from "{" to
//   the first "}" or to the end. A lone "!", "&", "|", "}", ";" and any other byte without a
//   use in the language is a one-byte code 24 token; a double-byte symbol a two-byte one.
// - White space separates tokens; only painting reports it, as code 19, so that the tokens of a
//   painted line tile it.

#include <cstring>
#include <string>
#include <string_view>
#include <unordered_set>

#include "catalog/catalog_row.h"
#include "check/gbk_text.h"
#include "check/keywords.h"
#include "check/lexical.h"

#define NY_LEXICAL_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

bool IsAsciiLetter(unsigned char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool IsDigit(unsigned char c) { return c >= '0' && c <= '9'; }
bool IsBlank(unsigned char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// The names that decide between code 4 and code 22, read from the catalog's rows and the
// keyword list once.
class NameClasses {
public:
    static const NameClasses& Get() {
        static const NameClasses classes;
        return classes;
    }

    // An argument-less function of the catalog, by its bare name (FINANCE for FINANCE(7)).
    bool IsArgumentless(const std::string& upperName) const { return m_argumentless.count(upperName) > 0; }
    bool IsKeyword(const std::string& upperName) const { return m_keywords.count(upperName) > 0; }

private:
    NameClasses() {
        for (int nClass = NY_FUNCLASS_QUOTE; nClass < NY_FUNCLASS_LINE_COLOR; ++nClass) {
            for (const ny::CatalogRow& row : ny::CatalogRows(nClass)) {
                if (row.argCount != 0) continue;
                std::string_view name(row.name);
                m_argumentless.emplace(name.substr(0, name.find('(')));
            }
        }
        std::string_view list(NY_KEYWORD_LIST + 1);
        for (size_t comma; (comma = list.find(',')) != std::string_view::npos; list.remove_prefix(comma + 1))
            m_keywords.emplace(list.substr(0, comma));
    }

    std::unordered_set<std::string> m_argumentless;
    std::unordered_set<std::string> m_keywords;
};

class Lexer {
public:
    Lexer(const char* text, IMyLexicalAnalysis* sink, bool reportBlanks)
        : m_text(text, strnlen(text, NY_LEXICAL_MAX_TEXT)), m_sink(sink), m_reportBlanks(reportBlanks) {}

    void Run() {
        size_t pos = 0;
        while (pos < m_text.size()) {
            const auto [code, length] = ReadToken(pos);
            if (code != NY_TOKEN_BLANK || m_reportBlanks)
                m_sink->AddToken(code, static_cast<short>(pos), static_cast<short>(length));
            pos += length;
        }
    }

private:
    struct Token {
        short code;
        size_t length;
    };

    unsigned char At(size_t pos) const { return pos < m_text.size() ? static_cast<unsigned char>(m_text[pos]) : 0; }

    // Length of the double-byte character at pos, 0 if there is none.
    size_t DoubleByteAt(size_t pos) const {
        return ny::IsGbkLeadByte(At(pos)) && ny::IsGbkTrailByte(At(pos + 1)) ? 2 : 0;
    }
    bool IsSymbolArea(size_t pos) const { return At(pos) >= 0xA1 && At(pos) <= 0xA9; }

    // Length of the name character at pos, 0 if there is none.
    size_t NameCharAt(size_t pos) const {
        const unsigned char c = At(pos);
        if (IsAsciiLetter(c) || IsDigit(c) || c == '_' || c == '.') return 1;
        const size_t wide = DoubleByteAt(pos);
        return wide != 0 && !IsSymbolArea(pos) ? wide : 0;
    }

    Token ReadToken(size_t pos) const {
        const unsigned char c = At(pos);
        const unsigned char next = At(pos + 1);
        if (IsBlank(c)) {
            size_t end = pos;
            while (end < m_text.size() && IsBlank(At(end))) ++end;
            return {NY_TOKEN_BLANK, end - pos};
        }
        if (c == '{') {
            const size_t close = m_text.find('}', pos + 1);
            return {NY_TOKEN_COMMENT, (close == std::string_view::npos ? m_text.size() : close + 1) - pos};
        }
        if (c == '\'') return {NY_TOKEN_OTHER, next == '\'' ? size_t{2} : size_t{1}};
        if (NameCharAt(pos) != 0) return ReadNameOrNumber(pos);
        switch (c) {
            case '+': return {NY_TOKEN_PLUS, 1};
            case '-': return {NY_TOKEN_MINUS, 1};
            case '*': return {NY_TOKEN_TIMES, 1};
            case '/': return {NY_TOKEN_DIVIDE, 1};
            case '(': return {NY_TOKEN_LPAREN, 1};
            case ')': return {NY_TOKEN_RPAREN, 1};
            case ',': return {NY_TOKEN_COMMA, 1};
            case ':': return next == '=' ? Token{NY_TOKEN_ASSIGN, 2} : Token{NY_TOKEN_OUTPUT, 1};
            case '>': return next == '=' ? Token{NY_TOKEN_GREATER_EQUAL, 2} : Token{NY_TOKEN_GREATER, 1};
            case '<': return next == '=' ? Token{NY_TOKEN_LESS_EQUAL, 2} : Token{NY_TOKEN_LESS, 1};
            case '=': return {NY_TOKEN_EQUAL, next == '=' ? size_t{2} : size_t{1}};
            case '!': return next == '=' ? Token{NY_TOKEN_NOT_EQUAL, 2} : Token{NY_TOKEN_OTHER, 1};
            case '&': return next == '&' ? Token{NY_TOKEN_AND, 2} : Token{NY_TOKEN_OTHER, 1};
            case '|': return next == '|' ? Token{NY_TOKEN_OR, 2} : Token{NY_TOKEN_OTHER, 1};
            default: break;
        }
        const size_t wide = DoubleByteAt(pos);
        return {NY_TOKEN_OTHER, wide != 0 ? wide : 1};
    }

    Token ReadNameOrNumber(size_t pos) const {
        size_t end = pos;
        bool onlyDigitsAndStops = true;
        bool hasDigit = false;
        for (size_t step; (step = NameCharAt(end)) != 0; end += step) {
            const unsigned char c = At(end);
            hasDigit = hasDigit || IsDigit(c);
            onlyDigitsAndStops = onlyDigitsAndStops && (IsDigit(c) || c == '.');
        }
        if (!onlyDigitsAndStops) return ReadName(pos, end);
        if (!hasDigit) return {NY_TOKEN_OTHER, end - pos};
        const size_t number = NumberLength(pos);
        return number != 0 ? Token{NY_TOKEN_NUMBER, number} : Token{NY_TOKEN_OTHER, 1};
    }

    // "0", or digits not starting with 0; then at most one full stop and its digits. 0 when that
    // holds no digit, as a full stop in front of another one.
    size_t NumberLength(size_t pos) const {
        size_t end = pos;
        if (At(end) == '0') {
            ++end;
        } else {
            while (IsDigit(At(end))) ++end;
        }
        bool hasDigit = end > pos;
        if (At(end) == '.') {
            ++end;
            for (; IsDigit(At(end)); ++end) hasDigit = true;
        }
        return hasDigit ? end - pos : 0;
    }

    Token ReadName(size_t pos, size_t end) const {
        const std::string upper = ny::UpperGbk(m_text.substr(pos, end - pos));
        if (upper == "AND") return {NY_TOKEN_AND, end - pos};
        if (upper == "OR") return {NY_TOKEN_OR, end - pos};
        const NameClasses& classes = NameClasses::Get();
        size_t after = end;
        while (At(after) == ' ' || At(after) == '\t') ++after;
        const bool call = At(after) == '(' ? !classes.IsArgumentless(upper)
                                           : classes.IsArgumentless(upper) && !classes.IsKeyword(upper);
        return {call ? NY_TOKEN_CALL : NY_TOKEN_WORD, end - pos};
    }

    std::string_view m_text;
    IMyLexicalAnalysis* m_sink;
    bool m_reportBlanks;
};

void Analyse(const char* text, IMyLexicalAnalysis* sink, bool reportBlanks) {
    if (text == nullptr || sink == nullptr) return;
    Lexer(text, sink, reportBlanks).Run();
    sink->Finish();
}

}  // namespace

// Tokens of a statement or a line for the syntax test, the translation and the tips. White
// space gets no token.
NY_LEXICAL_EXPORT void MyLexicalAnalysis(const char* text, IMyLexicalAnalysis* sink) {
    Analyse(text, sink, false);
}

// Tokens of one line for painting. With a non-zero mode (the painter passes 1) white space gets
// tokens of code 19, so that the tokens tile the line; mode 0 analyses as MyLexicalAnalysis.
NY_LEXICAL_EXPORT void MyPainLexicalAnalysis(const char* text, IMyLexicalAnalysis* sink, int mode) {
    Analyse(text, sink, mode != 0);
}
