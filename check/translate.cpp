// The translation of formula text into Chinese sentences: one walk over a statement's tokens with
// a stack of open calls, whose arguments are gathered as pieces and put into the catalog's
// sentence patterns when the call closes.

#include "check/translate.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "catalog/function_manager.h"
#include "check/gbk_text.h"
#include "check/word_classes.h"
#include "check/statement_cutting.h"

namespace ny {
namespace {

// A token's text is read up to this many bytes.
constexpr size_t kMaxTokenText = 255;

// The families whose argument chooses the row: FINANCE(7) has a row of its own.
bool IsFamilyCall(std::string_view name) { return name == "FINANCE" || name == "DYNAINFO" || name == "MFLOW"; }

bool SelectsPrice(int code) { return code >= NY_FUNCODE_PEAK && code <= NY_FUNCODE_ZIG; }

// The price that a selector argument 0 to 3 names; other texts stay.
CString PriceWords(const CString& selector) {
    static constexpr const char* kPrices[] = {"开盘价", "最高价", "最低价", "收盘价"};
    if (selector.size() == 1 && selector[0] >= '0' && selector[0] <= '3') return kPrices[selector[0] - '0'];
    return selector;
}

// The words for a word that names a library formula: its title (its name if it has none), and
// for a dotted word "的" and the line's name.
std::optional<CString> FormulaWords(const CString& word) {
    char kind = 0;
    CString indicator, line;
    const CIndicator* formula = IsIndicatorName(word.c_str(), kind, indicator, line);
    if (formula == nullptr) return std::nullopt;
    CString words = formula->m_strTitle.empty() ? formula->m_strName : formula->m_strTitle;
    if (kind == 1) words += "的" + line;
    return words;
}

}  // namespace

CString FormulaTranslator::GetTranslate(const CString& text) {
    CString sentences;
    for (const FormulaStatement& statement : CutStatements(text)) {
        sentences += MeasureForumaleEx(UpperGbk(statement.text).c_str());
        if (statement.cutAtSemicolon) sentences += "\r\n";
    }
    return sentences;
}

CString FormulaTranslator::MeasureForumaleEx(const char* statement) {
    ReleaseParam();
    m_arCallStack.clear();
    m_nCallCount = 0;
    m_bPending = false;
    m_strResult.clear();
    if (m_pfnLexical == nullptr) return statement;

    const std::string_view text(statement);
    CMyLexicalAnaly tokens;
    m_pfnLexical(statement, &tokens);
    const int count = tokens.GetTokenCount();
    for (int i = 0; i < count; ++i) {
        const LEX_TOKEN token = tokens.GetToken(static_cast<unsigned>(i));
        const size_t pos = std::min(static_cast<size_t>(token.nPos), text.size());
        const size_t length = std::min(static_cast<size_t>(token.nLen), kMaxTokenText);
        const CString tokenText(text.substr(pos, length));
        // The lexer gives FINANCE, DYNAINFO and MFLOW as words so that the syntax test passes
        // FINANCE(7); read in front of "(" they are calls, whose argument chooses the words.
        const bool familyCall = token.nType == NY_TOKEN_WORD && IsFamilyCall(tokenText) && i + 1 < count &&
                                tokens.GetToken(static_cast<unsigned>(i + 1)).nType == NY_TOKEN_LPAREN;
        OnToken(familyCall ? static_cast<short>(NY_TOKEN_CALL) : token.nType, tokenText);
    }
    // Calls left open end the sentence, innermost first, with their arguments as far as they came.
    while (!m_arCallStack.empty()) {
        m_strResult += CallText(m_arCallStack.back(), false);
        m_arCallStack.pop_back();
    }
    return std::exchange(m_strResult, CString());
}

void FormulaTranslator::OnToken(short code, const CString& text) {
    switch (code) {
        case NY_TOKEN_CALL: OnCall(text); break;
        case NY_TOKEN_LPAREN: OnOpen(); break;
        case NY_TOKEN_RPAREN: OnClose(); break;
        case NY_TOKEN_COMMA: OnComma(); break;
        case NY_TOKEN_OUTPUT: Emit("输出:"); break;
        case NY_TOKEN_ASSIGN: Emit("赋值:"); break;
        default: OnWord(code, text); break;
    }
}

void FormulaTranslator::OnCall(const CString& token) {
    m_bPending = true;
    ++m_nCallCount;
    const size_t first = token.find_first_not_of(" \r\n");
    const CString name = first == CString::npos ? CString() : token.substr(first);
    if (!IsFamilyCall(name)) {
        const FUN_ITEM* row = g_MyFunsMng.FindFun(name.c_str(), 1);
        if (row != nullptr && row->m_cArgCount == 0) {
            Emit(row->m_strShort);
            m_bPending = false;
            return;
        }
    }
    TranslateCallFrame frame;
    frame.strName = name;
    frame.nDepth = m_nCallCount;
    m_arCallStack.push_back(std::move(frame));
}

void FormulaTranslator::OnOpen() {
    if (m_bPending) {
        m_bPending = false;
        return;
    }
    if (!m_arCallStack.empty()) ++m_arCallStack.back().nParen;
    Emit("(");
}

void FormulaTranslator::OnClose() {
    if (m_arCallStack.empty()) {
        m_strResult += ")";
        return;
    }
    TranslateCallFrame& top = m_arCallStack.back();
    if (top.nParen > 1) {
        --top.nParen;
        Emit(")");
        return;
    }
    const CString text = CallText(top, true);
    m_arCallStack.pop_back();
    Emit(text);
}

void FormulaTranslator::OnComma() {
    if (m_arCallStack.empty()) {
        m_strResult += ",";
        return;
    }
    TranslateCallFrame& top = m_arCallStack.back();
    if (top.nParen == 1)
        ++top.nArgs;
    else
        Emit(",");
}

// Words, numbers, operators, quotes and comments alike: a catalog row or a library formula gives
// words, AND and OR are said in words, anything else stands as written.
void FormulaTranslator::OnWord(short code, const CString& text) {
    if (const FUN_ITEM* row = g_MyFunsMng.FindFun(text.c_str(), 0)) {
        Emit(row->m_strShort);
    } else if (const std::optional<CString> words = FormulaWords(text)) {
        Emit(*words);
    } else if (code == NY_TOKEN_AND) {
        Emit(" 并且 ");
    } else if (code == NY_TOKEN_OR) {
        Emit(" 或者 ");
    } else {
        Emit(text);
    }
}

void FormulaTranslator::Emit(const CString& text) {
    if (m_arCallStack.empty())
        m_strResult += text;
    else
        m_arParamItems.push_back(ParamItem{m_arCallStack.back().nDepth, text, m_arCallStack.back().nArgs});
}

CString FormulaTranslator::CallText(const TranslateCallFrame& frame, bool closed) {
    if (IsFamilyCall(frame.strName)) return FamilyCallText(frame);
    if (const FUN_ITEM* row = g_MyFunsMng.FindFun(frame.strName.c_str(), 0))
        return row->m_cTransKind == NY_TRANS_PATTERN ? PatternText(*row, frame.nDepth) : row->m_strShort;
    return PlainCallText(frame, closed);
}

// FINANCE(7) and its kin: the row of the name with its argument, else the call as written.
CString FormulaTranslator::FamilyCallText(const TranslateCallFrame& frame) {
    const CString argument = FindParaValue(0, frame.nDepth, 0);
    if (argument.empty()) return frame.strName + "(";
    const CString key = frame.strName + "(" + argument + ")";
    const FUN_ITEM* row = g_MyFunsMng.FindFun(key.c_str(), 0);
    return row != nullptr ? row->m_strShort : key;
}

// The row's pattern with the arguments in the places its order table gives them.
CString FormulaTranslator::PatternText(const FUN_ITEM& row, int depth) {
    const int count = std::clamp(static_cast<int>(row.m_cArgCount), 0, NY_FUN_MAX_ARGS);
    std::vector<std::pair<int, CString>> placed;  // rank in the sentence, argument text
    for (int i = 0; i < count; ++i) placed.emplace_back(row.m_nArgOrder[i], FindParaValue(row.m_nCode, depth, i));
    std::stable_sort(placed.begin(), placed.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    CString text = row.m_strPattern;
    int position = 0;
    for (const auto& [rank, value] : placed) text = ReplaceTran(text, position, value, position);
    return text;
}

// A call of an unknown name or of a library formula: its words and its arguments in parentheses.
CString FormulaTranslator::PlainCallText(const TranslateCallFrame& frame, bool closed) {
    CString text = FormulaWords(frame.strName).value_or(frame.strName) + "(";
    for (int i = 0; i < frame.nArgs; ++i) text += FindParaValue(0, frame.nDepth, i) + ",";
    text += FindParaValue(0, frame.nDepth, frame.nArgs);
    if (closed) text += ")";
    return text;
}

CString FormulaTranslator::FindParaValue(int code, int depth, int argIndex) {
    const bool selector = SelectsPrice(code) && argIndex == 0;
    CString value;
    for (ParamItem& item : m_arParamItems) {
        if (selector) item.strValue = PriceWords(item.strValue);
        if (item.nDepth == depth && item.nArgIndex == argIndex) value += item.strValue;
    }
    return value;
}

CString FormulaTranslator::ReplaceTran(const CString& pattern, int start, const CString& value, int& next) {
    const size_t mark = pattern.find('?', static_cast<size_t>(std::max(start, 0)));
    if (value.empty()) {
        next = mark == CString::npos ? next + 1 : static_cast<int>(mark) + 1;
        return pattern;
    }
    if (mark == CString::npos) return pattern;
    CString text = pattern;
    text.replace(mark, 1, value);
    next = static_cast<int>(mark + value.size());
    return text;
}

void FormulaTranslator::ReleaseParam() { m_arParamItems.clear(); }

}  // namespace ny
