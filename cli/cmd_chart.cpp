// nyind chart: a picture of a formula over a stock: candles with the main-chart formula on top,
// volume, the formula's own pane below and one pane for each further indicator asked for, as a PNG,
// SVG or PDF file.

#include <cstdio>
#include <memory>

#include "chart/cairo/chart_file.h"
#include "chart/chart_scene.h"
#include "cli/commands.h"
#include "cli/formula_run.h"
#include "cli/statement_view.h"
#include "host/stockdb.h"
#include "model/period.h"

namespace nyind {
namespace {

constexpr int kSmallestSide = 200;
constexpr int kLargestSide = 8000;

struct ChartOptions {
    FormulaChoice choice;
    std::string stock, period = "day", main = "MA", theme = "dark", output, size = "1000x700";
    std::vector<std::string> panes;  // further indicators of the library, each in a pane below
    bool power = false;
    int last = 0;
};

bool ParseSize(const std::string& text, ny::Size* size) {
    int width = 0, height = 0;
    char tail = 0;
    if (std::sscanf(text.c_str(), "%dx%d%c", &width, &height, &tail) != 2) return false;
    *size = {width, height};
    return width >= kSmallestSide && width <= kLargestSide && height >= kSmallestSide && height <= kLargestSide;
}

bool HasChartExtension(const std::string& path) {
    for (const char* extension : {".png", ".svg", ".pdf", ".PNG", ".SVG", ".PDF"})
        if (path.size() > 4 && path.compare(path.size() - 4, 4, extension) == 0) return true;
    return false;
}

void ReportFailedStatements(const CIndicator& formula) {
    for (const CExpression* s : formula.m_arExpressions)
        if (s->m_cComputed != 1)
            Fail(kExitOk, ToTerminal(formula.m_strName) + ": statement " + StatementHeading(*s) + " could not be computed");
}

int RunChart(const ChartOptions& options, const GlobalOptions& global) {
    if (options.choice.formula.empty() == options.choice.source.empty())
        return Fail(kExitUsage, "chart: give either --formula NAME or --source FILE");
    ny::Size size;
    if (!ParseSize(options.size, &size))
        return Fail(kExitUsage, "chart: --size must be WIDTHxHEIGHT, each from 200 to 8000 pixels");
    if (!HasChartExtension(options.output)) return Fail(kExitUsage, "chart: the output must be a .png, .svg or .pdf file");
    if (int status = OpenHome(global, true); status != kExitOk) return status;
    if (int status = ConnectServer(global); status != kExitOk) return status;

    CIndicator formula, mainFormula;
    if (int status = PrepareFormula(options.choice, &formula); status != kExitOk) return status;
    std::vector<CIndicator> panes(options.panes.size());
    for (size_t i = 0; i < panes.size(); ++i)
        if (int status = PrepareFormula({options.panes[i], "", "", "", {}}, &panes[i]); status != kExitOk) return status;
    const bool withMain = options.main != "none";
    if (withMain)
        if (int status = PrepareFormula({options.main, "", "", "", {}}, &mainFormula); status != kExitOk) return status;
    CStock* stock = nullptr;
    std::vector<CHisDay> bars;
    if (int status = LoadStockSeries(options.stock, options.period, options.power, &stock, &bars); status != kExitOk)
        return status;
    const short period = PeriodNumber(options.period);
    EvaluateOver(formula, bars, stock->GetID(), period);
    if (withMain) EvaluateOver(mainFormula, bars, stock->GetID(), period);
    ReportFailedStatements(formula);
    for (CIndicator& pane : panes) {
        EvaluateOver(pane, bars, stock->GetID(), period);
        ReportFailedStatements(pane);
    }

    ny::ChartRequest request;
    request.bars = bars.data();
    request.barCount = static_cast<int>(bars.size());
    request.minuteBars = ny::IsMinutePeriod(period);
    request.barsShown = options.last;
    request.mainFormula = withMain ? &mainFormula : nullptr;
    request.formulas = {&formula};
    for (const CIndicator& pane : panes) request.formulas.push_back(&pane);
    request.label = ny::FormatStockCode(stock->GetID()) + " " + stock->m_strName;
    request.theme = options.theme == "light" ? &ny::LightTheme() : &ny::DarkTheme();
    request.size = size;
    std::string error;
    if (!ny::WriteChartFile(ny::BuildChartScene(request), options.output, &error)) return Fail(kExitRefused, error);
    return kExitOk;
}

}  // namespace

void AddChartCommand(CLI::App& app, const GlobalOptions& global, int& status) {
    auto options = std::make_shared<ChartOptions>();
    CLI::App* command = app.add_subcommand("chart", "Draw a formula over a stock's candles into a PNG, SVG or PDF file");
    auto* formula = command->add_option("--formula", options->choice.formula, "A formula of the library, by name");
    AddKindOption(*command, options->choice.kind, "Kind of the --formula")->needs(formula);
    auto* source = command->add_option("--source", options->choice.source,
                                       "Formula text or a readable formula file (*.fml); \"-\" reads standard input")
                       ->excludes(formula);
    command->add_option("--name", options->choice.name, "Name of the --source formula in the chart")->needs(source);
    command->add_option("--param", options->choice.params, "Parameter value NAME=VALUE (repeatable)")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command->add_option("--stock", options->stock, "A stock of the installation: SH600001, SZ000001, or its code")->required();
    AddPeriodOption(*command, options->period);
    command->add_flag("--power", options->power, "Adjust the stock's bars for ex-rights events");
    command->add_option("--last", options->last, "Show the newest N bars (default: as many as fit)")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--main", options->main, "The formula over the candles (default MA; none for no formula)");
    command->add_option("--pane", options->panes, "A further indicator of the library in a pane of its own (repeatable)")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command->add_option("--theme", options->theme, "dark or light")->check(CLI::IsMember({"dark", "light"}));
    command->add_option("-o,--output", options->output, "The chart file: *.png, *.svg or *.pdf")->required();
    command->add_option("--size", options->size, "Picture size WIDTHxHEIGHT in pixels (default 1000x700)");
    command->callback([options, &global, &status] { status = RunChart(*options, global); });
}

}  // namespace nyind
