// Window statistics against a computation in double precision, and FORCAL, which smooths four statements in place.

#include <algorithm>
#include <cmath>

#include "tests/engine/function_fixture.h"

namespace {

using Values = std::vector<float>;

class Logic : public nytest::FunctionTest {};

// ---- Window statistics ----

struct Window {
    double meanA = 0, meanB = 0, devA = 0, devB = 0, cov = 0;
};

Window Measure(const Values& a, const Values& b, int last, int n) {
    Window w;
    double ab = 0, sa = 0, sb = 0;
    for (int j = last - n + 1; j <= last; ++j) w.meanA += a[j] / n, w.meanB += b[j] / n, ab += a[j] * b[j] / n;
    for (int j = last - n + 1; j <= last; ++j)
        sa += (a[j] - w.meanA) * (a[j] - w.meanA) / n, sb += (b[j] - w.meanB) * (b[j] - w.meanB) / n;
    w.devA = std::sqrt(sa);
    w.devB = std::sqrt(sb);
    w.cov = ab - w.meanA * w.meanB;
    return w;
}

TEST_F(Logic, CovarianceCorrelationAndBetaOverAWindow) {
    const Values closes = {10, 12, 11, 15, 14, 18, 17, 16};
    const Values other = {5, 4, 6, 7, 9, 8, 12, 10};
    UseCloses(closes);
    nytest::AddSeries(ind, "Y", other, 0, 8);
    const Values covar = Series("COVAR(CLOSE,Y,4)", 3, 7);
    const Values relate = Series("RELATE(CLOSE,Y,4)", 3, 7);
    const Values beta = Series("BETAEX(CLOSE,Y,4)", 3, 7);
    ASSERT_EQ(covar.size(), 5u);
    ASSERT_EQ(relate.size(), 5u);
    ASSERT_EQ(beta.size(), 5u);
    for (int i = 3; i <= 7; ++i) {
        const Window w = Measure(closes, other, i, 4);
        EXPECT_NEAR(covar[i - 3], w.cov, 1e-4) << i;
        EXPECT_NEAR(relate[i - 3], w.cov / (w.devA * w.devB), 1e-5) << i;
        EXPECT_NEAR(beta[i - 3], w.cov / (w.devB * w.devB), 1e-5) << i;
    }
}

TEST_F(Logic, RelateOfASeriesWithItself) {
    UseCloses({3, 7, 2, 9, 4, 4, 4, 4});
    const Values self = Series("RELATE(CLOSE,CLOSE,3)", 2, 7);
    ASSERT_EQ(self.size(), 6u);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(self[k], 1.0f, 1e-5) << k;
    // A flat window has no deviation.
    EXPECT_EQ(self[5], 0.0f);
}

// ---- FORCAL ----

TEST(ForCal, SmoothsFourStatementsInPlace) {
    nytest::Formula f{{"A", "OPEN"}, {"B", "HIGH"}, {"CC", "LOW"}, {"D", "CLOSE"},
                      {"F", "FORCAL(A,B,CC,D)"}, {"E", "D"}};
    const Values closes = {10, 12, 11, 15, 9, 9, 14};
    ASSERT_EQ(f.Run(nytest::MakeBars(closes)), 1);

    // The transform written out over the prices of MakeBars.
    const size_t n = closes.size();
    Values a(n), b(n), c(n), d(n);
    for (size_t i = 0; i < n; ++i) a[i] = closes[i] - 0.5f, b[i] = closes[i] + 1, c[i] = closes[i] - 1, d[i] = closes[i];
    d[0] = static_cast<float>((d[0] * 2.0 + b[0] + c[0]) / 4);
    for (size_t i = 1; i < n; ++i) {
        a[i] = static_cast<float>((static_cast<double>(a[i - 1]) + d[i - 1]) / 2);
        b[i] = std::max(b[i], a[i]);
        c[i] = std::min(c[i], a[i]);
        d[i] = static_cast<float>((d[i] * 2.0 + b[i] + c[i]) / 4);
    }
    for (size_t i = 0; i < n; ++i) {
        EXPECT_EQ(f.At("A", i), a[i]) << i;
        EXPECT_EQ(f.At("B", i), b[i]) << i;
        EXPECT_EQ(f.At("CC", i), c[i]) << i;
        EXPECT_EQ(f.At("D", i), d[i]) << i;
        EXPECT_EQ(f.At("E", i), d[i]) << i;
    }
    // The statement itself has no value of its own.
    EXPECT_EQ(f["F"].m_cComputed, 0);
    EXPECT_EQ(f["E"].m_cComputed, 1);
}

TEST(ForCal, AMissingNameChangesNothing) {
    nytest::Formula f{{"A", "OPEN"}, {"B", "HIGH"}, {"CC", "LOW"}, {"F", "FORCAL(A,B,CC,NONE)"}};
    ASSERT_EQ(f.Run(nytest::MakeBars({10, 12, 11})), 1);
    EXPECT_EQ(f.At("A", 2), 10.5f);
    EXPECT_EQ(f.At("B", 2), 12.0f);
    EXPECT_EQ(f.At("CC", 2), 10.0f);
    EXPECT_EQ(f["F"].m_cComputed, 0);
}

}  // namespace
