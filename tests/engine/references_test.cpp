// References to other formulas of the library.

#include <gtest/gtest.h>

#include "model/library.h"
#include "tests/engine/formula_fixture.h"

namespace {

CIndicator* LibraryFormula(const char* name, short kind, const std::vector<nytest::Statement>& statements) {
    return nytest::MakeFormula(statements, name, kind).release();
}

class References : public ::testing::Test {
protected:
    void SetUp() override {
        g_MyAddIndicator(LibraryFormula("ABC", NY_KIND_INDICATOR, {{"K", "CLOSE*2"}, {"D", "K+1"}}));
        g_MyAddIndicator(LibraryFormula("SAME", NY_KIND_INDICATOR, {{"SAME", "3"}, {"Z", "4"}}));
        g_MyAddIndicator(LibraryFormula("COND", NY_KIND_CONDITION, {{"X", "1"}}));
        g_MyAddIndicator(LibraryFormula("SELF", NY_KIND_INDICATOR, {{"S", "SELF+1"}}));
        g_MyAddIndicator(LibraryFormula("LOOPA", NY_KIND_INDICATOR, {{"A", "LOOPB"}}));
        g_MyAddIndicator(LibraryFormula("LOOPB", NY_KIND_INDICATOR, {{"B", "LOOPA.A"}}));
    }
    void TearDown() override { g_MyRemoveIndicators(); }
};

TEST_F(References, NamedLineAndDefaultLines) {
    nytest::Formula f({{"A", "ABC.K"}, {"B", "ABC"}, {"S", "SAME"}, {"T", ".K"}});
    f.Run(nytest::RisingBars(6));
    ASSERT_EQ(f["A"].m_cComputed, 1);
    EXPECT_EQ(f["A"].m_cIsSeries, 1);
    EXPECT_FLOAT_EQ(f.At("A", 5), 12.0f);
    EXPECT_FLOAT_EQ(f.At("B", 5), 13.0f);  // the last line, D
    EXPECT_FLOAT_EQ(f.At("S", 0), 3.0f);   // the line of the formula's own name
    EXPECT_EQ(f["T"].m_cComputed, 0);      // ".K" is looked up whole
}

TEST_F(References, FailuresAndNarrowing) {
    nytest::ExpectRuns({
        {"unknown formula or line, another kind", {{"A", "XYZ.K"}, {"B", "ABC.Q"}, {"C1", "COND"}},
         nytest::RisingBars(4), 0, {{"A", 0, nytest::kAnyFirst, {}}, {"B", 0, nytest::kAnyFirst, {}}, {"C1", 0, nytest::kAnyFirst, {}}}},
        {"a reference narrows to the line", {{"A", "ABC.K"}}, nytest::RisingBars(8), 3, {{"A", 1, 3, {{3, 8}}}}},
        {"a self-reference ends cleanly", {{"A", "SELF"}, {"B", "LOOPA"}, {"C", "CLOSE"}}, nytest::RisingBars(4), 0,
         {{"A", 0, nytest::kAnyFirst, {}}, {"B", 0, nytest::kAnyFirst, {}}, {"C", 1, 0, {}}}},
    });
}

TEST_F(References, NestedRunLeavesTheLibraryObjectAlone) {
    nytest::Formula f({{"A", "ABC.K"}});
    f.Run(nytest::RisingBars(4));
    const CIndicator* abc = g_MyGetIndicator("ABC", NY_KIND_INDICATOR);
    ASSERT_NE(abc, nullptr);
    for (const CExpression* e : abc->m_arExpressions) {
        EXPECT_EQ(e->m_pData, nullptr);
        EXPECT_EQ(e->m_cComputed, 0);
    }
    EXPECT_EQ(abc->m_pHisDay, nullptr);
}

}  // namespace
