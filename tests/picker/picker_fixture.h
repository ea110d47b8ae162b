#pragma once
// Helpers of the picker tests: an engine whose pipeline steps can be called one by one, bars
// written as a stock's files, and formulas built from statement texts.

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "host/files.h"
#include "host/power.h"
#include "host/sample_market.h"
#include "picker/cond_stocks.h"
#include "tests/engine/formula_fixture.h"
#include "tests/host/generated_market.h"
#include "tests/host/temp_installation.h"

namespace pickertest {

class Engine : public CCondStocks {
public:
    using CCondStocks::CalcVarPeriod;
    using CCondStocks::ChangeToMinute5;
    using CCondStocks::GetNextCQ;
    using CCondStocks::GetStartCQ;
    using CCondStocks::IsSamePeriod;
    using CCondStocks::LoadPower;
    using CCondStocks::m_nBufSize;
    using CCondStocks::m_nDrawCount;
    using CCondStocks::m_nHisCount;
    using CCondStocks::m_pDrawData;
    using CCondStocks::RequestData;

    // The bars of a stock in a period, through the whole pipeline.
    std::vector<CHisDay> Load(int id, short period, int power = 0, int varPeriod = 0) {
        m_lStockID = id;
        m_nPeriod = period;
        m_nPower = power;
        m_nVarPeriod = varPeriod;
        LoadPower();
        RequestData();
        return Bars();
    }
    std::vector<CHisDay> Bars() const { return {DrawData(), DrawData() + DrawCount()}; }
};

// A day bar with open = close, high = close + 1, low = close - 1 unless given.
inline CHisDay Bar(int time, float close, float volume = 100) {
    return {.m_lTime = time, .m_fOpen = close, .m_fHigh = close + 1, .m_fLow = close - 1, .m_fClose = close,
            .m_fAmount = volume * close, .m_fVolume = volume};
}

// Bars written "TIME:CLOSE[:VOLUME]" as Bar() makes them, each followed by the fields it changes
// ("20210104:10 open=9.5 20210105:11"); "TIME:FIRST..LAST" is a run of bars whose time and close
// count up by one.
inline std::vector<CHisDay> Bars(const std::string& text) {
    std::vector<CHisDay> bars;
    std::istringstream in(text);
    for (std::string item; in >> item;) {
        if (const size_t eq = item.find('='); eq != std::string::npos) {
            bars.back().*nytest::FieldNamed(item.substr(0, eq)) = std::stof(item.substr(eq + 1));
            continue;
        }
        const size_t colon = item.find(':'), second = item.find(':', colon + 1);
        const std::string close = item.substr(colon + 1, second - colon - 1);
        const size_t dots = close.find("..");
        const float first = std::stof(close), last = dots == std::string::npos ? first : std::stof(close.substr(dots + 2));
        for (float value = first; value <= last; ++value)
            bars.push_back(Bar(std::stoi(item.substr(0, colon)) + static_cast<int>(value - first), value,
                               second == std::string::npos ? 100 : std::stof(item.substr(second + 1))));
    }
    return bars;
}

// Checks the fields of a bar written "time=T close=V ...".
inline void ExpectBar(const CHisDay& bar, const std::string& fields) {
    std::istringstream in(fields);
    for (std::string item; in >> item;) {
        const size_t eq = item.find('=');
        if (item.substr(0, eq) == "time")
            EXPECT_EQ(bar.m_lTime, std::stoi(item.substr(eq + 1))) << item;
        else
            EXPECT_FLOAT_EQ(bar.*nytest::FieldNamed(item.substr(0, eq)), std::stof(item.substr(eq + 1))) << item;
    }
}

inline CPowerData Event(int date, float profit, float give = 0, float capital = 0) {
    return {.m_lDate = date, .m_fGive = give, .m_fProfit = profit, .m_fCapital = capital};
}

// A small installation: the stock list given, no quotes unless written.
class Market {
public:
    explicit Market(const std::string& stocks) { m_dir.Write("data/stocks.csv", stocks); }
    void Day(const std::string& file, const std::vector<CHisDay>& bars) {
        m_dir.Write(file, ny::EncodeBars(bars));
    }
    void Power(const std::string& file, std::vector<CPowerData> oldestFirst) {
        m_dir.Write(file, ny::EncodePower(oldestFirst));
    }
    void Write(const std::string& file, const std::string& bytes) { m_dir.Write(file, bytes); }
    bool Open() { return ny::OpenInstallation(m_dir.Path()); }
    const std::string& Path() const { return m_dir.Path(); }

private:
    TempInstallation m_dir;
};

using nytest::MakeFormula;

// Waits for the end of the engine's pick; its last status.
inline CondStocksSTATUS WaitUntilIdle(CCondStocks& engine) {
    CondStocksSTATUS status;
    do {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        engine.QueryStatus(&status);
    } while (status.m_nRunning != 0);
    return status;
}

}  // namespace pickertest
