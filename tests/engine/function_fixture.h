#pragma once
// Readings of expressions over bars built in the test, through the same path as a statement's
// evaluation.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/engine/formula_fixture.h"

namespace nytest {

class FunctionTest : public ::testing::Test {
protected:
    // Bars whose closes are `closes` (see MakeBars for the other prices).
    void UseCloses(const std::vector<float>& closes) {
        bars = MakeBars(closes);
        AttachBars(ind, bars);
        ind.Context().m_nCurSpan = static_cast<short>(bars.size());
    }

    Reading Read(const std::string& text) { return ReadValue(ind, text); }

    // A series reading over its valid bars, with the range checked.
    std::vector<float> Series(const std::string& text, short from, short to) {
        const Reading r = Read(text);
        EXPECT_EQ(r.code, NY_EVAL_OK) << text;
        EXPECT_EQ(r.isSeries, 1) << text;
        EXPECT_EQ(r.from, from) << text;
        EXPECT_EQ(r.to, to) << text;
        if (r.code != NY_EVAL_OK || r.from != from || r.to != to) return {};
        return std::vector<float>(r.values.begin() + from, r.values.begin() + to + 1);
    }

    CIndicator ind;
    std::vector<CHisDay> bars;
};

}  // namespace nytest
