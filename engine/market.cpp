// The market words: prices and volumes of the bars, and the words that read the stock, its
// market index and the position of a bar in the range.

#include <cstring>
#include <string_view>
#include <unordered_map>

#include "engine/chain.h"
#include "engine/eval_code.h"
#include "engine/eval_util.h"
#include "host/files.h"
#include "host/stockdb.h"
#include "model/indicator.h"

namespace {

enum class MarketWord {
    High, Open, Low, Close, Volume, Amount, BuyVolume, SellVolume, SetCode, Capital, IsIndex,
    IndexClose, IndexHigh, IndexLow, IndexOpen, IndexVolume, IndexAmount, IndexAdvance,
    IndexDecline, Advance, Decline, CurrBarsCount, TotalBarsCount, IsLastBar, Reserved
};

bool FindMarketWord(const char* word, MarketWord* kind) {
    static const std::unordered_map<std::string_view, MarketWord> words = {
        {"HIGH", MarketWord::High}, {"H", MarketWord::High},
        {"OPEN", MarketWord::Open}, {"O", MarketWord::Open},
        {"LOW", MarketWord::Low}, {"L", MarketWord::Low},
        {"CLOSE", MarketWord::Close}, {"C", MarketWord::Close},
        {"VOL", MarketWord::Volume}, {"V", MarketWord::Volume},
        {"AMOUNT", MarketWord::Amount},
        {"BUYVOL", MarketWord::BuyVolume}, {"SELLVOL", MarketWord::SellVolume},
        {"SETCODE", MarketWord::SetCode}, {"CAPITAL", MarketWord::Capital},
        {"ISINDEX", MarketWord::IsIndex},
        {"INDEXC", MarketWord::IndexClose}, {"INDEXH", MarketWord::IndexHigh},
        {"INDEXL", MarketWord::IndexLow}, {"INDEXO", MarketWord::IndexOpen},
        {"INDEXV", MarketWord::IndexVolume}, {"INDEXA", MarketWord::IndexAmount},
        {"INDEXADV", MarketWord::IndexAdvance}, {"INDEXDEC", MarketWord::IndexDecline},
        {"ADVANCE", MarketWord::Advance}, {"DECLINE", MarketWord::Decline},
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

// Volumes are stored in shares; hand-unit instruments are stored in hands already, bonds count
// in tens.
float VolumeInHands(float volume, bool handUnit, bool bond) {
    if (handUnit) return volume;
    if (bond) return volume / 10;
    return volume / 100;
}

float RisingCount(int advDec) { return static_cast<float>(advDec % 1024); }
float FallingCount(int advDec) { return static_cast<float>(advDec / 1024 % 1024); }

// The index of the stock's market: Shenzhen for ids above 1,000,000, else Shanghai.
CIndex& MarketIndex(int stockId) { return stockId > 1000000 ? g_MyIndexSZ : g_MyIndexSH; }

bool IsIndexWord(MarketWord kind) {
    return kind >= MarketWord::IndexClose && kind <= MarketWord::IndexDecline;
}

float IndexValue(const CHisDay& day, MarketWord kind) {
    switch (kind) {
        case MarketWord::IndexClose: return day.m_fClose;
        case MarketWord::IndexHigh: return day.m_fHigh;
        case MarketWord::IndexLow: return day.m_fLow;
        case MarketWord::IndexOpen: return day.m_fOpen;
        case MarketWord::IndexVolume: return day.m_fVolume;
        case MarketWord::IndexAmount: return day.m_fAmount;
        case MarketWord::IndexAdvance: return RisingCount(day.m_lAdvDec);
        default: return FallingCount(day.m_lAdvDec);
    }
}

// The unit rule of a stock's volumes, looked up once per word rather than once per bar.
struct VolumeUnits {
    bool handUnit;
    bool bond;
};

float BarValue(const CHisDay& bar, MarketWord kind, const VolumeUnits& units) {
    switch (kind) {
        case MarketWord::Volume:
            return VolumeInHands(bar.m_fVolume, units.handUnit, units.bond);
        case MarketWord::Advance: return std::max(RisingCount(bar.m_lAdvDec), 0.0f);
        case MarketWord::Decline: return std::max(FallingCount(bar.m_lAdvDec), 0.0f);
        default: return 0.0f;
    }
}

// The field of the bar that a price word reads as it stands; null for every other word.
float CHisDay::*PriceField(MarketWord kind) {
    switch (kind) {
        case MarketWord::High: return &CHisDay::m_fHigh;
        case MarketWord::Open: return &CHisDay::m_fOpen;
        case MarketWord::Low: return &CHisDay::m_fLow;
        case MarketWord::Close: return &CHisDay::m_fClose;
        case MarketWord::Amount: return &CHisDay::m_fAmount;
        default: return nullptr;
    }
}

// The value of a word that reads the stock rather than the bar, the same on every bar. Returns
// the code of the word: 19 where the word needs a stock (or an index) that isn't there.
char StockValue(MarketWord kind, int stockId, float* value) {
    const CStock* stock = g_MyGetStock(stockId);
    switch (kind) {
        case MarketWord::BuyVolume:
        case MarketWord::SellVolume:
            if (stock == nullptr) return NY_EVAL_NO_DATA;
            *value = VolumeInHands(kind == MarketWord::BuyVolume ? stock->m_fOuterVolume
                                                                 : stock->m_fInnerVolume,
                                   stock->IsHandUnit(), stock->IsZQ());
            return 0;
        case MarketWord::SetCode: *value = static_cast<float>(stockId / 1000000); return 0;
        case MarketWord::Capital: *value = stock ? stock->m_fCapital * 100 : 0.0f; return 0;
        case MarketWord::IsIndex: *value = (stock && stock->IsIndex()) ? 1.0f : 0.0f; return 0;
        default: return 0;
    }
}

bool ReadsTheStock(MarketWord kind) {
    return kind == MarketWord::BuyVolume || kind == MarketWord::SellVolume ||
           kind == MarketWord::SetCode || kind == MarketWord::Capital || kind == MarketWord::IsIndex;
}

}  // namespace

bool ny::IsReservedMarketWord(const char* word) {
    MarketWord kind;
    return FindMarketWord(word, &kind) && kind == MarketWord::Reserved;
}

char CIndicator::ReadMarketWord(char* word, float* out, short* from, short* to, char, char* isSeries) {
    MarketWord kind;
    if (!FindMarketWord(word, &kind)) return NY_EVAL_UNKNOWN_WORD;
    *isSeries = 1;
    const ny::BarSpan span(*from, *to, m_nBarCount);
    if (ReadsTheStock(kind)) {
        float value = 0.0f;
        if (const char rc = StockValue(kind, m_lStockID, &value)) return rc;
        for (int i = span.first; i <= span.last; ++i) out[i] = value;
        return 0;
    }
    if (kind == MarketWord::Advance || kind == MarketWord::Decline) {
        const CStock* stock = g_MyGetStock(m_lStockID);
        if (stock == nullptr || !stock->IsIndex()) return NY_EVAL_NO_DATA;
    }
    if (IsIndexWord(kind)) {
        CIndex& index = MarketIndex(m_lStockID);
        for (int i = span.first; i <= span.last; ++i) {
            const CHisDay* day = index.GetDay(m_pHisDay[i].m_lTime);
            out[i] = day ? IndexValue(*day, kind) : 0.0f;
        }
        return 0;
    }
    if (float CHisDay::*field = PriceField(kind)) {
        for (int i = span.first; i <= span.last; ++i) out[i] = m_pHisDay[i].*field;
        return 0;
    }
    const VolumeUnits units = {kind == MarketWord::Volume && CStock::IsHandUnit(m_lStockID) != 0,
                               kind == MarketWord::Volume && CStock::IsZQ(m_lStockID) != 0};
    for (int i = span.first; i <= span.last; ++i) {
        switch (kind) {
            case MarketWord::CurrBarsCount: out[i] = static_cast<float>(*to - i + 1); break;
            case MarketWord::TotalBarsCount: out[i] = static_cast<float>(*to + 1); break;
            case MarketWord::IsLastBar: out[i] = (i == *to) ? 1.0f : 0.0f; break;
            default: out[i] = BarValue(m_pHisDay[i], kind, units); break;
        }
    }
    return 0;
}

int CIndicator::LoadIndexDay(int) {
    delete[] m_pIndexDay;
    const size_t bars = m_nBarCount > 0 ? static_cast<size_t>(m_nBarCount) : 0;
    m_pIndexDay = new CHisDay[bars + 1]();
    size_t count = 0;
    std::string bytes;
    if (!ny::ReadRecordFile(MarketIndex(m_lStockID).GetDayFilePath(), sizeof(CHisDay), &bytes, &count))
        return 0;
    size_t bar = 0;
    for (size_t r = 0; r < count && bar < bars && m_pHisDay != nullptr; ++r) {
        CHisDay record;
        std::memcpy(&record, bytes.data() + r * sizeof(CHisDay), sizeof(CHisDay));
        while (bar < bars && m_pHisDay[bar].m_lTime < record.m_lTime) ++bar;
        if (bar < bars && m_pHisDay[bar].m_lTime == record.m_lTime) m_pIndexDay[bar++] = record;
    }
    return 1;
}
