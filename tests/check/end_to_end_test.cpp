// Formula text as a user types it, through the syntax test into statements, evaluated over bars.

#include <memory>
#include <tuple>

#include "check/syntax_result.h"
#include "tests/check/check_fixture.h"
#include "tests/engine/formula_fixture.h"

namespace {

class EndToEnd : public nytest::CheckTest {
protected:
    // Tests the text and builds the formula from the test's statements, as the formula dialog
    // does on OK; then evaluates it over the bars.
    const CIndicator& Run(const std::string& text, std::vector<CHisDay> newBars,
                          const std::vector<CParam>& params = {}) {
        const SYNTestResult result = Test(text, params);
        EXPECT_EQ(result.nResult, NY_TEST_OK) << ny::GbkToUtf8(result.strError);
        formula = std::make_unique<CIndicator>();
        bars = std::move(newBars);
        nytest::RunTested(result, params, bars, *formula);
        return *formula;
    }

    const CExpression& Statement(const char* name) {
        const CExpression* expression = formula->Find(name);
        EXPECT_NE(expression, nullptr) << name;
        static const CExpression kNone;
        return expression != nullptr ? *expression : kNone;
    }

    std::unique_ptr<CIndicator> formula;
    std::vector<CHisDay> bars;
};

TEST_F(EndToEnd, PriceFormulaWithCommentsColoursAndWidths) {
    // Bars: high = close + 1, low = close - 1, open = close - 0.5.
    const CIndicator& result = Run(
        "{中间价与振幅}\r\n"
        "mid:(high+low)/2,colorwhite,linethick2;\r\n"
        "spread:=high-low; {振幅}\r\n"
        "up:close>open and spread>1.5,nodraw;\r\n"
        "c-mid+spread*10,colorstick",
        nytest::MakeBars({10, 12, 11.5f, 13}));
    ASSERT_EQ(result.m_arExpressions.size(), 4u);

    // Each statement's type, colour, width and values; the unnamed output is the last.
    const struct {
        const CExpression& statement;
        short type;
        int color;
        short width;
        std::vector<float> values;
    } rows[] = {
        {Statement("MID"), 1, 0xFFFFFF, 2, {10, 12, 11.5f, 13}},
        {Statement("SPREAD"), 0, -1, 1, {2, 2, 2, 2}},
        {Statement("UP"), 32, -1, 0, {1, 1, 1, 1}},
        {*result.m_arExpressions[3], 3, -1, 1, {20, 20, 20, 20}},  // close - mid is 0
    };
    for (const auto& row : rows) {
        const CExpression& s = row.statement;
        ASSERT_EQ(s.m_cComputed, 1) << s.m_strName;
        EXPECT_EQ(std::tuple(s.m_nType, s.m_lColor, s.m_nWidth), std::tuple(row.type, row.color, row.width)) << s.m_strName;
        EXPECT_EQ(std::vector<float>(s.m_pData, s.m_pData + 4), row.values) << s.m_strName;
    }
    EXPECT_EQ(result.m_arExpressions[3]->m_strName, "");
}

TEST_F(EndToEnd, ParametersSignsAndConditions) {
    // The evaluator matches parameter names exactly, against the upper-cased text.
    const std::vector<CParam> params = {nytest::MakeParam("N", 1, 100, 20)};
    Run("twice:c*n/10;\r\n"
        "neg:-c+1;\r\n"
        "low5:c<-1 or c>=12;\r\n"
        "both:(-1)*c+(c-o)*2 != 0 && c=c",
        nytest::MakeBars({10, 12, 14}), params);
    EXPECT_EQ(Statement("TWICE").m_pData[2], 28);
    EXPECT_EQ(Statement("NEG").m_pData[0], -9);
    EXPECT_EQ(Statement("LOW5").m_pData[0], 0);
    EXPECT_EQ(Statement("LOW5").m_pData[1], 1);
    // -c + 1 is never 0 for these closes.
    EXPECT_EQ(Statement("BOTH").m_pData[2], 1);
}

TEST_F(EndToEnd, StatementTextsReachTheEvaluatorInUpperCaseWithTheirLineBreaks) {
    const CIndicator& result = Run("a:=c+\r\n  o;\r\nb:a/2", nytest::MakeBars({10, 20}));
    // The editor joins its lines with blank, CR, LF.
    EXPECT_EQ(result.m_arExpressions[0]->m_strText, "C+ \r\n  O");
    EXPECT_EQ(Statement("B").m_pData[1], 19.75f);
}

TEST_F(EndToEnd, VolumeAndConditions) {
    const CIndicator& result =
        Run("vol,volstick;\r\nmavol5:ma(vol,5),nodraw;\r\n"
            "up:if(close>ref(close,1),1,-1);\r\n"
            "sig:c>ma(c,3) and v>=mavol5,colorred",
            nytest::MakeBars({10, 12, 11, 13, 14, 12, 15, 16}));
    const CExpression& volume = *result.m_arExpressions[0];
    EXPECT_EQ(volume.m_nType, 2);
    const CExpression& average = Statement("MAVOL5");
    EXPECT_EQ(average.m_nWidth, 0);
    EXPECT_EQ(average.m_nType, 32);
    float sum = 0;
    for (int i = 3; i <= 7; ++i) sum += volume.m_pData[i];
    EXPECT_EQ(average.m_pData[7], sum / 5);
    // The range narrowed by MA(VOL,5) holds for the statements behind it.
    EXPECT_EQ(Statement("UP").m_nFirst, 4);
    const float up[] = {0, 1, -1, 1, 1, -1, 1, 1};
    for (int i = 4; i < 8; ++i) EXPECT_EQ(Statement("UP").m_pData[i], up[i]) << i;
    // Bar 6: 15 is above the mean of 14, 12, 15; bar 5: 12 is below that of 13, 14, 12.
    EXPECT_EQ(Statement("SIG").m_pData[6], 1);
    EXPECT_EQ(Statement("SIG").m_pData[5], 0);
}

}  // namespace
