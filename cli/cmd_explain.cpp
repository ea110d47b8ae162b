// nyind explain: what a formula says, statement by statement, in the system's own sentences.

#include <iostream>
#include <memory>

#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/explain.h"
#include "cli/formula_input.h"
#include "dialogs/formula_dialog.h"

namespace nyind {
namespace {

struct ExplainOptions {
    FormulaInput input{"-", "", {}};
    std::string formula, kind, password;
    bool json = false;
};

// The formula that the options name: a library formula, or text or a *.fml file.
int LoadFormula(const ExplainOptions& options, CIndicator* formula) {
    if (options.formula.empty()) return LoadFormulaInput(options.input, formula);
    CIndicator* found = nullptr;
    if (int status = FindLibraryFormula(options.formula, options.kind, &found); status != kExitOk) return status;
    if (int status = CheckPassword(*found, options.password); status != kExitOk) return status;
    *formula = *found;
    return kExitOk;
}

int RunExplain(const ExplainOptions& options, const GlobalOptions& global) {
    if (int status = OpenHome(global, false); status != kExitOk) return status;
    CIndicator formula;
    if (int status = LoadFormula(options, &formula); status != kExitOk) return status;
    const std::vector<ExplainedStatement> statements = ExplainFormula(formula);
    if (statements.empty()) {
        SYNTestResult empty;
        empty.nResult = NY_TEST_EMPTY;
        return FailGbk(kExitRefused, CFormulaDialog::GetTestString(empty, formula.m_strName));
    }
    bool passed = true;
    for (const ExplainedStatement& s : statements) passed = passed && s.code == NY_TEST_OK;
    if (options.json) {
        const nlohmann::ordered_json out = {
            {"name", ToTerminal(formula.m_strName)}, {"passed", passed}, {"statements", ExplanationJson(statements)}};
        std::cout << out.dump(2) << "\n";
    } else {
        std::cout << ExplanationText(statements);
    }
    return passed ? kExitOk : kExitRefused;
}

}  // namespace

void AddExplainCommand(CLI::App& app, const GlobalOptions& global, int& status) {
    auto options = std::make_shared<ExplainOptions>();
    CLI::App* command =
        app.add_subcommand("explain", "Tell what a formula says: each statement and its sentence in words");
    auto* file = command->add_option("file", options->input.path,
                                     "Formula text, or a readable formula file (*.fml); \"-\" or nothing reads standard input");
    auto* formula = command->add_option("--formula", options->formula, "A formula of the library instead of text")
                        ->excludes(file);
    AddKindOption(*command, options->kind, "The library formula's kind, when several kinds have the name")->needs(formula);
    command->add_option("--password", options->password, "The library formula's password, if it has one")->needs(formula);
    command->add_option("--name", options->input.name, "The formula's name in the messages (default: the file's stem)")
        ->excludes(formula);
    command->add_option("--param", options->input.params, "A parameter of the formula text, NAME=VALUE (repeatable)")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->excludes(formula);
    command->add_flag("--json", options->json, "Write the result as JSON");
    command->callback([options, &global, &status] { status = RunExplain(*options, global); });
}

}  // namespace nyind
