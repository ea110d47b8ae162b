// The chip distribution behind WINNER and COST: the holdings of a stock spread over 1000 price
// buckets. Walking the bars from old to new, each bar's turnover (volume over the float) takes
// that share of the holdings away at every price, and the bar's volume is laid evenly over its
// price range. WINNER(P) is the share held below P, COST(R) the price below which R percent lies.

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "engine/draw_record.h"
#include "engine/eval_code.h"
#include "engine/function_util.h"
#include "host/stockdb.h"
#include "model/indicator.h"

namespace {

// One result: the bar's time and the value at that bar.
struct TRADETICKBARUNIT {
    int m_lTime;
    int m_lTime2;
    float m_fValue;
};

class CChipDistribution {
public:
    CChipDistribution() : m_pBuckets(new float[kBuckets]()) {}

    void LoadBars(const CHisDay* bars, short first, short last) {
        m_arResults.clear();
        m_arBars.clear();
        for (int i = std::max<int>(first, 0); i <= last; ++i) m_arBars.push_back(bars[i]);
    }
    int CalcWinner(float capital, float price) { return Run(capital, Query::Winner, price); }
    int CalcCost(float capital, float percent) {
        m_fPercent = percent;
        return Run(capital, Query::Cost, 0.0f);
    }
    const std::vector<TRADETICKBARUNIT>& Results() const { return m_arResults; }

private:
    static constexpr int kBuckets = 1000;
    enum class Query { Winner, Cost };

    int Run(float capital, Query query, float price);
    void Reset();
    void Decay(float factor);
    void AddBar(const CHisDay& bar);
    int PriceToBucket(float price) const;
    float BucketToPrice(int bucket) const;
    float WinnerRatio(float price) const;
    float CostPrice() const;
    bool Filled() const { return m_nFirstBucket >= 0 && m_fTotal > 0; }

