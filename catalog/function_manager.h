#pragma once
// The function catalog: the language's reference held in memory. One row for every function,
// data word, financial item and style keyword, with its help texts and the pattern that turns a
// call into a Chinese sentence. The syntax test counts arguments and reads style values from it,
// the translator takes its sentences from it, the editor's tips and the insert-function dialog
// show its texts. The evaluator does not use it.
//
// The host fills the one catalog, g_MyFunsMng, by a single LoadFun(); afterwards it is only read.

#include <vector>

#include "catalog/styles.h"
#include "host/types.h"

// Categories of m_cClass, in the order in which LoadFun appends them. 0 is no row's category:
// the function dialog uses it for "all rows".
enum : int {
    NY_FUNCLASS_ALL = 0,
    NY_FUNCLASS_QUOTE = 1,         // 行情函数
    NY_FUNCLASS_TIME = 2,          // 时间函数
    NY_FUNCLASS_REFERENCE = 3,     // 引用函数
    NY_FUNCLASS_LOGIC = 4,         // 逻辑函数
    NY_FUNCLASS_ARITHMETIC = 5,    // 算术函数
    NY_FUNCLASS_MATH = 6,          // 数学函数
    NY_FUNCLASS_STATISTICS = 7,    // 统计函数
    NY_FUNCLASS_CROSS_SECTION = 8, // 横向统计函数
    NY_FUNCLASS_PATTERN = 9,       // 形态函数
    NY_FUNCLASS_MARKET = 10,       // 大盘函数
    NY_FUNCLASS_DRAW = 11,         // 绘制函数
    NY_FUNCLASS_FINANCE = 12,      // 财务函数
    NY_FUNCLASS_FUND_FLOW = 13,    // 资金流向函数
    NY_FUNCLASS_DYNAMIC = 14,      // 动态函数
    NY_FUNCLASS_LINE_COLOR = 15,   // 线形和颜色函数
};

// Special translator codes of m_nCode: the zig-zag family, whose pattern starts with the kind of
// price. Every other row has 0.
enum : int {
    NY_FUNCODE_PEAK = 101,
    NY_FUNCODE_PEAKBARS = 102,
    NY_FUNCODE_TROUGH = 103,
    NY_FUNCODE_TROUGHBARS = 104,
    NY_FUNCODE_ZIG = 105,
};

// m_cTransKind: whether the row translates by a pattern.
enum : char { NY_TRANS_NONE = 0, NY_TRANS_NOT = 1, NY_TRANS_PATTERN = 2 };

// m_cAttrKind of the style keywords: what the keyword sets on a statement.
enum : char { NY_ATTR_COLOR = 1, NY_ATTR_WIDTH = 2, NY_ATTR_STYLE = 3 };

constexpr int NY_FUN_MAX_ARGS = 10;

// One catalog row.
struct FUN_ITEM {
    char m_cClass = 0;         // category, 1 to 15
    int m_nCode = 0;           // translator code, NY_FUNCODE_..., else 0
    CString m_strName;         // the word in upper case; categories 12 to 14 carry the argument
    CString m_strShort;        // short Chinese name
    CString m_strDesc;         // one-line description
    CString m_strUsage;        // usage, lines separated by CR LF
    CString m_strExample;      // example, lines separated by CR LF
    CString m_strPattern;      // sentence with one "?" per argument
    char m_cArgCount = 0;      // number of arguments
    // Entry i is the rank of argument i among the "?" of the pattern.
    int m_nArgOrder[NY_FUN_MAX_ARGS] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    char m_cTransKind = NY_TRANS_NONE;
    char m_cAttrKind = 0;      // category 15 only: NY_ATTR_...
    int m_lValue = 0;          // category 15 only: colour 0xBBGGRR or line style value
};

// The catalog: an ordered array of rows, owned by it.
class CFunctionManager {
public:
    CFunctionManager() = default;
    ~CFunctionManager();
    CFunctionManager(const CFunctionManager&) = delete;
    CFunctionManager& operator=(const CFunctionManager&) = delete;

    // Appends all fifteen categories in their order. Meant to be called once: a second call
    // appends every row again.
    void LoadFun();

    // Each appends the rows of one category in their fixed order.
    void LoadHQFun();
    void LoadTimeFun();
    void LoadRefFun();
    void LoadLogicFun();
    void LoadAlogFun();
    void LoadMathFun();
    void LoadStateFun();
    void LoadHStateFun();
    void LoadModeFun();
    void LoadDaPanFun();
    void LoadDrawFun();
    void LoadFianceFun();
    void LoadFundFun();
    void LoadDymaicFun();
    void LoadLineColor();

    int GetCount();
    // Row i, or null when i is negative or not below the count.
    FUN_ITEM* GetFun(int i);
    // The first row whose word equals name, after leading white space is dropped and the name is
    // turned to upper case. LINETHICK followed by anything finds the row LINETHICK. With bStem
    // non-zero the rows of FINANCE(n), MFLOW(n) and DYNAINFO(n) answer to the bare function name
    // instead of their full word. Null when there is no such row.
    FUN_ITEM* FindFun(const char* name, int bStem);

private:
    void AppendClass(int nClass);

    std::vector<FUN_ITEM*> m_arFuns;
};

// The one catalog of the system.
extern CFunctionManager g_MyFunsMng;

namespace ny {
// The caption of a category in the function dialog, e.g. "行情函数" for 1 and "全部函数" for 0;
// null for a number outside 0 to 15.
const char* FunctionClassCaption(int nClass);
}  // namespace ny
