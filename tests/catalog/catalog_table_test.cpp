// The rows of the catalog: counts, order and texts. The expected values are typed from the
// function reference the catalog must reproduce, independently of the data file.

#include <set>
#include <string>
#include <vector>

#include "tests/catalog/loaded_catalog.h"

namespace {

struct ClassExpectation {
    int nClass;
    int count;
    const char* first;
    const char* last;
};

constexpr ClassExpectation kClasses[] = {
    {1, 15, "HIGH", "SELLVOL"},          {2, 15, "PERIOD", "SECTOTIME"},
    {3, 35, "BACKSET", "FORCAL"},        {4, 8, "CROSS", "LAST"},
    {5, 6, "NOT", "MIN"},                {6, 21, "ACOS", "RAND"},
    {7, 12, "AVEDEV", "BETAEX"},         {8, 12, "MODULESETNUM", "INFOFILE"},
    {9, 9, "PEAK", "ZIG"},               {10, 9, "INDEXA", "ISINDEX"},
    {11, 16, "PLOYLINE", "DRAWGBK"},     {12, 15, "FINANCE(1)", "FINANCE(41)"},
    {13, 34, "MFLOW(1)", "MFLOW(36)"},   {14, 33, "DYNAINFO(3)", "DYNAINFO(39)"},
    {15, 29, "COLORBACK", "PXDN"},
};

TEST(CatalogTable, CategoriesFollowEachOtherWithTheirCountsFirstAndLastRows) {
    CFunctionManager& catalog = LoadedCatalog();
    ASSERT_EQ(catalog.GetCount(), 269);
    int index = 0;
    for (const ClassExpectation& cls : kClasses) {
        SCOPED_TRACE(cls.nClass);
        EXPECT_EQ(catalog.GetFun(index)->m_strName, cls.first);
        for (int i = 0; i < cls.count; ++i) EXPECT_EQ(catalog.GetFun(index + i)->m_cClass, cls.nClass);
        index += cls.count;
        EXPECT_EQ(catalog.GetFun(index - 1)->m_strName, cls.last);
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

// Argument counts, translation kinds (2 for a row with a pattern) and translator codes of rows
// that differ from their neighbours, -1 where not checked; the help texts are the catalog's own
// data and are not copied here.
TEST(CatalogTable, RowsOfNote) {
    const struct {
        const char* word;
        int args, transKind, code;
    } rows[] = {
        {"SECTOTIME", 1, 2, 0},     {"SMA", 3, 2, 0},        {"FINDHIGH", 4, 0, 0},
        {"NOT", 0, 1, 0},           {"RAND", 1, 0, 0},       {"BETA", 1, -1, 0},
        {"DRAWHITTIP", 3, 2, 0},    {"DRAWGBK", 6, -1, 0},   {"RGB", -1, 0, 0},
        {"PEAK", -1, 2, 101},       {"PEAKBARS", -1, -1, 102}, {"TROUGH", -1, -1, 103},
        {"TROUGHBARS", -1, -1, 104}, {"ZIG", 2, 2, 105},     {"COST", -1, 2, 0},
        {"LONGCROSS", -1, 2, 0},    {"REF", -1, 2, 0},       {"ROUND", -1, 2, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.word);
        const FUN_ITEM& item = Row(row.word);
        EXPECT_TRUE(row.args < 0 || item.m_cArgCount == row.args);
        EXPECT_TRUE(row.transKind < 0 || item.m_cTransKind == row.transKind);
        EXPECT_EQ(item.m_nCode, row.code);
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
    const std::pair<const char*, std::vector<int>> rows[] = {
        {"HHV", {1, 0}},  {"HHVBARS", {1, 0}}, {"LLV", {1, 0}},      {"LLVBARS", {1, 0}},    {"REF", {1, 0}},
        {"REFDATE", {1, 0}}, {"EXIST", {1, 0}}, {"EVERY", {1, 0}},   {"NDAY", {2, 1, 0}},    {"LAST", {2, 0, 1}},
        {"IFN", {0, 2, 1}}, {"IF", {0, 1, 2}}, {"SMA", {0, 1, 2}}, {"DRAWGBK", {0, 1, 2, 3, 4, 5}},
    };
    for (const auto& [word, order] : rows) {
        const FUN_ITEM& item = Row(word);
        EXPECT_EQ(std::vector<int>(item.m_nArgOrder, item.m_nArgOrder + item.m_cArgCount), order) << word;
    }
}

TEST(CatalogTable, FinanceFundFlowAndDynamicRowsCarryTheirArgument) {
    CFunctionManager& catalog = LoadedCatalog();
    const FUN_ITEM* capital = catalog.GetFun(15 + 15 + 35 + 8 + 6 + 21 + 12 + 12 + 9 + 9 + 16 + 2);
    EXPECT_EQ(capital->m_strName, "CAPITAL");
    EXPECT_EQ(catalog.FindFun("MFLOW(25)", 0), nullptr);  // the family skips 25 and 28

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
