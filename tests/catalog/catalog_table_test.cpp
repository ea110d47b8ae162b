// The rows of the catalog: counts, order and texts against the independent table of rows.txt.

#include <set>
#include <string>
#include <vector>

#include "tests/case_file.h"
#include "tests/catalog/loaded_catalog.h"

namespace {

TEST(CatalogTable, CategoriesFollowEachOtherWithTheirCountsFirstAndLastRows) {
    CFunctionManager& catalog = LoadedCatalog();
    ASSERT_EQ(catalog.GetCount(), 269);
    int index = 0;
    for (const testcases::Row& row : testcases::ReadRows("catalog/rows.txt", "class")) {
        SCOPED_TRACE(row.where);
        EXPECT_EQ(catalog.GetFun(index)->m_strName, row[2]);
        for (int i = 0; i < row.Int(1); ++i) EXPECT_EQ(catalog.GetFun(index + i)->m_cClass, row.Int(0));
        index += row.Int(1);
        EXPECT_EQ(catalog.GetFun(index - 1)->m_strName, row[3]);
    }
    EXPECT_EQ(index, 269);
}

TEST(CatalogTable, LoadOperationsEachAppendOneCategory) {
    CFunctionManager catalog;
    catalog.LoadDrawFun();
    ASSERT_EQ(catalog.GetCount(), 16);
    EXPECT_EQ(catalog.GetFun(0)->m_strName, "PLOYLINE");
    catalog.LoadHQFun();
    ASSERT_EQ(catalog.GetCount(), 31);
    EXPECT_EQ(catalog.GetFun(16)->m_strName, "HIGH");
    EXPECT_EQ(catalog.GetFun(16)->m_cClass, 1);
}

TEST(CatalogTable, EveryWordStandsOnceAndFindsItsOwnRow) {
    CFunctionManager& catalog = LoadedCatalog();
    std::set<CString> words;
    for (int i = 0; i < catalog.GetCount(); ++i) {
        FUN_ITEM* item = catalog.GetFun(i);
        EXPECT_TRUE(words.insert(item->m_strName).second) << "twice: " << item->m_strName;
        EXPECT_EQ(catalog.FindFun(item->m_strName.c_str(), 0), item) << item->m_strName;
    }
}

TEST(CatalogTable, RowInvariantsHoldForEveryRow) {
    CFunctionManager& catalog = LoadedCatalog();
    int patterned = 0;
    for (int i = 0; i < catalog.GetCount(); ++i) {
        const FUN_ITEM& item = *catalog.GetFun(i);
        SCOPED_TRACE(item.m_strName);
        // The argument order is a permutation of the arguments, plain beyond them.
        std::set<int> ranks;
        for (int a = 0; a < item.m_cArgCount; ++a) ranks.insert(item.m_nArgOrder[a]);
        EXPECT_EQ(static_cast<int>(ranks.size()), item.m_cArgCount);
        if (!ranks.empty()) {
            EXPECT_EQ(*ranks.rbegin(), item.m_cArgCount - 1);
        }
        for (int a = item.m_cArgCount; a < NY_FUN_MAX_ARGS; ++a) EXPECT_EQ(item.m_nArgOrder[a], a);
        const int expectedKind = !item.m_strPattern.empty() ? 2 : item.m_strName == "NOT" ? 1 : 0;
        EXPECT_EQ(item.m_cTransKind, expectedKind);
        patterned += item.m_cTransKind == 2;
        if (item.m_cClass == 15) {
            EXPECT_EQ(item.m_cArgCount, 0);
            EXPECT_TRUE(item.m_strUsage.empty() && item.m_strExample.empty());
        } else {
            EXPECT_EQ(item.m_cAttrKind, 0);
            EXPECT_FALSE(item.m_strUsage.empty());
        }
    }
    EXPECT_EQ(patterned, 94);
}

// Argument counts, translation kinds and translator codes of rows that differ from their
// neighbours; the help texts are the catalog's own data and are not copied here.
TEST(CatalogTable, RowsOfNote) {
    for (const testcases::Row& row : testcases::ReadRows("catalog/rows.txt", "note")) {
        SCOPED_TRACE(row.where);
        const FUN_ITEM& item = Row(row[0].c_str());
        EXPECT_TRUE(row.Int(1) < 0 || item.m_cArgCount == row.Int(1));
        EXPECT_TRUE(row.Int(2) < 0 || item.m_cTransKind == row.Int(2));
        EXPECT_EQ(item.m_nCode, row.Int(3));
    }
    // Only the zig-zag family carries a translator code.
    CFunctionManager& catalog = LoadedCatalog();
    int coded = 0;
    for (int i = 0; i < catalog.GetCount(); ++i) coded += catalog.GetFun(i)->m_nCode != 0;
    EXPECT_EQ(coded, 5);
    // Texts are GBK bytes: "最高价".
    EXPECT_TEXT(Row("HIGH").m_strShort, "\xD7\xEE\xB8\xDF\xBC\xDB");
}

// The argument orders that are not the plain order 0, 1, 2, ...
TEST(CatalogTable, ArgumentOrdersOutOfThePlainOrder) {
    for (const testcases::Row& row : testcases::ReadRows("catalog/rows.txt", "order")) {
        const FUN_ITEM& item = Row(row[0].c_str());
        std::string order;
        for (int a = 0; a < item.m_cArgCount; ++a) order += (a ? " " : "") + std::to_string(item.m_nArgOrder[a]);
        EXPECT_EQ(order, row[1]) << row.where;
    }
}

TEST(CatalogTable, FinanceFundFlowAndDynamicRowsCarryTheirArgument) {
    CFunctionManager& catalog = LoadedCatalog();
    const FUN_ITEM* capital = catalog.GetFun(15 + 15 + 35 + 8 + 6 + 21 + 12 + 12 + 9 + 9 + 16 + 2);
    EXPECT_EQ(capital->m_strName, "CAPITAL");

    // Within each family the description is built from the word and the short name.
    for (int i = 0; i < catalog.GetCount(); ++i) {
        const FUN_ITEM& item = *catalog.GetFun(i);
        if (item.m_cClass < 12 || item.m_cClass > 14) continue;
        SCOPED_TRACE(item.m_strName);
        EXPECT_EQ(item.m_cArgCount, 0);
        EXPECT_EQ(item.m_strUsage, item.m_strName);
        if (item.m_cClass == 13) {
            EXPECT_EQ(item.m_strDesc, item.m_strName + item.m_strShort);
        } else if (item.m_cClass == 14) {
            EXPECT_EQ(item.m_strDesc, item.m_strName + " " + item.m_strShort + " 即时行情数据");
        }
    }
}

}  // namespace
