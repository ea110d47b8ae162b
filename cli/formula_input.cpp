#include "cli/formula_input.h"

#include <charconv>
#include <climits>

#include "cli/context.h"
#include "host/encoding.h"
#include "host/text_fields.h"
#include "model/formula_source.h"

namespace nyind {
namespace {

bool EndsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

std::string Stem(const std::string& path) {
    std::string base = path.substr(path.find_last_of('/') + 1);
    const size_t dot = base.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? base : base.substr(0, dot);
}

bool SameName(const CString& a, const CString& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::toupper(static_cast<unsigned char>(a[i])) != std::toupper(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

}  // namespace

bool SplitParam(const std::string& text, CString* name, short* value) {
    const size_t eq = text.find('=');
    int number = 0;
    const char* begin = text.data() + (eq == std::string::npos ? 0 : eq + 1);
    const char* end = text.data() + text.size();
    const auto [ptr, ec] = std::from_chars(begin, end, number);
    if (eq == std::string::npos || eq == 0 || ec != std::errc() || ptr != end || number < SHRT_MIN ||
        number > SHRT_MAX) {
        Fail(kExitUsage, "--param \"" + text + "\": expected NAME=VALUE with a whole number");
        return false;
    }
    *value = static_cast<short>(number);
    return ArgumentToGbk(text.substr(0, eq), name);
}

int ApplyParamValues(const std::vector<std::string>& values, CIndicator* formula) {
    for (const std::string& text : values) {
        CString name;
        short value = 0;
        if (!SplitParam(text, &name, &value)) return kExitUsage;
        CParam* found = nullptr;
        for (CParam* p : formula->m_arParams)
            if (SameName(p->m_strName, name)) found = p;
        if (found == nullptr) return Fail(kExitUsage, "--param: the formula has no parameter " + text.substr(0, text.find('=')));
        if (value < found->m_nMin || value > found->m_nMax)
            return Fail(kExitUsage, "--param " + text + ": the value must lie between " +
                                        std::to_string(found->m_nMin) + " and " + std::to_string(found->m_nMax));
        found->m_nDefault = value;
        for (short& periodValue : found->m_nPeriodValue) periodValue = 0;
    }
    return kExitOk;
}

int LoadFormulaInput(const FormulaInput& input, CIndicator* formula) {
    std::string text;
    if (int status = ReadInput(input.path, &text, kMaxFormulaFileBytes); status != kExitOk) return status;
    if (EndsWith(input.path, ".fml")) {
        ny::FormulaSourceError error;
        if (!ny::ParseFormulaSource(text, formula, &error))
            return FailGbk(kExitRefused, ny::Utf8ToGbk(input.path) + ":" + std::to_string(error.line) + ": " + error.message);
        if (!input.name.empty() && !ArgumentToGbk(input.name, &formula->m_strName)) return kExitUsage;
        return ApplyParamValues(input.params, formula);
    }
    if (!ny::TryUtf8ToGbk(text, &formula->m_strSource))
        return Fail(kExitRefused, input.path + ": the formula text is not UTF-8 with a GBK form");
    const std::string name = !input.name.empty() ? input.name : input.path == "-" ? "FORMULA" : Stem(input.path);
    if (!ArgumentToGbk(name, &formula->m_strName)) return kExitUsage;
    for (const std::string& param : input.params) {
        auto* p = new CParam;
        formula->m_arParams.push_back(p);
        if (!SplitParam(param, &p->m_strName, &p->m_nDefault)) return kExitUsage;
        p->m_strName = ny::UpperAscii(p->m_strName);
        p->m_nMin = SHRT_MIN;
        p->m_nMax = SHRT_MAX;
    }
    return kExitOk;
}

}  // namespace nyind
