// The golden results of the system formula set: every statement of every system formula over
// every sample stock, in the day (as stored), week (adjusted) and 30-minute periods, must come
// out bit for bit as recorded in golden_results.txt. A faster or restructured evaluator or bar
// pipeline must not change a single value, range, flag or draw command.
//
// The record keeps, per formula and period, a checksum of each statement over all stocks and a
// 16-bit checksum per stock, so that a failure names the statement and the first stock that
// changed. To find the bar, write the full dump here and on the last good commit and diff them:
//     NY_GOLDEN_DUMP=/tmp/now.txt build/tests/test_cli --gtest_filter='Golden*'
// After a deliberate change of results (or of the set), rewrite the record with
//     NY_GOLDEN_UPDATE=1 build/tests/test_cli --gtest_filter='Golden*'
// and say in the commit why the results changed.

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>

#include "engine/evaluate.h"
#include "host/encoding.h"
#include "host/installation.h"
#include "host/stockdb.h"
#include "model/library.h"
#include "installed_library.h"
#include "nyind_runner.h"
#include "picker/pick_request.h"
#include "tests/checksum.h"

namespace nyind_test {
namespace {

const std::string kGoldenFile = NY_SOURCE_DIR "/tests/cli/golden_results.txt";

struct GoldenPeriod {
    const char* name;
    short period;
    bool adjust;
};
constexpr GoldenPeriod kPeriods[] = {
    {"day", NY_PERIOD_DAY, false},
    {"week", NY_PERIOD_WEEK, true},
    {"min30", NY_PERIOD_MIN30, false},
};

using testcases::Checksum;

// Everything a caller can read of a statement after Calc.
void AddStatement(const CExpression& s, short bars, Checksum* sum, std::ostream* dump) {
    sum->AddValue(s.m_cComputed);
    sum->AddValue(s.m_cIsSeries);
    sum->AddValue(s.m_nFirst);
    sum->AddValue(s.m_nEnd);
    sum->AddValue(s.m_nHasDraw);
    sum->Add(s.m_lDrawArgs, sizeof s.m_lDrawArgs);
    sum->Add(s.m_strDrawText.data(), s.m_strDrawText.size());
    const short n = std::min(bars, s.m_nAllocBars);
    if (s.m_pData != nullptr) sum->Add(s.m_pData, sizeof(float) * n);
    if (s.m_pDrawData != nullptr) sum->Add(s.m_pDrawData, sizeof(float) * 4 * n);
    if (dump == nullptr) return;
    *dump << "  " << ny::GbkToUtf8(s.m_strName) << " computed=" << int(s.m_cComputed)
          << " series=" << int(s.m_cIsSeries) << " range=" << s.m_nFirst << ".." << s.m_nEnd
          << " draw=" << s.m_nHasDraw << "\n";
    char text[32];
    for (short b = 0; b < n && s.m_pData != nullptr; ++b) {
        std::snprintf(text, sizeof text, "%.9g", static_cast<double>(s.m_pData[b]));
        *dump << "    " << b << " " << text << "\n";
    }
}

// Every statement of a system formula is computed up to the last day bar of every stock, except
// those of the market-breadth indicators, which read the advance and decline counts of indexes.
void ExpectComputedOverAllBars(const CIndicator& f, const CStock& stock, short count) {
    const bool breadth = f.m_MainType == NY_KIND_INDICATOR && f.m_SubType == 0;
    for (const CExpression* s : f.m_arExpressions) {
        EXPECT_EQ(s->m_cComputed == 1, !breadth || stock.IsIndex())
            << ny::GbkToUtf8(f.m_strName) << " " << ny::GbkToUtf8(s->m_strName) << " on " << ny::FormatStockCode(stock.GetID());
        if (s->m_cComputed == 1) {
            EXPECT_EQ(s->m_nEnd, count) << ny::GbkToUtf8(f.m_strName);
        }
    }
}

// The checksums of one formula in one period, or of one period over all formulas.
struct Record {
    std::vector<uint64_t> statements;  // of a formula: each statement over all stocks
    std::vector<uint32_t> stocks;      // of a period: each stock over all formulas
    std::vector<std::string> names;    // of the statements, for messages; not recorded
};

std::string RecordKey(const CIndicator& f, const GoldenPeriod& p) {
    return std::to_string(f.m_MainType) + " " + p.name + " " + ny::GbkToUtf8(f.m_strName);
}

class GoldenResults : public InstalledLibrary {
protected:

