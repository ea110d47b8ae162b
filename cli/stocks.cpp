#include "cli/stocks.h"

#include <algorithm>
#include <cstdlib>

#include "cli/context.h"
#include "host/stockdb.h"

namespace nyind {

int FindStock(const std::string& text, CStock** stock) {
    const bool digits = !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (digits && text.size() == 6) {
        const long code = std::atol(text.c_str());
        CStock* sh = g_MyGetStock(NY_MARKET_SH * 1000000L + code);
        CStock* sz = g_MyGetStock(NY_MARKET_SZ * 1000000L + code);
        if (sh != nullptr && sz != nullptr)
            return Fail(kExitUsage, "the code " + text + " is listed in both markets: write SH" + text + " or SZ" + text);
        *stock = sh != nullptr ? sh : sz;
    } else {
        std::string upper = text;
        for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        const long id = digits && text.size() <= 9 ? std::atol(text.c_str()) : ny::ParseStockCode(upper);
        if (id == 0 && !digits) return Fail(kExitUsage, "\"" + text + "\" is not a stock code such as SH600001");
        *stock = g_MyGetStock(id);
    }
    if (*stock == nullptr) return Fail(kExitRefused, "no stock " + text + " in the installation");
    return kExitOk;
}

}  // namespace nyind
