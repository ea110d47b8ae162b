#include "host/stock_tables.h"

#include <cstdio>
#include <cstdlib>

#include "host/clock.h"
#include "host/files.h"
#include "host/global.h"
#include "host/stockdb.h"
#include "host/text_fields.h"

namespace ny {
namespace {

// The items of the header's columns after "code"; -1 for an unknown one, which is noted.
std::vector<short> HeaderItems(const std::vector<std::string>& fields, const StockTable& table, int line,
                               ParsedStockTable* parsed) {
    std::vector<short> items;
    for (size_t i = 1; i < fields.size(); ++i) {
        short item = -1;
        for (const TableColumn& column : table.columns)
            if (fields[i] == column.name) item = column.code;
        if (item < 0) parsed->ignored.emplace_back(line, "unknown column \"" + fields[i] + "\"");
        items.push_back(item);
    }
    return items;
}

// One line of values; false with a reason.
bool ParseRow(const std::vector<std::string>& fields, const std::vector<short>& items, StockTableRow* row,
              std::string* reason) {
    if (fields.size() != items.size() + 1) {
        *reason = "expected " + std::to_string(items.size() + 1) + " fields";
        return false;
    }
    row->id = ParseStockCode(fields[0]);
    if (g_MyGetStock(row->id) == nullptr) {
        *reason = "unknown stock \"" + fields[0] + "\"";
        return false;
    }
    for (size_t i = 0; i < items.size(); ++i) {
        float value = 0;
        if (!ParseFloat(fields[i + 1], &value)) {
            *reason = "a value is not a number";
            return false;
        }
        if (items[i] >= 0) row->values.emplace_back(items[i], value);
    }
    return true;
}

// The shortest text that reads back as the same float.
std::string FormatNumber(float value) {
    char text[48];
    for (int digits = 6; digits <= 9; ++digits) {
        std::snprintf(text, sizeof(text), "%.*g", digits, value);
        if (std::strtof(text, nullptr) == value) break;
    }
    return text;
}

}  // namespace

const StockTable& QuoteTable() {
    static const std::vector<TableColumn> kColumns = {
        {"preclose", NY_QUOTE_PRECLOSE}, {"open", NY_QUOTE_OPEN}, {"high", NY_QUOTE_HIGH},
        {"low", NY_QUOTE_LOW}, {"last", NY_QUOTE_LAST}, {"volume", NY_QUOTE_VOLUME},
        {"amount", NY_QUOTE_AMOUNT}, {"extra", NY_QUOTE_EXTRA},
        {"buy1", NY_QUOTE_BUY_PRICE1}, {"buyvol1", NY_QUOTE_BUY_VOLUME1},
        {"buy2", NY_QUOTE_BUY_PRICE2}, {"buyvol2", NY_QUOTE_BUY_VOLUME2},
        {"buy3", NY_QUOTE_BUY_PRICE3}, {"buyvol3", NY_QUOTE_BUY_VOLUME3},
        {"sell1", NY_QUOTE_SELL_PRICE1}, {"sellvol1", NY_QUOTE_SELL_VOLUME1},
        {"sell2", NY_QUOTE_SELL_PRICE2}, {"sellvol2", NY_QUOTE_SELL_VOLUME2},
        {"sell3", NY_QUOTE_SELL_PRICE3}, {"sellvol3", NY_QUOTE_SELL_VOLUME3},
        {"curvol", NY_QUOTE_CUR_VOLUME}, {"inner", NY_QUOTE_INNER}, {"outer", NY_QUOTE_OUTER},
        {"avgprice", NY_QUOTE_AVG_PRICE}, {"volratio", NY_QUOTE_VOLUME_RATIO},
        {"change", NY_QUOTE_CHANGE}, {"risepct", NY_QUOTE_RISE_PERCENT},
        {"orderratio", NY_QUOTE_ORDER_RATIO}, {"orderdiff", NY_QUOTE_ORDER_DIFF},
        {"amplitude", NY_QUOTE_AMPLITUDE}, {"pe", NY_QUOTE_PE}, {"turnover", NY_QUOTE_TURNOVER},
    };
    static const StockTable table{"data/quotes.csv", kColumns, true, &CStock::GetValue, &CStock::SetValue};
    return table;
}

const StockTable& FinanceTable() {
    // The shares themselves (total, circulating) stand in the stock list.
    static const std::vector<TableColumn> kColumns = {
        {"state_shares", NY_FINANCE_STATE_SHARES}, {"legal_shares", NY_FINANCE_LEGAL_SHARES},
        {"total_assets", NY_FINANCE_TOTAL_ASSETS}, {"capital_reserve", NY_FINANCE_CAPITAL_RESERVE},
        {"reserve_per_share", NY_FINANCE_RESERVE_PER_SHARE}, {"equity", NY_FINANCE_EQUITY},
        {"main_profit", NY_FINANCE_MAIN_PROFIT}, {"total_profit", NY_FINANCE_TOTAL_PROFIT},
        {"net_profit", NY_FINANCE_NET_PROFIT}, {"undistributed", NY_FINANCE_UNDISTRIBUTED},
        {"eps", NY_FINANCE_EPS}, {"net_assets_per_share", NY_FINANCE_NET_ASSETS_PER_SHARE},
    };
    static const StockTable table{"data/finance.csv", kColumns, false, &CStock::GetFinanceValue,
                                  &CStock::SetFinanceValue};
    return table;
}

ParsedStockTable ParseStockTable(const std::string& text, const StockTable& table) {
    ParsedStockTable parsed;
    std::vector<short> items;
    bool haveHeader = false;
    for (const NumberedLine& line : SplitTextLines(text)) {
        const std::vector<std::string> fields = SplitFields(line.text);
        if (line.text.compare(0, 5, "date=") == 0) {
            parsed.date = table.dated ? std::atoi(line.text.c_str() + 5) : 0;
            if (parsed.date == 0 || WeekDay(parsed.date) == 0) {
                parsed.problems.emplace_back(line.number, table.dated ? "bad date" : "this file has no date");
                parsed.date = 0;
            }
        } else if (fields[0] == "code") {
            items = HeaderItems(fields, table, line.number, &parsed);
            haveHeader = true;
        } else if (!haveHeader) {
            parsed.problems.emplace_back(line.number, "no header line \"code,...\" before the stocks");
        } else {
            StockTableRow row{line.number, 0, {}};
            std::string reason;
            if (ParseRow(fields, items, &row, &reason)) parsed.rows.push_back(std::move(row));
            else parsed.problems.emplace_back(line.number, reason);
        }
    }
    return parsed;
}

std::string StockTablePath(const StockTable& table) { return g_MyExePath + table.file; }

int LoadStockTable(const StockTable& table) {
    const std::string path = StockTablePath(table);
    std::string text;
    if (!ReadWholeFile(path, &text)) return 0;
    const ParsedStockTable parsed = ParseStockTable(text, table);
    for (const auto& [line, what] : parsed.ignored)
        ReportProblem(path + ": line " + std::to_string(line) + ": " + what + " ignored");
    for (const auto& [line, what] : parsed.problems)
        ReportProblem(path + ": line " + std::to_string(line) + ": " + what + ", line skipped");
    for (const StockTableRow& row : parsed.rows) {
        CStock* stock = g_MyGetStock(row.id);
        for (const auto& [item, value] : row.values) (stock->*table.set)(item, value);
    }
    return parsed.date;
}

std::string FormatStockTable(const StockTable& table, const std::vector<const CStock*>& stocks, int date) {
    std::string text;
    if (table.dated && date != 0) text += "date=" + std::to_string(date) + "\n";
    text += "code";
    for (const TableColumn& column : table.columns) text += std::string(",") + column.name;
    text += "\n";
    for (const CStock* stock : stocks) {
        std::string line = FormatStockCode(stock->m_lStockID);
        bool any = false;
        for (const TableColumn& column : table.columns) {
            const float value = (stock->*table.get)(column.code);
            any = any || value != 0;
            line += "," + FormatNumber(value);
        }
        if (any) text += line + "\n";
    }
    return text;
}

}  // namespace ny
