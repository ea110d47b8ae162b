// Block and strategy functions: whether the stock belongs to a block (INMODULE), how many stocks a
// block has (MODULESETNUM), where the stock ranks in a block on a quote column (MODULESORT), and
// what a decision block's strategy table holds for it (STRATEGY, STRATEGYSTRCMP, STRATEGYSORT).
// Each gives one number that stands for now: out[0], a constant. Group and column names are
// quoted literals.

#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "engine/draw_record.h"
#include "engine/eval_code.h"
#include "engine/function_util.h"
#include "engine/text_scan.h"
#include "host/group.h"
#include "model/indicator.h"

namespace {

// `count` literal arguments: the first at the cursor, each further one from the next quote on,
// wherever it stands; each cut at 127 bytes.
char ReadLiterals(CIndicator& ind, std::string* texts, int count) {
    for (int i = 0; i < count; ++i) {
        if (i > 0) {
            char* quote = ind.Context().m_pCursor;
            while (*quote != '\'' && *quote != ';' && *quote != '\0') ++quote;
            if (*quote != '\'') return NY_EVAL_UNKNOWN_WORD;
            ind.Context().m_pCursor = quote;
        }
        if (const char rc = ny::ReadQuotedText(ind, &texts[i])) return rc;
    }
    return 0;
}

// The start of a call of `count` arguments whose first `literals` are quoted names: the cursor
// ends behind the ")" when the names are all, else behind the "," that follows them.
char BeginNamedCall(CIndicator& ind, int count, std::string* names, int literals) {
    if (const char rc = ind.BeginCall(count)) return rc;
    if (const char rc = ReadLiterals(ind, names, literals)) return rc;
    if (literals == count) return ny::StepBehindParenthesis(ind);
    char*& p = ind.Context().m_pCursor;
    while (*p != ',' && *p != ';' && *p != '\0') ++p;
    if (*p != ',') return NY_EVAL_UNTERMINATED;
    ++p;
    return 0;
}

// The block's column that holds the quote field of a DYNAINFO number; -1 for a number without one.
short QuoteColumn(int dynainfo) {
    static const std::pair<int, short> table[] = {
        {3, 0},   {4, 1},   {5, 3},   {6, 4},   {7, 2},   {8, 5},   {9, 48},  {10, 6},  {11, 60},
        {12, 62}, {13, 67}, {14, 63}, {15, 64}, {16, 65}, {17, 61}, {20, 8},  {28, 8},  {21, 18},
        {34, 18}, {22, 51}, {23, 66}, {25, 9},  {26, 11}, {27, 13}, {29, 10}, {30, 12}, {31, 19},
        {32, 21}, {33, 23}, {35, 20}, {36, 22}, {37, 71}, {39, 70}, {59, 7}};
    for (const auto& [number, column] : table)
        if (number == dynainfo) return column;
    return -1;
}

// The block of a category and name, read and ordered.
CGroup LoadGroup(const std::string& category, const std::string& name, short column = -1, char order = 1) {
    CGroup group;
    group.m_strCategory = category;
    group.m_strName = name;
    group.m_nSortColumn = column;
    group.m_cSortOrder = order;
    group.init();
    return group;
}

// The stock's position in the block, or in the first block of the category that holds it when
// the name is empty; -1 if none holds it.
int RankInBlocks(const std::string& category, const std::string& name, short column, char order, long id) {
    std::vector<CString> names;
    if (name.empty()) CGroup::GetGroup(category, names);
    else names.push_back(name);
    for (const CString& each : names) {
        const int pos = LoadGroup(category, each, column, order).ID2Pos(id);
        if (pos >= 0) return pos;
    }
    return -1;
}

// The decision block `group`, its table loaded, and the first column named `column`; code 21
// when the table has no row for the stock or no such column.
char FindStrategyCell(long id, const std::string& group, const std::string& column, CGroup* block, int* col) {
    *block = LoadGroup(NY_GROUP_STRATEGY, group);
    block->m_Strategy.Load();
    if (block->m_Strategy.GetPos(id) < 0) return NY_EVAL_NOT_FOUND;
    for (int c = 0; c < block->m_Strategy.GetColSize(); ++c) {
        if (block->m_Strategy.GetColName(c) != column) continue;
        *col = c;
        return 0;
    }
    return NY_EVAL_NOT_FOUND;
}

// A strategy reader's call of `count` literals, the cursor behind its ")", and the block's cell
// column of the second literal.
char ReadStrategyCall(CIndicator& ind, std::string* names, int count, CGroup* block, int* col) {
    if (const char rc = BeginNamedCall(ind, count, names, count)) return rc;
    return FindStrategyCell(ind.m_lStockID, names[0], names[1], block, col);
}

}  // namespace

