#pragma once
// Strategy result tables: each decision block (category "决策") has, beside its list of stocks, a
// table of what its strategy computed per stock. Rows are stocks, columns have a name and a type;
// every cell is kept as text.
//
// The file <blocks folder>/决策/<name>.stg: a 16-byte header ("NYST", version 1, column count,
// row count), one 36-byte descriptor per column (name, 32 bytes GBK zero-padded; type, 32-bit),
// then per row the 32-bit stock id and one 32-byte zero-padded cell per column.

#include <vector>

#include "host/types.h"

// Column types. Whole and decimal numbers are the numeric ones; any other type is text.
constexpr int NY_STRATEGY_TEXT = 1;
constexpr int NY_STRATEGY_DATE = 2;
constexpr int NY_STRATEGY_WHOLE = 3;
constexpr int NY_STRATEGY_DECIMAL = 4;

// Cells and sort columns are addressed by -200 - c, c being the column's position.
constexpr short NY_STRATEGY_COLUMN_BASE = -200;

class CStrategyData {
public:
    struct Column {
        CString m_strName;  // GBK
        int m_nType = NY_STRATEGY_TEXT;
    };
    struct Row {
        int m_lStockID = 0;
        std::vector<CString> m_arCells;  // one per column
    };

    CString m_strPath;  // the table's file; set by CGroup::init for a decision block

    // Reads the table from m_strPath. A missing file is an empty table (FALSE); a damaged one is
    // reported and keeps only its complete rows, or nothing if its header is unusable.
    BOOL Load();
    // Row of a stock in the current order, from 0; -1 if the table has no row for it.
    int GetPos(long id) const;
    int GetColSize() const { return static_cast<int>(m_arColumns.size()); }
    // Name and type of a column by its position; empty and text for a position out of range.
    CString GetColName(int col) const;
    int GetColType(int col) const;
    // The cell of a stock in column -200 - c; empty if the stock or the column is not there.
    CString GetCellData(long id, short column) const;
    // Orders the rows by column -200 - c: order 0 falling, any other rising. Numeric columns
    // compare as numbers, others as GBK bytes; equal cells keep their order.
    void Sort(int column, char order);

    // The stored form of a table, and its careful write (temporary file, then rename).
    static std::string Encode(const std::vector<Column>& columns, const std::vector<Row>& rows);
    static BOOL Save(const CString& path, const std::vector<Column>& columns, const std::vector<Row>& rows);
    // Path of the table of a decision block.
    static CString GetStrategyFilePath(const CString& name);

private:
    std::vector<Column> m_arColumns;
    std::vector<Row> m_arRows;
};

// The category whose blocks carry strategy tables.
extern const char* const NY_GROUP_STRATEGY;
