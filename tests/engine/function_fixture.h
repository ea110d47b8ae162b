#pragma once
// Readings of one function call over bars built in the test: the code, the flag, the valid range
// and the values, through the same path as a statement's evaluation.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/engine/formula_fixture.h"

namespace nytest {

class FunctionTest : public ::testing::Test {
protected:
    // Bars whose closes are `closes` (see MakeBars for the other prices).
    void UseCloses(const std::vector<float>& closes) { UseBars(MakeBars(closes)); }
    void UseBars(std::vector<CHisDay> newBars) {
        bars = std::move(newBars);
        AttachBars(ind, bars);
        ind.m_nCurSpan = static_cast<short>(bars.size());
    }

    // A parameter with its default value.
    void Param(const char* name, short value) {
        auto* p = new CParam;
        p->m_strName = name;
        p->m_nDefault = value;
        ind.m_arParams.push_back(p);
    }

    Reading Read(const std::string& text) { return ReadValue(ind, text); }
    char Code(const std::string& text) { return Read(text).code; }

    // The constant a text yields; fails the test if it is not one.
    float Constant(const std::string& text) {
        const Reading r = Read(text);
        EXPECT_EQ(r.code, 0) << text;
        EXPECT_EQ(r.isSeries, 0) << text;
        return r.values[0];
    }

    // A series reading over its valid bars, with the range checked.
    std::vector<float> Series(const std::string& text, short from, short to) {
        const Reading r = Read(text);
        EXPECT_EQ(r.code, 0) << text;
        EXPECT_EQ(r.isSeries, 1) << text;
        EXPECT_EQ(r.from, from) << text;
        EXPECT_EQ(r.to, to) << text;
        if (r.code != 0 || r.from != from || r.to != to) return {};
        return std::vector<float>(r.values.begin() + from, r.values.begin() + to + 1);
    }

    // A computed statement of the given values, valid on bars first..end-1, for use by name.
    void AddSeries(const std::string& name, const std::vector<float>& values, short first, short end) {
        auto* expr = new CExpression;
        expr->m_strName = name;
        expr->AllocMem(static_cast<short>(values.size()));
        for (size_t i = 0; i < values.size(); ++i) expr->m_pData[i] = values[i];
        expr->m_nFirst = first;
        expr->m_nEnd = end;
        expr->m_cIsSeries = 1;
        expr->m_cComputed = 1;
        ind.m_arExpressions.push_back(expr);
    }

    // Calls a reader directly with the cursor on `text` (behind the function's name), for the
    // cases that the statement path can't reach, such as a ";" inside the argument list.
    using Reader = char (CIndicator::*)(char*, float*, short*, short*, char, char*);
    char CallReader(Reader reader, const std::string& word, std::string text, char permission = 1) {
        std::string name = word;
        std::vector<float> out(std::max<size_t>(bars.size(), 1), 0.0f);
        short from = 0, to = static_cast<short>(bars.size() - 1);
        char isSeries = 1;
        ind.m_nCurFrom = 0;
        ind.m_nCurTo = static_cast<short>(bars.size());
        ind.m_pCursor = text.data();
        return (ind.*reader)(name.data(), out.data(), &from, &to, permission, &isSeries);
    }

    CIndicator ind;
    std::vector<CHisDay> bars;
};

}  // namespace nytest
