// The word classes of the script editor: what a word of a formula is. They need the catalog, the
// library and the editor's lists, never a window.

#include <algorithm>
#include <string_view>

#include "catalog/function_manager.h"
#include "check/gbk_text.h"
#include "check/keywords.h"
#include "editor/color_edit_wnd.h"
#include "model/library.h"

namespace {

std::string_view TrimLeading(std::string_view word) {
    const size_t first = word.find_first_not_of(ny::kWhiteSpace);
    return first == std::string_view::npos ? std::string_view() : word.substr(first);
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && ny::UpperGbk(a) == ny::UpperGbk(b);
}

}  // namespace

void ColorEditWnd::LoadKeyWord() {
    m_arKeyWords.clear();
    std::string_view list(NY_KEYWORD_LIST + 1);
    for (size_t comma; (comma = list.find(',')) != std::string_view::npos; list.remove_prefix(comma + 1))
        m_arKeyWords.emplace_back(list.substr(0, comma));
}

BOOL ColorEditWnd::IsKeyWord(const CString& word) const {
    const std::string_view key = TrimLeading(word);
    return std::find(m_arKeyWords.begin(), m_arKeyWords.end(), key) != m_arKeyWords.end();
}

BOOL ColorEditWnd::IsFunName(const CString& word) const {
    return g_MyFunsMng.FindFun(word.c_str(), 0) != nullptr;
}

BOOL ColorEditWnd::IsParamName(const std::vector<CParam>& params, const CString& word) const {
    const std::string_view key = TrimLeading(word);
    return std::any_of(params.begin(), params.end(),
                       [key](const CParam& param) { return EqualsIgnoringCase(param.m_strName, key); });
}

BOOL ColorEditWnd::IsIdentifyName(const char* word) const {
    const std::string_view key = ny::TrimBytes(word, ny::kWhiteSpace);
    return std::find(m_arIdentifiers.begin(), m_arIdentifiers.end(), key) != m_arIdentifiers.end();
}

CIndicator* ColorEditWnd::IsIndicatorName(const char* word, char& kind, CString& indicator,
                                          CString& line) const {
    const CString upper = ny::UpperGbk(word);
    const size_t stop = upper.rfind('.');
    if (stop == CString::npos || stop == 0) {
        kind = 2;
        indicator = word;
        return g_MyGetIndicator(word, NY_KIND_INDICATOR);
    }
    kind = 1;
    indicator = upper.substr(0, stop);
    if (stop + 1 == upper.size()) {
        kind = 2;
        return nullptr;
    }
    line = upper.substr(stop + 1);
    return g_MyGetIndicator(indicator, NY_KIND_INDICATOR);
}

int ColorEditWnd::GetColor(int colourClass) const {
    switch (colourClass) {
        case 1: return m_crNumber;
        case 2: return m_crKeyWord;
        case 3: return m_crFunction;
        default: return m_crText;
    }
}
