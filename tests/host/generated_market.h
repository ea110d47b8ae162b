#pragma once
// One generated market shared by the suites of a test program, and the folding of stored bars
// into longer ones that the tests compute on their own to check the bar pipeline and the
// generator against.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "host/installation.h"
#include "host/sample_market.h"
#include "host/stockdb.h"
#include "tests/host/temp_installation.h"

// A market of 40 shares from 2019-01-02 to 2021-03-31, the last 20 days with minute bars and the
// last 30 with order-flow records.
inline ny::SampleMarketOptions SmallMarket() {
    ny::SampleMarketOptions options;
    options.stockCount = 40;
    options.firstDate = 20190102;
    options.lastDate = 20210331;
    options.minuteDays = 20;
    options.orderFlowDays = 30;
    return options;
}

// A suite over the small market, made once for the suite and opened before each test.
class GeneratedMarketTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_dir = new TempInstallation;
        std::string error;
        ASSERT_TRUE(ny::MakeSampleMarket(s_dir->Path(), SmallMarket(), &error)) << error;
    }
    static void TearDownTestSuite() {
        delete s_dir;
        s_dir = nullptr;
    }
    void SetUp() override { ASSERT_TRUE(ny::OpenInstallation(s_dir->Path())); }

    // The Shanghai and Shenzhen A shares of the market.
    static std::vector<const CStock*> Shares() {
        std::vector<const CStock*> shares;
        for (const CStock* stock : g_MyStocksArray)
            if (stock->m_dwKind & (NY_KIND_SH_A | NY_KIND_SZ_A)) shares.push_back(stock);
        return shares;
    }

    static inline TempInstallation* s_dir = nullptr;
};

// Consecutive stored bars with the same key folded into one, with the key: the first open, the
// highest high, the lowest low, the last close and time, the sums of volume and amount.
template <typename Key>
std::vector<std::pair<int, CHisDay>> Aggregate(const std::vector<CHisDay>& stored, Key key) {
    std::vector<std::pair<int, CHisDay>> out;
    for (const CHisDay& bar : stored) {
        const int k = key(bar.m_lTime);
        if (out.empty() || out.back().first != k) {
            out.push_back({k, bar});
            continue;
        }
        CHisDay& group = out.back().second;
        group.m_lTime = bar.m_lTime;
        group.m_fHigh = std::max(group.m_fHigh, bar.m_fHigh);
        group.m_fLow = std::min(group.m_fLow, bar.m_fLow);
        group.m_fClose = bar.m_fClose;
        group.m_fVolume += bar.m_fVolume;
        group.m_fAmount += bar.m_fAmount;
    }
    return out;
}
