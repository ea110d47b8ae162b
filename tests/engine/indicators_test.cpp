// Everyday indicators written as formulas over market-like bars, against the textbook
// computation in double precision, done here bar by bar without the evaluator.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "tests/engine/formula_fixture.h"

using nytest::Formula;

namespace {

constexpr int kBars = 160;

// A random walk with gaps between close and next open, highs and lows around the body, prices
// in cents.
std::vector<CHisDay> MarketBars() {
    uint32_t state = 20240102u;
    auto uniform = [&state] {
        state = state * 1664525u + 1013904223u;
        return static_cast<double>(state >> 8) / static_cast<double>(1u << 24);
    };
    auto cents = [](double price) { return static_cast<float>(std::round(price * 100) / 100); };
    std::vector<CHisDay> bars(kBars);
    double close = 12.34;
    for (int i = 0; i < kBars; ++i) {
        const double open = close * (1 + (uniform() - 0.5) * 0.02);
        close = open * (1 + (uniform() - 0.5) * 0.06);
        CHisDay& bar = bars[i];
        bar.m_lTime = 20230103 + i;
        bar.m_fOpen = cents(open);
        bar.m_fClose = cents(close);
        bar.m_fHigh = cents(std::max(open, close) * (1 + uniform() * 0.015));
        bar.m_fLow = cents(std::min(open, close) * (1 - uniform() * 0.015));
        bar.m_fVolume = static_cast<float>(std::round(50000 + uniform() * 100000));
        bar.m_fAmount = bar.m_fVolume * bar.m_fClose * 100;
    }
    return bars;
}

std::vector<double> Closes(const std::vector<CHisDay>& bars) {
    std::vector<double> v;
    for (const CHisDay& b : bars) v.push_back(b.m_fClose);
    return v;
}

std::vector<double> MovingAverage(const std::vector<double>& x, int n) {
    std::vector<double> out(x.size(), 0.0);
    for (size_t i = n - 1; i < x.size(); ++i) {
        double sum = 0;
        for (size_t j = i + 1 - n; j <= i; ++j) sum += x[j];
        out[i] = sum / n;
    }
    return out;
}

// Exponential average with weight 2 / (n + 1), starting at the first value.
std::vector<double> Exponential(const std::vector<double>& x, int n) {
    std::vector<double> out(x.size());
    const double alpha = 2.0 / (n + 1);
    out[0] = x[0];
    for (size_t i = 1; i < x.size(); ++i) out[i] = out[i - 1] + alpha * (x[i] - out[i - 1]);
    return out;
}

// Smoothed average with weight m of n, starting at the value of bar `first`.
std::vector<double> Smoothed(const std::vector<double>& x, int n, int m, size_t first) {
    std::vector<double> out(x.size(), 0.0);
    out[first] = x[first];
    for (size_t i = first + 1; i < x.size(); ++i) out[i] = (m * x[i] + (n - m) * out[i - 1]) / n;
    return out;
}

// A formula of statements and parameters run over the market bars.
class Indicators : public ::testing::Test {
protected:
    void Run(std::initializer_list<nytest::Statement> statements,
             std::initializer_list<std::pair<const char*, short>> params = {}) {
        for (const nytest::Statement& statement : statements) f.Add(statement);
        for (const auto& [name, value] : params) f.AddParam(name, value);
        f.Run(bars);
    }
    void ExpectSeries(const std::string& name, const std::vector<double>& expected, int first, double tolerance) {
        const CExpression& line = f[name];
        ASSERT_EQ(line.m_cComputed, 1) << name;
        EXPECT_EQ(line.m_nFirst, first) << name;
        EXPECT_EQ(line.m_nEnd, kBars) << name;
        for (int i = first; i < kBars; ++i)
            ASSERT_NEAR(f.At(name, i), expected[i], tolerance) << name << " at bar " << i;
    }
    Formula f = Formula({});
    const std::vector<CHisDay> bars = MarketBars();
    const std::vector<double> close = Closes(bars);
};

TEST_F(Indicators, MovingAverages) {
    Run({{"MA5", "MA(CLOSE,5)"}, {"MA10", "MA(CLOSE,10)"}, {"MA20", "MA(CLOSE,20)"}, {"MA60", "MA(CLOSE,60)"}});
    for (int n : {5, 10, 20, 60}) ExpectSeries("MA" + std::to_string(n), MovingAverage(close, n), n - 1, 1e-4);
}

TEST_F(Indicators, Macd) {
    Run({{"DIF", "EMA(CLOSE,SHORT)-EMA(CLOSE,LONG)"}, {"DEA", "EMA(DIF,MID)"}, {"MACD", "(DIF-DEA)*2"}},
        {{"SHORT", 12}, {"LONG", 26}, {"MID", 9}});
    const std::vector<double> fast = Exponential(close, 12), slow = Exponential(close, 26);
    std::vector<double> dif(kBars), macd(kBars);
    for (int i = 0; i < kBars; ++i) dif[i] = fast[i] - slow[i];
    const std::vector<double> dea = Exponential(dif, 9);
    for (int i = 0; i < kBars; ++i) macd[i] = (dif[i] - dea[i]) * 2;
    ExpectSeries("DIF", dif, 0, 1e-4);
    ExpectSeries("DEA", dea, 0, 1e-4);
    ExpectSeries("MACD", macd, 0, 2e-4);
    // The oscillator moves: the bars are not a flat line that any code would match.
    EXPECT_GT(*std::max_element(macd.begin(), macd.end()), 0.05);
    EXPECT_LT(*std::min_element(macd.begin(), macd.end()), -0.05);
}

TEST_F(Indicators, Kdj) {
    Run({{"RSV", "(CLOSE-LLV(LOW,N))/(HHV(HIGH,N)-LLV(LOW,N))*100"}, {"K", "SMA(RSV,M1,1)"}, {"D", "SMA(K,M2,1)"},
         {"J", "3*K-2*D"}},
        {{"N", 9}, {"M1", 3}, {"M2", 3}});
    std::vector<double> rsv(kBars, 0.0);
    for (int i = 8; i < kBars; ++i) {
        double high = bars[i].m_fHigh, low = bars[i].m_fLow;
        for (int j = i - 8; j <= i; ++j) {
            high = std::max<double>(high, bars[j].m_fHigh);
            low = std::min<double>(low, bars[j].m_fLow);
        }
        rsv[i] = (bars[i].m_fClose - low) / (high - low) * 100;
    }
    const std::vector<double> k = Smoothed(rsv, 3, 1, 8);
    const std::vector<double> d = Smoothed(k, 3, 1, 8);
    std::vector<double> j(kBars);
    for (int i = 0; i < kBars; ++i) j[i] = 3 * k[i] - 2 * d[i];
    ExpectSeries("RSV", rsv, 8, 1e-3);
    ExpectSeries("K", k, 8, 1e-3);
    ExpectSeries("D", d, 8, 1e-3);
    ExpectSeries("J", j, 8, 5e-3);
}

TEST_F(Indicators, BollingerBands) {
    Run({{"BOLL", "MA(CLOSE,M)"}, {"UB", "BOLL+2*STD(CLOSE,M)"}, {"LB", "BOLL-2*STD(CLOSE,M)"}}, {{"M", 20}});
    const std::vector<double> mid = MovingAverage(close, 20);
    std::vector<double> upper(kBars, 0.0), lower(kBars, 0.0);
    for (int i = 19; i < kBars; ++i) {
        double squares = 0;
        for (int j = i - 19; j <= i; ++j) squares += (close[j] - mid[i]) * (close[j] - mid[i]);
        const double deviation = std::sqrt(squares / 20);  // population deviation
        upper[i] = mid[i] + 2 * deviation;
        lower[i] = mid[i] - 2 * deviation;
    }
    ExpectSeries("BOLL", mid, 19, 1e-4);
    ExpectSeries("UB", upper, 19, 2e-4);
    ExpectSeries("LB", lower, 19, 2e-4);
}

TEST_F(Indicators, RelativeStrength) {
    Run({{"LC", "REF(CLOSE,1)"}, {"RSI", "SMA(MAX(CLOSE-LC,0),N,1)/SMA(ABS(CLOSE-LC),N,1)*100"}}, {{"N", 6}});
    std::vector<double> rise(kBars, 0.0), move(kBars, 0.0);
    for (int i = 1; i < kBars; ++i) {
        rise[i] = std::max(close[i] - close[i - 1], 0.0);
        move[i] = std::fabs(close[i] - close[i - 1]);
    }
    // The reference moves the range to bar 1, where both averages start.
    const std::vector<double> up = Smoothed(rise, 6, 1, 1), all = Smoothed(move, 6, 1, 1);
    std::vector<double> rsi(kBars, 0.0);
    for (int i = 1; i < kBars; ++i)
        rsi[i] = std::fabs(all[i]) <= 1e-6 ? (i == 1 ? 0.0 : rsi[i - 1]) : up[i] / all[i] * 100;
    ExpectSeries("RSI", rsi, 1, 2e-3);
    EXPECT_GT(*std::max_element(rsi.begin(), rsi.end()), 70.0);
    EXPECT_LT(*std::min_element(rsi.begin() + 1, rsi.end()), 30.0);
}

}  // namespace
