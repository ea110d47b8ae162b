// Speed of the picker: a whole-market pick of the standard conditions (files, period pipeline,
// evaluation, verdict), and the evaluation of the standard indicator set alone.
//
// Both run over generated markets: the sample market as the build makes it (300 shares, about
// 870 day bars each) and a market of the same shares with 280 day bars each, the everyday depth
// of a pick. Run: build/bench/bench_picker (see docs/performance.md).

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/clock.h"
#include "host/installation.h"
#include "host/sample_market.h"
#include "host/stockdb.h"
#include "model/library.h"
#include "picker/cond_stocks.h"
#include "picker/pick_request.h"

namespace {

// The standard indicator set, as statements of one formula.
const std::vector<std::pair<const char*, const char*>> kStandardSet = {
    {"MA5", "MA(C,5)"},
    {"MA10", "MA(C,10)"},
    {"MA20", "MA(C,20)"},
    {"MA60", "MA(C,60)"},
    {"EMA12", "EMA(C,12)"},
    {"EMA26", "EMA(C,26)"},
    {"DIF", "EMA12-EMA26"},
    {"DEA", "EMA(DIF,9)"},
    {"MACD", "(DIF-DEA)*2"},
    {"RSV", "(C-LLV(L,9))/(HHV(H,9)-LLV(L,9))*100"},
    {"K", "SMA(RSV,3,1)"},
    {"D", "SMA(K,3,1)"},
    {"J", "3*K-2*D"},
    {"LC", "REF(C,1)"},
    {"RSI6", "SMA(MAX(C-LC,0),6,1)/SMA(ABS(C-LC),6,1)*100"},
    {"MID", "MA(C,20)"},
    {"UPPER", "MID+2*STD(C,20)"},
    {"LOWER", "MID-2*STD(C,20)"},
    {"CR", "CROSS(MA5,MA10)"},
    {"CNT", "COUNT(C>O,10)"},
};

// The condition: the standard set with a verdict that reads its results.
constexpr const char* kVerdict = "C>MID AND K>D AND CNT>=5";

std::unique_ptr<CIndicator> StandardFormula(bool condition) {
    auto formula = std::make_unique<CIndicator>();
    formula->m_strName = condition ? "STDPICK" : "STDSET";
    formula->m_MainType = condition ? NY_KIND_CONDITION : NY_KIND_INDICATOR;
    auto add = [&formula](const char* name, const char* text) {
        auto* expr = new CExpression;
        expr->m_strName = name;
        expr->m_strText = text;
        formula->m_arExpressions.push_back(expr);
    };
    for (const auto& [name, text] : kStandardSet) add(name, text);
    if (condition) add("X", kVerdict);
    return formula;
}

// A generated market in a temporary folder, opened as the installation, with the standard
// condition in the library.
class Market {
public:
    explicit Market(int firstDate) {
        std::string pattern = (std::filesystem::temp_directory_path() / "nybench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) std::abort();
        m_path = pattern + "/";
        ny::SampleMarketOptions options;
        options.firstDate = firstDate;
        std::string error;
        if (!ny::MakeSampleMarket(m_path, options, &error) || !ny::OpenInstallation(m_path)) {
            std::fprintf(stderr, "sample market: %s\n", error.c_str());
            std::abort();
        }
        CClockModule::SetClock(options.lastDate, 160000);
        g_MyAddIndicator(StandardFormula(true).release());
        for (const CStock* stock : g_MyStocksArray)
            if (stock->m_dwKind & (NY_KIND_SH_A | NY_KIND_SZ_A)) m_shares.push_back(stock->m_lStockID);
    }
    ~Market() {
        g_MyRemoveIndicators();
        ny::CloseInstallation();
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    const std::vector<int>& Shares() const { return m_shares; }

private:
    std::string m_path;
    std::vector<int> m_shares;
};

// 2018-01-02 is the sample market's own start; from 2020-05-26 each share has 280 day bars.
constexpr int kFullHistory = 20180102;
constexpr int kLast280 = 20200526;

Market& OpenMarket(int firstDate) {
    static std::unique_ptr<Market> market;
    static int opened = 0;
    if (opened != firstDate) {
        market.reset();
        market = std::make_unique<Market>(firstDate);
        opened = firstDate;
    }
    return *market;
}

void ReportPerStock(benchmark::State& state, size_t stocks) {
    state.counters["stocks"] = static_cast<double>(stocks);
    // Seconds for 5,000 stocks at the measured rate.
    state.counters["s_per_5000"] =
        benchmark::Counter(static_cast<double>(stocks) / 5000.0,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// End to end: the pick request, the engine's worker, every stock's files read and converted,
// the condition evaluated and tested.
void BM_PickStandardCondition(benchmark::State& state) {
    const Market& market = OpenMarket(static_cast<int>(state.range(0)));
    ny::PickRequest request;
    request.conditions = {{"STDPICK", {}}};
    size_t hits = 0;
    for (auto _ : state) {
        const ny::PickOutcome outcome = ny::RunPick(request, nullptr, nullptr);
        if (!outcome.ok || outcome.examined != static_cast<int>(market.Shares().size()))
            state.SkipWithError("the pick did not run over the market");
        hits = outcome.hits.size();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * market.Shares().size()));
    ReportPerStock(state, market.Shares().size());
    state.counters["hits"] = static_cast<double>(hits);
}
BENCHMARK(BM_PickStandardCondition)
    ->Arg(kLast280)
    ->Arg(kFullHistory)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The engine alone, without the request's scope and result block: each stock's files, pipeline,
// evaluation and verdict on the calling thread.
void BM_PickItems(benchmark::State& state) {
    const Market& market = OpenMarket(static_cast<int>(state.range(0)));
    CCondStocks engine;
    std::vector<CIndicator*> conditions = {g_MyGetIndicator("STDPICK", NY_KIND_CONDITION)};
    engine.m_arIndicators = conditions;
    engine.m_cLogic = 1;
    engine.m_nPeriod = NY_PERIOD_DAY;
    for (auto _ : state)
        for (int id : market.Shares()) benchmark::DoNotOptimize(engine.ProcCondPick_Item(id));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * market.Shares().size()));
    ReportPerStock(state, market.Shares().size());
}
BENCHMARK(BM_PickItems)->Arg(kLast280)->Arg(kFullHistory)->Unit(benchmark::kMillisecond);

// Files and pipeline only: each share's day file read, today's bar added, the period map and
// the merge, without any formula.
void BM_LoadBars(benchmark::State& state) {
    const Market& market = OpenMarket(static_cast<int>(state.range(0)));
    CCondStocks engine;
    for (auto _ : state)
        for (int id : market.Shares())
            benchmark::DoNotOptimize(engine.BeforeExplore(id, 0, 0, static_cast<short>(state.range(1)), 1));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * market.Shares().size()));
    ReportPerStock(state, market.Shares().size());
}
BENCHMARK(BM_LoadBars)
    ->Args({kLast280, NY_PERIOD_DAY})
    ->Args({kFullHistory, NY_PERIOD_DAY})
    ->Args({kFullHistory, NY_PERIOD_WEEK})
    ->Args({kFullHistory, NY_PERIOD_MIN30})
    ->Unit(benchmark::kMillisecond);

