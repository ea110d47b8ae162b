// The script editor: its text, the lexer module it opens, and the syntax test over them.

#include "editor/color_edit_wnd.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>

#include "check/syntax_checker.h"
#include "check/translate.h"
#include "check/word_classes.h"
#include "host/global.h"

namespace {

// The directory of the running program, with a trailing '/'; empty if it can't be read.
CString ProgramDirectory() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof(path) - 1);
    if (length <= 0) return {};
    const CString program(path, static_cast<size_t>(length));
    const size_t slash = program.rfind('/');
    return slash == CString::npos ? CString() : program.substr(0, slash + 1);
}

}  // namespace

ColorEditWnd::~ColorEditWnd() { CloseLexical(); }

void ColorEditWnd::PrepareLanguage() {
    LoadKeyWord();
    for (const CString& path : LexicalModulePaths())
        if (OpenLexical(path)) return;
}

std::vector<CString> ColorEditWnd::LexicalModulePaths() {
    std::vector<CString> paths;
    const CString programDirectory = ProgramDirectory();
    if (!programDirectory.empty()) paths.push_back(programDirectory + NY_LEXICAL_MODULE_FILE);
    if (!g_MyExePath.empty()) paths.push_back(g_MyExePath + NY_LEXICAL_MODULE_FILE);
#ifdef NY_LEXICAL_BUILD_PATH
    paths.push_back(NY_LEXICAL_BUILD_PATH);
#endif
    return paths;
}

BOOL ColorEditWnd::OpenLexical(const CString& path) {
    CloseLexical();
    m_hLexical = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (m_hLexical == nullptr) return FALSE;
    m_pfnLexical = reinterpret_cast<NyLexicalAnalysisFn>(dlsym(m_hLexical, NY_LEXICAL_ENTRY));
    m_pfnPaintLexical =
        reinterpret_cast<NyPaintLexicalAnalysisFn>(dlsym(m_hLexical, NY_PAINT_LEXICAL_ENTRY));
    return TRUE;
}

void ColorEditWnd::CloseLexical() {
    m_pfnLexical = nullptr;
    m_pfnPaintLexical = nullptr;
    if (m_hLexical != nullptr) dlclose(m_hLexical);
    m_hLexical = nullptr;
}

CString ColorEditWnd::GetText() const { return m_strText; }

void ColorEditWnd::SetText(const CString& text) { m_strText = text; }

void ColorEditWnd::LoadKeyWord() { m_arKeyWords = ny::KeyWords(); }

BOOL ColorEditWnd::IsKeyWord(const CString& word) const { return ny::IsKeyWord(m_arKeyWords, word); }

BOOL ColorEditWnd::IsFunName(const CString& word) const { return ny::IsFunName(word); }

BOOL ColorEditWnd::IsParamName(const std::vector<CParam>& params, const CString& word) const {
    return ny::IsParamName(params, word);
}

BOOL ColorEditWnd::IsIdentifyName(const char* word) const { return ny::IsIdentifyName(m_arIdentifiers, word); }

CIndicator* ColorEditWnd::IsIndicatorName(const char* word, char& kind, CString& indicator,
                                          CString& line) const {
    return ny::IsIndicatorName(word, kind, indicator, line);
}

int ColorEditWnd::GetColor(int colourClass) const {
    switch (colourClass) {
        case 1: return m_crNumber;
        case 2: return m_crKeyWord;
        case 3: return m_crFunction;
        default: return m_crText;
    }
}

SYNTestResult ColorEditWnd::GetTestResult(const std::vector<CParam>& params) {
    return CSyntaxChecker(m_pfnLexical, m_arIdentifiers).GetTestResult(GetText(), params);
}

SYNTestLineResult ColorEditWnd::GetLineTestResult(const char* line, const std::vector<CParam>& params) {
    return CSyntaxChecker(m_pfnLexical, m_arIdentifiers).GetLineTestResult(line, params);
}

SYNTestLineResult ColorEditWnd::CheckLineExpress(const char* express, const std::vector<CParam>& params) {
    return CSyntaxChecker(m_pfnLexical, m_arIdentifiers).CheckLineExpress(express, params);
}

int ColorEditWnd::IsValidAfExpress(const std::vector<AfPressItem>& items) {
    return CSyntaxChecker::IsValidAfExpress(items);
}

int ColorEditWnd::CheckLParen(const std::vector<OPITEM>& ops) { return CSyntaxChecker::CheckLParen(ops); }

CString ColorEditWnd::GetTranslate() { return ny::FormulaTranslator(m_pfnLexical).GetTranslate(GetText()); }
