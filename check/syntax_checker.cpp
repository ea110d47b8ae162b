// The syntax test: cuts a formula into statements (GetTestResult), walks
// each statement's tokens with a stack of open calls (GetLineTestResult), and walks the expression
// once more in postfix form to see that every argument and the whole reduce to one value
// (CheckLineExpress). It computes nothing.

#include <algorithm>
#include <array>
#include <string_view>

#include "catalog/function_manager.h"
#include "check/gbk_text.h"
#include "check/statement_cutting.h"
#include "check/syntax_checker.h"
#include "check/word_classes.h"

namespace {

// Functions whose arguments may hold any text: words, odd characters, strings.
constexpr std::array<std::string_view, 12> kTextFunctions = {
    "DRAWTEXT", "STRATEGY", "STRCAT", "MODULESORT", "INMODULE", "DRAWTEXT_FIX",
    "DRAWTEXT_OFFSET", "DRAWNUMBER", "INFOFILE", "DRAWBMP", "DRAWGBK", "STRING"};

bool IsTextFunction(std::string_view name) {
    return std::find(kTextFunctions.begin(), kTextFunctions.end(), name) != kTextFunctions.end();
}

bool IsQuotePair(std::string_view text) { return text.size() >= 2 && text[0] == '\'' && text[1] == '\''; }
bool IsLoneQuote(std::string_view text) { return text == "'"; }

// A catalog function that takes no arguments: its name is a value by itself.
bool IsArgumentless(const CString& name) {
    const FUN_ITEM* row = g_MyFunsMng.FindFun(name.c_str(), 1);
    return row != nullptr && row->m_cArgCount == 0;
}

// Two hexadecimal digits; an invalid digit ends the number with what was read so far.
int HexPair(std::string_view digits) {
    int value = 0;
    for (char c : digits) {
        int digit;
        if (c >= '0' && c <= '9') digit = c - '0';
        else if (c >= 'A' && c <= 'F') digit = c - 'A' + 10;
        else if (c >= 'a' && c <= 'f') digit = c - 'a' + 10;
        else break;
        value = value * 16 + digit;
    }
    return value;
}

// COLOR followed by six hexadecimal digits that read blue, green, red.
bool IsColourLiteral(std::string_view text) { return text.size() == 11 && text.substr(0, 5) == "COLOR"; }
int ColourLiteralValue(std::string_view text) {
    return HexPair(text.substr(5, 2)) << 16 | HexPair(text.substr(7, 2)) << 8 | HexPair(text.substr(9, 2));
}

// The name a statement defines: the text in front of its marker, without a comment in front.
CString StatementName(std::string_view head) {
    const size_t close = head.find('}');
    if (head.find('{') != std::string_view::npos && close != std::string_view::npos)
        head = head.substr(close + 1);
    return CString(ny::TrimBytes(head, ny::kWhiteSpace));
}

std::string_view TokenText(std::string_view text, const LEX_TOKEN& token) {
    return text.substr(static_cast<size_t>(token.nPos), static_cast<size_t>(token.nLen));
}

// ---------------------------------------------------------------------------------------------
// The statement walk: the statement's form, names, argument counts and draw attributes.
class StatementWalk {
public:
    StatementWalk(CSyntaxChecker& checker, const char* line, const std::vector<CParam>& params)
        : m_checker(checker), m_statement(line), m_params(params) {}

    SYNTestLineResult Run() {
        if (m_statement.size() > static_cast<size_t>(NY_LEXICAL_MAX_TEXT)) {
            Fail(NY_TEST_BAD_EXPRESSION, m_statement);
            return m_result;
        }
        CMyLexicalAnaly tokens = m_checker.Tokens(m_statement);
        for (int i = 0; i < tokens.GetTokenCount(); ++i)
            if (!Step(i, tokens.GetToken(static_cast<unsigned>(i)))) return m_result;
        CheckEnd();
        if (m_result.nResult == NY_TEST_OK) CutAndCheck();
        return m_result;
    }

private:
    void Fail(int code, const CString& error) {
        m_result.nResult = code;
        m_result.strError = error;
    }
    bool Known(const CString& word) const {
        return ny::IsParamName(m_params, word) || m_checker.IsIdentifyName(word.c_str());
    }
    CIndicator* Indicator(const CString& word) const {
        char kind;
        CString indicator, line;
        return ny::IsIndicatorName(word.c_str(), kind, indicator, line);
    }
    void SetName(int pos, const CString& word) {
        m_namePending = true;
        m_namePos = pos;
        m_word = word;
    }

