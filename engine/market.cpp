// The market words: prices and volumes of the bars, and the words that read the stock, its
// market index and the position of a bar in the range.

#include <cstring>
#include <string_view>
#include <unordered_map>

#include "engine/eval_util.h"
#include "host/stockdb.h"
#include "model/indicator.h"

namespace {

enum class MarketWord {
    High, Open, Low, Close, Volume, Amount, SetCode, CurrBarsCount, TotalBarsCount, IsLastBar,
    Reserved
};

bool FindMarketWord(const char* word, MarketWord* kind) {
    static const std::unordered_map<std::string_view, MarketWord> words = {
        {"HIGH", MarketWord::High}, {"H", MarketWord::High},
        {"OPEN", MarketWord::Open}, {"O", MarketWord::Open},
        {"LOW", MarketWord::Low}, {"L", MarketWord::Low},
        {"CLOSE", MarketWord::Close}, {"C", MarketWord::Close},
        {"VOL", MarketWord::Volume}, {"V", MarketWord::Volume},
        {"AMOUNT", MarketWord::Amount},
        {"SETCODE", MarketWord::SetCode},
        {"CURRBARSCOUNT", MarketWord::CurrBarsCount},
        {"TOTALBARSCOUNT", MarketWord::TotalBarsCount},
        {"INLASTBAR", MarketWord::IsLastBar}, {"ISLASTBAR", MarketWord::IsLastBar},
        {"POS", MarketWord::Reserved}, {"INFUND", MarketWord::Reserved},
        {"SUPERFUND", MarketWord::Reserved}, {"BIGFUND", MarketWord::Reserved},
        {"MIDFUND", MarketWord::Reserved}, {"SMALLFUND", MarketWord::Reserved},
        {"DDX", MarketWord::Reserved}, {"DDX1", MarketWord::Reserved},
        {"DDX2", MarketWord::Reserved}, {"DDX3", MarketWord::Reserved},
    };
    const auto found = words.find(word);
    if (found == words.end()) return false;
    *kind = found->second;
    return true;
}

float BarPrice(const CHisDay& bar, MarketWord kind) {
    switch (kind) {
        case MarketWord::High: return bar.m_fHigh;
        case MarketWord::Open: return bar.m_fOpen;
        case MarketWord::Low: return bar.m_fLow;
        case MarketWord::Close: return bar.m_fClose;
        default: return bar.m_fAmount;
    }
}

// Volumes are stored in shares; hand-unit instruments are stored in hands already, bonds count
// in tens.
float VolumeInHands(float volume, long stockId) {
    if (CStock::IsHandUnit(stockId)) return volume;
    if (CStock::IsZQ(stockId)) return volume / 10;
    return volume / 100;
}

}  // namespace

char CIndicator::ReadMarketWord(char* word, float* out, short* from, short* to, char, char* isSeries) {
    MarketWord kind;
    if (!FindMarketWord(word, &kind)) return 7;
    *isSeries = 1;
    const ny::BarSpan span(*from, *to, m_nBarCount);
    for (int i = span.first; i <= span.last; ++i) {
        switch (kind) {
            case MarketWord::Volume: out[i] = VolumeInHands(m_pHisDay[i].m_fVolume, m_lStockID); break;
            case MarketWord::SetCode: out[i] = static_cast<float>(m_lStockID / 1000000); break;
            case MarketWord::CurrBarsCount: out[i] = static_cast<float>(*to - i + 1); break;
            case MarketWord::TotalBarsCount: out[i] = static_cast<float>(*to + 1); break;
            case MarketWord::IsLastBar: out[i] = (i == *to) ? 1.0f : 0.0f; break;
            case MarketWord::Reserved: out[i] = 0.0f; break;
            default: out[i] = BarPrice(m_pHisDay[i], kind); break;
        }
    }
    return 0;
}
