// The word classes of the formula language: what a word of a formula is.

#include <algorithm>
#include <string_view>

#include "catalog/function_manager.h"
#include "check/gbk_text.h"
#include "check/keywords.h"
#include "check/word_classes.h"
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

namespace ny {

const std::vector<CString>& KeyWords() {
    static const std::vector<CString> keywords = [] {
        std::vector<CString> list;
        std::string_view rest(NY_KEYWORD_LIST + 1);
        for (size_t comma; (comma = rest.find(',')) != std::string_view::npos; rest.remove_prefix(comma + 1))
            list.emplace_back(rest.substr(0, comma));
        return list;
    }();
    return keywords;
}

bool IsKeyWord(const std::vector<CString>& keywords, const CString& word) {
    const std::string_view key = TrimLeading(word);
    return std::find(keywords.begin(), keywords.end(), key) != keywords.end();
}

bool IsFunName(const CString& word) { return g_MyFunsMng.FindFun(word.c_str(), 0) != nullptr; }

bool IsParamName(const std::vector<CParam>& params, const CString& word) {
    const std::string_view key = TrimLeading(word);
    return std::any_of(params.begin(), params.end(),
                       [key](const CParam& param) { return EqualsIgnoringCase(param.m_strName, key); });
}

bool IsIdentifyName(const std::vector<CString>& identifiers, const char* word) {
    const std::string_view key = TrimBytes(word, kWhiteSpace);
    return std::find(identifiers.begin(), identifiers.end(), key) != identifiers.end();
}

CIndicator* IsIndicatorName(const char* word, char& kind, CString& indicator, CString& line) {
    const CString upper = UpperGbk(word);
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

}  // namespace ny
