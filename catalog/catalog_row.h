#pragma once
// The catalog's rows as constant data, before they become FUN_ITEM objects. The rows themselves
// are kept in function_table.inc, one block per row in the order shown to the user.

#include <initializer_list>
#include <span>

#include "catalog/function_manager.h"

namespace ny {

// The order in which a pattern takes the arguments. Written as the leading entries only,
// e.g. {1, 0}; the entries not written keep their plain position.
struct CatalogArgOrder {
    int entries[NY_FUN_MAX_ARGS] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

    constexpr CatalogArgOrder() = default;
    constexpr CatalogArgOrder(std::initializer_list<int> leading) {
        int i = 0;
        for (int rank : leading) entries[i++] = rank;
    }
};

// One row. Fields left out are empty or 0. transKind matters only for a row without a pattern;
// a row with a pattern always translates by it.
struct CatalogRow {
    const char* name = "";
    int argCount = 0;
    int attrKind = 0;
    int value = 0;
    const char* shortName = "";
    const char* desc = "";
    const char* pattern = "";
    const char* usage = "";
    const char* example = "";
    CatalogArgOrder argOrder = {};
    int code = 0;
    int transKind = NY_TRANS_NONE;
};

// The rows of one category, 1 to 15, in their order; empty for any other number.
std::span<const CatalogRow> CatalogRows(int nClass);

}  // namespace ny
