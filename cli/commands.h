#pragma once
// The subcommands of nyind. Each adds itself to the application; its callback runs the command
// after parsing and leaves the exit status in `status`.

#include <CLI/CLI.hpp>

#include "cli/context.h"
#include "model/indicator.h"

namespace nyind {

void AddCheckCommand(CLI::App& app, const GlobalOptions& global, int& status);
void AddCalcCommand(CLI::App& app, const GlobalOptions& global, int& status);
void AddLibCommand(CLI::App& app, const GlobalOptions& global, int& status);
void AddFuncsCommand(CLI::App& app, const GlobalOptions& global, int& status);
void AddDataCommand(CLI::App& app, const GlobalOptions& global, int& status);
// The quotes, finance and blocks subcommands of "data".
void AddDataTableCommands(CLI::App& data, const GlobalOptions& global, int& status);
void AddPickCommand(CLI::App& app, const GlobalOptions& global, int& status);
void AddQuotesCommand(CLI::App& app, const GlobalOptions& global, int& status);
void AddExplainCommand(CLI::App& app, const GlobalOptions& global, int& status);
void AddChartCommand(CLI::App& app, const GlobalOptions& global, int& status);

// The bar periods by their names in the table of periods (day week ... 60min). PeriodNumber gives
// 0 for another name.
short PeriodNumber(const std::string& name);
CLI::Option* AddPeriodOption(CLI::App& command, std::string& period);

// Kind names of the command line: indicator, condition, trade, candle, or 0 to 3. -1 if unknown.
short ParseKind(const std::string& text);
// The library's formula of a name (UTF-8) and, if kind is not empty, of that kind. Without a kind
// the name must be unique across the kinds. Returns an exit status.
int FindLibraryFormula(const std::string& name, const std::string& kind, CIndicator** formula);
// kExitOk if the formula has no password or `password` (UTF-8) is it; else the refusal's status.
int CheckPassword(const CIndicator& formula, const std::string& password);
// Adds the --kind option with its check.
CLI::Option* AddKindOption(CLI::App& command, std::string& kind, const std::string& what);

}  // namespace nyind