    // One token; false ends the statement at once.
    bool Step(int i, const LEX_TOKEN& token) {
        if (token.nLen > NY_TEST_MAX_TOKEN) {
            Fail(NY_TEST_UNKNOWN_WORD, CString());
            return false;
        }
        const CString text(TokenText(m_statement, token));
        const bool first = i == 0;
        switch (token.nType) {
            case NY_TOKEN_COMMENT: break;
            case NY_TOKEN_NUMBER: m_badStart |= first; break;
            case NY_TOKEN_CALL: if (!m_inString) OnCall(text, first); break;
            case NY_TOKEN_LPAREN: if (!m_inString) OnOpen(first); break;
            case NY_TOKEN_RPAREN: if (!m_inString) OnClose(first); break;
            case NY_TOKEN_COMMA: if (!m_inString) OnComma(first); break;
            case NY_TOKEN_OUTPUT: m_badStart |= first; if (!m_inString) OnOutput(token); break;
            case NY_TOKEN_ASSIGN: m_badStart |= first; if (!m_inString) OnAssign(token); break;
            case NY_TOKEN_WORD:
                if (m_inString) break;
                if (m_frames.empty()) OnWordAtTop(token, text);
                else OnWordInCall(token, text);
                break;
            case NY_TOKEN_OTHER: return OnOther(text);
            default: break;
        }
        return true;
    }

    void OnCall(const CString& name, bool first) {
        m_parenPending = true;
        m_frames.push_back(CallFrame{name, 1, 0});
        if (IsArgumentless(name)) {
            m_frames.pop_back();
            m_parenPending = false;
            m_badStart |= first;
        }
    }

    void OnOpen(bool first) {
        if (m_parenPending) {
            m_parenPending = false;
            return;
        }
        if (!m_frames.empty()) ++m_frames.back().nParen;
        m_badStart |= first;
    }

    void OnClose(bool first) {
        if (!m_frames.empty()) {
            CallFrame& frame = m_frames.back();
            if (frame.nParen == 1) {
                CheckCallArguments(frame);
                m_frames.pop_back();
            } else {
                --frame.nParen;
            }
        }
        m_badStart |= first;
    }

    void CheckCallArguments(const CallFrame& frame) {
        const int arguments = frame.nArgs + 1;
        if (const FUN_ITEM* row = g_MyFunsMng.FindFun(frame.strName.c_str(), 1)) {
            if (row->m_cArgCount != arguments) Fail(NY_TEST_BAD_ARGUMENTS, frame.strName);
        } else if (const CIndicator* indicator = Indicator(frame.strName)) {
            // An indicator may be called with fewer arguments than it has parameters.
            if (static_cast<int>(indicator->m_arParams.size()) < arguments)
                Fail(NY_TEST_TOO_MANY_ARGS, frame.strName);
        } else {
            Fail(NY_TEST_BAD_FUNCTION, frame.strName);
        }
    }

    void OnComma(bool first) {
        if (!m_frames.empty() && m_frames.back().nParen == 1) ++m_frames.back().nArgs;
        m_badStart |= first;
    }

    void OnOutput(const LEX_TOKEN& token) {
        if (!m_frames.empty() || m_outputPos >= 0) {
            Fail(NY_TEST_BAD_MARKER, m_statement);
        } else {
            m_outputPos = token.nPos;
            m_outputLen = token.nLen;
            // An output needs a new name in front of it; a known word left m_word empty.
            if (m_word.empty()) Fail(NY_TEST_BAD_MARKER, m_statement);
        }
        if (m_badStart) Fail(NY_TEST_BAD_START, m_statement);
    }

