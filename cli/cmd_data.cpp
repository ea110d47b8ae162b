// nyind data import: the user's own bars into the installation, from CSV.

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <set>

#include "cli/commands.h"
#include "cli/statement_view.h"
#include "host/bar_csv.h"
#include "host/encoding.h"
#include "host/files.h"
#include "host/installation.h"
#include "host/stockdb.h"
#include "model/library.h"

namespace nyind {
namespace {

enum class BarKind { Day, Min5, Min1 };

struct ImportOptions {
    std::string code, day, min5, min1, name, pinyin, kind = "A";
    bool replace = false;
};

// The pinyin initials of a stock's name, as the library makes them for formula names.
std::string NameInitials(const CString& name) {
    CIndicator probe;
    probe.m_strName = name;
    g_MyMakeIndicatorPY(&probe);
    return probe.m_arPYCodes.empty() ? std::string() : probe.m_arPYCodes.front();
}

// The kind words of the stock list, joined by "+".
bool ValidKindWords(const std::string& kind) {
    static const std::set<std::string> words = {"A", "INDEX", "BOND", "HAND", "FUND", "STOCK"};
    for (const std::string& word : SplitList(kind, '+'))
        if (words.count(word) == 0) return false;
    return true;
}

// The entry of a stock that is not listed yet, checked before anything is written.
int CheckNewStock(const ImportOptions& options) {
    if (options.name.empty())
        return Fail(kExitUsage, options.code + " is not in the stock list: give --name (and --kind) to add it");
    CString gbk;
    if (!ArgumentToGbk(options.name, &gbk)) return kExitUsage;
    if (options.name.find_first_of(",\r\n") != std::string::npos) return Fail(kExitUsage, "--name may not hold a comma");
    if (!ValidKindWords(options.kind))
        return Fail(kExitUsage, "--kind: kind words are A, INDEX, BOND, HAND, FUND or STOCK, joined by +");
    if (options.pinyin.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789") != std::string::npos)
        return Fail(kExitUsage, "--pinyin: capital letters and digits only");
    return kExitOk;
}

// The stock list with the new stock under --name behind every line that is there. A list that is
// present but can't be read is refused: writing only the new line would lose the others.
int ExtendStockList(int id, const ImportOptions& options, std::string* list) {
    const std::string path = ny::StockListPath();
    std::string error;
    if (!ny::ReadWholeFile(path, list, &error)) {
        if (::access(path.c_str(), F_OK) == 0)
            return Fail(kExitRefused, ToTerminal(error) + ": nothing imported, the stock list is left as it is");
        *list = "code,name,pinyin,kind,capital,total_capital\n";
    }
    const std::string pinyin = options.pinyin.empty() ? NameInitials(ny::Utf8ToGbk(options.name)) : options.pinyin;
    if (!list->empty() && list->back() != '\n') *list += '\n';
    *list += ny::FormatStockCode(id) + "," + options.name + "," + pinyin + "," + options.kind + "\n";
    return kExitOk;
}

// The bars to store: the imported ones merged into the stored ones by their stamp, or the imported
// ones alone when asked to replace (and for the day's 1-minute file, which holds one day). Stored
// bars that can't be read completely are refused rather than replaced by the import.
int BarsToStore(const std::string& path, BarKind kind, const ny::BarCsv& csv, const ImportOptions& options,
                std::vector<CHisDay>* bars) {
    if (options.replace || kind == BarKind::Min1) {
        *bars = csv.bars;
        return kExitOk;
    }
    std::vector<CHisDay> stored;
    std::string damage;
    if (ny::ReadBars(path, kind != BarKind::Day, &stored, &damage) == ny::MarketFileState::Damaged)
        return Fail(kExitRefused, damage + ": nothing imported; repair the file, or give --replace to overwrite it");
    *bars = ny::MergeBars(stored, csv.bars);
    return kExitOk;
}

int WriteOrFail(const std::string& path, const std::string& bytes) {
    std::string error;
    return ny::WriteFileAtomic(path, bytes, &error) ? kExitOk : Fail(kExitRefused, error);
}

int CheckRows(const ny::BarCsv& csv, BarKind kind, const std::string& file) {
    if (csv.bars.empty()) return Fail(kExitRefused, file + ": no bars");
    if (csv.minute != (kind != BarKind::Day))
        return Fail(kExitRefused, file + (csv.minute ? ": minute rows given as day bars" : ": day rows given as minute bars"));
    if (kind == BarKind::Min1 && csv.bars.front().m_lTime / 10000 != csv.bars.back().m_lTime / 10000)
        return Fail(kExitRefused, file + ": the 1-minute file holds one day only");
    return kExitOk;
}

int RunImport(const ImportOptions& options, const GlobalOptions& global) {
    const int given = !options.day.empty() + !options.min5.empty() + !options.min1.empty();
    if (given != 1) return Fail(kExitUsage, "data import: give one of --day, --min5, --min1");
    std::string upper = options.code;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const int id = ny::ParseStockCode(upper);
    if (id == 0) return Fail(kExitUsage, "\"" + options.code + "\" is not a stock code such as SH600001");
    if (int status = OpenHome(global, false); status != kExitOk) return status;

    const BarKind kind = !options.day.empty() ? BarKind::Day : !options.min5.empty() ? BarKind::Min5 : BarKind::Min1;
    const std::string& file = kind == BarKind::Day ? options.day : kind == BarKind::Min5 ? options.min5 : options.min1;
    std::string text;
    if (int status = ReadInput(file, &text, ny::kMaxBarCsvBytes); status != kExitOk) return status;
    const ny::BarCsv csv = ny::ParseBarCsv(text);
    for (const ny::BarCsvProblem& p : csv.problems) Fail(kExitRefused, file + ":" + std::to_string(p.line) + ": " + p.message);
    if (!csv.problems.empty()) return Fail(kExitRefused, "nothing imported");
    if (int status = CheckRows(csv, kind, file); status != kExitOk) return status;

    CStock target;
    target.m_lStockID = id;
    const std::string path = kind == BarKind::Day    ? target.GetDayFilePath()
                             : kind == BarKind::Min5 ? target.GetMin5FilePath()
                                                     : target.GetMinuteFilePath();
    const bool listed = g_MyGetStock(id) != nullptr;
    std::string list;
    if (!listed) {
        if (int status = CheckNewStock(options); status != kExitOk) return status;
        if (int status = LockForChange(ny::StockListPath()); status != kExitOk) return status;
        if (int status = ExtendStockList(id, options, &list); status != kExitOk) return status;
    }
    if (int status = LockForChange(path); status != kExitOk) return status;
    std::vector<CHisDay> bars;
    if (int status = BarsToStore(path, kind, csv, options, &bars); status != kExitOk) return status;
    if (int status = WriteOrFail(path, ny::EncodeBars(bars)); status != kExitOk) return status;
    const bool minute = kind != BarKind::Day;
    std::cout << ny::FormatStockCode(id) << ": " << csv.bars.size() << " bars imported ("
              << BarTimeText(csv.bars.front().m_lTime, minute) << " to " << BarTimeText(csv.bars.back().m_lTime, minute)
              << "), " << bars.size() << " in " << path << "\n";
    if (listed) return kExitOk;
    if (int status = WriteOrFail(ny::StockListPath(), list); status != kExitOk) return status;
    std::cout << "added " << ny::FormatStockCode(id) << " " << options.name << " to the stock list\n";
    return kExitOk;
}

}  // namespace

void AddDataCommand(CLI::App& app, const GlobalOptions& global, int& status) {
    CLI::App* data = app.add_subcommand("data", "Market data of the installation");
    data->require_subcommand(1);
    auto options = std::make_shared<ImportOptions>();
    CLI::App* command = data->add_subcommand("import", "Bring a stock's bars into the installation from a CSV file");
    command->add_option("code", options->code, "The stock, SH600001 or SZ000001")->required();
    command->add_option("--day", options->day, "CSV of day bars: date,open,high,low,close,volume[,amount]");
    command->add_option("--min5", options->min5, "CSV of 5-minute bars, each dated \"YYYY-MM-DD HH:MM\" by its last minute");
    command->add_option("--min1", options->min1, "CSV of the 1-minute bars of one day");
    command->add_flag("--replace", options->replace, "Replace the stored bars instead of merging by date");
    command->add_option("--name", options->name, "Name of a stock that is not listed yet: adds it to the stock list");
    command->add_option("--pinyin", options->pinyin, "Pinyin initials of the new stock (default: made from the name)");
    command->add_option("--kind", options->kind, "Kind words of the new stock, joined by + (default A)");
    command->callback([options, &global, &status] { status = RunImport(*options, global); });
    AddDataTableCommands(*data, global, status);
}

}  // namespace nyind
