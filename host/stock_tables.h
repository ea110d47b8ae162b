#pragma once
// The per-stock tables of an installation: the current quotes (data/quotes.csv) and the financial
// records (data/finance.csv). Both are UTF-8 text: blank and "#" lines skipped, a header
// "code,<column>,..." naming any subset of the table's columns, then one line per stock. The
// quotes may carry a line "date=YYYYMMDD", the trading date of the quotes.

#include <string>
#include <vector>

#include "host/types.h"

class CStock;

namespace ny {

// One column: its name in the header and the CStock item it fills (a GetValue code of the
// quotes, a GetFinanceValue item of the financial records).
struct TableColumn {
    const char* name;
    short code;
};

struct StockTable {
    const char* file;  // below the installation, "data/quotes.csv"
    const std::vector<TableColumn>& columns;
    bool dated;        // a "date=" line is allowed
    float (CStock::*get)(short) const;
    BOOL (CStock::*set)(short, float);
};

const StockTable& QuoteTable();
const StockTable& FinanceTable();

struct StockTableRow {
    int line;
    int id;
    std::vector<std::pair<short, float>> values;  // item and value, in the header's order
};

// What a table's text holds. `problems` name a line each ("unknown stock \"SH600099\""); their
// rows are not in `rows`. `ignored` are unknown columns, which are left out.
struct ParsedStockTable {
    int date = 0;
    std::vector<StockTableRow> rows;
    std::vector<std::pair<int, std::string>> problems;
    std::vector<std::pair<int, std::string>> ignored;
};

// Parses the text of a table. A stock must be in the stock list (g_MyGetStock).
ParsedStockTable ParseStockTable(const std::string& text, const StockTable& table);

// Reads the installation's table into the stocks, reporting its problems as installation
// problems. Returns the date of a dated table, 0 if there is none or the file is missing.
int LoadStockTable(const StockTable& table);

// The text of a table: each of the stocks with a non-zero figure, all columns, and the date line
// when the table is dated and date is not 0. Numbers are written so that they read back exactly.
std::string FormatStockTable(const StockTable& table, const std::vector<const CStock*>& stocks, int date);

// The path of a table in the installation.
std::string StockTablePath(const StockTable& table);

}  // namespace ny