    void OnAssign(const LEX_TOKEN& token) {
        if (!m_frames.empty()) {
            Fail(NY_TEST_BAD_MARKER, m_statement);
        } else if (m_assignPos >= 0) {
            Fail(NY_TEST_SECOND_ASSIGN, m_statement);
        } else {
            m_assignPos = token.nPos;
            m_assignLen = token.nLen;
            if (m_namePending && Known(m_word)) {
                m_namePending = false;
                m_namePos = 0;
            }
        }
        if (m_badStart) Fail(NY_TEST_BAD_MARKER, m_statement);
    }

    void OnWordAtTop(const LEX_TOKEN& token, const CString& text) {
        if (const FUN_ITEM* row = g_MyFunsMng.FindFun(text.c_str(), 1)) {
            if (row->m_cClass == NY_FUNCLASS_LINE_COLOR) ReadAttribute(*row, token, text);
            return;
        }
        if (IsColourLiteral(text)) {
            m_colorPos = token.nPos;
            m_colorValue = ColourLiteralValue(text);
            return;
        }
        if (Known(text)) return;
        if (Indicator(text) == nullptr && !m_word.empty() && m_namePending)
            Fail(NY_TEST_SECOND_UNKNOWN, text);
        else
            SetName(token.nPos, text);
    }

    void ReadAttribute(const FUN_ITEM& row, const LEX_TOKEN& token, const CString& text) {
        switch (row.m_cAttrKind) {
            case NY_ATTR_COLOR:
                m_colorPos = token.nPos;
                m_colorValue = row.m_lValue;
                break;
            case NY_ATTR_WIDTH: {
                // The digit behind LINETHICK; without one, whatever byte stands there.
                const size_t digit = static_cast<size_t>(token.nPos) + 9;
                m_thickPos = token.nPos;
                m_thick = (digit < m_statement.size() ? m_statement[digit] : '\0') - '0';
                break;
            }
            case NY_ATTR_STYLE:
                m_stylePos = token.nPos;
                m_styleValue = row.m_lValue;
                m_noDraw = m_noDraw || text == "NODRAW";
                break;
            default: break;
        }
    }

    void OnWordInCall(const LEX_TOKEN& token, const CString& text) {
        if (IsTextFunction(m_frames.back().strName)) {
            m_namePending = false;
        } else if (g_MyFunsMng.FindFun(text.c_str(), 1) == nullptr && !Known(text) &&
                   Indicator(text) == nullptr && !ny::IsKeyWord(ny::KeyWords(), text)) {
            SetName(token.nPos, text);
        }
    }

    // Quotes open and close strings; any other odd character is allowed only in the arguments of
    // a text function, and in DRAWTEXT only in its third.
    bool OnOther(const CString& text) {
        if (IsQuotePair(text)) {
            m_inString = false;
        } else if (IsLoneQuote(text)) {
            m_inString = !m_inString;
        } else {
            const bool allowed = !m_frames.empty() && IsTextFunction(m_frames.back().strName) &&
                                 (m_frames.back().strName != "DRAWTEXT" || m_frames.back().nArgs == 2);
            if (!allowed) {
                Fail(NY_TEST_BAD_CHARACTER, m_statement);
                return false;
            }
        }
        return true;
    }

    void CheckEnd() {
        if (!m_frames.empty()) {
            m_result.nResult = NY_TEST_OPEN_CALL;
            m_frames.clear();
        }
        if (m_namePending && m_result.nResult == NY_TEST_OK) {
            // The last unknown word may stand only in front of the marker: it is the name that the
            // statement defines.
            const bool definesName = (m_assignPos > 0 && m_namePos < m_assignPos) ||
                                     (m_outputPos > 0 && m_namePos < m_outputPos);
            if (!definesName) Fail(NY_TEST_UNKNOWN_WORD, m_word);
        }
    }

