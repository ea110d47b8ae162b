// nyind quotes: the current quotes of the installation's stocks, fetched from the quote server.

#include <memory>

#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/progress.h"
#include "cli/stocks.h"
#include "cli/table.h"
#include "host/comm_data.h"
#include "host/stockdb.h"

namespace nyind {
namespace {

struct QuotesOptions {
    std::string scope = "all", codes;
    bool csv = false, json = false;
};

// The columns shown, with the quote field of each.
struct QuoteShown {
    const char* name;
    short code;
};
const QuoteShown kShown[] = {
    {"last", NY_QUOTE_LAST},     {"open", NY_QUOTE_OPEN},     {"high", NY_QUOTE_HIGH},
    {"low", NY_QUOTE_LOW},       {"volume", NY_QUOTE_VOLUME}, {"amount", NY_QUOTE_AMOUNT},
    {"risepct", NY_QUOTE_RISE_PERCENT}, {"turnover", NY_QUOTE_TURNOVER},
};

int ScopeStocks(const QuotesOptions& options, std::vector<const CStock*>* stocks) {
    if (!options.codes.empty()) {
        for (const std::string& code : SplitList(options.codes, ',')) {
            CStock* stock = nullptr;
            if (int status = FindStock(code, &stock); status != kExitOk) return status;
            stocks->push_back(stock);
        }
        return kExitOk;
    }
    for (const CStock* stock : g_MyStocksArray)
        if (options.scope == "all" || (options.scope == "sh") == (stock->m_cMarket == NY_MARKET_SH))
            stocks->push_back(stock);
    return kExitOk;
}

void PrintQuotes(const std::vector<const CStock*>& stocks, const QuotesOptions& options) {
    if (options.json) {
        nlohmann::ordered_json out = nlohmann::ordered_json::array();
        for (const CStock* stock : stocks) {
            nlohmann::ordered_json row = {{"code", ny::FormatStockCode(stock->GetID())}, {"name", ToTerminal(stock->m_strName)}};
            for (const QuoteShown& column : kShown) row[column.name] = stock->GetValue(column.code);
            out.push_back(row);
        }
        std::cout << out.dump(2) << "\n";
        return;
    }
    std::vector<std::string> header{"code", "name"};
    for (const QuoteShown& column : kShown) header.push_back(column.name);
    TextTable table(header);
    table.AlignRightFrom(2);
    for (const CStock* stock : stocks) {
        std::vector<std::string> row{ny::FormatStockCode(stock->GetID()), ToTerminal(stock->m_strName)};
        for (const QuoteShown& column : kShown) row.push_back(FormatNumber(stock->GetValue(column.code), 2));
        table.AddRow(row);
    }
    std::cout << (options.csv ? table.RenderCsv() : table.Render());
}

int RunQuotes(const QuotesOptions& options, const GlobalOptions& global) {
    if (int status = OpenHome(global, true); status != kExitOk) return status;
    std::vector<const CStock*> stocks;
    if (int status = ScopeStocks(options, &stocks); status != kExitOk) return status;
    if (int status = ConnectServer(global); status != kExitOk) return status;
    if (!g_MyChildView->m_ClientSocket.IsOnline())
        return Fail(kExitUsage, "quotes: no quote server; give --server HOST:PORT or set [Server] Address in config_main.ini");
    if (!RefreshStock(NY_PERIOD_DAY, 0)) return kExitRefused;
    PrintQuotes(stocks, options);
    return kExitOk;
}

}  // namespace

void AddQuotesCommand(CLI::App& app, const GlobalOptions& global, int& status) {
    auto options = std::make_shared<QuotesOptions>();
    CLI::App* command = app.add_subcommand("quotes", "Fetch the current quotes from the quote server and show them");
    auto* scope = command->add_option("--scope", options->scope, "all (every stock of the list), sh or sz")
                      ->check(CLI::IsMember({"all", "sh", "sz"}));
    command->add_option("--codes", options->codes, "The stocks of a list: SH600001,SZ000002,...")->excludes(scope);
    auto* csv = command->add_flag("--csv", options->csv, "Write CSV");
    command->add_flag("--json", options->json, "Write JSON")->excludes(csv);
    command->callback([options, &global, &status] { status = RunQuotes(*options, global); });
}

}  // namespace nyind
