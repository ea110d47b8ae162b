// nyind lib: the formula library — list, show, export, import, add, remove, and build a set of
// system formulas from readable sources.

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <set>
#include <tuple>

#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/compile.h"
#include "cli/explain.h"
#include "cli/formula_input.h"
#include "cli/statement_view.h"
#include "cli/table.h"
#include "dialogs/formula_dialog.h"
#include "host/encoding.h"
#include "host/global.h"
#include "model/file_stream.h"
#include "model/formula_file.h"
#include "model/formula_source.h"
#include "model/library.h"

namespace nyind {
namespace {

const char* const kNotEditable = "请选中可编辑的指标!";
const char* const kWrongPassword = "密码错误!";
const char* const kSystemFormula = "系统公式不能更改，只能修改自定义公式!";

constexpr const char* kKindNames[] = {"indicator", "condition", "trade", "candle"};

bool IsSystem(const CIndicator& f) { return f.m_SysIndex != 0 || f.m_nBaseSet != 0; }

CString Origin(const CIndicator& f) { return IsSystem(f) ? "系统" : "用户"; }

// ---- list ----

struct ListOptions {
    std::string kind, group, py;
    bool json = false;
};

bool MatchesPinyin(CIndicator& f, const std::string& prefix) {
    if (prefix.empty()) return true;
    std::string upper = prefix;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    g_MyMakeIndicatorPY(&f);
    for (const CString& code : f.m_arPYCodes)
        if (code.compare(0, upper.size(), upper) == 0) return true;
    std::string name = f.m_strName;
    for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return name.compare(0, upper.size(), upper) == 0;
}

std::string JoinCodes(const std::vector<CString>& codes) {
    std::string joined;
    for (const CString& code : codes) joined += (joined.empty() ? "" : "/") + code;
    return joined;
}

int RunList(const ListOptions& options, const GlobalOptions& global) {
    if (int status = OpenHome(global, false); status != kExitOk) return status;
    const short kind = options.kind.empty() ? -1 : ParseKind(options.kind);
    CString group;
    if (!ArgumentToGbk(options.group, &group)) return kExitUsage;
    const short groupNumber = group.empty() ? -1 : g_MyGetIndicatorType(group);
    if (!group.empty() && (groupNumber < 0 || ny::GroupLabel(groupNumber) != group))
        return Fail(kExitUsage, "--group: \"" + options.group + "\" is not the label of a group");
    std::vector<CIndicator*> shown;
    for (CIndicator* f : g_MyIndicatorArray) {
        if (!f->m_IsEditable || (kind >= 0 && f->m_MainType != kind)) continue;
        if (groupNumber >= 0 && f->m_SubType != groupNumber) continue;
        if (!MatchesPinyin(*f, options.py)) continue;
        g_MyMakeIndicatorPY(f);
        shown.push_back(f);
    }
    std::stable_sort(shown.begin(), shown.end(), [](const CIndicator* a, const CIndicator* b) {
        return std::tie(a->m_MainType, a->m_SubType) < std::tie(b->m_MainType, b->m_SubType);
    });
    if (options.json) {
        nlohmann::ordered_json out = nlohmann::ordered_json::array();
        for (const CIndicator* f : shown)
            out.push_back({{"name", ToTerminal(f->m_strName)}, {"kind", f->m_MainType},
                           {"kind_label", ToTerminal(ny::KindLabel(f->m_MainType))}, {"group", f->m_SubType},
                           {"group_label", ToTerminal(ny::GroupLabelOf(*f))},
                           {"title", ToTerminal(f->m_strTitle)}, {"pinyin", JoinCodes(f->m_arPYCodes)},
                           {"system", IsSystem(*f)}, {"params", f->m_arParams.size()}});
        std::cout << out.dump(2) << "\n";
        return kExitOk;
    }
    TextTable table({"kind", "group", "name", "title", "pinyin", "origin"});
    for (const CIndicator* f : shown)
        table.AddRow({ToTerminal(ny::KindLabel(f->m_MainType)), ToTerminal(ny::GroupLabelOf(*f)),
                      ToTerminal(f->m_strName), ToTerminal(f->m_strTitle), JoinCodes(f->m_arPYCodes),
                      ToTerminal(Origin(*f))});
    std::cout << table.Render() << table.RowCount() << " formulas\n";
    return kExitOk;
}

// ---- show ----

struct NamedOptions {
    std::string name, kind, password, file;
    bool json = false;
};

nlohmann::ordered_json FormulaJson(const CIndicator& f) {
    nlohmann::ordered_json params = nlohmann::ordered_json::array();
    for (const CParam* p : f.m_arParams)
        params.push_back({{"name", ToTerminal(p->m_strName)}, {"min", p->m_nMin}, {"max", p->m_nMax}, {"default", p->m_nDefault}});
    nlohmann::ordered_json axes = nlohmann::ordered_json::array();
    for (const CAxeValue* a : f.m_arAxes) axes.push_back(a->m_nValue);
    nlohmann::ordered_json statements = nlohmann::ordered_json::array();
    for (const CExpression* e : f.m_arExpressions) statements.push_back(StatementDefinition(*e));
    return {{"name", ToTerminal(f.m_strName)}, {"kind", f.m_MainType}, {"group", f.m_SubType},
            {"title", ToTerminal(f.m_strTitle)}, {"draw", static_cast<int>(f.m_cDrawPos)},
            {"params", params}, {"axes", axes}, {"usage", ToTerminal(f.m_strUsage)},
            {"template", ToTerminal(f.m_strExtra)}, {"source", ToTerminal(f.m_strSource)},
            {"statements", statements}, {"system", IsSystem(f)}};
}

int RunShow(const NamedOptions& options, const GlobalOptions& global) {
    if (int status = OpenHome(global, false); status != kExitOk) return status;
    CIndicator* f = nullptr;
    if (int status = FindLibraryFormula(options.name, options.kind, &f); status != kExitOk) return status;
    if (int status = CheckPassword(*f, options.password); status != kExitOk) return status;
    const std::vector<ExplainedStatement> explained = ExplainFormula(*f);
    if (options.json) {
        nlohmann::ordered_json out = FormulaJson(*f);
        out["sentences"] = nlohmann::ordered_json::array();
        for (const ExplainedStatement& s : explained) out["sentences"].push_back(ToTerminal(s.sentence));
        std::cout << out.dump(2) << "\n";
    } else {
        std::cout << ny::FormatFormulaSource(*f) << "\n[sentences]\n";
        for (const ExplainedStatement& s : explained) std::cout << ToTerminal(s.sentence) << "\n";
    }
    return kExitOk;
}

// ---- export, import, remove, add ----

int RunExport(const NamedOptions& options, const GlobalOptions& global) {
    if (int status = OpenHome(global, false); status != kExitOk) return status;
    CIndicator* f = nullptr;
    if (int status = FindLibraryFormula(options.name, options.kind, &f); status != kExitOk) return status;
    if (!f->m_IsEditable) return FailGbk(kExitRefused, kNotEditable);
    if (int status = CheckPassword(*f, options.password); status != kExitOk) return status;
    if (ny::IsLibraryFile(options.file))
        return Fail(kExitRefused, options.file + " is a file of the formula library: export to another file");
    std::string error;
    if (!ny::ExportFormula(*f, options.file, &error)) return Fail(kExitRefused, ToTerminal(error));
    std::cout << "exported " << ToTerminal(f->m_strName) << " to " << options.file << "\n";
    return kExitOk;
}

int RunImport(const NamedOptions& options, const GlobalOptions& global) {
    if (int status = OpenHome(global, false, LibraryUse::Change); status != kExitOk) return status;
    const std::set<CIndicator*> before(g_MyIndicatorArray.begin(), g_MyIndicatorArray.end());
    int added = 0;
    const ny::ImportStatus result = ny::ImportFormula(options.file, &added);
    if (result == ny::ImportStatus::CannotOpen) return Fail(kExitRefused, "cannot open " + options.file);
    for (const CString& message : TakeMessages()) FailGbk(kExitRefused, message);
    if (result != ny::ImportStatus::Ok || added == 0) return kExitRefused;
    if (int status = SaveLibrary(); status != kExitOk) return status;
    for (const CIndicator* f : g_MyIndicatorArray)
        if (before.count(const_cast<CIndicator*>(f)) == 0)
            std::cout << "imported " << ToTerminal(f->m_strName) << " (" << ToTerminal(ny::KindLabel(f->m_MainType)) << ")\n";
    return kExitOk;
}

int RunRemove(const NamedOptions& options, const GlobalOptions& global) {
    if (int status = OpenHome(global, false, LibraryUse::Change); status != kExitOk) return status;
    CIndicator* f = nullptr;
    if (int status = FindLibraryFormula(options.name, options.kind, &f); status != kExitOk) return status;
    if (IsSystem(*f)) return FailGbk(kExitRefused, kSystemFormula);
    if (int status = CheckPassword(*f, options.password); status != kExitOk) return status;
    const std::string name = ToTerminal(f->m_strName);
    g_MyRemoveIndicatorByPos(f->m_strName, f->m_MainType);
    if (int status = SaveLibrary(); status != kExitOk) return status;
    std::cout << "removed " << name << "\n";
    return kExitOk;
}

// Reads and tests one readable source. Returns an exit status; messages name the file.
int CompileSourceFile(const std::string& path, CIndicator* f) {
    std::string text;
    if (int status = ReadInput(path, &text, kMaxFormulaFileBytes); status != kExitOk) return status;
    ny::FormulaSourceError error;
    if (!ny::ParseFormulaSource(text, f, &error))
        return Fail(kExitRefused, path + ":" + std::to_string(error.line) + ": " + ToTerminal(error.message));
    CString message;
    if (CompileFormula(*f, &message).nResult != NY_TEST_OK) return Fail(kExitRefused, path + ": " + ToTerminal(message));
    return kExitOk;
}

int RunAdd(const NamedOptions& options, const GlobalOptions& global) {
    if (int status = OpenHome(global, false, LibraryUse::Change); status != kExitOk) return status;
    auto f = std::make_unique<CIndicator>();
    if (int status = CompileSourceFile(options.file, f.get()); status != kExitOk) return status;
    if (g_MyGetIndicator(f->m_strName, f->m_MainType) != nullptr) {
        SYNTestResult taken;
        taken.nResult = NY_TEST_NAME_TAKEN;
        return FailGbk(kExitRefused, CFormulaDialog::GetTestString(taken, f->m_strName));
    }
    g_MyMakeIndicatorPY(f.get());
    const std::string name = ToTerminal(f->m_strName);
    g_MyAddIndicator(f.release());
    if (int status = SaveLibrary(); status != kExitOk) return status;
    std::cout << "added " << name << "\n";
    return kExitOk;
}

// ---- build ----

struct BuildOptions {
    std::vector<std::string> sources;
    std::string folder;
};

std::vector<std::string> SourceFiles(const std::vector<std::string>& sources) {
    std::vector<std::string> files;
    for (const std::string& source : sources) {
        std::error_code ec;
        if (!std::filesystem::is_directory(source, ec)) {
            files.push_back(source);
            continue;
        }
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(source, ec))
            if (entry.is_regular_file() && entry.path().extension() == ".fml") found.push_back(entry.path().string());
        std::sort(found.begin(), found.end());
        files.insert(files.end(), found.begin(), found.end());
    }
    return files;
}

// The system set is two files. The everyday formulas go into nysys.dat, which the library loads
// first and as it stands, so each keeps its own group; its short form holds 2,047 bytes of source.
// The distinctive ones, the indicators of the group 特色指标, go into the base set nybase.dat
// (long form), whose load puts every indicator into that group.
constexpr short kDistinctiveGroup = 6;

bool IsDistinctive(const CIndicator& f) {
    return f.m_MainType == NY_KIND_INDICATOR && f.m_SubType == kDistinctiveGroup;
}

struct SystemSet {
    const char* file;
    BOOL bLong;
    std::vector<const CIndicator*> formulas;
};

int WriteSystemSet(const std::string& folder, const SystemSet& set) {
    const std::string path = folder + "/" + set.file;
    std::string error;
    const bool written = ny::WriteFileAtomically(path, [&](CBinStream& stream) {
        ny::WriteFormulaHeader(stream, 0, static_cast<short>(set.formulas.size()));
        for (const CIndicator* f : set.formulas) f->Save(stream, set.bLong);
    }, &error);
    if (!written) return Fail(kExitRefused, ToTerminal(error));
    std::cout << "built " << set.formulas.size() << " formulas into " << path << "\n";
    return kExitOk;
}

int RunBuild(const BuildOptions& options, const GlobalOptions& global) {
    if (int status = OpenHome(global, false); status != kExitOk) return status;
    const std::vector<std::string> files = SourceFiles(options.sources);
    if (files.empty()) return Fail(kExitRefused, "no formula sources (*.fml) found");
    // The set is tested on its own: a formula may refer only to formulas built before it.
    g_MyRemoveIndicators();
    SystemSet everyday{"nysys.dat", FALSE, {}}, distinctive{"nybase.dat", TRUE, {}};
    for (const std::string& path : files) {
        auto f = std::make_unique<CIndicator>();
        if (int status = CompileSourceFile(path, f.get()); status != kExitOk) return status;
        if (g_MyGetIndicator(f->m_strName, f->m_MainType) != nullptr)
            return Fail(kExitRefused, path + ": a formula " + ToTerminal(f->m_strName) + " of this kind comes earlier");
        const size_t sourceBytes = f->m_strSource.size();
        if (!IsDistinctive(*f) && ny::FieldTextLength(f->m_strSource, ny::SHORT_SOURCE_BYTES) < sourceBytes)
            return Fail(kExitRefused, path + ": the source has " + std::to_string(sourceBytes) +
                                          " bytes; the short form of nysys.dat holds at most " +
                                          std::to_string(ny::SHORT_SOURCE_BYTES - 1));
        f->m_SysIndex = 1;
        (IsDistinctive(*f) ? distinctive : everyday).formulas.push_back(f.get());
        g_MyAddIndicator(f.release());
    }
    const std::string folder = options.folder.empty() ? g_MyExePath + "defineuser/indi" : options.folder;
    if (int status = WriteSystemSet(folder, everyday); status != kExitOk) return status;
    return WriteSystemSet(folder, distinctive);
}

}  // namespace