    float m_fPercent = 50.0f;
    std::vector<TRADETICKBARUNIT> m_arResults;
    std::unique_ptr<float[]> m_pBuckets;
    float m_fLow = 0, m_fHigh = 0, m_fStep = 0, m_fTotal = 0, m_fSeenLow = 0, m_fSeenHigh = 0;
    int m_nFirstBucket = -1, m_nLastBucket = -1;
    std::vector<CHisDay> m_arBars;
};

void CChipDistribution::Reset() {
    m_arResults.clear();
    std::fill(m_pBuckets.get(), m_pBuckets.get() + kBuckets, 0.0f);
    m_fLow = m_fHigh = m_fStep = m_fTotal = m_fSeenLow = m_fSeenHigh = 0;
    m_nFirstBucket = m_nLastBucket = -1;
}

int CChipDistribution::Run(float capital, Query query, float price) {
    Reset();
    if (m_arBars.empty()) return 0;
    m_fLow = m_arBars[0].m_fLow;
    m_fHigh = m_arBars[0].m_fHigh;
    float maxVolume = m_arBars[0].m_fVolume;
    for (const CHisDay& bar : m_arBars) {
        m_fLow = std::min(m_fLow, bar.m_fLow);
        m_fHigh = std::max(m_fHigh, bar.m_fHigh);
        maxVolume = std::max(maxVolume, bar.m_fVolume);
    }
    // The grid is fixed for the run by the extremes of all its bars; it never gets finer than 0.01.
    m_fStep = std::max((m_fHigh - m_fLow) / kBuckets, 0.01f);
    if (capital < maxVolume) capital = maxVolume * 5.0f;
    if (!(capital > 0)) return 0;
    m_fSeenLow = m_arBars[0].m_fLow;
    m_fSeenHigh = m_arBars[0].m_fHigh;
    m_arResults.reserve(m_arBars.size());
    for (const CHisDay& bar : m_arBars) {
        const float turnover = bar.m_fVolume / capital;
        Decay(1.0f - turnover);
        AddBar(bar);
        const float value = query == Query::Winner ? WinnerRatio(price) : CostPrice();
        m_arResults.push_back({bar.m_lTime, bar.m_lTime, value});
    }
    return 1;
}

void CChipDistribution::Decay(float factor) {
    if (m_nFirstBucket < 0 || m_nLastBucket >= kBuckets) return;
    for (int k = m_nFirstBucket; k <= m_nLastBucket; ++k) m_pBuckets[k] *= factor;
    m_fTotal *= factor;
}

void CChipDistribution::AddBar(const CHisDay& bar) {
    const int b1 = PriceToBucket(bar.m_fLow), b2 = PriceToBucket(bar.m_fHigh);
    const float share = bar.m_fVolume / static_cast<float>(std::abs(b2 - b1) + 1);
    for (int k = std::min(b1, b2); k <= std::max(b1, b2); ++k) m_pBuckets[k] += share;
    if (m_nFirstBucket < 0 || m_nFirstBucket > b1) m_nFirstBucket = b1;
    if (m_nLastBucket < 0 || m_nLastBucket < b2) m_nLastBucket = b2;
    m_fTotal += bar.m_fVolume;
    m_fSeenLow = std::min(m_fSeenLow, bar.m_fLow);
    m_fSeenHigh = std::max(m_fSeenHigh, bar.m_fHigh);
}

int CChipDistribution::PriceToBucket(float price) const {
    if (!(m_fStep > 0)) return 0;
    return std::clamp(ny::TruncToInt((price - m_fLow) / m_fStep), 0, kBuckets - 1);
}

// The upper edge of a bucket; below the filled ones the lowest low seen, from the highest filled
// one up the highest high seen.
float CChipDistribution::BucketToPrice(int bucket) const {
    if (bucket < m_nFirstBucket) return m_fSeenLow;
    if (bucket >= m_nLastBucket) return m_fSeenHigh;
    return static_cast<float>(bucket + 1) * m_fStep + m_fLow;
}

// The bucket that holds the price counts in whole.
float CChipDistribution::WinnerRatio(float price) const {
    if (!Filled()) return 0.0f;
    if (!(m_fHigh > price)) return 1.0f;
    if (!(m_fLow < price)) return 0.0f;
    float sum = 0;
    for (int k = m_nFirstBucket; k <= m_nLastBucket; ++k) {
        sum += m_pBuckets[k];
        if (!(price > BucketToPrice(k))) return sum / m_fTotal;
    }
    return 1.0f;
}

// Up to half the holdings the walk runs from the bottom; above, from the top, leaving the top
// bucket itself out of the sum.
float CChipDistribution::CostPrice() const {
    if (!Filled()) return m_fSeenLow;
    if (!(m_fPercent > 0)) return BucketToPrice(-1);
    if (m_fPercent >= 100) return BucketToPrice(m_nLastBucket);
    const float r = m_fPercent / 100;
    float sum = 0;
    if (m_fPercent <= 50) {
        for (int k = m_nFirstBucket; k <= m_nLastBucket; ++k) {
            sum += m_pBuckets[k];
            if (!(r > sum / m_fTotal)) return BucketToPrice(k);
        }
        return BucketToPrice(m_nLastBucket);
    }
    for (int k = m_nLastBucket - 1; k >= m_nFirstBucket; --k) {
        sum += m_pBuckets[k];
        if (r > 1.0f - sum / m_fTotal) return BucketToPrice(k + 1);
    }
    return BucketToPrice(m_nLastBucket);
}

}  // namespace

char CIndicator::ReadWINNER(char* word, float* out, short* from, short* to, char, char*) {
    ny::Operand argument(*this, *from, *to);
    if (const char rc = ReadSoleArgument(argument.values(), &argument.from, &argument.to,
                                         &argument.isSeries, 1))
        return rc;
    // One number for the whole call: a series argument counts by its value at bar 0.
    const float asked = argument.values()[0];
    if (!argument.isSeries && asked == 0.0f) return NY_EVAL_CONSTANT_ARGUMENT;
    CChipDistribution chips;
    chips.LoadBars(m_pHisDay, *from, *to);
    const CStock* stock = g_MyGetStock(m_lStockID);
    if (stock == nullptr) return NY_EVAL_NO_DATA;
    const float capital = static_cast<float>(stock->GetFinanceValue(94) * 10000.0);
    if (std::strcmp(word, "WINNER") == 0)
        chips.CalcWinner(capital, asked);
    else
        chips.CalcCost(capital, asked);
    // Records count from the first bar loaded, so they line up with bars only from bar 0.
    *from = argument.from;
    *to = argument.to;
    const std::vector<TRADETICKBARUNIT>& results = chips.Results();
    if (*to < static_cast<int>(results.size()))
        for (int i = std::max<int>(*from, 0); i <= *to; ++i) out[i] = results[i].m_fValue;
    return 0;
}