    void CutAndCheck() {
        const int size = static_cast<int>(m_statement.size());
        int start = 0;
        int end = size;
        if (m_assignPos >= 0) {
            start = m_assignPos + m_assignLen;
        } else {
            if (m_outputPos >= 0) start = m_outputPos + m_outputLen;
            int attribute = 0;
            for (int pos : {m_colorPos, m_thickPos, m_stylePos})
                if (pos > 0 && (attribute == 0 || pos < attribute)) attribute = pos;
            if (attribute > 0) end = attribute - 1;  // drops the comma in front of it
        }
        const CString express = m_statement.substr(static_cast<size_t>(start),
                                                   static_cast<size_t>(std::max(end - start, 0)));
        if (express.size() > static_cast<size_t>(NY_TEST_MAX_EXPRESSION)) {
            Fail(NY_TEST_BAD_EXPRESSION, express);
            return;
        }
        const SYNTestLineResult checked = m_checker.CheckLineExpress(express.c_str(), m_params);
        m_result.nResult = checked.nResult;
        m_result.strError = checked.strError;
        if (m_result.nResult == NY_TEST_OK) FillItem(express);
    }

    void FillItem(const CString& express) {
        SYNLineItem& item = m_result.item;
        item.strExpress = express;
        const int marker = m_assignPos >= 0 ? m_assignPos : m_outputPos;
        if (marker >= 0) {
            const std::string_view head = std::string_view(m_statement).substr(0, static_cast<size_t>(marker));
            item.strName = StatementName(head);
            if (head.size() > static_cast<size_t>(NY_TEST_MAX_HEAD) ||
                item.strName.size() > static_cast<size_t>(NY_TEST_MAX_NAME)) {
                Fail(NY_TEST_BAD_MARKER, m_statement);
                return;
            }
            m_checker.Identifiers().push_back(item.strName);
        }
        if (m_assignPos >= 0) {
            item.nType = NY_STYLE_ASSIGNMENT;
            return;
        }
        item.lColor = m_colorPos > 0 ? m_colorValue : -1;
        item.nWidth = m_thickPos > 0 ? m_thick : 1;
        if (m_noDraw && m_outputPos >= 0) item.nWidth = 0;
        item.nType = m_stylePos > 0 ? m_styleValue : NY_STYLE_LINE;
    }

    CSyntaxChecker& m_checker;
    const CString m_statement;
    const std::vector<CParam>& m_params;
    SYNTestLineResult m_result;

    std::vector<CallFrame> m_frames;
    bool m_inString = false;
    bool m_parenPending = false;
    bool m_badStart = false;  // the first token may not open a statement
    bool m_namePending = false;
    CString m_word;           // the last unknown word
    int m_namePos = -1;
    int m_outputPos = -1, m_outputLen = -1;
    int m_assignPos = -1, m_assignLen = -1;
    int m_colorPos = -1, m_thickPos = -1, m_stylePos = -1;
    int m_colorValue = 0, m_thick = 0, m_styleValue = 0;
    bool m_noDraw = false;
};

// ---------------------------------------------------------------------------------------------
// The expression walk: postfix lists with one operator level, one list per open call.
class ExpressionWalk {
public:
    ExpressionWalk(CSyntaxChecker& checker, const char* express, const std::vector<CParam>& params)
        : m_checker(checker), m_express(express), m_params(params) {}

    SYNTestLineResult Run() {
        SYNTestLineResult result;
        if (!Walk()) {
            result.nResult = NY_TEST_BAD_EXPRESSION;
            result.strError = m_express;
        }
        return result;
    }

private:
    std::vector<AfPressItem>& Postfix() { return m_calls.empty() ? m_postfix : m_calls.back().arPostfix; }
    std::vector<OPITEM>& Ops() { return m_calls.empty() ? m_ops : m_calls.back().arOps; }
    void AppendOperand(const CString& text, int kind = NY_AF_OPERAND) {
        Postfix().push_back(AfPressItem{kind, text, 0});
    }

    bool Walk() {
        CMyLexicalAnaly tokens = m_checker.Tokens(m_express);
        const int count = tokens.GetTokenCount();
        short prev = -1;
        for (int i = 0; i < count; ++i) {
            const LEX_TOKEN token = tokens.GetToken(static_cast<unsigned>(i));
            if (!Step(token, CString(TokenText(m_express, token)), prev)) return false;
            prev = token.nType;
        }
        if (!Drain(m_ops, m_postfix)) return false;
        // A comment alone is a valid statement.
        if (count == 1 && m_sawComment) return true;
        return CSyntaxChecker::IsValidAfExpress(m_postfix) != 0;
    }

