#pragma once
// The translation of formula text into Chinese sentences, which the formula dialog shows while
// the user types. Each statement becomes one sentence built from the catalog: a word becomes its
// short name, a call whose row has a sentence pattern ("?的?日简单移动平均") has its translated
// arguments put into the pattern's "?" in the row's order, other calls become their short name,
// AND and OR become words, ":" and ":=" become "输出:" and "赋值:", and a word that names a
// library formula becomes its title. Calls nest: an inner call is translated when it closes and
// its text becomes a piece of the enclosing call's argument.
//
// The translation never fails and reports nothing: half-typed text gives a partial sentence,
// unknown words stand as written, a missing argument leaves its "?". It needs the loaded catalog
// (g_MyFunsMng) and reads the library for formula names. Use one object per thread; it keeps
// nothing of a statement beyond the next one. Results are GBK.
//
//     ny::FormulaTranslator(editor.m_pfnLexical).GetTranslate("X:=REF(C,1);")
//         == "X赋值:1日前的收盘价\r\n"

#include <vector>

#include "check/lexical.h"
#include "check/syntax_result.h"
#include "host/types.h"

struct FUN_ITEM;

// A piece of an argument of a call: the pieces of one argument, joined in order, are its text.
struct ParamItem {
    int nDepth;        // the running number of the call in its statement
    CString strValue;  // the translated piece
    int nArgIndex;     // the argument's index in that call, from 0
};

namespace ny {

// An open call of the translation: the syntax test's frame and the call's running number.
struct TranslateCallFrame : CallFrame {
    int nDepth = 0;
};

class FormulaTranslator {
public:
    // lexer is the editor's lexer entry point. Without one (null) every statement stands as
    // written.
    explicit FormulaTranslator(NyLexicalAnalysisFn lexer) : m_pfnLexical(lexer) {}

    // The sentences of a formula text, cut into statements as the syntax test cuts it: each
    // statement cut at a ";" gives its sentence and CR LF, a last one without ";" its sentence
    // alone.
    CString GetTranslate(const CString& text);
    // The sentence of one upper-cased statement. Tokens longer than 255 bytes are cut there; the
    // lexer reads at most NY_LEXICAL_MAX_TEXT bytes.
    CString MeasureForumaleEx(const char* statement);
    // The text of argument argIndex of the call numbered depth: all its pieces joined. With code
    // 101 to 105 (a row whose first argument selects a price) and argIndex 0, every piece passed
    // on the way that reads "0" to "3" first becomes the price's name.
    CString FindParaValue(int code, int depth, int argIndex);
    // Puts value into the first "?" of pattern at or behind start and sets next behind it. An
    // empty value leaves the "?" and sets next behind it (or one further if there is none); a
    // value with no "?" left is dropped.
    static CString ReplaceTran(const CString& pattern, int start, const CString& value, int& next);
    // Empties the pieces of the last statement.
    void ReleaseParam();

private:
    void OnToken(short code, const CString& text);
    void OnCall(const CString& token);
    void OnOpen();
    void OnClose();
    void OnComma();
    void OnWord(short code, const CString& text);
    // Appends text to the sentence, or, inside a call, to the current argument of the top call.
    void Emit(const CString& text);
    // The words of a call, once it is closed or when the statement ends with it open.
    CString CallText(const TranslateCallFrame& frame, bool closed);
    CString FamilyCallText(const TranslateCallFrame& frame);
    CString PatternText(const FUN_ITEM& row, int depth);
    CString PlainCallText(const TranslateCallFrame& frame, bool closed);

    NyLexicalAnalysisFn m_pfnLexical;
    std::vector<ParamItem> m_arParamItems;
    std::vector<TranslateCallFrame> m_arCallStack;
    int m_nCallCount = 0;
    bool m_bPending = false;  // a call's name was read; its "(" is still to come
    CString m_strResult;
};

}  // namespace ny
