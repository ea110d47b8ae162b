// nyind calc: evaluate a formula over the bars of a stock or of a CSV file.

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>

#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/formula_run.h"
#include "cli/statement_view.h"
#include "cli/stocks.h"
#include "cli/table.h"
#include "engine/eval_code.h"
#include "host/bar_csv.h"
#include "host/files.h"
#include "host/stockdb.h"
#include "model/period.h"

namespace nyind {
namespace {

constexpr int kDefaultTableRows = 20;
constexpr size_t kMaxBars = 32767;  // bar counts of an evaluation are 16-bit

struct CalcOptions {
    std::string formula, kind, source, name, stock, bars, period = "day";
    bool power = false;
    std::vector<std::string> params;
    int last = -1;
    bool csv = false, json = false, all = false;
};

struct Series {
    std::vector<CHisDay> bars;
    short period = NY_PERIOD_DAY;  // CSV bars keep the day period, as the picker's formulas do
    bool fromCsv = false;
    bool minute = false;
    CStock* stock = nullptr;
    std::string label;  // where the bars came from
};

int LoadSeries(const CalcOptions& options, Series* series) {
    if (options.bars.empty()) {
        series->period = PeriodNumber(options.period);
        series->minute = ny::IsMinutePeriod(series->period);
        if (int status = LoadStockSeries(options.stock, options.period, options.power, &series->stock, &series->bars);
            status != kExitOk)
            return status;
        series->label = ny::FormatStockCode(series->stock->GetID());
        return kExitOk;
    }
    if (!options.stock.empty()) {
        if (int status = FindStock(options.stock, &series->stock); status != kExitOk) return status;
        series->label = ny::FormatStockCode(series->stock->GetID());
    }
    std::string text;
    if (int status = ReadInput(options.bars, &text, ny::kMaxBarCsvBytes); status != kExitOk) return status;
    ny::BarCsv csv = ny::ParseBarCsv(text);
    for (const ny::BarCsvProblem& p : csv.problems)
        Fail(kExitRefused, options.bars + ":" + std::to_string(p.line) + ": " + p.message);
    if (!csv.problems.empty()) return kExitRefused;
    if (csv.bars.empty()) return Fail(kExitRefused, options.bars + ": no bars");
    if (csv.bars.size() > kMaxBars) csv.bars.erase(csv.bars.begin(), csv.bars.end() - kMaxBars);
    series->bars = std::move(csv.bars);
    series->minute = csv.minute;
    series->fromCsv = true;
    series->label = options.bars;
    return kExitOk;
}

bool HasValue(const CExpression& s, int bar) {
    return s.m_cComputed == 1 && s.m_pData != nullptr && bar >= s.m_nFirst && bar < s.m_nEnd && bar < s.m_nAllocBars;
}

std::vector<const CExpression*> ShownStatements(const CIndicator& formula, bool all) {
    std::vector<const CExpression*> shown;
    for (const CExpression* s : formula.m_arExpressions)
        if (all || s->m_nType != 0) shown.push_back(s);
    if (shown.empty())
        for (const CExpression* s : formula.m_arExpressions) shown.push_back(s);
    return shown;
}

void PrintTable(const CIndicator& formula, const Series& series, int firstRow, const CalcOptions& options) {
    const std::vector<const CExpression*> shown = ShownStatements(formula, options.all);
    std::vector<std::string> header{series.minute ? "time" : "date"};
    std::vector<int> decimals;
    for (const CExpression* s : shown) {
        header.push_back(StatementHeading(*s));
        double largest = 0;
        for (int bar = firstRow; bar < static_cast<int>(series.bars.size()); ++bar)
            if (HasValue(*s, bar)) largest = std::max(largest, std::fabs(static_cast<double>(s->m_pData[bar])));
        decimals.push_back(DecimalsFor(largest));
    }
    TextTable table(header);
    table.AlignRightFrom(1);
    for (int bar = firstRow; bar < static_cast<int>(series.bars.size()); ++bar) {
        std::vector<std::string> row{BarTimeText(series.bars[bar].m_lTime, series.minute)};
        for (size_t c = 0; c < shown.size(); ++c)
            row.push_back(HasValue(*shown[c], bar) ? FormatNumber(shown[c]->m_pData[bar], decimals[c]) : "");
        table.AddRow(row);
    }
    std::cout << (options.csv ? table.RenderCsv() : table.Render());
    if (!options.csv && firstRow > 0 && options.last < 0)
        std::cout << "(last " << table.RowCount() << " of " << series.bars.size() << " bars; --last 0 shows all)\n";
}

void PrintJson(const CIndicator& formula, const Series& series, int firstRow) {
    nlohmann::ordered_json out;
    out["formula"] = {{"name", ToTerminal(formula.m_strName)}, {"kind", formula.m_MainType}};
    out["source"] = series.label;
    if (!series.fromCsv) out["period"] = ny::FindPeriod(series.period)->name;
    if (series.stock != nullptr)
        out["stock"] = {{"code", ny::FormatStockCode(series.stock->GetID())}, {"name", ToTerminal(series.stock->m_strName)}};
    out["bars"] = series.bars.size();
    out["first_row"] = firstRow;
    nlohmann::ordered_json times = nlohmann::ordered_json::array();
    for (size_t bar = firstRow; bar < series.bars.size(); ++bar)
        times.push_back(BarTimeText(series.bars[bar].m_lTime, series.minute));
    out["times"] = times;
    out["statements"] = nlohmann::ordered_json::array();
    for (const CExpression* s : formula.m_arExpressions) {
        nlohmann::ordered_json item = StatementDefinition(*s);
        item["computed"] = s->m_cComputed == 1;
        item["is_series"] = s->m_cIsSeries == 1;
        item["first"] = s->m_cComputed == 1 ? nlohmann::ordered_json(s->m_nFirst) : nlohmann::ordered_json(nullptr);
        item["end"] = s->m_cComputed == 1 ? nlohmann::ordered_json(s->m_nEnd) : nlohmann::ordered_json(nullptr);
        nlohmann::ordered_json values = nlohmann::ordered_json::array();
        nlohmann::ordered_json draw = nlohmann::ordered_json::array();
        bool anyDraw = false;
        for (int bar = firstRow; bar < static_cast<int>(series.bars.size()); ++bar) {
            values.push_back(HasValue(*s, bar) ? JsonNumber(s->m_pData[bar]) : nlohmann::ordered_json(nullptr));
            if (s->m_pDrawData == nullptr || bar >= s->m_nAllocBars) continue;
            const float* d = s->m_pDrawData + 4 * bar;
            anyDraw = anyDraw || d[0] != 0 || d[1] != 0 || d[2] != 0 || d[3] != 0;
            draw.push_back({JsonNumber(d[0]), JsonNumber(d[1]), JsonNumber(d[2]), JsonNumber(d[3])});
        }
        item["values"] = values;
        if (anyDraw) item["draw"] = draw;
        out["statements"].push_back(item);
    }
    std::cout << out.dump(2) << "\n";
}

// The evaluator's code in words, with its number: "未知的函数或变量 (UNKNOWN_WORD, code 7)".
std::string EvalCodeWords(int code) {
    const char* text = ny::EvalCodeText(code);
    const char* name = ny::EvalCodeName(code);
    const std::string number = "code " + std::to_string(code);
    if (!text || !name) return "evaluator " + number;
    return ToTerminal(text) + " (" + name + ", " + number + ")";
}

// Names each statement that could not be computed, with the evaluator's code. Returns kExitRefused
// when one of the statements shown failed.
int ReportFailedStatements(const CIndicator& formula, const CalcOptions& options) {
    const std::vector<const CExpression*> shown = ShownStatements(formula, options.all);
    int status = kExitOk;
    int number = 0;
    for (const CExpression* s : formula.m_arExpressions) {
        ++number;
        if (s->m_cComputed == 1) continue;
        const bool requested = std::find(shown.begin(), shown.end(), s) != shown.end();
        Fail(kExitOk, "statement " + std::to_string(number) + " (" + StatementHeading(*s) + ": " +
                          ToTerminal(s->m_strText) + ") could not be computed: " +
                          EvalCodeWords(s->m_cFailCode));
        if (requested) status = kExitRefused;
    }
    return status;
}

int RunCalc(const CalcOptions& options, const GlobalOptions& global) {
    if (options.formula.empty() == options.source.empty())
        return Fail(kExitUsage, "calc: give either --formula NAME or --source FILE");
    if (options.stock.empty() && options.bars.empty())
        return Fail(kExitUsage, "calc: give --stock CODE or --bars FILE");
    if (options.source == "-" && options.bars == "-")
        return Fail(kExitUsage, "calc: only one of --source and --bars can read standard input");
    if (!options.bars.empty() && (options.period != "day" || options.power))
        return Fail(kExitUsage, "calc: --period and --power apply to the bars of --stock, not to --bars");
    if (int status = OpenHome(global, !options.stock.empty()); status != kExitOk) return status;
    if (!options.stock.empty())
        if (int status = ConnectServer(global); status != kExitOk) return status;
    CIndicator formula;
    if (int status = PrepareFormula({options.formula, options.kind, options.source, options.name, options.params}, &formula);
        status != kExitOk)
        return status;
    Series series;
    if (int status = LoadSeries(options, &series); status != kExitOk) return status;
    EvaluateOver(formula, series.bars, series.stock != nullptr ? series.stock->GetID() : 0, series.period);
    const int rows = options.last >= 0 ? options.last : options.csv || options.json ? 0 : kDefaultTableRows;
    const int total = static_cast<int>(series.bars.size());
    const int firstRow = rows == 0 ? 0 : std::max(0, total - rows);
    if (options.json)
        PrintJson(formula, series, firstRow);
    else
        PrintTable(formula, series, firstRow, options);
    return ReportFailedStatements(formula, options);
}

}  // namespace

short PeriodNumber(const std::string& name) {
    const ny::PeriodRow* row = ny::FindPeriodByName(name);
    return row != nullptr ? row->number : 0;
}

CLI::Option* AddPeriodOption(CLI::App& command, std::string& period) {
    std::vector<std::string> names;
    for (const ny::PeriodRow& row : ny::kPeriods) names.push_back(row.name);
    return command.add_option("--period", period, "Bar period: " + CLI::detail::join(names, " "))
        ->check(CLI::IsMember(names));
}

void AddCalcCommand(CLI::App& app, const GlobalOptions& global, int& status) {
    auto options = std::make_shared<CalcOptions>();
    CLI::App* command = app.add_subcommand("calc", "Evaluate a formula over the bars of a stock or a CSV file");
    auto* formula = command->add_option("--formula", options->formula, "A formula of the library, by name");
    AddKindOption(*command, options->kind, "Kind of the --formula")->needs(formula);
    auto* source = command->add_option("--source", options->source,
                                       "Formula text or a readable formula file (*.fml); \"-\" reads standard input")
                       ->excludes(formula);
    command->add_option("--name", options->name, "Name of the --source formula in messages")->needs(source);
    command->add_option("--param", options->params, "Parameter value NAME=VALUE (repeatable)")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command->add_option("--stock", options->stock, "A stock of the installation: SH600001, SZ000001, or its code");
    command->add_option("--bars", options->bars,
                        "A CSV file of bars: date,open,high,low,close,volume[,amount]; \"-\" reads standard input");
    AddPeriodOption(*command, options->period);
    command->add_flag("--power", options->power, "Adjust the stock's bars for ex-rights events");
    command->add_option("--last", options->last, "Show only the last N bars (0: all; default 20 in the table, all otherwise)")
        ->check(CLI::NonNegativeNumber);
    auto* csv = command->add_flag("--csv", options->csv, "Write CSV");
    command->add_flag("--json", options->json, "Write JSON")->excludes(csv);
    command->add_flag("--all", options->all, "Show the assignments (:=) too, not only the output lines");
    command->callback([options, &global, &status] { status = RunCalc(*options, global); });
}

}  // namespace nyind
