// The catalog's rows. The data stands in function_table.inc so that it reads as a table.

#include "catalog/catalog_row.h"

namespace ny {
namespace {

#include "catalog/function_table.inc"

}  // namespace

std::span<const CatalogRow> CatalogRows(int nClass) {
    switch (nClass) {
        case NY_FUNCLASS_QUOTE: return kQuoteRows;
        case NY_FUNCLASS_TIME: return kTimeRows;
        case NY_FUNCLASS_REFERENCE: return kReferenceRows;
        case NY_FUNCLASS_LOGIC: return kLogicRows;
        case NY_FUNCLASS_ARITHMETIC: return kArithmeticRows;
        case NY_FUNCLASS_MATH: return kMathRows;
        case NY_FUNCLASS_STATISTICS: return kStatisticsRows;
        case NY_FUNCLASS_CROSS_SECTION: return kCrossSectionRows;
        case NY_FUNCLASS_PATTERN: return kPatternRows;
        case NY_FUNCLASS_MARKET: return kMarketRows;
        case NY_FUNCLASS_DRAW: return kDrawRows;
        case NY_FUNCLASS_FINANCE: return kFinanceRows;
        case NY_FUNCLASS_FUND_FLOW: return kFundFlowRows;
        case NY_FUNCLASS_DYNAMIC: return kDynamicRows;
        case NY_FUNCLASS_LINE_COLOR: return kLineColorRows;
        default: return {};
    }
}

}  // namespace ny