    static bool IsOperator(short code) {
        return (code >= NY_TOKEN_PLUS && code <= NY_TOKEN_DIVIDE) ||
               (code >= NY_TOKEN_AND && code <= NY_TOKEN_NOT_EQUAL) || code == NY_TOKEN_LOGIC_A ||
               code == NY_TOKEN_LOGIC_B;
    }

    bool Step(const LEX_TOKEN& token, const CString& text, short prev) {
        const short code = token.nType;
        if (code == NY_TOKEN_COMMENT) {
            m_sawComment = true;
            return true;
        }
        if (code == NY_TOKEN_OTHER) {
            OnQuote(text);
            return true;
        }
        // Inside a string every other token is text.
        if (m_inString) return true;
        if (IsOperator(code)) return OnOperator(code, prev);
        switch (code) {
            case NY_TOKEN_NUMBER: AppendOperand(text); return true;
            case NY_TOKEN_WORD: OnWord(text); return true;
            case NY_TOKEN_CALL: OnCall(text); return true;
            case NY_TOKEN_LPAREN: OnOpen(); return true;
            case NY_TOKEN_RPAREN: return OnClose();
            case NY_TOKEN_COMMA: return OnComma();
            default: return true;
        }
    }

    void OnQuote(const CString& text) {
        if (IsQuotePair(text) || (IsLoneQuote(text) && m_inString)) {
            m_inString = false;
            AppendOperand(text);
        } else if (IsLoneQuote(text)) {
            m_inString = true;
        }
    }

    void OnWord(const CString& text) {
        char kind;
        CString indicator, line;
        if (ny::IsKeyWord(ny::KeyWords(), text) || m_checker.IsIdentifyName(text.c_str()) ||
            ny::IsParamName(m_params, text) ||
            (!m_calls.empty() && IsTextFunction(m_calls.back().strName)) ||
            ny::IsIndicatorName(text.c_str(), kind, indicator, line) != nullptr)
            AppendOperand(text);
    }

    // All operators share one level; a minus may open a list, and may follow the operator of
    // code 10, as a sign.
    bool OnOperator(short code, short prev) {
        std::vector<OPITEM>& ops = Ops();
        if (Postfix().empty()) {
            if (code != NY_TOKEN_MINUS) return false;
            AppendOperand("0");
        } else if (prev == NY_TOKEN_LESS && code == NY_TOKEN_MINUS) {
            AppendOperand("0");
        }
        if (!ops.empty() && ops.back().nLevel >= 2) {
            Postfix().push_back(AfPressItem{NY_AF_OPERATOR, CString(), ops.back().nOp});
            ops.pop_back();
        }
        ops.push_back(OPITEM{code, 2, 2});
        return true;
    }

    void OnCall(const CString& name) {
        m_funcPending = true;
        if (IsArgumentless(name)) {
            m_funcPending = false;
            AppendOperand(name, NY_AF_CALL);
            return;
        }
        CallExpress call;
        call.strName = name;
        m_calls.push_back(std::move(call));
    }

    void OnOpen() {
        if (m_funcPending) {
            m_funcPending = false;
            return;
        }
        if (!m_calls.empty()) ++m_calls.back().nParen;
        Ops().push_back(OPITEM{NY_TOKEN_LPAREN, 2, 0});
    }

    bool OnClose() {
        if (!m_calls.empty() && m_calls.back().nParen == 1) {
            CallExpress& call = m_calls.back();
            if (!Drain(call.arOps, call.arPostfix) || !CSyntaxChecker::IsValidAfExpress(call.arPostfix))
                return false;
            const CString name = call.strName;
            m_calls.pop_back();
            AppendOperand(name, NY_AF_CALL);
            return true;
        }
        if (!m_calls.empty()) --m_calls.back().nParen;
        return CloseParenthesis(Ops(), Postfix());
    }

    // Moves the operators of a parenthesis to the postfix list and drops its "(".
    static bool CloseParenthesis(std::vector<OPITEM>& ops, std::vector<AfPressItem>& postfix) {
        if (!CSyntaxChecker::CheckLParen(ops)) return false;
        while (ops.back().nOp != NY_TOKEN_LPAREN) {
            postfix.push_back(AfPressItem{NY_AF_OPERATOR, CString(), ops.back().nOp});
            ops.pop_back();
        }
        ops.pop_back();
        return true;
    }

