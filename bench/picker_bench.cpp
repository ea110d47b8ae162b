// Speed of the engine and the picker over generated markets: the standard indicator set through
// the evaluator and as a plain hand-written loop (the baseline of the ratio), on 5,000 stocks x
// 280 day bars and 500 stocks x 5,000 day bars; the files and pipeline alone; and a whole-market
// pick end to end with 1 and 2 workers, with the growth of resident memory. One program, one run:
// build/bench/bench_picker (see docs/performance.md).

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "engine/evaluate.h"
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
    {"CNT", "COUNT(C>O,5)"},
};

// The condition: the standard set with a verdict that reads its results.
constexpr const char* kVerdict = "C>MID AND K>D AND CNT>=3";

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
    Market(int stocks, int firstDate) {
        std::string pattern = (std::filesystem::temp_directory_path() / "nybench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) std::abort();
        m_path = pattern + "/";
        ny::SampleMarketOptions options;
        options.stockCount = stocks;
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

    // Every share's day bars, the newest `count` of each, in memory.
    std::vector<std::vector<CHisDay>> DayBars(size_t count) const {
        std::vector<std::vector<CHisDay>> bars;
        std::vector<CHisDay> stock;
        for (int id : m_shares)
            if (ny::LoadStockBars(id, NY_PERIOD_DAY, false, &stock) && stock.size() >= count)
                bars.emplace_back(stock.end() - static_cast<long>(count), stock.end());
        return bars;
    }

private:
    std::string m_path;
    std::vector<int> m_shares;
};

// The two markets: 5,000 shares with 280 day bars (from 2020-05-26 to 2021-06-30), and 500 shares
// with 5,000 day bars (weekdays from 2002-03-01).
struct MarketShape {
    int stocks;
    int firstDate;
    size_t bars;
};
constexpr MarketShape kShapes[] = {{5000, 20200526, 280}, {500, 20020301, 5000}};

Market& OpenMarket(int shape) {
    static std::unique_ptr<Market> market;
    static int opened = -1;
    if (opened != shape) {
        market.reset();
        market = std::make_unique<Market>(kShapes[shape].stocks, kShapes[shape].firstDate);
        opened = shape;
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

// Resident memory of the process in MB.
double ResidentMB() {
    std::ifstream statm("/proc/self/statm");
    long pages = 0, resident = 0;
    statm >> pages >> resident;
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

// End to end: the pick request, the engine's workers, every stock's files read and converted,
// the condition evaluated and tested. Second argument: the workers.
void BM_PickStandardCondition(benchmark::State& state) {
    const Market& market = OpenMarket(static_cast<int>(state.range(0)));
    ny::PickRequest request;
    request.conditions = {{"STDPICK", {}}};
    request.workers = static_cast<int>(state.range(1));
    const double before = ResidentMB();
    size_t hits = 0;
    for (auto _ : state) {
        const ny::PickOutcome outcome = ny::RunPick(request, nullptr, nullptr);
        if (!outcome.ok || outcome.examined != static_cast<int>(market.Shares().size()))
            state.SkipWithError("the pick did not run over the market");
        hits = outcome.hits.size();
    }
    state.counters["rss_growth_MB"] = ResidentMB() - before;
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * market.Shares().size()));
    ReportPerStock(state, market.Shares().size());
    state.counters["hits"] = static_cast<double>(hits);
}
BENCHMARK(BM_PickStandardCondition)->Args({0, 1})->Args({0, 2})->Unit(benchmark::kMillisecond)->UseRealTime();

// Files and pipeline only: each share's day file read, today's bar added, the period map and
// the merge, without any formula. Second argument: the period.
void BM_LoadBars(benchmark::State& state) {
    const Market& market = OpenMarket(static_cast<int>(state.range(0)));
    CBarLoader loader;
    for (auto _ : state)
        for (int id : market.Shares())
            benchmark::DoNotOptimize(loader.Load(id, static_cast<short>(state.range(1)), 1, 0));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * market.Shares().size()));
    ReportPerStock(state, market.Shares().size());
}
BENCHMARK(BM_LoadBars)->Args({0, NY_PERIOD_DAY})->Args({0, NY_PERIOD_WEEK})->Unit(benchmark::kMillisecond);