short ParseKind(const std::string& text) {
    for (short kind = 0; kind < 4; ++kind)
        if (text == kKindNames[kind] || text == std::to_string(kind) || text == ToTerminal(ny::KindLabel(kind)))
            return kind;
    return -1;
}

CLI::Option* AddKindOption(CLI::App& command, std::string& kind, const std::string& what) {
    return command.add_option("--kind", kind, what + ": indicator, condition, trade or candle")
        ->check([](const std::string& text) {
            return ParseKind(text) < 0 ? "must be indicator, condition, trade or candle" : std::string();
        });
}

int CheckPassword(const CIndicator& f, const std::string& password) {
    if (f.m_strPassword.empty()) return kExitOk;
    CString typed;
    if (!ArgumentToGbk(password, &typed)) return kExitUsage;
    return typed == f.m_strPassword ? kExitOk : FailGbk(kExitRefused, kWrongPassword);
}

int FindLibraryFormula(const std::string& name, const std::string& kind, CIndicator** formula) {
    CString gbk;
    if (!ArgumentToGbk(name, &gbk)) return kExitUsage;
    if (!kind.empty()) {
        *formula = g_MyGetIndicator(gbk, ParseKind(kind));
        if (*formula == nullptr) return Fail(kExitRefused, "no formula " + name + " of the kind " + kind);
        return kExitOk;
    }
    std::vector<CIndicator*> found;
    for (short k = 0; k < 4; ++k)
        if (CIndicator* f = g_MyGetIndicator(gbk, k)) found.push_back(f);
    if (found.empty()) return Fail(kExitRefused, "no formula " + name + " in the library");
    if (found.size() > 1) return Fail(kExitUsage, "several kinds have a formula " + name + ": add --kind");
    *formula = found.front();
    return kExitOk;
}

