// Look-up in the catalog, the style keywords and the category captions.

#include "catalog/styles.h"
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
    const struct {
        const char* key;
        int stem;
        const char* found;  // nullptr: none
    } rows[] = {
        // Leading blanks and case don't count; trailing blanks stay part of the key.
        {" ma", 0, "MA"},
        {"\t\r\n Ema", 1, "EMA"},
        {"drawtext_offset", 0, "DRAWTEXT_OFFSET"},
        {"MA ", 0, nullptr},
        {"", 0, nullptr},
        {"   ", 1, nullptr},
        {"M", 1, nullptr},  // no prefix match outside the three families
        {"最高价", 0, nullptr},
        // LINETHICK with any suffix finds the width row.
        {"LINETHICK7", 1, "LINETHICK"},
        {"LINETHICK5", 0, "LINETHICK"},
        {" linethick3", 1, "LINETHICK"},
        {"LINETHIC", 1, nullptr},
        {"LINETHIN7", 1, nullptr},
        // Families answer to their stem only when asked to.
        {"MFLOW(3)", 0, "MFLOW(3)"},
        {"MFLOW", 0, nullptr},
        {"MFLOW", 1, "MFLOW(1)"},
        {"MFLOW(3)", 1, nullptr},
        {"DYNAINFO(7)", 0, "DYNAINFO(7)"},
        {"DYNAINFO", 0, nullptr},
        {"dynainfo", 1, "DYNAINFO(3)"},
        {"DYNAINFO(7)", 1, nullptr},
        {"FINANCE", 1, "FINANCE(1)"},
        {"FINANCE(7)", 1, nullptr},
        // CAPITAL is seven letters long, so its stem is the whole word.
        {"CAPITAL", 1, "CAPITAL"},
        {"CAPITAL", 0, "CAPITAL"},
        // Words of other categories don't shorten; colours are words, not numbers.
        {"DRAWTEXT_FIX", 1, "DRAWTEXT_FIX"},
        {"COLORFF0000", 1, nullptr},
    };
    CFunctionManager& catalog = LoadedCatalog();
    for (const auto& row : rows) {
        EXPECT_STREQ(NameOf(catalog.FindFun(row.key, row.stem)), row.found ? row.found : "(none)")
            << row.key << " " << row.stem;
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
