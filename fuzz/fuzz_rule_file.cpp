// The rule-file reader of the picking dialog: any bytes, and a decoded rule must encode to bytes
// that decode to the same rule.
#include <cstdlib>

#include "dialogs/stock_rules.h"
#include "fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ny::StockRule rule;
    if (!ny::DecodeStockRule(std::string_view(reinterpret_cast<const char*>(data), size), &rule)) return 0;
    ny::StockRule again;
    if (!ny::DecodeStockRule(ny::EncodeStockRule(rule), &again) || again.names != rule.names || again.logic != rule.logic)
        std::abort();
    return 0;
}
