#include "dialogs/stock_rules.h"

#include <cstring>

#include "host/files.h"
#include "host/global.h"

namespace ny {

bool DecodeStockRule(std::string_view bytes, StockRule* rule) {
    if (bytes.size() < 5) return false;  // the count and the logic byte at least
    const int count = LoadInt(bytes.data());
    if (count < 0 || (bytes.size() - 5) / kRuleNameField < static_cast<size_t>(count)) return false;
    StockRule decoded;
    for (int i = 0; i < count; ++i) {
        const char* field = bytes.data() + 4 + kRuleNameField * i;
        decoded.names.emplace_back(field, strnlen(field, kRuleNameField - 1));
    }
    decoded.logic = bytes[4 + kRuleNameField * count];
    *rule = std::move(decoded);
    return true;
}

std::string EncodeStockRule(const StockRule& rule) {
    std::string bytes;
    StoreInt(&bytes, static_cast<int>(rule.names.size()));
    for (const CString& name : rule.names) {
        std::string field = name.substr(0, kRuleNameField - 1);
        field.resize(kRuleNameField, '\0');
        bytes += field;
    }
    bytes += rule.logic;
    return bytes;
}

CString StockRulePath(const CString& name) { return g_MyExePath + "data/autostock/" + name + ".ast"; }

bool ReadStockRuleFile(const std::string& path, StockRule* rule) {
    std::string bytes;
    return ReadWholeFile(path, &bytes) && DecodeStockRule(bytes, rule);
}

bool WriteStockRuleFile(const std::string& path, const StockRule& rule) {
    return WriteFileAtomic(path, EncodeStockRule(rule));
}

}  // namespace ny