    // Every argument is a complete expression of its own; a comma at the top level separates
    // nothing here.
    bool OnComma() {
        if (m_calls.empty()) return true;
        CallExpress& call = m_calls.back();
        if (!Drain(call.arOps, call.arPostfix) || !CSyntaxChecker::IsValidAfExpress(call.arPostfix))
            return false;
        call.arOps.clear();
        call.arPostfix.clear();
        ++call.nArgIndex;
        return true;
    }

    // Moves all operators to the postfix list; a parenthesis left open fails.
    static bool Drain(std::vector<OPITEM>& ops, std::vector<AfPressItem>& postfix) {
        while (!ops.empty()) {
            const short op = ops.back().nOp;
            if (op == NY_TOKEN_LPAREN || op == NY_TOKEN_RPAREN) return false;
            postfix.push_back(AfPressItem{NY_AF_OPERATOR, CString(), op});
            ops.pop_back();
        }
        return true;
    }

    CSyntaxChecker& m_checker;
    const CString m_express;
    const std::vector<CParam>& m_params;

    std::vector<AfPressItem> m_postfix;
    std::vector<OPITEM> m_ops;
    std::vector<CallExpress> m_calls;
    bool m_funcPending = false;
    bool m_inString = false;
    bool m_sawComment = false;
};

// Tests one statement of the text and records its outcome; false when it failed.
bool TestStatement(CSyntaxChecker& checker, std::string_view statement, const std::vector<CParam>& params,
                   SYNTestResult& result) {
    const SYNTestLineResult line = checker.GetLineTestResult(ny::UpperGbk(statement).c_str(), params);
    result.nResult = line.nResult;
    result.strError = line.strError;
    if (line.nResult != NY_TEST_OK) return false;
    result.arItems.push_back(line.item);
    return true;
}

SYNTestLineResult NoLexer() {
    SYNTestLineResult result;
    result.nResult = NY_TEST_NO_LEXER;
    return result;
}

}  // namespace

SYNTestResult CSyntaxChecker::GetTestResult(const CString& text, const std::vector<CParam>& params) {
    SYNTestResult result;
    result.strFormula = text;
    // Text of nothing but blanks, line ends and ";" holds no statement.
    if (ny::TrimBytes(text, " \t\r\n;").empty()) {
        result.nResult = NY_TEST_EMPTY;
        return result;
    }
    if (m_pfnLexical == nullptr) {
        result.nResult = NY_TEST_NO_LEXER;
        return result;
    }
    m_arIdentifiers.clear();

    for (const ny::FormulaStatement& statement : ny::CutStatements(text))
        if (!TestStatement(*this, statement.text, params, result)) break;
    return result;
}

SYNTestLineResult CSyntaxChecker::GetLineTestResult(const char* line, const std::vector<CParam>& params) {
    if (m_pfnLexical == nullptr) return NoLexer();
    return StatementWalk(*this, line, params).Run();
}

SYNTestLineResult CSyntaxChecker::CheckLineExpress(const char* express, const std::vector<CParam>& params) {
    if (m_pfnLexical == nullptr) return NoLexer();
    return ExpressionWalk(*this, express, params).Run();
}

int CSyntaxChecker::IsValidAfExpress(const std::vector<AfPressItem>& items) {
    int depth = 0;
    for (const AfPressItem& item : items) {
        if (item.nKind != NY_AF_OPERATOR) {
            ++depth;
        } else {
            if (depth < 2) return 0;
            --depth;
        }
    }
    return depth == 1 ? 1 : 0;
}

int CSyntaxChecker::CheckLParen(const std::vector<OPITEM>& ops) {
    return std::any_of(ops.begin(), ops.end(), [](const OPITEM& op) { return op.nOp == NY_TOKEN_LPAREN; }) ? 1 : 0;
}

CMyLexicalAnaly CSyntaxChecker::Tokens(const CString& text) const {
    CMyLexicalAnaly tokens;
    m_pfnLexical(text.c_str(), &tokens);
    return tokens;
}

bool CSyntaxChecker::IsIdentifyName(const char* word) const { return ny::IsIdentifyName(m_arIdentifiers, word); }
