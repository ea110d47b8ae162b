#include "catalog/function_manager.h"

#include <cctype>
#include <cstring>
#include <string_view>

#include "catalog/catalog_row.h"

CFunctionManager g_MyFunsMng;

namespace {

FUN_ITEM* MakeItem(int nClass, const ny::CatalogRow& row) {
    auto* item = new FUN_ITEM;
    item->m_cClass = static_cast<char>(nClass);
    item->m_nCode = row.code;
    item->m_strName = row.name;
    item->m_strShort = row.shortName;
    item->m_strDesc = row.desc;
    item->m_strUsage = row.usage;
    item->m_strExample = row.example;
    item->m_strPattern = row.pattern;
    item->m_cArgCount = static_cast<char>(row.argCount);
    std::memcpy(item->m_nArgOrder, row.argOrder.entries, sizeof item->m_nArgOrder);
    item->m_cTransKind = static_cast<char>(*row.pattern != '\0' ? NY_TRANS_PATTERN : row.transKind);
    item->m_cAttrKind = static_cast<char>(row.attrKind);
    item->m_lValue = row.value;
    return item;
}

// How many leading characters of a word are compared when looking up by the function's stem:
// FINANCE(n), MFLOW(n), DYNAINFO(n). Zero compares the whole word.
size_t StemLength(int nClass) {
    switch (nClass) {
        case NY_FUNCLASS_FINANCE: return 7;
        case NY_FUNCLASS_FUND_FLOW: return 5;
        case NY_FUNCLASS_DYNAMIC: return 8;
        default: return 0;
    }
}

std::string LookupKey(const char* name) {
    while (*name != '\0' && std::isspace(static_cast<unsigned char>(*name))) ++name;
    std::string key(name);
    for (char& ch : key) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    // LINETHICK1 to LINETHICK9 all name the one width row.
    constexpr std::string_view kThick = "LINETHICK";
    if (key.size() >= kThick.size() + 1 && key.starts_with(kThick)) key = kThick;
    return key;
}

}  // namespace

CFunctionManager::~CFunctionManager() {
    for (FUN_ITEM* item : m_arFuns) delete item;
}

void CFunctionManager::AppendClass(int nClass) {
    for (const ny::CatalogRow& row : ny::CatalogRows(nClass)) m_arFuns.push_back(MakeItem(nClass, row));
}

void CFunctionManager::LoadFun() {
    LoadHQFun();
    LoadTimeFun();
    LoadRefFun();
    LoadLogicFun();
    LoadAlogFun();
    LoadMathFun();
    LoadStateFun();
    LoadHStateFun();
    LoadModeFun();
    LoadDaPanFun();
    LoadDrawFun();
    LoadFianceFun();
    LoadFundFun();
    LoadDymaicFun();
    LoadLineColor();
}

void CFunctionManager::LoadHQFun() { AppendClass(NY_FUNCLASS_QUOTE); }
void CFunctionManager::LoadTimeFun() { AppendClass(NY_FUNCLASS_TIME); }
void CFunctionManager::LoadRefFun() { AppendClass(NY_FUNCLASS_REFERENCE); }
void CFunctionManager::LoadLogicFun() { AppendClass(NY_FUNCLASS_LOGIC); }
void CFunctionManager::LoadAlogFun() { AppendClass(NY_FUNCLASS_ARITHMETIC); }
void CFunctionManager::LoadMathFun() { AppendClass(NY_FUNCLASS_MATH); }
void CFunctionManager::LoadStateFun() { AppendClass(NY_FUNCLASS_STATISTICS); }
void CFunctionManager::LoadHStateFun() { AppendClass(NY_FUNCLASS_CROSS_SECTION); }
void CFunctionManager::LoadModeFun() { AppendClass(NY_FUNCLASS_PATTERN); }
void CFunctionManager::LoadDaPanFun() { AppendClass(NY_FUNCLASS_MARKET); }
void CFunctionManager::LoadDrawFun() { AppendClass(NY_FUNCLASS_DRAW); }
void CFunctionManager::LoadFianceFun() { AppendClass(NY_FUNCLASS_FINANCE); }
void CFunctionManager::LoadFundFun() { AppendClass(NY_FUNCLASS_FUND_FLOW); }
void CFunctionManager::LoadDymaicFun() { AppendClass(NY_FUNCLASS_DYNAMIC); }
void CFunctionManager::LoadLineColor() { AppendClass(NY_FUNCLASS_LINE_COLOR); }

int CFunctionManager::GetCount() { return static_cast<int>(m_arFuns.size()); }

FUN_ITEM* CFunctionManager::GetFun(int i) {
    if (i < 0 || i >= GetCount()) return nullptr;
    return m_arFuns[static_cast<size_t>(i)];
}

FUN_ITEM* CFunctionManager::FindFun(const char* name, int bStem) {
    if (name == nullptr) return nullptr;
    const std::string key = LookupKey(name);
    for (FUN_ITEM* item : m_arFuns) {
        std::string_view word = item->m_strName;
        const size_t stem = bStem ? StemLength(item->m_cClass) : 0;
        if (stem != 0) word = word.substr(0, stem);
        if (word == key) return item;
    }
    return nullptr;
}

namespace ny {

const char* FunctionClassCaption(int nClass) {
    static const char* const kCaptions[] = {
        "全部函数", "行情函数", "时间函数", "引用函数", "逻辑函数", "算术函数",
        "数学函数", "统计函数", "横向统计函数", "形态函数", "大盘函数", "绘制函数",
        "财务函数", "资金流向函数", "动态函数", "线形和颜色函数",
    };
    if (nClass < 0 || nClass > NY_FUNCLASS_LINE_COLOR) return nullptr;
    return kCaptions[nClass];
}

}  // namespace ny
