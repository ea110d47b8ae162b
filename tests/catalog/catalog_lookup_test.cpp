// Look-up in the catalog, the style keywords and the category captions.

#include "catalog/styles.h"
#include "tests/case_file.h"
#include "tests/catalog/loaded_catalog.h"

namespace {

const char* NameOf(const FUN_ITEM* item) { return item ? item->m_strName.c_str() : "(none)"; }

TEST(CatalogLookup, RowsByIndex) {
    CFunctionManager& catalog = LoadedCatalog();
    EXPECT_EQ(catalog.GetFun(-1), nullptr);
    EXPECT_EQ(catalog.GetFun(catalog.GetCount()), nullptr);

    CFunctionManager empty;
    EXPECT_EQ(empty.GetCount(), 0);
    EXPECT_EQ(empty.GetFun(0), nullptr);
    EXPECT_EQ(empty.FindFun("MA", 1), nullptr);
}

// The row a key finds, exactly (0) or also by a family's stem (1).
TEST(CatalogLookup, KeysAndTheRowsTheyFind) {
    CFunctionManager& catalog = LoadedCatalog();
    for (const testcases::Row& row : testcases::ReadRows("catalog/rows.txt", "find")) {
        const std::string found = row[2].empty() ? "(none)" : row[2];
        EXPECT_EQ(NameOf(catalog.FindFun(row.Gbk(0).c_str(), row.Int(1))), found) << row.where;
    }
    EXPECT_EQ(catalog.FindFun(nullptr, 0), nullptr);
    EXPECT_EQ(catalog.FindFun("LINETHICK", 1)->m_cAttrKind, NY_ATTR_WIDTH);
}

TEST(CatalogLookup, StyleConstantsAgreeWithTheKeywordRows) {
    CFunctionManager& catalog = LoadedCatalog();
    const std::pair<const char*, int> styles[] = {
        {"VOLSTICK", NY_STYLE_VOLSTICK},   {"COLORSTICK", NY_STYLE_COLORSTICK}, {"STICK", NY_STYLE_STICK},
        {"CIRCLEDOT", NY_STYLE_CIRCLEDOT}, {"CROSSDOT", NY_STYLE_CROSSDOT},     {"POINTDOT", NY_STYLE_POINTDOT},
        {"LINESTICK", NY_STYLE_LINESTICK}, {"COLORBAR", NY_STYLE_COLORBAR},     {"DOTLINE", NY_STYLE_DOTLINE},
        {"NODRAW", NY_STYLE_NODRAW},
    };
    for (const auto& [word, value] : styles) {
        const FUN_ITEM* item = catalog.FindFun(word, 1);
        ASSERT_NE(item, nullptr) << word;
        EXPECT_EQ(item->m_cAttrKind, NY_ATTR_STYLE) << word;
        EXPECT_EQ(item->m_lValue, value) << word;
        EXPECT_EQ(ny::StyleIsDrawn(value), value != NY_STYLE_NODRAW) << word;
    }
    EXPECT_FALSE(ny::StyleIsDrawn(NY_STYLE_ASSIGNMENT));
    EXPECT_TRUE(ny::StyleIsDrawn(NY_STYLE_LINE));
    EXPECT_TRUE(ny::StyleIsDrawn(24));
    EXPECT_FALSE(ny::StyleIsDrawn(25));
}

TEST(CatalogLookup, CategoryCaptionsRunFromAllToTheLastCategory) {
    EXPECT_TEXT(ny::FunctionClassCaption(0), "全部函数");
    EXPECT_TEXT(ny::FunctionClassCaption(15), "线形和颜色函数");
    EXPECT_EQ(ny::FunctionClassCaption(-1), nullptr);
    EXPECT_EQ(ny::FunctionClassCaption(16), nullptr);
}

TEST(CatalogLookup, TheGlobalCatalogStartsEmptyAndLoadFillsIt) {
    EXPECT_EQ(g_MyFunsMng.GetCount(), 0);
    g_MyFunsMng.LoadFun();
    EXPECT_EQ(g_MyFunsMng.GetCount(), 269);
    EXPECT_STREQ(NameOf(g_MyFunsMng.FindFun("NODRAW", 1)), "NODRAW");
}

}  // namespace