char CIndicator::ReadINModule(char* word, float* out, short*, short*, char, char*, CExpression*) {
    std::string names[2];
    if (const char rc = BeginNamedCall(*this, 2, names, 2)) return rc;
    const CGroup group = LoadGroup(names[0], names[1]);
    if (std::strcmp(word, "MODULESETNUM") == 0) out[0] = static_cast<float>(group.m_arStockIDs.size());
    else out[0] = group.ID2Pos(m_lStockID) >= 0 ? 1.0f : 0.0f;
    return 0;
}

char CIndicator::ReadModuleSORT(char*, float* out, short* from, short* to, char, char*, CExpression*) {
    std::string names[2];
    char rc = BeginNamedCall(*this, 4, names, 2);
    if (rc != 0) return rc;
    ny::Operand number(*this, *from, *to), order(*this, *from, *to);
    if ((rc = ReadValueArgument(number.values(), &number.from, &number.to, &number.isSeries, 1, false)) != 0)
        return rc;
    if ((rc = ReadValueArgument(order.values(), &order.from, &order.to, &order.isSeries, 1, true)) != 0) return rc;
    const short column = QuoteColumn(ny::TruncToInt(number.values()[0]));
    if (column < 0) return NY_EVAL_NOT_FOUND;
    const char direction = order.values()[0] == 0.0f ? -1 : 1;
    const int pos = RankInBlocks(names[0], names[1], column, direction, m_lStockID);
    if (pos < 0) return NY_EVAL_NOT_FOUND;
    out[0] = static_cast<float>(pos);
    return 0;
}

char CIndicator::ReadSTRATEGY(char*, float* out, short*, short*, char, char*, CExpression*) {
    std::string names[2];
    CGroup block;
    int col = 0;
    if (const char rc = ReadStrategyCall(*this, names, 2, &block, &col)) return rc;
    const int type = block.m_Strategy.GetColType(col);
    if (type != NY_STRATEGY_WHOLE && type != NY_STRATEGY_DECIMAL) return NY_EVAL_TEXT_COLUMN;
    const CString cell = block.m_Strategy.GetCellData(m_lStockID, NY_STRATEGY_COLUMN_BASE - col);
    out[0] = static_cast<float>(std::atof(cell.c_str()));
    return 0;
}

char CIndicator::ReadSTRATEGYSTRCMP(char*, float* out, short*, short*, char, char*, CExpression*) {
    std::string names[3];
    CGroup block;
    int col = 0;
    if (const char rc = ReadStrategyCall(*this, names, 3, &block, &col)) return rc;
    const CString cell = block.m_Strategy.GetCellData(m_lStockID, NY_STRATEGY_COLUMN_BASE - col);
    out[0] = static_cast<float>(std::strcmp(cell.c_str(), names[2].c_str()));
    return 0;
}

char CIndicator::ReadSTRATEGYSORT(char*, float* out, short* from, short* to, char, char*, CExpression*) {
    std::string names[2];
    char rc = BeginNamedCall(*this, 3, names, 2);
    if (rc != 0) return rc;
    ny::Operand order(*this, *from, *to);
    if ((rc = ReadValueArgument(order.values(), &order.from, &order.to, &order.isSeries, 1, true)) != 0) return rc;
    CGroup block;
    int col = 0;
    if ((rc = FindStrategyCell(m_lStockID, names[0], names[1], &block, &col)) != 0) return rc;
    block.m_Strategy.Sort(NY_STRATEGY_COLUMN_BASE - col, ny::TruncToInt(order.values()[0]) != 0 ? 1 : 0);
    const int pos = block.m_Strategy.GetPos(m_lStockID);
    if (pos < 0) return NY_EVAL_NOT_FOUND;
    out[0] = static_cast<float>(pos);
    return 0;
}
