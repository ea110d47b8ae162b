// Block words, strategy tables and DRAWSIGN over a generated market, checked against its files
// read here byte by byte, or against a parabolic stop run here.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <tuple>

#include "engine/eval_context.h"
#include "engine/expert_sar.h"
#include "host/encoding.h"
#include "host/files.h"
#include "host/global.h"
#include "host/stockdb.h"
#include "host/strategy.h"
#include "picker/pick_request.h"
#include "tests/engine/formula_fixture.h"
#include "tests/host/generated_market.h"

namespace {

std::string Slurp(const std::string& path) { std::string bytes; ny::ReadWholeFile(path, &bytes); return bytes; }
int Int32(const std::string& bytes, size_t at) { return ny::LoadInt(bytes.data() + at); }
std::string Blocks(const std::string& category, const std::string& name, const char* extension) {
    return g_MyGetFilePath(NY_FILE_BLOCKS) + ny::GbkToUtf8(category) + "/" + ny::GbkToUtf8(name) + extension;
}

// The ids of a block file: behind an 84-byte header.
std::vector<int> BlockIds(const std::string& category, const std::string& name) {
    const std::string bytes = Slurp(Blocks(category, name, ".blk"));
    std::vector<int> ids;
    for (size_t at = 84; at + 4 <= bytes.size(); at += 4) ids.push_back(Int32(bytes, at));
    return ids;
}

// The rows of a stored strategy table of four columns: the id and the cells.
std::vector<std::pair<int, std::vector<std::string>>> ReadTable(const std::string& name) {
    const std::string bytes = Slurp(Blocks("决策", name, ".stg"));
    std::vector<std::pair<int, std::vector<std::string>>> rows;
    for (size_t at = 16 + 36 * 4; at + 132 <= bytes.size(); at += 132) {
        rows.push_back({Int32(bytes, at), {}});
        for (size_t c = 0; c < 4; ++c) rows.back().second.push_back(bytes.substr(at + 4 + 32 * c, 32).c_str());
    }
    return rows;
}

// The parabolic stop with an extreme point, in a frame where the position is always long: a short
// position is a long one over negated prices. Gives each bar's position: 1 long (stop at or below
// the low), 2 short (at or above the high), -1 inside the bar.
std::vector<int> StopPositions(const std::vector<CHisDay>& bars, float step) {
    std::vector<int> positions;
    int d = 1;
    float extreme = bars[0].m_fHigh, af = step, stop = bars[0].m_fLow;
    for (size_t i = 0; i < bars.size(); ++i) {
        const auto hi = [&] { return d > 0 ? bars[i].m_fHigh : -bars[i].m_fLow; };
        const auto lo = [&] { return d > 0 ? bars[i].m_fLow : -bars[i].m_fHigh; };
        const float turnLine = d * (i < 2 ? bars[0].m_fLow : stop);
        float e = d * extreme, p = d * stop;
        if (hi() > e) af += step, e = hi();
        af = std::min(af, 0.2f);
        if (turnLine > lo()) af = 0.02f, p = -e, d = -d, e = hi();
        const float s = std::min(static_cast<float>((static_cast<double>(e) - p) * af + p), lo());
        stop = d * s, extreme = d * e;
        positions.push_back(bars[i].m_fLow >= stop ? 1 : bars[i].m_fHigh <= stop ? 2 : -1);
    }
    return positions;
}

// Twenty rising bars take the acceleration to its cap of 0.2; the slow fall behind them turns the
// stop on a bar that a lower cap would not.
TEST(ExpertStop, RiseAndFall) {
    std::vector<float> closes;
    for (int i = 0; i < 40; ++i) closes.push_back(i < 20 ? 10.0f + i : 29.0f - 0.5f * (i - 20));
    CTradeS_SAR expert;
    expert.Calc(nytest::MakeBars(closes));
    EXPECT_EQ(expert.m_arStates, StopPositions(nytest::MakeBars(closes), 0.02f));
}

// Over the picker's generated market; bars adjusted for ex-rights events come from its pipeline.
class GeneratedMarket : public GeneratedMarketTest {
protected:
    // A formula of one statement for a stock over its stored day bars.
    static std::unique_ptr<nytest::Formula> Run(int id, const std::string& text) {
        auto formula = std::make_unique<nytest::Formula>(std::initializer_list<nytest::Statement>{{"S", text}});
        formula->ind.m_lStockID = id;
        formula->Run(ny::ReadBarFile(g_MyGetStock(id)->GetDayFilePath()));
        return formula;
    }
    // The statement's last value, or -1 if it was not computed.
    static float Value(int id, const std::string& text) {
        const auto formula = Run(id, text);
        return formula->ind.Find("S")->m_cComputed ? formula->At("S", static_cast<int>(formula->bars.size()) - 1) : -1;
    }
};

float Arg(const CExpression& s, int slot) { return ny::LoadFloat(reinterpret_cast<const char*>(&s.m_lDrawArgs[slot])); }

// Shares 0 and 20 have the SAR expert at step 0.02, share 33 no expert file (step 0).
TEST_F(GeneratedMarket, DrawSignMarksFollowTheParabolicStop) {
    for (const auto& [share, step] : {std::pair{0, 0.02f}, {20, 0.02f}, {33, 0.0f}}) {
        const int id = g_MyStocksArray[2 + share]->m_lStockID;  // the two indexes come first
        const auto formula = Run(id, "DRAWSIGN(1,1,1)");
        const CExpression& s = (*formula)["S"];
        std::vector<CHisDay> adjusted;
        ASSERT_TRUE(ny::LoadStockBars(id, 1, true, &adjusted) && adjusted.size() == formula->bars.size());
        ASSERT_TRUE(s.m_cComputed == 1 && s.m_nType == 29) << id;
        const std::vector<int> positions = StopPositions(adjusted, step);
        int held = 0, marks = 0, lastTurn = 0;
        for (size_t i = 0; i < positions.size(); ++i) {
            const int now = positions[i];
            const bool turned = now > 0 && held > 0 && now != held;
            EXPECT_EQ(s.m_pDrawData[4 * i + 1], turned ? now : 0) << id << " bar " << i;
            if (turned) ++marks, lastTurn = static_cast<int>(i);
            if (now > 0) held = now;
        }
        ASSERT_GT(marks, 2) << id;
        EXPECT_EQ(Arg(s, 3), adjusted[lastTurn].m_fClose);
        EXPECT_EQ(s.m_strDrawText.substr(0, 4), held == 1 ? "看多" : "看空");
        EXPECT_EQ(formula->ind.m_arInfoRecords.size(), static_cast<size_t>(marks) + 1);
        EXPECT_EQ(s.m_DrawParams[0], 1);
    }
}

// Share 1 gets a file with another stock's id, share 2 one cut short; share 7's file names kind 1.
TEST_F(GeneratedMarket, DrawSignWithoutAFittingExpert) {
    const std::string paths[] = {g_MyStocksArray[3]->GetOptInfoFilePathLocal(),
                                 g_MyStocksArray[4]->GetOptInfoFilePathLocal()};
    const std::string kept[] = {Slurp(paths[0]), Slurp(paths[1])};
    ny::WriteFileAtomic(paths[0], std::string(37, '\0'));
    ny::WriteFileAtomic(paths[1], kept[1].substr(0, 32));
    const std::tuple<int, const char*, float> rows[] = {
        {9, "该股不适合本系统的的优化模型!", 1}, {3, "该股不适合本系统的的优化模型。", 1}, {4, "该股不适合本系统的的优化模型.", 0}};
    for (const auto& [index, expected, arg0] : rows) {
        const auto formula = Run(g_MyStocksArray[index]->m_lStockID, "DRAWSIGN(1,1,1)");
        const CExpression& s = (*formula)["S"];
        EXPECT_TRUE(s.m_cComputed == 1 && s.m_strDrawText == expected && Arg(s, 0) == arg0) << expected;
    }
    for (int k : {0, 1}) ny::WriteFileAtomic(paths[k], kept[k]);
}

// Block words against the block files: membership, size, and rank on the rise in percent.
TEST_F(GeneratedMarket, BlockWordsFollowTheBlockFiles) {
    for (const char* industry : {"银行", "房地产", "医药"}) {
        const std::vector<int> ids = BlockIds("行业", industry);
        ASSERT_FALSE(ids.empty()) << industry;
        std::vector<int> ranked = ids;
        const auto rise = [](int id) { return g_MyGetStock(id)->m_fRisePercent; };
        std::stable_sort(ranked.begin(), ranked.end(), [&](int a, int b) { return rise(a) > rise(b); });
        const std::string args = std::string("('行业','") + industry + "'";
        for (int id : {ids.front(), ids.back(), g_MyStocksArray[0]->m_lStockID}) {
            const auto at = std::find(ranked.begin(), ranked.end(), id);
            EXPECT_EQ(Value(id, "INMODULE" + args + ")"), at != ranked.end() ? 1.0f : 0.0f) << id;
            EXPECT_EQ(Value(id, "MODULESETNUM" + args + ")"), static_cast<float>(ids.size()));
            EXPECT_EQ(Value(id, "MODULESORT" + args + ",14,0)"), at != ranked.end() ? at - ranked.begin() : -1) << id;
        }
    }
    // Unknown blocks are empty; 2 is no quote number; an empty name takes the first block holding it.
    const int first = BlockIds("行业", "银行").front();
    const std::pair<const char*, float> rows[] = {{"INMODULE('行业','没有的板块')", 0}, {"MODULESETNUM('行业','没有的板块')", 0},
                                                  {"MODULESORT('行业','银行',2,0)", -1},
                                                  {"MODULESORT('行业','',14,0)", Value(first, "MODULESORT('行业','银行',14,0)")}};
    for (const auto& [text, expected] : rows) EXPECT_EQ(Value(first, text), expected) << text;
}

// The strategy readers, called as outside callers do, against the table read here; then the table
// damaged.
TEST_F(GeneratedMarket, StrategyTables) {
    const auto table = ReadTable("趋势评分");
    ASSERT_GT(table.size(), 5u);
    using Reader = char (CIndicator::*)(char*, float*, short*, short*, char, char*, CExpression*);
    const auto read = [](int id, Reader reader, std::string args, char* code) {
        CIndicator ind;
        ind.m_lStockID = id;
        ind.Context().m_pCursor = (args += ";").data();
        float out = 0;
        short from = 0, to = 0;
        char flag = 0;
        *code = (ind.*reader)(nullptr, &out, &from, &to, 1, &flag, nullptr);
        return out;
    };
    for (size_t r = 0; r < table.size(); ++r) {
        const auto& [id, cells] = table[r];
        const double score = std::atof(cells[0].c_str());
        float rising = 0;  // the row after a stable sort on the score, lowest first
        for (size_t k = 0; k < table.size(); ++k)
            rising += std::atof(table[k].second[0].c_str()) < score || (table[k].second[0] == cells[0] && k < r);
        const std::tuple<Reader, std::string, float, char> calls[] = {
            {&CIndicator::ReadSTRATEGY, "('趋势评分','评分')", static_cast<float>(score), 0},
            {&CIndicator::ReadSTRATEGY, "('趋势评分','排名')", r + 1.0f, 0},
            {&CIndicator::ReadSTRATEGY, "('趋势评分','信号')", 0, NY_EVAL_TEXT_COLUMN},
            {&CIndicator::ReadSTRATEGY, "('趋势评分','没有的列')", 0, NY_EVAL_NOT_FOUND},
            {&CIndicator::ReadSTRATEGY, "('没有的表','评分')", 0, NY_EVAL_NOT_FOUND},
            {&CIndicator::ReadSTRATEGYSTRCMP, "('趋势评分','信号','" + cells[2] + "')", 0, 0},
            {&CIndicator::ReadSTRATEGYSORT, "('趋势评分','评分',0)", static_cast<float>(r), 0},
            {&CIndicator::ReadSTRATEGYSORT, "('趋势评分','评分',1)", rising, 0}};
        for (const auto& [reader, args, value, expectedCode] : calls) {
            char code = -1;
            EXPECT_TRUE(read(id, reader, args, &code) == value && code == expectedCode) << args << " row " << r;
        }
    }
    // Damaged tables: nothing is read past the file, complete rows stay.
    const std::string path = Blocks("决策", "趋势评分", ".stg");
    const std::string good = Slurp(path);
    const size_t rowsStart = 16 + 36 * 4, rowSize = 4 + 32 * 4;
    const std::pair<std::string, size_t> rows[] = {
        {"", 0}, {good.substr(0, 15), 0}, {"XXXX" + good.substr(4), 0}, {good.substr(0, rowsStart - 1), 0},
        {good.substr(0, rowsStart + 2 * rowSize + 7), 2}, {good + std::string(rowSize, 'x'), table.size()}};
    for (const auto& [bytes, kept] : rows) {
        ny::WriteFileAtomic(path, bytes);
        CStrategyData data;
        data.m_strPath = path;
        data.Load();
        for (size_t r = 0; r < table.size(); ++r)
            EXPECT_EQ(data.GetPos(table[r].first), r < kept ? static_cast<int>(r) : -1) << bytes.size();
    }
    ny::WriteFileAtomic(path, good);
}

}  // namespace
