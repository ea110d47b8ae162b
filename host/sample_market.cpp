#include "host/sample_market.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <map>

#include "host/clock.h"
#include "host/encoding.h"
#include "host/files.h"
#include "host/global.h"
#include "host/group.h"
#include "host/hisday.h"
#include "host/installation.h"
#include "host/power.h"
#include "host/stock_tables.h"
#include "host/stockdb.h"
#include "host/strategy.h"

namespace ny {

const char* const kSampleMarketLabel = "GENERATED SAMPLE DATA - invented stocks and prices, not real market data.";

namespace {

// splitmix64: a small generator whose output is the same everywhere.
class Rng {
public:
    explicit Rng(uint64_t seed) : m_state(seed) {}
    uint64_t Next() {
        uint64_t z = (m_state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }
    double Uniform() { return static_cast<double>(Next() >> 11) * (1.0 / 9007199254740992.0); }
    double Between(double low, double high) { return low + (high - low) * Uniform(); }
    int Below(int n) { return static_cast<int>(Next() % static_cast<uint64_t>(n)); }
    bool Chance(double p) { return Uniform() < p; }
    // Approximately standard normal: the sum of twelve uniforms less six.
    double Normal() {
        double sum = 0;
        for (int i = 0; i < 12; ++i) sum += Uniform();
        return sum - 6.0;
    }

private:
    uint64_t m_state;
};

double Round2(double value) { return std::floor(value * 100.0 + 0.5) / 100.0; }

// Names are two invented parts: a prefix and an industry word, with their pinyin initials.
struct Word {
    const char* text;
    const char* initials;
};

const Word kPrefixes[] = {
    {"华信", "HX"}, {"东岳", "DY"}, {"南丰", "NF"}, {"金桥", "JQ"}, {"海川", "HC"}, {"天恒", "TH"},
    {"中泰", "ZT"}, {"新源", "XY"}, {"长河", "CH"}, {"宏远", "HY"}, {"恒达", "HD"}, {"远洋", "YY"},
    {"云峰", "YF"}, {"瑞丰", "RF"}, {"嘉禾", "JH"}, {"鹏程", "PC"}, {"博雅", "BY"}, {"安盛", "AS"},
    {"永泰", "YT"}, {"龙腾", "LT"}, {"青山", "QS"}, {"明德", "MD"}, {"星辰", "XC"}, {"广隆", "GL"},
    {"松柏", "SB"}, {"和信", "HX"}, {"丰源", "FY"}, {"泰和", "TH"}, {"宁远", "NY"}, {"昌盛", "CS"},
    {"银河", "YH"}, {"碧水", "BS"},
};
constexpr int kPrefixCount = sizeof(kPrefixes) / sizeof(kPrefixes[0]);

// Industry: the word in the stock's name and the name of its block.
struct Industry {
    Word word;
    const char* block;
};
const Industry kIndustries[] = {
    {{"钢铁", "GT"}, "钢铁"}, {{"银行", "YH"}, "银行"}, {{"置业", "ZY"}, "房地产"},
    {{"医药", "YY"}, "医药"}, {{"电子", "DZ"}, "电子"}, {{"电力", "DL"}, "电力"},
    {{"化工", "HG"}, "化工"}, {{"汽车", "QC"}, "汽车"}, {{"食品", "SP"}, "食品"},
    {{"建设", "JS"}, "建筑"},
};
constexpr int kIndustryCount = sizeof(kIndustries) / sizeof(kIndustries[0]);

const char* const kRegions[] = {"北京", "上海", "广东", "浙江", "江苏", "四川", "湖北", "山东"};
constexpr int kRegionCount = sizeof(kRegions) / sizeof(kRegions[0]);
const char* const kConcepts[] = {"新能源", "人工智能", "国企改革", "高股息", "半导体"};

enum class Kind { Index, Share, Bond, Fund };

// One invented instrument and everything generated for it.
struct Instrument {
    int id = 0;
    CString name;  // GBK
    CString pinyin;
    Kind kind = Kind::Share;
    int industry = -1, region = -1;
    std::vector<int> concepts;
    float capital = 0, totalCapital = 0;  // 10,000 shares
    double price = 0;                     // first price
    double beta = 1, volatility = 0.02, limit = 0.1, turnover = 0.01;
    int listed = 0;                       // index of the first trading day
    double lot = 100;                     // volume step in stored units
    double sharesPerUnit = 1;             // shares (or bond pieces) per stored volume unit
    std::vector<CPowerData> power;        // oldest first; the first one is the listing
    std::vector<CHisDay> days, minutes5, lastMinutes;
    std::vector<std::string> orderFlow;   // 260-byte records
    std::vector<float> references;        // reference price of each day bar
};

char MarketOf(int id) { return static_cast<char>(id / 1000000); }

std::string KindWord(const Instrument& item) {
    switch (item.kind) {
        case Kind::Index: return "INDEX+HAND";
        case Kind::Bond: return "BOND";
        case Kind::Fund: return "FUND+HAND";
        default: return "A";
    }
}

std::vector<int> TradingDays(int first, int last) {
    std::vector<int> days;
    for (int day = WeekDay(first) >= 2 && WeekDay(first) <= 6 ? first : NextWeekday(first); day <= last;
         day = NextWeekday(day))
        days.push_back(day);
    return days;
}

class Generator {
public:
    Generator(const std::string& dir, const SampleMarketOptions& options)
        : m_dir(dir.empty() || dir.back() == '/' ? dir : dir + "/"),
          m_options(options),
          m_rng(options.seed),
          m_days(TradingDays(options.firstDate, options.lastDate)) {}