void AddLibCommand(CLI::App& app, const GlobalOptions& global, int& status) {
    CLI::App* lib = app.add_subcommand("lib", "The formula library");
    lib->require_subcommand(1);

    auto list = std::make_shared<ListOptions>();
    CLI::App* cmd = lib->add_subcommand("list", "List the formulas by kind and group");
    AddKindOption(*cmd, list->kind, "Only this kind");
    cmd->add_option("--group", list->group, ToTerminal("Only this group, by its label (趋向指标, 指标选股 ...)"));
    cmd->add_option("--py", list->py, "Only names whose pinyin initials (or the name) start so");
    cmd->add_flag("--json", list->json, "Write JSON");
    cmd->callback([list, &global, &status] { status = RunList(*list, global); });

    auto named = [&](const char* name, const char* help, bool withFile, bool withName) {
        auto options = std::make_shared<NamedOptions>();
        CLI::App* c = lib->add_subcommand(name, help);
        if (withName) {
            c->add_option("name", options->name, "The formula's name")->required();
            AddKindOption(*c, options->kind, "The formula's kind, when several kinds have the name");
            c->add_option("--password", options->password, "The formula's password, if it has one");
        }
        if (withFile) {
            if (withName)
                c->add_option("-o,--output", options->file, "The file to write")->required();
            else
                c->add_option("file", options->file, "The file to read")->required();
        }
        return std::make_pair(c, options);
    };
    auto [show, showOptions] = named("show", "Show a formula's definition in the readable form", false, true);
    show->add_flag("--json", showOptions->json, "Write JSON");
    show->callback([o = showOptions, &global, &status] { status = RunShow(*o, global); });
    auto [exp, expOptions] = named("export", "Export one formula in the exchange form (.dat)", true, true);
    exp->callback([o = expOptions, &global, &status] { status = RunExport(*o, global); });
    auto [imp, impOptions] = named("import", "Import an exported formula into the user's formulas", true, false);
    imp->callback([o = impOptions, &global, &status] { status = RunImport(*o, global); });
    auto [add, addOptions] = named("add", "Test a readable formula (*.fml) and add it to the user's formulas", true, false);
    add->callback([o = addOptions, &global, &status] { status = RunAdd(*o, global); });
    auto [rem, remOptions] = named("remove", "Remove one of the user's formulas", false, true);
    rem->callback([o = remOptions, &global, &status] { status = RunRemove(*o, global); });

    auto build = std::make_shared<BuildOptions>();
    cmd = lib->add_subcommand("build", "Test readable formulas (*.fml) and write them as the system set");
    cmd->add_option("sources", build->sources, "Formula files, or folders searched for *.fml")->required();
    cmd->add_option("-o,--output", build->folder,
                    "The folder to write nysys.dat and nybase.dat into (default: defineuser/indi of the installation)");
    cmd->callback([build, &global, &status] { status = RunBuild(*build, global); });
}

}  // namespace nyind
