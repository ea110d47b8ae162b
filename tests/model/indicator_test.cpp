// The formula objects: parameters by period, buffers of statements, copies of formulas.

#include "model/indicator.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <tuple>

#include "tests/model/filled_formula.h"

namespace {

TEST(Param, ValueForAPeriodFallsBackToTheDefault) {
    CParam p;
    p.m_nDefault = 9;
    p.SetParam(3, 14);
    p.SetParam(11, 5);  // periods out of range are not stored
    p.SetParam(0, 5);
    const std::pair<short, short> cases[] = {{3, 14}, {2, 9}, {11, 9}, {0, 9}};
    for (const auto& [period, value] : cases) EXPECT_EQ(p.GetParam(period), value) << period;
    EXPECT_EQ(p.m_nPeriodValue[0], 0);
}

TEST(Expression, ChangeClearsTheResultAndAllocMemKeepsValuesOnlyWhenGrowing) {
    CExpression e;
    EXPECT_EQ(std::tuple(e.m_lColor, e.m_nWidth, e.m_nFirst), std::tuple(-1, 1, 30000));
    e.AllocMem(3);
    e.m_pData[0] = 1.0f, e.m_pData[2] = 3.0f, e.m_pDrawData[11] = 4.0f, e.m_lDrawArgs[2] = 7;
    e.AllocMem(6);
    EXPECT_EQ(e.m_nAllocBars, 6);
    EXPECT_EQ(std::tuple(e.m_pData[0], e.m_pData[2], e.m_pData[5], e.m_pDrawData[11]), std::tuple(1.0f, 3.0f, 0.0f, 4.0f));
    EXPECT_EQ(e.m_lDrawArgs[2], 0);
    e.AllocMem(6);  // the same size clears
    EXPECT_EQ(e.m_pData[0], 0.0f);
    e.m_pData[1] = 2.0f, e.m_pDrawData[19] = 1.0f;
    e.m_nFirst = 1, e.m_nEnd = 5, e.m_cComputed = 1, e.m_cIsSeries = 1;
    e.Change();
    EXPECT_EQ(std::tuple(e.m_nFirst, e.m_nEnd, e.m_cComputed, e.m_cIsSeries), std::tuple(30000, 0, 0, 0));
    EXPECT_EQ(std::tuple(e.m_pData[1], e.m_pDrawData[19]), std::tuple(0.0f, 0.0f));
    e.m_pData[1] = 2.0f, e.m_pData[4] = 9.0f;
    e.AllocMem(2);  // shrinking clears
    EXPECT_EQ(e.m_pData[1], 0.0f);
    e.m_pData[1] = 2.0f;
    const float* room = e.m_pData;
    e.AllocMem(5);  // growing within the room of 6: the same buffer, the old values, the rest zero
    EXPECT_EQ(std::tuple(e.m_pData, e.m_pData[1], e.m_pData[4]), std::tuple(room, 2.0f, 0.0f));
    e.AllocMem(0);
    EXPECT_EQ(e.m_pData, nullptr);
    EXPECT_EQ(e.m_pDrawData, nullptr);
}

// Renew is Change then AllocMem: whatever the old size, within the buffers' room of 6 or beyond it,
// the result is forgotten and every value of both buffers is zero, none of the old values carried
// over as a grown AllocMem alone would.
TEST(Expression, RenewForgetsTheResultAndZeroesBothBuffersAtAnySize) {
    for (const auto& [before, after] : {std::pair<short, short>{4, 4}, {4, 6}, {6, 4}, {3, 5}, {4, 8}}) {
        CExpression e;
        e.AllocMem(6);
        e.AllocMem(before);
        for (short i = 0; i < before; ++i) e.m_pData[i] = 5.0f, e.m_pDrawData[4 * i + 3] = 6.0f;
        e.m_nFirst = 1, e.m_nEnd = 3, e.m_cComputed = 1, e.m_cIsSeries = 1;
        e.Renew(after);
        EXPECT_EQ(std::tuple(e.m_nAllocBars, e.m_nFirst, e.m_nEnd, e.m_cComputed, e.m_cIsSeries),
                  std::tuple(after, 30000, 0, 0, 0)) << before << " to " << after;
        for (short i = 0; i < after; ++i)
            EXPECT_EQ(std::tuple(e.m_pData[i], e.m_pDrawData[4 * i + 3]), std::tuple(0.0f, 0.0f)) << i;
    }
}

TEST(Expression, AssignmentCopiesTheDefinitionOnly) {
    CExpression a;
    a.m_strName = "MA5", a.m_strText = "MA(CLOSE,5)", a.m_nType = 1, a.m_lColor = 255, a.m_nWidth = 2;
    a.AllocMem(4);
    a.m_cComputed = 1;
    CExpression b;
    b = a;
    auto definition = [](const CExpression& e) { return std::tuple(e.m_strName, e.m_strText, e.m_nType, e.m_lColor, e.m_nWidth); };
    EXPECT_EQ(definition(b), definition(a));
    EXPECT_EQ(b.m_pData, nullptr);
    EXPECT_EQ(b.m_cComputed, 0);
}

// The filled formula with the fields a copy leaves behind set as well.
std::unique_ptr<CIndicator> MakeFormula() {
    auto f = std::make_unique<CIndicator>();
    FillFormula(*f);
    f->m_IsEditable = 0;
    f->m_nBaseSet = 1;
    f->m_nPeriod = 7;
    f->m_arPYCodes = {"JXMA"};
    return f;
}

TEST(Indicator, AssignmentCopiesDefinitionAndPeriodButNotTemplateBaseSetOrPinyin) {
    const std::unique_ptr<CIndicator> source = MakeFormula();
    source->AllocMem(10);
    CIndicator copy;
    copy.m_arExpressions.push_back(new CExpression);
    copy.m_arExpressions.push_back(new CExpression);
    copy = *source;
    auto definition = [](const CIndicator& f) {
        return std::tuple(f.m_strName, f.m_strTitle, f.m_strSource, f.m_strUsage, f.m_strAxes, f.m_SubType,
                          f.m_SysIndex, f.m_cDrawPos, f.m_IsEditable, f.m_strPassword, f.m_nPeriod);
    };
    EXPECT_EQ(definition(copy), definition(*source));
    EXPECT_EQ(copy.m_strExtra, "");
    EXPECT_EQ(copy.m_nBaseSet, 0);
    EXPECT_TRUE(copy.m_arPYCodes.empty());
    ASSERT_EQ(copy.m_arExpressions.size(), 2u);
    EXPECT_EQ(copy.m_arExpressions[0]->m_strName, "MA1");
    EXPECT_EQ(copy.m_arExpressions[0]->m_pData, nullptr);
    EXPECT_NE(copy.m_arExpressions[0], source->m_arExpressions[0]);
    EXPECT_EQ(copy.m_arParams.at(1)->m_nDefault, 10);
    EXPECT_EQ(copy.m_arParams.at(0)->GetParam(1), 7);
    EXPECT_EQ(copy.m_arAxes.at(0)->m_cCritical, 1);
}

TEST(Indicator, FindIsExactAndDeleteFunctionsEmptyTheArrays) {
    const std::unique_ptr<CIndicator> f = MakeFormula();
    EXPECT_EQ(f->Find("MA1"), f->m_arExpressions[0]);
    EXPECT_EQ(f->Find("ma1"), nullptr);
    EXPECT_EQ(f->Find("MA"), nullptr);
    f->DeleteParam();
    f->DeleteAxeValue();
    f->DeleteExpression();
    EXPECT_TRUE(f->m_arParams.empty() && f->m_arAxes.empty() && f->m_arExpressions.empty());
}

TEST(HisDay, RecordIsFortyBytesWithFieldsAtTheirOffsets) {
    EXPECT_EQ(sizeof(CHisDay), 40u);
    EXPECT_EQ(offsetof(CHisDay, m_fClose), 16u);
    EXPECT_EQ(offsetof(CHisDay, m_fVolume), 24u);
    EXPECT_EQ(offsetof(CHisDay, m_lAdvDec), 32u);
    EXPECT_EQ(offsetof(CHisDay, m_fCapital), 36u);
}

}  // namespace
