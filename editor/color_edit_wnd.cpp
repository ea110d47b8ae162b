// The script editor: its text and the lexer module it opens.

#include "editor/color_edit_wnd.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>

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
