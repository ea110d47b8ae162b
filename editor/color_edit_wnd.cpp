// The script editor: construction, the lexer module it opens, the word classes, and the syntax
// test and the translation over its text.

#include "editor/color_edit_wnd.h"

#include <dlfcn.h>

#include "check/syntax_checker.h"
#include "check/translate.h"
#include "check/word_classes.h"
#include "host/files.h"
#include "host/global.h"

ColorEditWnd::ColorEditWnd() { Reset(); }

ColorEditWnd::ColorEditWnd(const ny::EditorPlatform& platform, ny::EditorOwner* dialog, int id, int tabWidth,
                           int, const char*, bool horizontalBar)
    : m_nControlId(id), m_pDialog(dialog), m_bHorizontalBar(horizontalBar), m_platform(platform) {
    Create(id, tabWidth);
    Reset();
    if (m_platform.window != nullptr) m_platform.window->SetClient(this);
}

ColorEditWnd::~ColorEditWnd() {
    if (m_platform.window != nullptr) m_platform.window->SetClient(nullptr);
    CloseLexical();
}

void ColorEditWnd::Create(int id, int tabWidth) {
    m_nControlId = id;
    m_nTabWidth = tabWidth > 0 ? tabWidth : 4;
    if (m_platform.window != nullptr) {
        const ny::ScrollBarState initial{0, 200, 0, 0};
        m_platform.window->SetScrollBar(ny::ScrollBarKind::Vertical, initial);
        if (m_bHorizontalBar) m_platform.window->SetScrollBar(ny::ScrollBarKind::Horizontal, initial);
    }
    PrepareLanguage();
    m_Tip.Create(this, m_platform.tip);
    if (m_platform.refList != nullptr) m_platform.refList->Hide();
}

void ColorEditWnd::OnFirstShow() {
    if (m_platform.window == nullptr) return;
    const ny::FontMetrics font = m_platform.window->GetFontMetrics();
    if (font.averageCharWidth > 0) m_nCharWidth = font.averageCharWidth;
    if (font.height > 0) m_nLineHeight = font.height;
    UpdateScrollSizes();
}

void ColorEditWnd::PrepareLanguage() {
    LoadKeyWord();
    for (const CString& path : LexicalModulePaths())
        if (OpenLexical(path)) return;
}

std::vector<CString> ColorEditWnd::LexicalModulePaths() {
    std::vector<CString> paths;
    const CString programDirectory = ny::ProgramDirectory();
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
