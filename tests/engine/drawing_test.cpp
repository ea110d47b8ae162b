// The draw commands: the statement fields each one leaves for the chart after Calc, over four
// bars where the close is above the open on bars 1 and 3, and the codes of wrong arguments.

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

#include "tests/engine/formula_fixture.h"

using nytest::Formula;

namespace {

// Closes 10 12 11 13, opens 10.5 11.5 11.5 12.5, highs 11 13 12 14, lows 9 11 10 12.
std::vector<CHisDay> FourBars() {
    std::vector<CHisDay> bars = nytest::MakeBars({10, 12, 11, 13});
    const float opens[] = {10.5f, 11.5f, 11.5f, 12.5f};
    for (size_t i = 0; i < bars.size(); ++i) bars[i].m_fOpen = opens[i];
    return bars;
}

std::vector<float> Floats(const char* text) {
    std::vector<float> values;
    std::istringstream in(text);
    for (std::string word; in >> word;) values.push_back(std::strtof(word.c_str(), nullptr));
    return values;
}

template <typename T>
T Param(const CExpression& e, size_t offset) {
    T value;
    std::memcpy(&value, e.m_DrawParams + offset, sizeof(T));
    return value;
}

float Arg(const CExpression& e, int slot) {
    float value;
    std::memcpy(&value, &e.m_lDrawArgs[slot], sizeof(float));
    return value;
}

using Extra = void (*)(const CExpression&);

struct DrawRow {
    const char* text;
    EvalCode code;
    short kind;
    const char* out;     // the statement's series on bars 0..3, null: not checked
    const char* f[4];    // f0..f3 on bars 0..3, null: 0 on every bar
    Extra extra;         // parameters, slots and text, null: nothing more
};

const DrawRow kRows[] = {
    {"PLOYLINE(C>O,C)", NY_EVAL_OK, 20, "0 1 0 1", {"0 12 0 13"}, nullptr},
    {"PLOYLINE(C>=O-1,10)", NY_EVAL_OK, 20, "1 1 1 1", {"10 0 0 0"}, nullptr},
    {"PLOYLINE(1,C)", NY_EVAL_CONSTANT_ARGUMENT, 0, nullptr, {}, nullptr},
    {"DRAWLINE(C>O,H,C<O,L,1)", NY_EVAL_OK, 21, "0 1 0 1", {"11 13 12 14", "1 0 1 0", "9 11 10 12"},
     [](const CExpression& e) { EXPECT_EQ(Param<signed char>(e, 0), 1); }},
    {"DRAWLINE(C>O,H,C<O,L,1.5)", NY_EVAL_BAD_PERIOD, 0, nullptr, {}, nullptr},
    {"DRAWLINE(C>O,H,0,L,1)", NY_EVAL_CONSTANT_ARGUMENT, 0, nullptr, {}, nullptr},
    {"DRAWKLINE(H,O,L,C)", NY_EVAL_OK, 22, nullptr,
     {"10.5 11.5 11.5 12.5", "11 13 12 14", "9 11 10 12", "10 12 11 13"}, nullptr},
    {"STICKLINE(C>O,0,C,2,1)", NY_EVAL_OK, 23, "0 1 0 1", {nullptr, "10 12 11 13"},
     [](const CExpression& e) {
         EXPECT_EQ(Param<float>(e, 0), 2.0f);
         EXPECT_EQ(Param<short>(e, 4), 1);
     }},
    {"STICKLINE(C>O,50,80,1,0)", NY_EVAL_OK, 23, "0 1 0 1", {"50 50 50 50", "80 80 80 80"}, nullptr},
    {"STICKLINE(C>O,-5,C,1,-1)", NY_EVAL_OK, 23, nullptr, {"-5 0 0 0", "10 12 11 13"},
     [](const CExpression& e) { EXPECT_EQ(Param<short>(e, 4), -1); }},
    {"STICKLINE(1,C,O,1,0)", NY_EVAL_OK, 23, "1 1 1 1", {"10 12 11 13", "10.5 11.5 11.5 12.5"}, nullptr},
    {"STICKLINE(0,C,O,1,0)", NY_EVAL_CONSTANT_ARGUMENT, 0, nullptr, {}, nullptr},
    {"DRAWICON(C>O,L,3)", NY_EVAL_OK, 25, "0 1 0 1", {"9 11 10 12"},
     [](const CExpression& e) { EXPECT_EQ(Param<short>(e, 0), 3); }},
    {"DRAWICON(C>O,5,3)", NY_EVAL_OK, 25, "0 1 0 1", {"5 5 5 5"}, nullptr},
    {"DRAWICON(C>O,L,1.5)", NY_EVAL_BAD_PERIOD, 0, nullptr, {}, nullptr},
    {"DRAWBAND(C,RGB(255,0,0),O,RGB(0,255,0))", NY_EVAL_OK, 24, nullptr,
     {"10 12 11 13", "10.5 11.5 11.5 12.5"},
     [](const CExpression& e) {
         EXPECT_EQ(Param<int>(e, 0), 255);
         EXPECT_EQ(Param<int>(e, 4), 65280);
     }},
    {"FILLRGN(C>O,H,L,RGB(255,255,0))", NY_EVAL_OK, 40, nullptr,
     {"11 13 12 14", "0 1 0 1", "9 11 10 12"},
     [](const CExpression& e) { EXPECT_EQ(Param<int>(e, 0), 65535); }},
    {"DRAWNUMBER(C>O,H,C)", NY_EVAL_OK, 33, nullptr, {"0 1 0 1", "10 12 11 13", "11 13 12 14"}, nullptr},
    {"DRAWTEXT(C>O,L,'A,B')", NY_EVAL_OK, 26, "0 1 0 1", {"9 11 10 12"},
     [](const CExpression& e) { EXPECT_STREQ(e.m_DrawParams, "A,B"); }},
    {"DRAWTEXT(C>O,L,NONAME)", NY_EVAL_UNKNOWN_WORD, 0, nullptr, {}, nullptr},
    {"DRAWTEXT(C>O,L,ABC)", NY_EVAL_OK, 26, "0 1 0 1", {"9 11 10 12"},
     [](const CExpression& e) { EXPECT_STREQ(e.m_DrawParams, ""); }},
    {"DRAWTEXT_OFFSET(C>O,L,5,'B')", NY_EVAL_OK, 26, "0 1 0 1", {"9 11 10 12"},
     [](const CExpression& e) {
         EXPECT_STREQ(e.m_DrawParams, "B");
         EXPECT_EQ(Arg(e, 0), 5.0f);
     }},
    {"DRAWTEXT_FIX(1,0.5,0.25,1,'NOTE')", NY_EVAL_OK, 27, nullptr, {"0.5 0.5 0.5 0.5"},
     [](const CExpression& e) {
         EXPECT_STREQ(e.m_DrawParams, "NOTE");
         EXPECT_EQ(Arg(e, 0), 1.0f);
         EXPECT_EQ(Arg(e, 1), 0.5f);
         EXPECT_EQ(Arg(e, 2), 0.25f);
         EXPECT_EQ(Arg(e, 3), 1.0f);
     }},
    {"DRAWHITTIP(C,2,C)", NY_EVAL_OK, 28, nullptr, {},
     [](const CExpression& e) {
         EXPECT_EQ(Arg(e, 0), 2.0f);
         EXPECT_EQ(Arg(e, 1), 10.0f);
     }},
    {"DRAWHITTIP(C,2,0)", NY_EVAL_CONSTANT_ARGUMENT, 0, nullptr, {}, nullptr},
    {"DRAWBMP(C>O,H,'UP.BMP')", NY_EVAL_OK, 30, "0 1 0 1", {"11 13 12 14"},
     [](const CExpression& e) { EXPECT_EQ(e.m_strDrawText, "UP.BMP"); }},
    {"DRAWBMP(C>O,H,UP)", NY_EVAL_UNKNOWN_WORD, 0, nullptr, {}, nullptr},
    {"DRAWGBK(1,255,0,0,'A',1)", NY_EVAL_OK, 31, nullptr, {},
     [](const CExpression& e) {
         EXPECT_EQ(Param<int>(e, 0), 255);
         EXPECT_EQ(Arg(e, 0), 1.0f);
         EXPECT_EQ(Arg(e, 1), 0.0f);
         EXPECT_EQ(Arg(e, 2), 1.0f);
         EXPECT_EQ(e.m_strDrawText, "A");
     }},
    {"MA(STICKLINE(C>O,0,C,1,0),5)", NY_EVAL_DRAW_NESTED, 0, nullptr, {}, nullptr},
    {"IF(C>O,C,DRAWNULL)", NY_EVAL_OK, 0, "-1e36 12 -1e36 13", {}, nullptr},
    // No stock behind the bars: the expert can't run, and says so in the corner.
    {"DRAWSIGN(1,1,1)", NY_EVAL_OK, 29, nullptr, {},
     [](const CExpression& e) { EXPECT_EQ(e.m_strDrawText, "该股不适合本系统的的优化模型."); }},
    {"DRAWSIGN(1,1,0)", NY_EVAL_CONSTANT_ARGUMENT, 0, nullptr, {}, nullptr},
};

TEST(Drawing, FieldsOfEachCommand) {
    for (const DrawRow& row : kRows) {
        SCOPED_TRACE(row.text);
        // ABC is a computed statement without a text, for the third form of DRAWTEXT.
        Formula f({{"ABC", "C"}, {"X", row.text}});
        ASSERT_EQ(f.Run(FourBars()), 1);
        const CExpression& x = f["X"];
        const char code = nytest::ReadValue(f.ind, row.text, f.ind.Find("X")).code;
        EXPECT_EQ(code, row.code);
        if (row.code != NY_EVAL_OK) continue;
        ASSERT_EQ(x.m_cComputed, 1);
        EXPECT_EQ(x.m_nType, row.kind);
        if (row.out != nullptr) {
            EXPECT_EQ(std::vector<float>(x.m_pData, x.m_pData + 4), Floats(row.out));
        }
        for (int field = 0; field < 4; ++field) {
            const std::vector<float> expected = Floats(row.f[field] ? row.f[field] : "0 0 0 0");
            for (int bar = 0; bar < 4; ++bar)
                EXPECT_EQ(x.m_pDrawData[4 * bar + field], expected[bar]) << "f" << field << " bar " << bar;
        }
        if (row.extra != nullptr) row.extra(x);
    }
}

// Commands narrow the range for the statements behind them; DRAWNUMBER does not.
TEST(Drawing, RangeLeftForLaterStatements) {
    const struct {
        const char* text;
        short first;
    } rows[] = {
        {"STICKLINE(REF(C,1)>0,0,C,1,0)", 1},
        {"DRAWNUMBER(REF(C,1)>0,L,C)", 0},
        {"PLOYLINE(C>0,REF(C,2))", 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        Formula f({{"X", row.text}, {"Y", "C"}});
        f.Run(FourBars());
        EXPECT_EQ(f["Y"].m_nFirst, row.first);
    }
}

}  // namespace