    bool Run(std::string* error);

private:
    void MakeInstruments();
    void AddShare(int index);
    void AddOther(int id, const char* name, const char* pinyin, Kind kind, double price);
    void ScheduleEvents(Instrument& item);
    void PriceEvent(CPowerData& event, double price);
    void Simulate(Instrument& item);
    CHisDay MakeDay(Instrument& item, int day, double reference);
    void MakeIntraday(Instrument& item, const CHisDay& day, bool keepMinutes);
    std::string OrderFlowRecord(const CHisDay& bar, double reference);
    void MakeIndex(Instrument& index);
    void MakeFinance(const Instrument& item, CStock* stock) const;
    void MakeQuote(const Instrument& item, CStock* stock);
    bool WriteAll(std::string* error);
    bool WriteBlocks(std::string* error);
    bool WriteStrategyTables(std::string* error);
    bool WriteExpertFiles(std::string* error);
    bool WriteInfoFiles(std::string* error);
    bool Write(const std::string& relative, const std::string& bytes, std::string* error);

    std::string m_dir;
    SampleMarketOptions m_options;
    Rng m_rng;
    std::vector<int> m_days;
    std::vector<double> m_marketMoves;
    std::vector<Instrument> m_items;
    // Per market and day: sums over the A shares that traded, for the indexes.
    struct DaySums {
        double open = 0, high = 0, low = 0, close = 0, volume = 0, amount = 0;
        int count = 0, advance = 0, decline = 0;
    };
    std::map<char, std::vector<DaySums>> m_sums;
};

void Generator::MakeInstruments() {
    AddOther(1, "沪市样本指数", "HSYBZS", Kind::Index, 3000);
    AddOther(1399001, "深市样本指数", "SSYBZS", Kind::Index, 10000);
    for (int i = 0; i < m_options.stockCount; ++i) AddShare(i);
    AddOther(110001, "样本转债一", "YBZZY", Kind::Bond, 105);
    AddOther(110002, "样本转债二", "YBZZE", Kind::Bond, 112);
    AddOther(1123001, "样本转债三", "YBZZS", Kind::Bond, 98);
    AddOther(1123002, "样本转债四", "YBZZS", Kind::Bond, 121);
    AddOther(510010, "样本基金甲", "YBJJJ", Kind::Fund, 2.5);
    AddOther(510020, "样本基金乙", "YBJJY", Kind::Fund, 1.2);
    AddOther(1159901, "样本基金丙", "YBJJB", Kind::Fund, 3.4);
    AddOther(1159902, "样本基金丁", "YBJJD", Kind::Fund, 0.9);
}

// Share i: even ones in Shanghai (600000 up), odd ones in Shenzhen (000001 up, every fourth of
// them on the growth board, 300001 up, with a 20% limit).
void Generator::AddShare(int i) {
    Instrument item;
    const int serial = i / 2;
    if (i % 2 == 0) {
        item.id = 600000 + serial;
    } else if (serial % 4 == 3) {
        item.id = 1300001 + serial / 4;
        item.limit = 0.2;
    } else {
        item.id = 1000001 + serial;
    }
    item.industry = i % kIndustryCount;
    const int prefix = (i / kIndustryCount) % kPrefixCount;
    const int round = i / (kIndustryCount * kPrefixCount);
    item.region = prefix % kRegionCount;
    item.name = CString(kPrefixes[prefix].text) + kIndustries[item.industry].word.text;
    item.pinyin = CString(kPrefixes[prefix].initials) + kIndustries[item.industry].word.initials;
    if (round > 0) {
        item.name += std::to_string(round + 1);
        item.pinyin += std::to_string(round + 1);
    }
    for (int c = 0; c < static_cast<int>(std::size(kConcepts)); ++c)
        if (m_rng.Chance(0.12)) item.concepts.push_back(c);
    item.price = Round2(m_rng.Between(3, 60));
    item.capital = static_cast<float>(std::floor(m_rng.Between(3000, 60000)));
    item.totalCapital = static_cast<float>(std::floor(item.capital * m_rng.Between(1.0, 2.0)));
    item.beta = m_rng.Between(0.5, 1.5);
    item.volatility = m_rng.Between(0.008, 0.022);
    item.turnover = m_rng.Between(0.004, 0.02);
    item.listed = m_rng.Chance(0.15) ? m_rng.Below(static_cast<int>(m_days.size() * 2 / 5) + 1) : 0;
    m_items.push_back(item);
}

void Generator::AddOther(int id, const char* name, const char* pinyin, Kind kind, double price) {
    Instrument item;
    item.id = id;
    item.name = name;
    item.pinyin = pinyin;
    item.kind = kind;
    item.price = price;
    if (kind == Kind::Bond) {
        // Bond volumes are pieces, ten to the hand; a piece trades at its price.
        item.lot = 10;
        item.capital = 0;
        item.beta = 0.2;
        item.volatility = 0.006;
        item.turnover = 0;
    } else if (kind == Kind::Fund) {
        // Fund volumes are hands of 100 shares.
        item.lot = 1;
        item.sharesPerUnit = 100;
        item.capital = static_cast<float>(std::floor(m_rng.Between(50000, 200000)));
        item.totalCapital = item.capital;
        item.beta = 1.0;
        item.volatility = 0.004;
        item.turnover = 0.01;
    } else {
        item.lot = 1;
        item.sharesPerUnit = 100;
    }
    m_items.push_back(item);
}

// Sets the money of an event from the price before it: a dividend of 0.5% to 3% of the price, and
// rights at 70% of it.
void Generator::PriceEvent(CPowerData& event, double price) {
    event.m_fProfit = static_cast<float>(std::floor(price * m_rng.Between(0.005, 0.03) * 100) / 10);
    if (event.m_fPei > 0) event.m_fPeiPrice = static_cast<float>(Round2(price * 0.7) * 10);
}

// About one event a year in May to July: a cash dividend, sometimes with bonus shares, rarely a
// rights issue. Each record carries the shares from then on.
void Generator::ScheduleEvents(Instrument& item) {
    CPowerData listing;
    listing.m_lStockID = item.id;
    listing.m_lDate = m_days[item.listed];
    listing.m_fCapital = item.capital;
    listing.m_fTotalCapital = item.totalCapital;
    item.power.push_back(listing);
    for (size_t d = item.listed + 5; d < m_days.size(); ++d) {
        const int month = m_days[d] / 100 % 100;
        const int year = m_days[d] / 10000;
        const bool yearDone = item.power.back().m_lDate / 10000 == year && item.power.size() > 1;
        if (month < 5 || month > 7 || yearDone || !m_rng.Chance(0.02)) continue;
        CPowerData event = item.power.back();
        event.m_lDate = m_days[d];
        // The dividend and the rights price follow the price of the day (PriceEvent).
        event.m_fProfit = 0;
        event.m_fPeiPrice = 0;
        event.m_fGive = m_rng.Chance(0.25) ? static_cast<float>(2 + m_rng.Below(4) * 2) : 0;
        event.m_fPei = m_rng.Chance(0.1) ? 3 : 0;
        const float growth = 1 + event.m_fGive / 10 + event.m_fPei / 10;
        event.m_fCapital = std::floor(item.power.back().m_fCapital * growth);
        event.m_fTotalCapital = std::floor(item.power.back().m_fTotalCapital * growth);
        item.power.push_back(event);
    }
}

// A day bar around a reference price, inside the stock's daily limit.
CHisDay Generator::MakeDay(Instrument& item, int day, double reference) {
    const double move = item.beta * m_marketMoves[day] + item.volatility * m_rng.Normal();
    const double ret = std::clamp(move, -item.limit * 0.98, item.limit * 0.98);
    const double top = Round2(reference * (1 + item.limit)), bottom = Round2(reference * (1 - item.limit));
    const double close = std::clamp(Round2(reference * (1 + ret)), std::max(bottom, 0.01), top);
    const double gap = std::clamp(0.3 * ret + 0.004 * m_rng.Normal(), -item.limit, item.limit);
    const double open = std::clamp(Round2(reference * (1 + gap)), std::max(bottom, 0.01), top);
    const double high = std::min(top, Round2(std::max(open, close) * (1 + std::fabs(0.008 * m_rng.Normal()))));
    const double low = std::max(std::max(bottom, 0.01), Round2(std::min(open, close) * (1 - std::fabs(0.008 * m_rng.Normal()))));
    double units;
    if (item.kind == Kind::Bond)
        units = std::floor(m_rng.Between(1000, 50000)) * item.lot;
    else
        units = std::floor(item.capital * 10000.0 / item.sharesPerUnit *
                           (item.turnover * (0.5 + m_rng.Uniform()) + 0.3 * std::fabs(ret)) / item.lot) * item.lot;
    CHisDay bar;
    bar.m_lTime = m_days[day];
    bar.m_fOpen = static_cast<float>(open);
    bar.m_fHigh = static_cast<float>(std::max({high, open, close}));
    bar.m_fLow = static_cast<float>(std::min({low, open, close}));
    bar.m_fClose = static_cast<float>(close);
    bar.m_fVolume = static_cast<float>(units);
    bar.m_fAmount = static_cast<float>(units * item.sharesPerUnit * (open + high + low + close) / 4);
    return bar;
}

// One day of 1-minute bars (09:30, the opening auction, then 240 minutes) that stays inside the day
// bar, touches its high and low, ends at its close and adds up to its volume; folded into
// 5-minute bars.
void Generator::MakeIntraday(Instrument& item, const CHisDay& day, bool keepMinutes) {
    const int stampBase = day.m_lTime % 1000000 * 10000;
    std::vector<int> stamps = {930};
    for (int m = 9 * 60 + 31; m <= 11 * 60 + 30; ++m) stamps.push_back(m / 60 * 100 + m % 60);
    for (int m = 13 * 60 + 1; m <= 15 * 60; ++m) stamps.push_back(m / 60 * 100 + m % 60);
    const int count = static_cast<int>(stamps.size());
    const double high = day.m_fHigh, low = day.m_fLow, close = day.m_fClose;
    const double noise = std::max(0.01, (high - low) / 10);
    std::vector<double> path(count);
    path[0] = day.m_fOpen;
    for (int k = 1; k < count; ++k) {
        const double pull = (close - path[k - 1]) / (count - k);
        path[k] = k == count - 1 ? close : std::clamp(Round2(path[k - 1] + pull + noise * m_rng.Normal()), low, high);
    }
    std::vector<double> weights(count);
    double total = 0;
    for (int k = 0; k < count; ++k) {
        weights[k] = (k == 0 ? 3.0 : 0.5) + m_rng.Uniform() + (k < 30 || k > count - 30 ? 1.5 : 0.0);
        total += weights[k];
    }
    const double lots = std::floor(day.m_fVolume / item.lot + 0.5);
    double given = 0;
    std::vector<CHisDay> minutes(count);
    for (int k = 0; k < count; ++k) {
        CHisDay& bar = minutes[k];
        bar.m_lTime = stampBase + stamps[k];
        const double open = k == 0 ? path[0] : path[k - 1];
        bar.m_fOpen = static_cast<float>(open);
        bar.m_fClose = static_cast<float>(path[k]);
        const double spread = k == 0 ? 0 : std::fabs(noise * 0.5 * m_rng.Normal());
        bar.m_fHigh = static_cast<float>(std::min(high, Round2(std::max(open, path[k]) + spread)));
        bar.m_fLow = static_cast<float>(std::max(low, Round2(std::min(open, path[k]) - spread)));
        const double share = k == count - 1 ? lots - given : std::floor(lots * weights[k] / total);
        given += share;
        bar.m_fVolume = static_cast<float>(share * item.lot);
        bar.m_fAmount = static_cast<float>(lots > 0 ? day.m_fAmount * share / lots : 0);
    }
    minutes[1 + m_rng.Below(count - 1)].m_fHigh = day.m_fHigh;
    minutes[1 + m_rng.Below(count - 1)].m_fLow = day.m_fLow;
    for (const CHisDay& bar : minutes) {
        const int slot = CStock::Time2Time(bar.m_lTime, 0, MarketOf(item.id));
        if (item.minutes5.empty() || item.minutes5.back().m_lTime != slot) {
            item.minutes5.push_back(bar);
            item.minutes5.back().m_lTime = slot;
            continue;
        }
        CHisDay& five = item.minutes5.back();
        five.m_fHigh = std::max(five.m_fHigh, bar.m_fHigh);
        five.m_fLow = std::min(five.m_fLow, bar.m_fLow);
        five.m_fClose = bar.m_fClose;
        five.m_fVolume += bar.m_fVolume;
        five.m_fAmount += bar.m_fAmount;
    }
    if (keepMinutes) item.lastMinutes = minutes;
}

// Order flow of a day: bought and sold volume, amount and order count for small, medium, big and
// huge orders. Buying outweighs selling on a rising day.
std::string Generator::OrderFlowRecord(const CHisDay& bar, double reference) {
    static const double kOrderSize[4] = {500, 3000, 20000, 100000};
    const double rise = reference > 0 ? bar.m_fClose / reference - 1 : 0;
    const double buying = std::clamp(0.5 + 3 * rise + 0.05 * m_rng.Normal(), 0.2, 0.8);
    const double price = (bar.m_fOpen + bar.m_fHigh + bar.m_fLow + bar.m_fClose) / 4;
    // Bought and sold volumes add up to the day's volume, in lots of 100.
    const double bought = std::floor(bar.m_fVolume * buying / 100) * 100;
    double split[2][4];
    for (int side = 0; side < 2; ++side) {
        const double volume = side == 0 ? bought : bar.m_fVolume - bought;
        double weights[4] = {0.4, 0.3, 0.2, 0.1}, total = 0, given = 0;
        for (double& w : weights) total += (w *= 0.5 + m_rng.Uniform());
        for (int size = 0; size < 3; ++size) {
            split[side][size] = std::floor(volume * weights[size] / total / 100) * 100;
            given += split[side][size];
        }
        split[side][3] = volume - given;
    }
    std::string record;
    StoreInt(&record, bar.m_lTime);
    for (int side = 0; side < 2; ++side)
        for (int size = 0; size < 4; ++size) StoreFloat(&record, static_cast<float>(split[side][size]));
    for (int side = 0; side < 2; ++side)
        for (int size = 0; size < 4; ++size) StoreFloat(&record, static_cast<float>(split[side][size] * price));
    for (int side = 0; side < 2; ++side)
        for (int size = 0; size < 4; ++size)
            StoreFloat(&record, static_cast<float>(std::ceil(split[side][size] / kOrderSize[size])));
    record.resize(260, '\0');
    return record;
}

// Walks a stock, bond or fund through the trading days: ex-rights events move the reference
// price as their records say, suspensions leave days out.
void Generator::Simulate(Instrument& item) {
    const int dayCount = static_cast<int>(m_days.size());
    const int minuteFrom = dayCount - m_options.minuteDays;
    const int flowFrom = dayCount - m_options.orderFlowDays;
    size_t nextEvent = 1;
    double previous = item.price;
    for (int d = item.listed; d < dayCount; ++d) {
        double reference = previous;
        while (nextEvent < item.power.size() && item.power[nextEvent].m_lDate <= m_days[d]) {
            CPowerData& event = item.power[nextEvent++];
            PriceEvent(event, reference);
            reference = event.Adjust(static_cast<float>(reference));
        }
        if (d > item.listed && d < dayCount - 1 && m_rng.Chance(0.004)) {
            previous = reference;  // suspended: an event of the day still counts at the next bar
            continue;
        }
        CHisDay bar = MakeDay(item, d, reference);
        if (d >= minuteFrom) MakeIntraday(item, bar, d == dayCount - 1);
        if (item.kind == Kind::Share && d >= flowFrom) item.orderFlow.push_back(OrderFlowRecord(bar, reference));
        item.days.push_back(bar);
        item.references.push_back(static_cast<float>(reference));
        previous = bar.m_fClose;
        if (item.kind != Kind::Share) continue;
        DaySums& sums = m_sums[MarketOf(item.id)][d];
        sums.volume += bar.m_fVolume / 100;
        sums.amount += bar.m_fAmount;
        if (d == item.listed) continue;  // a first day has no close before it
        sums.open += bar.m_fOpen / reference - 1;
        sums.high += bar.m_fHigh / reference - 1;
        sums.low += bar.m_fLow / reference - 1;
        sums.close += bar.m_fClose / reference - 1;
        ++sums.count;
        sums.advance += bar.m_fClose > reference;
        sums.decline += bar.m_fClose < reference;
    }
}

// An index moves by the mean move of its market's A shares; its volume is theirs in hands, and its
// advance/decline word counts its rising and falling shares.
void Generator::MakeIndex(Instrument& index) {
    const std::vector<DaySums>& sums = m_sums[MarketOf(index.id)];
    const int dayCount = static_cast<int>(m_days.size());
    double previous = index.price;
    for (int d = 0; d < dayCount; ++d) {
        const DaySums& s = sums[d];
        const double n = std::max(1, s.count);
        const double open = Round2(previous * (1 + s.open / n)), close = Round2(previous * (1 + s.close / n));
        CHisDay bar;
        bar.m_lTime = m_days[d];
        bar.m_fOpen = static_cast<float>(open);
        bar.m_fClose = static_cast<float>(close);
        bar.m_fHigh = static_cast<float>(std::max({open, close, Round2(previous * (1 + s.high / n))}));
        bar.m_fLow = static_cast<float>(std::min({open, close, Round2(previous * (1 + s.low / n))}));
        bar.m_fVolume = static_cast<float>(s.volume);
        bar.m_fAmount = static_cast<float>(s.amount);
        bar.m_lAdvDec = std::min(s.advance, 1023) | std::min(s.decline, 1023) << 10;
        if (d >= dayCount - m_options.minuteDays) MakeIntraday(index, bar, d == dayCount - 1);
        index.days.push_back(bar);
        index.references.push_back(static_cast<float>(previous));
        previous = close;
    }
}

// The part of a day's order-flow volume that was bought.
double BoughtShare(const std::string& record) {
    double bought = 0, sold = 0;
    for (int size = 0; size < 4; ++size) {
        bought += LoadFloat(record.data() + 4 + 4 * size);
        sold += LoadFloat(record.data() + 20 + 4 * size);
    }
    return bought + sold > 0 ? bought / (bought + sold) : 0.5;
}

// The number of orders of a day's order-flow record, bought and sold.
double OrderCount(const std::string& record) {
    double count = 0;
    for (int slot = 0; slot < 8; ++slot) count += LoadFloat(record.data() + 68 + 4 * slot);
    return count;
}

// The financial record of a share, consistent with its shares and its last price: earnings at a
// price-earnings ratio of 8 to 80, net assets at 1 to 6 times the book, the profits, reserves and
// assets in proportion. Drawn from a generator of its own per stock, so that the other files do
// not depend on it.
void Generator::MakeFinance(const Instrument& item, CStock* stock) const {
    if (item.kind != Kind::Share || item.totalCapital <= 0) return;
    Rng rng(m_options.seed ^ (static_cast<uint64_t>(item.id) * 0x9E3779B97F4A7C15ULL));
    const double last = item.days.back().m_fClose, total = item.totalCapital;
    const double eps = std::max(0.001, std::floor(last / rng.Between(8, 80) * 1000 + 0.5) / 1000);
    const double perShareAssets = std::max(0.01, Round2(last / rng.Between(1, 6)));
    const double held = total - item.capital;
    stock->m_fStateShares = static_cast<float>(std::floor(held * rng.Between(0.3, 0.7)));
    stock->m_fLegalShares = static_cast<float>(held - stock->m_fStateShares);
    stock->m_fEPS = static_cast<float>(eps);
    stock->m_fNetProfit = static_cast<float>(Round2(eps * total));
    stock->m_fTotalProfit = static_cast<float>(Round2(eps * total / 0.75));
    stock->m_fMainProfit = static_cast<float>(Round2(stock->m_fTotalProfit * rng.Between(1.0, 1.3)));
    stock->m_fNetAssetsPerShare = static_cast<float>(perShareAssets);
    stock->m_fEquity = static_cast<float>(Round2(perShareAssets * total));
    stock->m_fCapitalReserve = static_cast<float>(Round2(stock->m_fEquity * rng.Between(0.1, 0.4)));
    stock->m_fReservePerShare = static_cast<float>(std::floor(stock->m_fCapitalReserve / total * 1000 + 0.5) / 1000);
    stock->m_fUndistributed = static_cast<float>(Round2(stock->m_fEquity * rng.Between(0.1, 0.3)));
    stock->m_fTotalAssets = static_cast<float>(Round2(stock->m_fEquity * rng.Between(1.5, 4)));
}

// The quote of the last day, on which every instrument trades: the day bar, bid and ask queues
// around the last price and the figures derived from them; the price-earnings ratio from the
// financial record, the further value the day's number of orders.
void Generator::MakeQuote(const Instrument& item, CStock* stock) {
    CStock& quote = *stock;
    const CHisDay& bar = item.days.back();
    quote.m_fPreClose = item.references.back();
    quote.m_fNew = bar.m_fClose;
    quote.m_fOpen = bar.m_fOpen;
    quote.m_fHigh = bar.m_fHigh;
    quote.m_fLow = bar.m_fLow;
    quote.m_fVolume = bar.m_fVolume;
    quote.m_fAmount = bar.m_fAmount;
    quote.m_fCurVolume = item.lastMinutes.back().m_fVolume;
    const double shares = bar.m_fVolume * item.sharesPerUnit;
    quote.m_fAvgPrice = static_cast<float>(shares > 0 ? bar.m_fAmount / shares : 0);
    quote.m_fChange = static_cast<float>(bar.m_fClose - quote.m_fPreClose);
    quote.m_fRisePercent = static_cast<float>((bar.m_fClose - quote.m_fPreClose) / quote.m_fPreClose * 100);
    quote.m_fAmplitude = static_cast<float>((bar.m_fHigh - bar.m_fLow) / quote.m_fPreClose * 100);
    if (item.capital > 0) quote.m_fTurnover = static_cast<float>(shares / (item.capital * 10000.0) * 100);
    const size_t n = item.days.size();
    const size_t from = n > 6 ? n - 6 : 0;
    double past = 0;
    for (size_t i = from; i + 1 < n; ++i) past += item.days[i].m_fVolume;
    if (past > 0) quote.m_fVolumeRatio = static_cast<float>(bar.m_fVolume / (past / (n - 1 - from)));
    const double outerShare = item.orderFlow.empty() ? 0.5 : BoughtShare(item.orderFlow.back());
    quote.m_fOuterVolume = static_cast<float>(std::floor(bar.m_fVolume * outerShare / item.lot) * item.lot);
    quote.m_fInnerVolume = bar.m_fVolume - quote.m_fOuterVolume;
    if (item.kind != Kind::Index) {
        double bids = 0, asks = 0;
        for (int level = 0; level < 3; ++level) {
            quote.m_fBuyPrice[level] = static_cast<float>(Round2(bar.m_fClose - 0.01 * (level + 1)));
            quote.m_fSellPrice[level] = static_cast<float>(Round2(bar.m_fClose + 0.01 * (level + 1)));
            quote.m_fBuyVolume[level] = static_cast<float>((1 + m_rng.Below(500)) * item.lot);
            quote.m_fSellVolume[level] = static_cast<float>((1 + m_rng.Below(500)) * item.lot);
            bids += quote.m_fBuyVolume[level];
            asks += quote.m_fSellVolume[level];
        }
        quote.m_fOrderRatio = static_cast<float>((bids - asks) / (bids + asks) * 100);
        quote.m_fOrderDiff = static_cast<float>(bids - asks);
    }
    if (quote.m_fEPS > 0) quote.m_fPE = static_cast<float>(Round2(bar.m_fClose / quote.m_fEPS));
    if (!item.orderFlow.empty()) quote.m_fExtra = static_cast<float>(OrderCount(item.orderFlow.back()));
}

bool Generator::Write(const std::string& relative, const std::string& bytes, std::string* error) {
    return WriteFileAtomic(m_dir + relative, bytes, error, false);
}

// The path of a stock file relative to the installation.
std::string Relative(const std::string& path) { return path.substr(g_MyExePath.size()); }

bool Generator::WriteAll(std::string* error) {
    std::string list = std::string("# ") + kSampleMarketLabel +
                       "\n# code,name,pinyin initials,kind,circulating shares,total shares (10,000 shares)\n"
                       "code,name,pinyin,kind,capital,total_capital\n";
    std::vector<CStock> stocks(m_items.size());
    std::vector<const CStock*> listed;
    bool ok = true;
    for (size_t i = 0; i < m_items.size(); ++i) {
        const Instrument& item = m_items[i];
        CStock& stock = stocks[i];
        stock.m_lStockID = item.id;
        stock.m_fCapital = item.capital;
        stock.m_fTotalCapital = item.totalCapital;
        MakeFinance(item, &stock);
        MakeQuote(item, &stock);
        listed.push_back(&stock);
        list += FormatStockCode(item.id) + "," + GbkToUtf8(item.name) + "," + item.pinyin + "," + KindWord(item) +
                "," + std::to_string(static_cast<long>(item.capital)) + "," +
                std::to_string(static_cast<long>(item.totalCapital)) + "\n";
        std::string flow;
        for (const std::string& record : item.orderFlow) flow += record;
        ok = ok && Write(Relative(stock.GetDayFilePath()), EncodeBars(item.days), error) &&
             Write(Relative(stock.GetMin5FilePath()), EncodeBars(item.minutes5), error) &&
             Write(Relative(stock.GetMinuteFilePath()), EncodeBars(item.lastMinutes), error) &&
             (item.kind != Kind::Share || (Write(Relative(stock.GetExtDayFilePath()), flow, error) &&
                                           Write(Relative(stock.GetPowerFilePath()), EncodePower(item.power), error)));
    }
    const std::string label = std::string("# ") + kSampleMarketLabel + "\n";
    return ok && Write("data/stocks.csv", list, error) &&
           Write(QuoteTable().file, label + FormatStockTable(QuoteTable(), listed, m_days.back()), error) &&
           Write(FinanceTable().file, label + FormatStockTable(FinanceTable(), listed, 0), error);
}

// Blocks of every category: industries and regions from the names, concepts at random, a few
// stocks in the watch list and in one block of the user's own.
bool Generator::WriteBlocks(std::string* error) {
    std::map<std::pair<CString, CString>, std::vector<int>> blocks;
    int shares = 0;
    for (const Instrument& item : m_items) {
        if (item.kind != Kind::Share) continue;
        blocks[{"行业", kIndustries[item.industry].block}].push_back(item.id);
        blocks[{"地区", kRegions[item.region]}].push_back(item.id);
        for (int index : item.concepts) blocks[{"概念", kConcepts[index]}].push_back(item.id);
        if (shares < 8) blocks[{"自选", "自选"}].push_back(item.id);
        if (shares % 37 == 5) blocks[{"自定义", "示例"}].push_back(item.id);
        ++shares;
    }
    for (const auto& [key, ids] : blocks) {
        if (CGroup::CreateGroup(key.first, key.second, ids)) continue;
        *error = "can't write " + CGroup::GetGroupFilePath(key.first, key.second);
        return false;
    }
    return true;
}

// The information file of announcements of a share, data/infofile/公告/<m>/<code>.dat: each
// ex-rights event (dividend per ten shares, the close of the day, bonus shares per ten) and a
// periodic report on the first trading day from the 28th of April, August and October
// (earnings per share of the financial record, the close). Lines are date|title|n1|n2|n3|.
std::string InfoFileText(const Instrument& item, float eps) {
    std::map<int, std::string> lines;
    auto add = [&lines](const CHisDay& day, const std::string& title, double first, double third) {
        char text[160];
        std::snprintf(text, sizeof(text), "%d|%s|%.2f|%.2f|%.2f|\n", day.m_lTime, title.c_str(), first,
                      day.m_fClose, third);
        lines[day.m_lTime] += text;
    };
    for (size_t e = 1; e < item.power.size(); ++e) {
        const CPowerData& event = item.power[e];
        const auto day = std::lower_bound(item.days.begin(), item.days.end(), event.m_lDate,
                                          [](const CHisDay& bar, int date) { return bar.m_lTime < date; });
        if (day != item.days.end()) add(*day, "分红派息", event.m_fProfit, event.m_fGive);
    }
    int reported = 0;
    for (const CHisDay& day : item.days) {
        const int month = day.m_lTime / 100 % 100, dayOfMonth = day.m_lTime % 100;
        const bool reportMonth = month == 4 || month == 8 || month == 10;
        if (!reportMonth || dayOfMonth < 28 || reported == day.m_lTime / 100) continue;
        reported = day.m_lTime / 100;
        add(day, "定期报告", eps, 0);
    }
    std::string text;
    for (const auto& entry : lines) text += entry.second;
    return text;
}

bool Generator::WriteInfoFiles(std::string* error) {
    for (const Instrument& item : m_items) {
        if (item.kind != Kind::Share) continue;
        CStock finance;
        MakeFinance(item, &finance);
        char relative[64];
        std::snprintf(relative, sizeof(relative), "%s/%06d.dat", MarketOf(item.id) == NY_MARKET_SZ ? "sz" : "sh",
                      item.id % 1000000);
        if (!Write(std::string("data/infofile/") + GbkToUtf8("公告") + "/" + relative, InfoFileText(item, finance.m_fEPS),
                   error))
            return false;
    }
    return true;
}

// Decision blocks with their strategy tables. "趋势评分" holds every third A share with at least
// 21 bars, ranked by its rise in percent over the last 20 bars; "低波精选" every fifth one,
// ranked by its mean daily range (high - low over close, in percent) over the last 20 bars, lowest
// first. Rows stand in rank order, and the block lists the same stocks in that order.
bool Generator::WriteStrategyTables(std::string* error) {
    struct Pick {
        const Instrument* item;
        double score;
    };
    const std::vector<CStrategyData::Column> columns = {{"评分", NY_STRATEGY_DECIMAL},
                                                        {"排名", NY_STRATEGY_WHOLE},
                                                        {"信号", NY_STRATEGY_TEXT},
                                                        {"入选日期", NY_STRATEGY_DATE}};
    for (const int every : {3, 5}) {
        const bool trend = every == 3;
        std::vector<Pick> picks;
        int shares = 0;
        for (const Instrument& item : m_items) {
            if (item.kind != Kind::Share || shares++ % every != 0 || item.days.size() < 21) continue;
            const size_t n = item.days.size();
            double range = 0;
            for (size_t d = n - 20; d < n; ++d)
                range += (item.days[d].m_fHigh - item.days[d].m_fLow) / item.days[d].m_fClose;
            const double rise = item.days[n - 1].m_fClose / item.days[n - 21].m_fClose - 1.0;
            picks.push_back({&item, Round2(100.0 * (trend ? rise : range / 20))});
        }
        std::stable_sort(picks.begin(), picks.end(), [trend](const Pick& a, const Pick& b) {
            return trend ? a.score > b.score : a.score < b.score;
        });
        std::vector<CStrategyData::Row> rows;
        std::vector<int> ids;
        for (const Pick& pick : picks) {
            char score[32];
            std::snprintf(score, sizeof(score), "%.2f", pick.score);
            const char* signal = !trend ? "持有" : pick.score > 5 ? "买入" : pick.score < -5 ? "卖出" : "持有";
            const std::string rank = std::to_string(rows.size() + 1);
            rows.push_back({pick.item->id, {score, rank, signal, std::to_string(m_days.back())}});
            ids.push_back(pick.item->id);
        }
        const CString name = trend ? "趋势评分" : "低波精选";
        if (!CGroup::CreateGroup(NY_GROUP_STRATEGY, name, ids) ||
            !Write(Relative(CStrategyData::GetStrategyFilePath(name)), CStrategyData::Encode(columns, rows), error)) {
            *error = "can't write the strategy table " + CStrategyData::GetStrategyFilePath(name);
            return false;
        }
    }
    return true;
}

// The expert file of each A share: the SAR expert (kind 0) with a step of 0.02, except for every
// twentieth share from the eighth on, whose file names kind 1, which the expert doesn't serve, and
// every twentieth from the fourteenth on, which has none.
bool Generator::WriteExpertFiles(std::string* error) {
    int shares = 0;
    for (const Instrument& item : m_items) {
        if (item.kind != Kind::Share) continue;
        const int slot = shares++ % 20;
        if (slot == 13) continue;
        std::string bytes;
        StoreInt(&bytes, item.id);
        StoreInt(&bytes, 0);
        bytes.push_back(slot == 7 ? 1 : 0);
        StoreFloat(&bytes, 0.02f);
        bytes.resize(37, '\0');
        CStock stock;
        stock.m_lStockID = item.id;
        if (!Write(Relative(stock.GetOptInfoFilePathLocal()), bytes, error)) return false;
    }
    return true;
}

bool Generator::Run(std::string* error) {
    if (m_options.stockCount < 1 || m_days.size() < 2 || m_options.minuteDays < 1 || m_options.orderFlowDays < 1 ||
        m_options.minuteDays > static_cast<int>(m_days.size()) ||
        m_options.orderFlowDays > static_cast<int>(m_days.size()) || m_options.lastDate > 20211231) {
        *error = "the options give no market (minute times hold two-digit years up to 21)";
        return false;
    }
    for (size_t d = 0; d < m_days.size(); ++d) m_marketMoves.push_back(0.0004 + 0.011 * m_rng.Normal());
    m_sums[NY_MARKET_SH].resize(m_days.size());
    m_sums[NY_MARKET_SZ].resize(m_days.size());
    MakeInstruments();
    for (Instrument& item : m_items) {
        if (item.kind == Kind::Index) continue;
        if (item.kind == Kind::Share) ScheduleEvents(item);
        Simulate(item);
    }
    for (Instrument& item : m_items)
        if (item.kind == Kind::Index) MakeIndex(item);
    // Paths of stock files and blocks are made under g_MyExePath: point it here for a while.
    const CString savedPath = g_MyExePath;
    g_MyExePath = m_dir;
    const bool written = WriteAll(error) && WriteBlocks(error) && WriteInfoFiles(error) &&
                         WriteStrategyTables(error) && WriteExpertFiles(error);
    g_MyExePath = savedPath;
    if (!written) return false;
    std::string readme = std::string(kSampleMarketLabel) +
                         "\n\nThis folder was written by make_sample_market with a fixed seed. The stocks, names,"
                         "\nblocks, prices, ex-rights events and quotes are invented. See docs/data-directory.md"
                         "\nfor the files and their formats.\n";
    // The range of the local data, read by the picking dialog.
    const std::string first = std::to_string(m_days.front()), last = std::to_string(m_days.back());
    const std::string settings = std::string("; ") + kSampleMarketLabel + "\n[DayItem]\nBeginTime=" + first +
                                 "\nEndTime=" + last + "\n[Min5Item]\nEndTime=" + last + "\n";
    return Write("data/README.txt", readme, error) && Write("config_main.ini", settings, error);
}

}  // namespace

bool MakeSampleMarket(const std::string& dir, const SampleMarketOptions& options, std::string* error) {
    Generator generator(dir, options);
    return generator.Run(error);
}

}  // namespace ny