// Evaluation only: the standard set through the evaluator over each share's bars, in memory.
void BM_EvaluateStandardSet(benchmark::State& state) {
    const MarketShape& shape = kShapes[state.range(0)];
    const auto bars = OpenMarket(static_cast<int>(state.range(0))).DayBars(shape.bars);
    const auto count = static_cast<short>(shape.bars);
    auto formula = StandardFormula(false);
    size_t computed = 0;
    for (auto _ : state) {
        for (const std::vector<CHisDay>& stock : bars)
            ny::EvaluateOver(*formula, 0, const_cast<CHisDay*>(stock.data()), count);
        computed = 0;
        for (const CExpression* expr : formula->m_arExpressions) computed += expr->m_cComputed;
    }
    if (computed != kStandardSet.size()) state.SkipWithError("a statement of the standard set did not compute");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * bars.size() * shape.bars));
    ReportPerStock(state, bars.size());
    state.SetLabel("items = bars");
}

// The baseline: the same set as a plain loop, as a careful programmer would write it for one
// stock, with running sums and windows, in float series and double steps.
class PlainStandardSet {
public:
    // The verdict on the last bar.
    bool Run(const CHisDay* bars, size_t n) {
        for (auto* series : {&m_ma5, &m_ma10, &m_ma20, &m_ma60, &m_ema12, &m_ema26, &m_dif, &m_dea, &m_macd,
                             &m_k, &m_d, &m_j, &m_rsi, &m_upper, &m_lower, &m_cross, &m_count})
            series->assign(n, 0.0f);
        Average(bars, n, 5, &m_ma5);
        Average(bars, n, 10, &m_ma10);
        Average(bars, n, 20, &m_ma20);
        Average(bars, n, 60, &m_ma60);
        Exponential(bars, n, 12, &m_ema12);
        Exponential(bars, n, 26, &m_ema26);
        for (size_t i = 0; i < n; ++i) m_dif[i] = m_ema12[i] - m_ema26[i];
        float dea = m_dif[0];
        for (size_t i = 0; i < n; ++i) {
            dea = static_cast<float>((2.0 * m_dif[i] + 8.0 * dea) / 10.0);
            m_dea[i] = dea;
            m_macd[i] = (m_dif[i] - dea) * 2;
        }
        float k = 0, d = 0, up = 0, all = 0;
        for (size_t i = 0; i < n; ++i) {
            const size_t from = i >= 8 ? i - 8 : 0;
            float high = bars[from].m_fHigh, low = bars[from].m_fLow;
            for (size_t j = from + 1; j <= i; ++j) {
                high = std::max(high, bars[j].m_fHigh);
                low = std::min(low, bars[j].m_fLow);
            }
            const float rsv = high > low ? (bars[i].m_fClose - low) / (high - low) * 100 : 0;
            k = static_cast<float>((rsv + 2.0 * k) / 3.0);
            d = static_cast<float>((k + 2.0 * d) / 3.0);
            m_k[i] = k;
            m_d[i] = d;
            m_j[i] = 3 * k - 2 * d;
            if (i > 0) {
                const float change = bars[i].m_fClose - bars[i - 1].m_fClose;
                up = static_cast<float>((std::max(change, 0.0f) + 5.0 * up) / 6.0);
                all = static_cast<float>((std::fabs(change) + 5.0 * all) / 6.0);
                m_rsi[i] = all > 0 ? up / all * 100 : 0;
            }
            if (i >= 19) {
                double sum = 0, squares = 0;
                for (size_t j = i - 19; j <= i; ++j) {
                    sum += bars[j].m_fClose;
                    squares += static_cast<double>(bars[j].m_fClose) * bars[j].m_fClose;
                }
                const double deviation = std::sqrt(std::max(0.0, (squares - sum * sum / 20) / 19));
                m_upper[i] = static_cast<float>(m_ma20[i] + 2 * deviation);
                m_lower[i] = static_cast<float>(m_ma20[i] - 2 * deviation);
            }
            int rising = 0;
            for (size_t j = i >= 4 ? i - 4 : 0; j <= i; ++j) rising += bars[j].m_fClose > bars[j].m_fOpen;
            m_count[i] = static_cast<float>(rising);
            m_cross[i] = i > 0 && m_ma5[i - 1] < m_ma10[i - 1] && m_ma5[i] > m_ma10[i];
        }
        const size_t last = n - 1;
        return bars[last].m_fClose > m_ma20[last] && m_k[last] > m_d[last] && m_count[last] >= 3;
    }

private:
    static void Average(const CHisDay* bars, size_t n, size_t days, std::vector<float>* out) {
        double sum = 0;
        for (size_t i = 0; i < n; ++i) {
            sum += bars[i].m_fClose;
            if (i >= days) sum -= bars[i - days].m_fClose;
            if (i + 1 >= days) (*out)[i] = static_cast<float>(sum / static_cast<double>(days));
        }
    }
    static void Exponential(const CHisDay* bars, size_t n, int days, std::vector<float>* out) {
        float value = bars[0].m_fClose;
        for (size_t i = 0; i < n; ++i) {
            value = static_cast<float>((2.0 * bars[i].m_fClose + (days - 1.0) * value) / (days + 1.0));
            (*out)[i] = value;
        }
    }