// Evaluation only: the standard set over each share's last 280 day bars, already in memory.
void BM_EvaluateStandardSet(benchmark::State& state) {
    const Market& market = OpenMarket(kFullHistory);
    std::vector<std::vector<CHisDay>> bars;
    for (int id : market.Shares()) {
        std::vector<CHisDay> stock;
        if (!ny::LoadStockBars(id, NY_PERIOD_DAY, false, &stock) || stock.size() < 280) continue;
        bars.emplace_back(stock.end() - 280, stock.end());
    }
    auto formula = StandardFormula(false);
    size_t computed = 0;
    for (auto _ : state) {
        for (std::vector<CHisDay>& stock : bars) {
            formula->Change();
            formula->m_pHisDay = stock.data();
            formula->m_nBarCount = 280;
            formula->m_nDrawStart = 0;
            formula->m_nDrawEnd = 280;
            formula->AllocMem(280);
            formula->Calc(0, 280);
        }
        computed = 0;
        for (const CExpression* expr : formula->m_arExpressions) computed += expr->m_cComputed;
    }
    if (computed != kStandardSet.size())
        state.SkipWithError("a statement of the standard set did not compute");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * bars.size() * 280));
    ReportPerStock(state, bars.size());
    state.SetLabel("items = bars");
}
BENCHMARK(BM_EvaluateStandardSet)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
