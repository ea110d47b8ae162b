// nyind funcs: the function reference of the language, from the catalog.

#include <iostream>
#include <memory>

#include <nlohmann/json.hpp>

#include "catalog/function_manager.h"
#include "cli/commands.h"
#include "cli/table.h"

namespace nyind {
namespace {

struct FuncsOptions {
    std::string name;
    bool json = false;
};

nlohmann::ordered_json RowJson(const FUN_ITEM& row) {
    return {{"name", ToTerminal(row.m_strName)}, {"category", static_cast<int>(row.m_cClass)},
            {"category_label", ToTerminal(ny::FunctionClassCaption(row.m_cClass))},
            {"short", ToTerminal(row.m_strShort)}, {"description", ToTerminal(row.m_strDesc)},
            {"usage", ToTerminal(row.m_strUsage)}, {"example", ToTerminal(row.m_strExample)},
            {"arguments", static_cast<int>(row.m_cArgCount)}};
}

int ShowOne(const FuncsOptions& options) {
    CString name;
    if (!ArgumentToGbk(options.name, &name)) return kExitUsage;
    FUN_ITEM* row = g_MyFunsMng.FindFun(name.c_str(), 0);
    if (row == nullptr) row = g_MyFunsMng.FindFun(name.c_str(), 1);
    if (row == nullptr) return Fail(kExitRefused, "no function " + options.name + " in the catalog");
    if (options.json) {
        std::cout << RowJson(*row).dump(2) << "\n";
        return kExitOk;
    }
    std::cout << ToTerminal(row->m_strName) << "  " << ToTerminal(row->m_strShort) << "  ("
              << ToTerminal(ny::FunctionClassCaption(row->m_cClass)) << ", " << static_cast<int>(row->m_cArgCount)
              << " arguments)\n"
              << ToTerminal(row->m_strDesc) << "\n";
    if (!row->m_strUsage.empty()) std::cout << "\nusage:\n" << ToTerminal(row->m_strUsage) << "\n";
    if (!row->m_strExample.empty()) std::cout << "\nexample:\n" << ToTerminal(row->m_strExample) << "\n";
    return kExitOk;
}

int RunFuncs(const FuncsOptions& options, const GlobalOptions& global) {
    if (int status = OpenHome(global, false); status != kExitOk) return status;
    if (!options.name.empty()) return ShowOne(options);
    if (options.json) {
        nlohmann::ordered_json out = nlohmann::ordered_json::array();
        for (int i = 0; i < g_MyFunsMng.GetCount(); ++i) out.push_back(RowJson(*g_MyFunsMng.GetFun(i)));
        std::cout << out.dump(2) << "\n";
        return kExitOk;
    }
    int category = -1;
    for (int i = 0; i < g_MyFunsMng.GetCount(); ++i) {
        const FUN_ITEM& row = *g_MyFunsMng.GetFun(i);
        if (row.m_cClass != category) {
            category = row.m_cClass;
            std::cout << (i > 0 ? "\n" : "") << ToTerminal(ny::FunctionClassCaption(category)) << "\n";
        }
        const std::string name = ToTerminal(row.m_strName);
        const std::string desc = ToTerminal(row.m_strDesc);
        std::cout << "  " << name << std::string(name.size() < 16 ? 16 - name.size() : 1, ' ')
                  << ToTerminal(row.m_strShort) << "  " << desc.substr(0, desc.find('\n')) << "\n";
    }
    return kExitOk;
}

}  // namespace

void AddFuncsCommand(CLI::App& app, const GlobalOptions& global, int& status) {
    auto options = std::make_shared<FuncsOptions>();
    CLI::App* command = app.add_subcommand("funcs", "The function reference: all rows by category, or one function");
    command->add_option("name", options->name, "A function, data word or style keyword (MA, CLOSE, COLORRED ...)");
    command->add_flag("--json", options->json, "Write JSON");
    command->callback([options, &global, &status] { status = RunFuncs(*options, global); });
}

}  // namespace nyind