    std::vector<float> m_ma5, m_ma10, m_ma20, m_ma60, m_ema12, m_ema26, m_dif, m_dea, m_macd, m_k, m_d, m_j, m_rsi,
        m_upper, m_lower, m_cross, m_count;
};

void BM_PlainStandardSet(benchmark::State& state) {
    const MarketShape& shape = kShapes[state.range(0)];
    const auto bars = OpenMarket(static_cast<int>(state.range(0))).DayBars(shape.bars);
    PlainStandardSet plain;
    size_t picked = 0;
    for (auto _ : state) {
        picked = 0;
        for (const std::vector<CHisDay>& stock : bars) picked += plain.Run(stock.data(), stock.size());
        benchmark::DoNotOptimize(picked);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * bars.size() * shape.bars));
    ReportPerStock(state, bars.size());
    state.counters["hits"] = static_cast<double>(picked);
    state.SetLabel("items = bars");
}
// The recursions of the standard set alone, each a loop of its own over the closes as the
// evaluator runs one statement after another, with the evaluator's exact steps: the rolling float
// sums of the five moving averages, the three EMA and the four SMA. Each step waits for the one
// before it, so no evaluator that keeps these results and runs statement by statement can take
// less time than this on the same machine.
class SerialSteps {
public:
    float Run(const CHisDay* bars, size_t n) {
        m_close.resize(n);
        m_out.assign(n, 0.0f);
        for (size_t i = 0; i < n; ++i) m_close[i] = bars[i].m_fClose;
        float last = 0;
        for (int days : {5, 10, 20, 60, 20}) last += RollingSum(days);
        for (int days : {12, 26, 9}) last += Recursion(static_cast<double>(days) - 1, 2, days + 1.0);
        for (int days : {3, 3, 6, 6}) last += Recursion(static_cast<double>(days) - 1, 1, days);
        return last;
    }

private:
    float RollingSum(int days) {
        const float* x = m_close.data();
        m_out[0] = x[0];
        for (size_t i = 1; i < m_close.size(); ++i) {
            const double leaving = i < static_cast<size_t>(days) ? 0.0 : x[i - days];
            m_out[i] = static_cast<float>((static_cast<double>(m_out[i - 1]) - leaving) + x[i]);
        }
        return m_out.back();
    }
    // y = (old weight * y + new weight * x) / divisor, stored as a float after every step.
    float Recursion(double oldWeight, double newWeight, double divisor) {
        float y = m_close[0];
        for (size_t i = 1; i < m_close.size(); ++i) {
            y = static_cast<float>((oldWeight * y + newWeight * m_close[i]) / divisor);
            m_out[i] = y;
        }
        return y;
    }

    std::vector<float> m_close, m_out;
};

void BM_SerialStepsOfTheSet(benchmark::State& state) {
    const MarketShape& shape = kShapes[state.range(0)];
    const auto bars = OpenMarket(static_cast<int>(state.range(0))).DayBars(shape.bars);
    SerialSteps steps;
    for (auto _ : state) {
        float sum = 0;
        for (const std::vector<CHisDay>& stock : bars) sum += steps.Run(stock.data(), stock.size());
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * bars.size() * shape.bars));
    ReportPerStock(state, bars.size());
    state.SetLabel("items = bars");
}

// The engine, the baseline and the floor one after the other on each market, so that each
// market is made once.
BENCHMARK(BM_EvaluateStandardSet)->Arg(0)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlainStandardSet)->Arg(0)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SerialStepsOfTheSet)->Arg(0)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EvaluateStandardSet)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlainStandardSet)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SerialStepsOfTheSet)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
