// nyind check: the syntax test of a formula, with the system's own message.

#include <iostream>
#include <memory>

#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/compile.h"
#include "cli/explain.h"
#include "cli/formula_input.h"
#include "cli/statement_view.h"
#include "cli/table.h"

namespace nyind {
namespace {

struct CheckOptions {
    FormulaInput input{"-", "", {}};
    bool json = false;
    bool explain = false;
};

void PrintStatements(const CIndicator& formula) {
    TextTable table({"#", "name", "expression", "type", "colour", "width"});
    int number = 0;
    for (const CExpression* e : formula.m_arExpressions)
        table.AddRow({std::to_string(++number), ToTerminal(e->m_strName), ToTerminal(e->m_strText),
                      std::to_string(e->m_nType), ColorText(e->m_lColor), std::to_string(e->m_nWidth)});
    std::cout << table.Render();
}

int RunCheck(const CheckOptions& options, const GlobalOptions& global) {
    if (int status = OpenHome(global, false); status != kExitOk) return status;
    CIndicator formula;
    if (int status = LoadFormulaInput(options.input, &formula); status != kExitOk) return status;
    CString message;
    const SYNTestResult result = CompileFormula(formula, &message);
    const bool passed = result.nResult == NY_TEST_OK;
    if (options.json) {
        nlohmann::ordered_json out = {{"name", ToTerminal(formula.m_strName)},
                              {"passed", passed},
                              {"code", result.nResult},
                              {"message", ToTerminal(message)}};
        out["statements"] = nlohmann::ordered_json::array();
        for (const CExpression* e : formula.m_arExpressions) out["statements"].push_back(StatementDefinition(*e));
        if (options.explain) out["sentences"] = ExplanationJson(ExplainFormula(formula));
        std::cout << out.dump(2) << "\n";
    } else {
        const std::string text = ToTerminal(message);
        std::cout << text << (text.empty() || text.back() != '\n' ? "\n" : "");
        if (passed) PrintStatements(formula);
        if (options.explain) std::cout << "\n" << ExplanationText(ExplainFormula(formula));
    }
    return passed ? kExitOk : kExitRefused;
}

}  // namespace

void AddCheckCommand(CLI::App& app, const GlobalOptions& global, int& status) {
    auto options = std::make_shared<CheckOptions>();
    CLI::App* command = app.add_subcommand("check", "Test a formula's syntax and show the statements it is cut into");
    command->add_option("file", options->input.path,
                        "Formula text, or a readable formula file (*.fml); \"-\" or nothing reads standard input");
    command->add_option("--name", options->input.name, "The formula's name in the messages (default: the file's stem)");
    command->add_option("--param", options->input.params, "A parameter of the formula text, NAME=VALUE (repeatable)")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command->add_flag("--json", options->json, "Write the result as JSON");
    command->add_flag("--explain", options->explain, "Also tell each statement in words, as nyind explain does");
    command->callback([options, &global, &status] { status = RunCheck(*options, global); });
}

}  // namespace nyind
