#pragma once
#include <gtest/gtest.h>

#include "catalog/function_manager.h"
#include "host/encoding.h"

// A catalog filled the way the host fills the global one. Kept apart from g_MyFunsMng so that
// the tests don't depend on each other's order.
inline CFunctionManager& LoadedCatalog() {
    static CFunctionManager catalog;
    static const bool loaded = (catalog.LoadFun(), true);
    (void)loaded;
    return catalog;
}

// The row of a word, failing the test when it's missing.
inline const FUN_ITEM& Row(const char* word) {
    const FUN_ITEM* item = LoadedCatalog().FindFun(word, 0);
    if (item == nullptr) {
        ADD_FAILURE() << "no row " << word;
        static const FUN_ITEM kNone;
        return kNone;
    }
    return *item;
}

// Compares GBK texts byte for byte and shows them readable when they differ.
#define EXPECT_TEXT(actual, expected)                                                   \
    EXPECT_EQ(CString(actual), CString(expected))                                       \
        << "actual:   " << ny::GbkToUtf8(actual) << "\nexpected: " << ny::GbkToUtf8(expected)
