// nyind data quotes / finance / blocks: the user's own quotes, financial records and blocks into
// the installation, from CSV. A file with any bad line is refused whole, every bad line named.

#include <iostream>
#include <map>
#include <memory>

#include "cli/commands.h"
#include "host/encoding.h"
#include "host/files.h"
#include "host/group.h"
#include "host/installation.h"
#include "host/stock_tables.h"
#include "host/stockdb.h"
#include "host/text_fields.h"

namespace nyind {
namespace {

// Largest CSV file taken in, far above a market's quotes.
constexpr size_t kMaxTableBytes = 64u << 20;

int RefuseLines(const std::string& file, const std::vector<std::pair<int, std::string>>& bad) {
    for (const auto& [line, what] : bad) Fail(kExitRefused, file + ":" + std::to_string(line) + ": " + what);
    return Fail(kExitRefused, "nothing imported");
}

// An installation file that was not read completely is not rewritten: its skipped lines would be
// lost.
int CheckReadCompletely(const std::string& path) {
    for (const std::string& problem : ny::InstallationProblems())
        if (problem.compare(0, path.size() + 1, path + ":") == 0)
            return Fail(kExitRefused, problem + "\nnothing imported; repair " + path + " first");
    return kExitOk;
}

int ImportTable(const ny::StockTable& table, const std::string& file, const GlobalOptions& global) {
    if (int status = OpenHome(global, true); status != kExitOk) return status;
    std::string text;
    if (int status = ReadInput(file, &text, kMaxTableBytes); status != kExitOk) return status;
    const ny::ParsedStockTable parsed = ny::ParseStockTable(text, table);
    std::vector<std::pair<int, std::string>> bad = parsed.ignored;
    bad.insert(bad.end(), parsed.problems.begin(), parsed.problems.end());
    if (parsed.rows.empty() && bad.empty()) bad.emplace_back(1, "no stocks");
    if (!bad.empty()) return RefuseLines(file, bad);
    const std::string path = ny::StockTablePath(table);
    if (int status = CheckReadCompletely(path); status != kExitOk) return status;
    if (int status = LockForChange(path); status != kExitOk) return status;
    // Read again under the lock, so that a writer that came between is not undone.
    ny::ClearProblems();
    const int storedDate = ny::LoadStockTable(table);
    if (int status = CheckReadCompletely(path); status != kExitOk) return status;
    for (const ny::StockTableRow& row : parsed.rows) {
        CStock* stock = g_MyGetStock(row.id);
        for (const auto& [item, value] : row.values) (stock->*table.set)(item, value);
    }
    const std::vector<const CStock*> stocks(g_MyStocksArray.begin(), g_MyStocksArray.end());
    std::string error;
    if (!ny::WriteFileAtomic(path, ny::FormatStockTable(table, stocks, parsed.date ? parsed.date : storedDate), &error))
        return Fail(kExitRefused, error);
    std::cout << parsed.rows.size() << " stocks imported into " << path << "\n";
    return kExitOk;
}

// One line of a block CSV: category,block,code. A block name is a file name: no "/", no leading ".".
bool ParseBlockLine(const std::vector<std::string>& fields, CString* category, CString* name, int* id,
                    std::string* reason) {
    if (fields.size() != 3) {
        *reason = "expected 3 fields (category,block,code), found " + std::to_string(fields.size());
        return false;
    }
    if (!ny::TryUtf8ToGbk(fields[0], category) || !ny::TryUtf8ToGbk(fields[1], name) || category->empty() ||
        name->empty()) {
        *reason = "category and block must be UTF-8 and not empty";
        return false;
    }
    for (const CString* text : {category, name})
        if ((*text)[0] == '.' || text->find('/') != CString::npos) {
            *reason = "a category or block may not hold \"/\" or start with \".\"";
            return false;
        }
    *id = ny::ParseStockCode(ny::UpperAscii(fields[2]));
    if (g_MyGetStock(*id) == nullptr) {
        *reason = "unknown stock \"" + fields[2] + "\"";
        return false;
    }
    return true;
}

int ImportBlocks(const std::string& file, const GlobalOptions& global) {
    if (int status = OpenHome(global, true); status != kExitOk) return status;
    std::string text;
    if (int status = ReadInput(file, &text, kMaxTableBytes); status != kExitOk) return status;
    std::map<std::pair<CString, CString>, std::vector<int>> blocks;
    std::vector<std::pair<int, std::string>> bad;
    for (const ny::NumberedLine& line : ny::SplitTextLines(text)) {
        if (line.text.compare(0, 9, "category,") == 0) continue;  // the header line
        CString category, name;
        int id = 0;
        std::string reason;
        if (!ParseBlockLine(ny::SplitFields(line.text), &category, &name, &id, &reason)) {
            bad.emplace_back(line.number, reason);
            continue;
        }
        std::vector<int>& ids = blocks[{category, name}];
        if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
    }
    if (blocks.empty() && bad.empty()) bad.emplace_back(1, "no blocks");
    if (!bad.empty()) return RefuseLines(file, bad);
    for (const auto& [key, ids] : blocks) {
        const std::string path = CGroup::GetGroupFilePath(key.first, key.second);
        if (int status = LockForChange(path); status != kExitOk) return status;
        if (!CGroup::CreateGroup(key.first, key.second, ids)) return Fail(kExitRefused, "cannot write " + path);
        std::cout << ToTerminal(key.first) << "/" << ToTerminal(key.second) << ": " << ids.size() << " stocks\n";
    }
    return kExitOk;
}

}  // namespace

void AddDataTableCommands(CLI::App& data, const GlobalOptions& global, int& status) {
    auto file = std::make_shared<std::string>();
    CLI::App* quotes = data.add_subcommand("quotes", "Bring current quotes into data/quotes.csv from a CSV file");
    quotes->add_option("file", *file, "CSV: [date=YYYYMMDD], a header code,<columns>, one line per stock")->required();
    quotes->callback([file, &global, &status] { status = ImportTable(ny::QuoteTable(), *file, global); });
    CLI::App* finance = data.add_subcommand("finance", "Bring financial records into data/finance.csv from a CSV file");
    finance->add_option("file", *file, "CSV: a header code,<columns>, one line per stock")->required();
    finance->callback([file, &global, &status] { status = ImportTable(ny::FinanceTable(), *file, global); });
    CLI::App* blocks = data.add_subcommand("blocks", "Replace blocks by the stocks a CSV file lists for them");
    blocks->add_option("file", *file, "CSV: category,block,code, one stock a line")->required();
    blocks->callback([file, &global, &status] { status = ImportBlocks(*file, global); });
}

}  // namespace nyind
