// nyind pick: condition stock picking over the stocks of the installation.

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>

#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/progress.h"
#include "cli/statement_view.h"
#include "cli/stocks.h"
#include "cli/table.h"
#include "dialogs/stock_rules.h"
#include "host/bar_csv.h"
#include "host/files.h"
#include "host/stockdb.h"
#include "model/library.h"
#include "picker/pick_request.h"

namespace nyind {
namespace {

// The status text of a finished pick, as the picking dialog shows it.
const char* const kPickSummary = "选中数量: %d,总数: %d\r\n选中比例: %0.2f%%";

struct PickOptions {
    std::vector<std::string> conditions;
    bool andMode = false, orMode = false;  // --and is the default; the flag only says so
    std::string scope = "all", block, codes, period = "day", from, to, rules, saveRules;
    bool power = false, csv = false, json = false;
    int jobs = 0;  // 0: one worker per core
};

int ParseCondition(const std::string& text, ny::PickCondition* condition) {
    const size_t colon = text.find(':');
    if (!ArgumentToGbk(text.substr(0, colon), &condition->name)) return kExitUsage;
    if (colon == std::string::npos) return kExitOk;
    for (const std::string& piece : SplitList(text.substr(colon + 1), ',')) {
        char* end = nullptr;
        const long value = std::strtol(piece.c_str(), &end, 10);
        if (piece.empty() || *end != '\0' || value < -32768 || value > 32767)
            return Fail(kExitUsage, "--cond " + text + ": parameter values are whole numbers separated by commas");
        condition->params.push_back(static_cast<short>(value));
    }
    return kExitOk;
}

int ParseDate(const std::string& text, int* date) {
    if (ny::ParseDateText(text, date)) return kExitOk;
    return Fail(kExitUsage, "\"" + text + "\" is not a date (YYYYMMDD or YYYY-MM-DD)");
}

int ParseScope(const PickOptions& options, ny::PickRequest* request) {
    if (!options.block.empty()) {
        const size_t slash = options.block.find('/');
        if (slash == std::string::npos) return Fail(kExitUsage, "--block: write CATEGORY/NAME");
        request->scope = ny::PickScope::Block;
        if (!ArgumentToGbk(options.block.substr(0, slash), &request->blockCategory) ||
            !ArgumentToGbk(options.block.substr(slash + 1), &request->blockName))
            return kExitUsage;
        return kExitOk;
    }
    if (!options.codes.empty()) {
        request->scope = ny::PickScope::Codes;
        for (const std::string& code : SplitList(options.codes, ',')) {
            CStock* stock = nullptr;
            if (int status = FindStock(code, &stock); status != kExitOk) return status;
            request->stockIds.push_back(stock->GetID());
        }
        return kExitOk;
    }
    request->scope = options.scope == "sh" ? ny::PickScope::ShanghaiA
                     : options.scope == "sz" ? ny::PickScope::ShenzhenA
                                             : ny::PickScope::AllA;
    return kExitOk;
}

// The conditions of a rule file, as the picking dialog loads them: names that no condition
// formula of the library has any more are skipped.
int ReadRules(const std::string& path, ny::PickRequest* request) {
    ny::StockRule rule;
    if (!ny::ReadStockRuleFile(path, &rule)) return Fail(kExitRefused, path + ": not a whole rule file");
    for (const CString& name : rule.names)
        if (g_MyGetIndicator(name, 1) != nullptr) request->conditions.push_back({name, {}});
    request->andMode = rule.logic != 2;
    return kExitOk;
}

int SaveRules(const std::string& path, const ny::PickRequest& request) {
    ny::StockRule rule;
    for (const ny::PickCondition& condition : request.conditions) rule.names.push_back(condition.name);
    rule.logic = request.andMode ? 1 : 2;
    if (ny::WriteStockRuleFile(path, rule)) return kExitOk;
    return Fail(kExitRefused, path + ": the rule file can't be written");
}

int BuildRequest(const PickOptions& options, ny::PickRequest* request) {
    if (options.rules.empty() && options.conditions.empty()) return Fail(kExitUsage, "give --cond or --rules");
    if (!options.rules.empty())
        if (int status = ReadRules(options.rules, request); status != kExitOk) return status;
    for (const std::string& text : options.conditions) {
        ny::PickCondition condition;
        if (int status = ParseCondition(text, &condition); status != kExitOk) return status;
        request->conditions.push_back(condition);
    }
    if (options.rules.empty() || options.orMode) request->andMode = !options.orMode;
    request->period = PeriodNumber(options.period);
    request->adjustPower = options.power;
    request->workers = options.jobs;
    if (options.from.empty() != options.to.empty()) return Fail(kExitUsage, "history mode needs both --from and --to");
    if (!options.from.empty()) {
        if (int status = ParseDate(options.from, &request->fromDate); status != kExitOk) return status;
        if (int status = ParseDate(options.to, &request->toDate); status != kExitOk) return status;
    }
    return ParseScope(options, request);
}

std::string ValueText(float value) {
    return std::isfinite(value) ? FormatNumber(value, DecimalsFor(std::fabs(value))) : std::string();
}

// The label of each condition of the request: the --cond text, or the name of a rule file's condition.
std::vector<std::string> ConditionLabels(const ny::PickRequest& request, const PickOptions& options) {
    std::vector<std::string> labels;
    const size_t fromRules = request.conditions.size() - options.conditions.size();
    for (size_t i = 0; i < fromRules; ++i) labels.push_back(ToTerminal(request.conditions[i].name));
    labels.insert(labels.end(), options.conditions.begin(), options.conditions.end());
    return labels;
}

void PrintOutcome(const ny::PickOutcome& outcome, const PickOptions& options, const std::vector<std::string>& labels) {
    if (options.json) {
        nlohmann::ordered_json out = {{"examined", outcome.examined}, {"total", outcome.total},
                                      {"damaged", outcome.damaged},
                                      {"stopped", outcome.stopped}, {"picked", outcome.hits.size()}};
        out["conditions"] = labels;
        out["stocks"] = nlohmann::ordered_json::array();
        for (const ny::PickHit& hit : outcome.hits) {
            const CStock* stock = g_MyGetStock(hit.stockId);
            nlohmann::ordered_json values = nlohmann::ordered_json::array();
            for (float v : hit.lastValues) values.push_back(JsonNumber(v));
            out["stocks"].push_back({{"code", ny::FormatStockCode(hit.stockId)},
                                     {"name", stock != nullptr ? ToTerminal(stock->m_strName) : std::string()},
                                     {"values", values}});
        }
        std::cout << out.dump(2) << "\n";
        return;
    }
    std::vector<std::string> header{"code", "name"};
    for (const std::string& condition : labels) header.push_back(condition.substr(0, condition.find(':')));
    TextTable table(header);
    table.AlignRightFrom(2);
    for (const ny::PickHit& hit : outcome.hits) {
        const CStock* stock = g_MyGetStock(hit.stockId);
        std::vector<std::string> row{ny::FormatStockCode(hit.stockId), stock != nullptr ? ToTerminal(stock->m_strName) : ""};
        for (float v : hit.lastValues) row.push_back(ValueText(v));
        table.AddRow(row);
    }
    if (options.csv) {
        std::cout << table.RenderCsv();
        return;
    }
    std::cout << table.Render();
    char summary[160];
    const double ratio = outcome.total > 0 ? static_cast<double>(outcome.hits.size()) / outcome.total : 0;
    std::snprintf(summary, sizeof summary, kPickSummary, static_cast<int>(outcome.hits.size()), outcome.total, ratio * 100);
    std::cout << ToTerminal(summary) << "\n";
}

int RunPickCommand(const PickOptions& options, const GlobalOptions& global) {
    if (int status = OpenHome(global, true); status != kExitOk) return status;
    ny::PickRequest request;
    if (int status = BuildRequest(options, &request); status != kExitOk) return status;
    if (!options.saveRules.empty())
        if (int status = SaveRules(options.saveRules, request); status != kExitOk) return status;
    if (int status = ConnectServer(global); status != kExitOk) return status;
    const bool terminal = isatty(STDERR_FILENO) != 0;
    ny::PickOutcome outcome;
    ny::ClearProblems();  // what the pick finds damaged is reported after it
    {
        InterruptWatch interrupt;
        RefreshProgress refresh(terminal, InterruptWatch::Interrupted());
        outcome = ny::RunPick(
            request, [terminal](int done, int total) { if (terminal) DrawProgress("", done, total); },
            [] { return InterruptWatch::Interrupted().load(); });
    }
    if (terminal) ClearProgress();
    if (!outcome.ok) return FailGbk(kExitRefused, outcome.message);
    for (const CString& message : TakeMessages()) FailGbk(kExitOk, message);
    if (outcome.stopped)
        Fail(kExitOk, "stopped after " + std::to_string(outcome.examined) + " of " + std::to_string(outcome.total) +
                          " stocks; the stocks found so far:");
    for (const std::string& problem : ny::InstallationProblems()) Fail(kExitOk, problem);
    if (outcome.damaged > 0)
        Fail(kExitOk, std::to_string(outcome.damaged) + " stocks left out: their bar or ex-rights files are damaged");
    PrintOutcome(outcome, options, ConditionLabels(request, options));
    // The picked stocks are shown; a block that could not be stored is still a failure.
    return outcome.message.empty() ? kExitOk : FailGbk(kExitRefused, outcome.message);
}

}  // namespace

void AddPickCommand(CLI::App& app, const GlobalOptions& global, int& status) {
    auto options = std::make_shared<PickOptions>();
    CLI::App* command = app.add_subcommand("pick", "Pick the stocks that meet condition formulas");
    command->add_option("--cond", options->conditions,
                        "A condition formula by name, with parameter values: NAME[:P1,P2,...] (repeatable)")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    auto* andFlag = command->add_flag("--and", options->andMode, "All conditions must hold (the default)");
    command->add_flag("--or", options->orMode, "Any condition may hold")->excludes(andFlag);
    auto* scope = command->add_option("--scope", options->scope, "all (Shanghai and Shenzhen A shares), sh or sz")
                      ->check(CLI::IsMember({"all", "sh", "sz"}));
    // An empty scope is a mistake of the command line, not a wish to pick over the whole market.
    const auto notEmpty = [](const std::string& text) { return text.empty() ? std::string("must not be empty") : std::string(); };
    auto* block = command->add_option("--block", options->block, "The stocks of a block: CATEGORY/NAME")
                      ->excludes(scope)
                      ->check(notEmpty);
    command->add_option("--codes", options->codes, "The stocks of a list: SH600001,SZ000002,...")
        ->excludes(scope)
        ->excludes(block)
        ->check(notEmpty);
    command->add_option("--rules", options->rules,
                        "Conditions and AND/OR of a stored rule file (FILE.ast); --cond adds further ones");
    command->add_option("--save-rules", options->saveRules, "Store the conditions and AND/OR as a rule file (FILE.ast)");
    AddPeriodOption(*command, options->period);
    command->add_flag("--power", options->power, "Adjust the bars for ex-rights events");
    command->add_option("--jobs", options->jobs, "Worker threads (default: one per core)")
        ->check(CLI::Range(1, 64));
    command->add_option("--from", options->from, "History mode: first day (YYYYMMDD or YYYY-MM-DD)");
    command->add_option("--to", options->to, "History mode: last day");
    auto* csv = command->add_flag("--csv", options->csv, "Write CSV");
    command->add_flag("--json", options->json, "Write JSON")->excludes(csv);
    command->callback([options, &global, &status] { status = RunPickCommand(*options, global); });
}

}  // namespace nyind