    // Evaluates every system formula over every stock in every period.
    static std::map<std::string, Record> Compute(std::ostream* dump) {
        std::map<std::string, Record> records;
        std::vector<CHisDay> bars;
        for (const GoldenPeriod& p : kPeriods) {
            Record& ofPeriod = records[std::string("P ") + p.name];
            for (const CStock* stock : g_MyStocksArray) {
                ny::LoadStockBars(stock->GetID(), p.period, p.adjust, &bars);
                Checksum ofStock;
                const auto count = static_cast<short>(bars.size());
                for (const CIndicator* system : g_MyIndicatorArray) {
                    if (system->m_SysIndex != 1) continue;
                    Record& record = records[RecordKey(*system, p)];
                    if (dump != nullptr)
                        *dump << RecordKey(*system, p) << " on " << ny::FormatStockCode(stock->GetID()) << "\n";
                    CIndicator f;
                    f = *system;
                    ny::EvaluateOver(f, stock->GetID(), bars.data(), count);
                    if (p.period == NY_PERIOD_DAY) ExpectComputedOverAllBars(f, *stock, count);
                    record.statements.resize(f.m_arExpressions.size(), Checksum().Value());
                    record.names.clear();
                    for (const CExpression* s : f.m_arExpressions) record.names.push_back(ny::GbkToUtf8(s->m_strName));
                    for (size_t i = 0; i < f.m_arExpressions.size(); ++i) {
                        Checksum ofStatement;
                        ofStatement.AddValue(record.statements[i]);
                        AddStatement(*f.m_arExpressions[i], count, &ofStatement, dump);
                        record.statements[i] = ofStatement.Value();
                        ofStock.AddValue(ofStatement.Value());
                    }
                }
                ofPeriod.stocks.push_back(static_cast<uint32_t>(ofStock.Value() ^ (ofStock.Value() >> 32)));
            }
        }
        return records;
    }

    // A formula and period: its key, then its statement sums; a period: its key, then the
    // per-stock sums.
    static std::string Format(const std::map<std::string, Record>& records) {
        std::ostringstream out;
        out << "# Results of the system formulas over the sample market; see golden_test.cpp.\n";
        char hex[24];
        for (const auto& [key, record] : records) {
            out << key << "\n";
            if (!record.statements.empty()) out << " S";
            for (uint64_t s : record.statements) {
                std::snprintf(hex, sizeof hex, " %016" PRIx64, s);
                out << hex;
            }
            if (!record.stocks.empty()) out << " T ";
            for (uint32_t s : record.stocks) {
                std::snprintf(hex, sizeof hex, "%08x", s);
                out << hex;
            }
            out << "\n";
        }
        return out.str();
    }

    static std::map<std::string, Record> Parse(const std::string& text) {
        std::map<std::string, Record> records;
        std::istringstream in(text);
        std::string line, key;
        while (std::getline(in, line)) {
            if (line.empty() || line[0] == '#') continue;
            if (line.rfind(" S", 0) == 0) {
                std::istringstream sums(line.substr(2));
                std::string s;
                while (sums >> s) records[key].statements.push_back(std::stoull(s, nullptr, 16));
            } else if (line.rfind(" T ", 0) == 0) {
                for (size_t at = 3; at + 8 <= line.size(); at += 8)
                    records[key].stocks.push_back(static_cast<uint32_t>(std::stoul(line.substr(at, 8), nullptr, 16)));
            } else {
                key = line;
            }
        }
        return records;
    }
};

TEST_F(GoldenResults, SystemFormulasGiveTheRecordedResults) {
    std::ostringstream dump;
    const char* dumpPath = std::getenv("NY_GOLDEN_DUMP");
    const auto now = Compute(dumpPath != nullptr ? &dump : nullptr);
    if (dumpPath != nullptr) WriteText(dumpPath, dump.str());
    if (std::getenv("NY_GOLDEN_UPDATE") != nullptr) {
        WriteText(kGoldenFile, Format(now));
        GTEST_SKIP() << "rewrote " << kGoldenFile;
    }
    const auto recorded = Parse(ReadText(kGoldenFile));
    ASSERT_FALSE(recorded.empty()) << "no record in " << kGoldenFile;
    for (const auto& [key, record] : recorded) {
        const auto found = now.find(key);
        if (found == now.end()) {
            ADD_FAILURE() << key << " (kind, period, formula) is no longer in the set";
            continue;
        }
        const Record& current = found->second;
        if (current.statements == record.statements && current.stocks == record.stocks) continue;
        std::ostringstream where;
        where << key << " changed";
        if (current.statements.size() != record.statements.size())
            where << ": " << current.statements.size() << " statements, recorded " << record.statements.size();
        for (size_t i = 0; i < record.statements.size() && i < current.statements.size(); ++i)
            if (current.statements[i] != record.statements[i]) {
                where << "; first changed statement: #" << i + 1 << " " << current.names[i];
                break;
            }
        for (size_t i = 0; i < record.stocks.size() && i < current.stocks.size(); ++i)
            if (current.stocks[i] != record.stocks[i]) {
                where << "; first stock with other results: " << ny::FormatStockCode(g_MyStocksArray[i]->GetID());
                break;
            }
        ADD_FAILURE() << where.str() << ". Diff NY_GOLDEN_DUMP of this and the last good commit to find the bar.";
    }
    for (const auto& [key, record] : now)
        if (recorded.count(key) == 0) ADD_FAILURE() << key << " has no record; rewrite it with NY_GOLDEN_UPDATE=1";
}

}  // namespace
}  // namespace nyind_test
