// Every word of the catalog called on a stock of the generated market: none is unknown to the
// evaluator, and the words that read the installation's files give what the files hold, read
// here directly. Quote and finance conditions pick exactly the stocks their files satisfy.

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include "catalog/catalog_row.h"
#include "catalog/function_manager.h"
#include "engine/chain.h"
#include "host/clock.h"
#include "host/encoding.h"
#include "host/stockdb.h"
#include "host/text_fields.h"
#include "tests/engine/formula_fixture.h"
#include "tests/picker/picker_fixture.h"

namespace {

using Table = std::map<std::string, std::map<std::string, double>>;  // stock, column: value

// A CSV of the installation by its header line "code,...".
Table ReadCsv(const std::string& path) {
    std::string text;
    ny::ReadWholeFile(path, &text);
    std::vector<std::string> header;
    Table table;
    for (const ny::NumberedLine& line : ny::SplitTextLines(text)) {
        const std::vector<std::string> fields = ny::SplitFields(line.text);
        if (fields[0] == "code") header = fields;
        for (size_t i = 1; i < fields.size() && fields.size() == header.size(); ++i)
            table[fields[0]][header[i]] = std::strtof(fields[i].c_str(), nullptr);
    }
    return table;
}

// A call of a catalog row: its own text when it carries its argument, the arguments of a word
// that wants texts, else closes.
std::string PlausibleCall(const ny::CatalogRow& row) {
    static const std::map<std::string, std::string> kCalls = {
        {"NOT", "NOT(C>O)"}, {"STRCAT", "STRCAT('A','B')"}, {"STRING", "STRING(C>O,'A','B')"},
        {"CON2STR", "CON2STR(C,2)"}, {"INFOFILE", "INFOFILE('公告',-1)"}, {"DRAWTEXT", "DRAWTEXT(C>O,C,'T')"},
        {"DRAWTEXT_OFFSET", "DRAWTEXT_OFFSET(C>O,C,5,'T')"}, {"DRAWTEXT_FIX", "DRAWTEXT_FIX(C>O,0.5,0.5,0,'T')"},
        {"DRAWBMP", "DRAWBMP(C>O,C,'A.BMP')"}, {"DRAWGBK", "DRAWGBK(C>O,0,0,1,'A.BMP',0)"},
        {"INMODULE", "INMODULE('行业','钢铁')"}, {"MODULESETNUM", "MODULESETNUM('行业','钢铁')"},
        {"MODULESORT", "MODULESORT('行业','',14,0)"}};
    const std::string name = row.name;
    if (kCalls.count(name)) return kCalls.at(name);
    if (name.find('(') != std::string::npos || row.argCount == 0) return name;
    std::string call = name + "(C";
    for (int i = 1; i < row.argCount; ++i) call += ",C";
    return call + ")";
}

class CatalogSweep : public GeneratedMarketTest {
protected:
    void SetUp() override {
        GeneratedMarketTest::SetUp();
        std::string day;
        ny::ReadWholeFile(s_dir->Path() + "data/sh/day/600000.day", &day);
        ny::ReadWholeFile(s_dir->Path() + "data/sh/dayext/600000.ext", &flow);
        bars.resize(day.size() / 40);
        std::memcpy(bars.data(), day.data(), bars.size() * 40);
        nytest::AttachBars(ind, bars);
        ind.m_lStockID = 600000;
        statement.AllocMem(static_cast<short>(bars.size()));
    }
    // The sum of `count` words of the order-flow record of a date from word k; 0 without one.
    double Flow(int date, int k, int count) const {
        double sum = 0;
        for (size_t r = 0; r + 260 <= flow.size(); r += 260)
            for (int j = k; j < k + count && std::memcmp(flow.data() + r, &date, 4) == 0; ++j)
                sum += reinterpret_cast<const float*>(flow.data() + r)[j];
        return sum;
    }
    nytest::Reading Read(const std::string& text) {
        statement.m_strDrawText.clear();
        return nytest::ReadValue(ind, text, &statement);
    }
    std::string flow;
    std::vector<CHisDay> bars;
    CIndicator ind;
    CExpression statement;
};

TEST_F(CatalogSweep, EveryWordRunsAndTheDataWordsReadTheFiles) {
    // The words left out of the chain on purpose.
    const std::set<std::string> pending(ny::WordsOutsideTheChain().begin(), ny::WordsOutsideTheChain().end());
    auto quote = ReadCsv(s_dir->Path() + "data/quotes.csv")["SH600000"];
    auto money = ReadCsv(s_dir->Path() + "data/finance.csv")["SH600000"];
    auto shares = ReadCsv(s_dir->Path() + "data/stocks.csv")["SH600000"];
    const double total = shares["total_capital"], floating = shares["capital"], last = quote["last"];
    // The quote column of each DYNAINFO number; FINANCE numbers of stored figures, times 10,000 or not.
    std::istringstream dynaInfo(
        "3 preclose 4 open 5 high 6 low 7 last 8 volume 9 curvol 10 amount 11 avgprice 12 change 13 amplitude "
        "14 risepct 15 orderratio 16 orderdiff 17 volratio 20 buy1 21 sell1 22 inner 23 outer 25 buyvol1 "
        "26 buyvol2 27 buyvol3 28 buy1 29 buy2 30 buy3 31 sellvol1 32 sellvol2 33 sellvol3 34 sell1 35 sell2 "
        "36 sell3 37 turnover 39 pe 59 extra"),
        finance("5 state_shares 1e4 6 legal_shares 1e4 10 total_assets 1e4 17 capital_reserve 1e4 19 equity 1e4 "
                "21 main_profit 1e4 28 total_profit 1e4 30 net_profit 1e4 31 undistributed 1e4 "
                "18 reserve_per_share 1 33 eps 1 34 net_assets_per_share 1");
    std::map<std::string, double> kData = {{"FINANCE(1)", total * 1e4}, {"FINANCE(7)", floating * 1e4},
        {"FINANCE(32)", money["undistributed"] / total}, {"FINANCE(40)", floating * last * 1e4},
        {"FINANCE(41)", total * last * 1e4}};
    std::string steel;  // the stock's industry block: its ids behind an 84-byte header
    ny::ReadWholeFile(s_dir->Path() + "data/blocks/" + ny::GbkToUtf8("行业") + "/" + ny::GbkToUtf8("钢铁") + ".blk", &steel);
    for (size_t at = 84; at + 4 <= steel.size(); at += 4) kData["INMODULE('行业','钢铁')"] += ny::LoadInt(&steel[at]) == 600000;
    kData["MODULESETNUM('行业','钢铁')"] = (steel.size() - 84) / 4;
    double scale;
    for (std::string n, column; dynaInfo >> n >> column;) kData["DYNAINFO(" + n + ")"] = quote[column];
    for (std::string n, column; finance >> n >> column >> scale;) kData["FINANCE(" + n + ")"] = money[column] * scale;
    // MFLOW(n) beyond word 24: the first word of a sum and how many.
    std::istringstream sums("26 11 2 27 9 2 29 15 2 30 13 2 31 1 4 32 3 2 33 1 2 34 5 4 35 7 2 36 5 2");
    std::map<int, std::pair<int, int>> kFlowSums;
    for (int n, first, count; sums >> n >> first >> count;) kFlowSums[n] = {first, count};
    int flowBars = 0;
    for (int nClass = NY_FUNCLASS_QUOTE; nClass < NY_FUNCLASS_LINE_COLOR; ++nClass)
        for (const ny::CatalogRow& row : ny::CatalogRows(nClass)) {
            const std::string call = PlausibleCall(row), stem = call.substr(0, call.find('('));
            const nytest::Reading r = Read(call);
            EXPECT_EQ(r.code == NY_EVAL_UNKNOWN_WORD, pending.count(stem) == 1) << call << " " << int(r.code);
            if (stem == "DYNAINFO" || stem == "FINANCE") {
                EXPECT_EQ(kData.count(call), 1u) << call;
            }
            if (stem != "MFLOW") continue;
            const int n = std::atoi(call.c_str() + 6);
            const auto [first, count] = n <= 24 ? std::pair(n, 1) : kFlowSums.count(n) ? kFlowSums.at(n) : std::pair(0, 0);
            for (size_t i = 0; i < bars.size(); ++i) {
                EXPECT_EQ(r.values[i], static_cast<float>(Flow(bars[i].m_lTime, first, count))) << call << " " << i;
                flowBars += r.values[i] != 0;
            }
        }
    // Every number with a figure, those the catalog gives no row of included.
    for (const auto& [call, value] : kData) EXPECT_EQ(Read(call).values[0], static_cast<float>(value)) << call;
    EXPECT_GT(flowBars, 1000);
}

TEST_F(CatalogSweep, BlockWordsAndInformationFilesReadTheFiles) {
    std::string industry;  // the industry block whose file holds the stock
    for (const auto& entry : std::filesystem::directory_iterator(s_dir->Path() + "data/blocks/" + ny::GbkToUtf8("行业"))) {
        std::string bytes;
        ny::ReadWholeFile(entry.path().string(), &bytes);
        for (size_t at = 84; at + 4 <= bytes.size(); at += 4)
            if (std::memcmp(bytes.data() + at, &ind.m_lStockID, 4) == 0) industry = ny::Utf8ToGbk(entry.path().stem().string()) + " ";
    }
    EXPECT_EQ(Read("HYBLOCK").code, NY_EVAL_OK);
    EXPECT_EQ(statement.m_strDrawText, industry);
    std::string info;
    ASSERT_TRUE(ny::ReadWholeFile(s_dir->Path() + "data/infofile/" + ny::GbkToUtf8("公告") + "/sh/600000.dat", &info));
    ASSERT_EQ(Read("INFOFILE('公告',-1)").code, NY_EVAL_OK);
    int marked = 0;
    for (const ny::NumberedLine& line : ny::SplitTextLines(info)) {
        size_t second = 0;  // date|title|first|second|third|
        for (int k = 0; k < 3; ++k) second = line.text.find('|', second) + 1;
        for (size_t i = 0; i < bars.size(); ++i) {
            if (bars[i].m_lTime != std::atoi(line.text.c_str())) continue;
            EXPECT_EQ(statement.m_pDrawData[4 * i + 1], std::strtof(line.text.c_str() + second, nullptr));
            ++marked;
        }
    }
    EXPECT_GT(marked, 5);
}

// Conditions on the quote and the financial record pick the stocks whose files satisfy them.
TEST_F(CatalogSweep, QuoteAndFinanceConditionsPickWhatTheFilesSay) {
    Table quotes = ReadCsv(s_dir->Path() + "data/quotes.csv"), finance = ReadCsv(s_dir->Path() + "data/finance.csv");
    std::vector<int> stocks;
    std::set<int> expected;
    for (const CStock* stock : g_MyStocksArray) {
        stocks.push_back(stock->m_lStockID);
        const std::string code = ny::FormatStockCode(stock->m_lStockID);
        if (quotes[code]["risepct"] > 1 && finance[code]["eps"] > 0.3f) expected.insert(stock->m_lStockID);
    }
    auto rising = pickertest::MakeFormula({{"X", "DYNAINFO(14)>1"}}, "RISING");
    auto earning = pickertest::MakeFormula({{"X", "FINANCE(33)>0.3"}}, "EARNING");
    std::vector<CIndicator*> conditions = {rising.get(), earning.get()};
    CClockModule::SetClock(20210331, 160000);  // after the close of the market's last day: no refresh
    CCondStocks engine;
    ASSERT_TRUE(engine.Play(conditions, 1, stocks, NY_PERIOD_DAY, 0, 0, 0, 0, 0));
    const CondStocksSTATUS status = pickertest::WaitUntilIdle(engine);
    CClockModule::UseSystemClock();
    EXPECT_EQ(std::set<int>(status.m_arResult.begin(), status.m_arResult.end()), expected);
    EXPECT_GT(expected.size(), 2u);
}

}  // namespace
