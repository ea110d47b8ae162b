#pragma once
// Rule files of the picking dialog ("data/autostock/NAME.ast" under the installation): the
// names of condition formulas in list order and how they are joined. Layout: a 32-bit
// little-endian count N, N fields of 256 bytes each holding a name ended by a zero byte, then
// one byte, 1 for AND and 2 for OR. Parameters are not stored. The reader is a plain function
// over bytes and refuses anything that is not a whole rule; it never reads past the end.

#include <string>
#include <string_view>
#include <vector>

#include "host/types.h"

namespace ny {

constexpr size_t kRuleNameField = 256;

struct StockRule {
    std::vector<CString> names;  // GBK, at most 255 bytes each
    char logic = 1;              // 1 AND, 2 OR
};

// False for bytes that are not a whole rule: shorter than the count, a negative count, fields or
// the logic byte missing. Bytes behind the logic byte are ignored.
bool DecodeStockRule(std::string_view bytes, StockRule* rule);
// Names longer than 255 bytes are cut to 255.
std::string EncodeStockRule(const StockRule& rule);

// "<installation>/data/autostock/NAME.ast".
CString StockRulePath(const CString& name);
// Reads and decodes a rule file; false if it can't be read or isn't a whole rule.
bool ReadStockRuleFile(const std::string& path, StockRule* rule);
// Writes a rule file at once, replacing one of the same name; false if it can't be written.
bool WriteStockRuleFile(const std::string& path, const StockRule& rule);

}  // namespace ny
