// The system formula set as built into the embedded installation: every source file is in the
// set, and the formulas that draw give their commands over hand-made bars.

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <sstream>

#include "engine/evaluate.h"
#include "host/files.h"
#include "host/global.h"
#include "host/installation.h"
#include "host/stockdb.h"
#include "model/formula_source.h"
#include "model/library.h"
#include "installed_library.h"
#include "tests/case_file.h"
#include "nyind_runner.h"

namespace nyind_test {
namespace {

struct SourceFormula {
    std::string path;
    CIndicator definition;
};

class FormulaSetTest : public InstalledLibrary {
protected:

    static std::vector<std::unique_ptr<SourceFormula>> Sources() {
        std::vector<std::unique_ptr<SourceFormula>> sources;
        for (const auto& entry : fs::recursive_directory_iterator(kFormulaSources)) {
            if (entry.path().extension() != ".fml") continue;
            auto source = std::make_unique<SourceFormula>();
            source->path = entry.path().string();
            ny::FormulaSourceError error;
            EXPECT_TRUE(ny::ParseFormulaSource(ReadText(entry.path()), &source->definition, &error))
                << source->path << ":" << error.line << ": " << error.message;
            sources.push_back(std::move(source));
        }
        return sources;
    }
};

TEST_F(FormulaSetTest, EverySourceIsInTheSetWithItsStatements) {
    int indicators = 0, conditions = 0, trade = 0, candles = 0;
    std::set<short> indicatorGroups, conditionGroups;
    for (const auto& source : Sources()) {
        const CIndicator& d = source->definition;
        const CIndicator* built = g_MyGetIndicator(d.m_strName, d.m_MainType);
        ASSERT_NE(built, nullptr) << source->path;
        // The distinctive indicators come from the base set; every other formula keeps its group.
        const bool distinctive = d.m_MainType == NY_KIND_INDICATOR && d.m_SubType == 6;
        EXPECT_EQ(built->m_nBaseSet, distinctive ? 1 : 0) << source->path;
        EXPECT_EQ(built->m_SubType, d.m_SubType) << source->path;
        EXPECT_EQ(built->m_SysIndex, 1);
        EXPECT_FALSE(built->m_arExpressions.empty()) << source->path;
        EXPECT_EQ(built->m_strSource, d.m_strSource);
        EXPECT_FALSE(d.m_strTitle.empty()) << source->path;
        EXPECT_FALSE(d.m_strUsage.empty()) << source->path;
        switch (d.m_MainType) {
            case NY_KIND_INDICATOR: ++indicators; indicatorGroups.insert(d.m_SubType); break;
            case NY_KIND_CONDITION:
                ++conditions;
                conditionGroups.insert(d.m_SubType);
                // A condition with parameters says in its template where each one goes.
                EXPECT_EQ(ny::CountParamMarks(built->m_strExtra), static_cast<int>(d.m_arParams.size())) << source->path;
                break;
            case NY_KIND_TRADE: ++trade; break;
            default: ++candles; break;
        }
    }
    EXPECT_GE(indicators, 30);
    EXPECT_GE(conditions, 15);
    EXPECT_GE(trade, 2);
    EXPECT_GE(candles, 2);
    EXPECT_EQ(indicatorGroups, (std::set<short>{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_GE(conditionGroups.size(), 5u);
}

// The rows of drawing_formulas.txt: statements of formulas that draw, over five bars by hand.
TEST_F(FormulaSetTest, DrawingFormulasOnHandMadeBars) {
    std::vector<CHisDay> bars;
    for (float close : {100, 104, 106, 100, 94})
        bars.push_back({.m_lTime = 20240103 + static_cast<int>(bars.size()), .m_fOpen = close, .m_fHigh = close + 1,
                        .m_fLow = close - 1, .m_fClose = close});
    int checked = 0;
    for (const testcases::Row& row : testcases::ReadRows("cli/drawing_formulas.txt", "draw")) {
        std::istringstream formula(row[0]), statement(row[1]), values(row[2]);
        std::string name, field;
        formula >> name;
        CIndicator f;
        f = *g_MyGetIndicator(name.c_str(), NY_KIND_INDICATOR);
        int index = 0;
        for (size_t i = 0; formula >> index; ++i) f.m_arParams.at(i)->m_nDefault = static_cast<short>(index);
        statement >> index >> field;
        ny::EvaluateOver(f, 600001, bars.data(), static_cast<short>(bars.size()));
        const CExpression& s = *f.m_arExpressions.at(index);
        for (int bar = 2; bar <= 4; ++bar, ++checked) {
            float expected = 0;
            values >> expected;
            const float got = field == "out" ? s.m_pData[bar] : s.m_pDrawData[4 * bar + (field[1] - '0')];
            EXPECT_FLOAT_EQ(got, expected) << row.where << " bar " << bar;
        }
    }
    EXPECT_EQ(checked, 13 * 3);
}

}  // namespace
}  // namespace nyind_test
