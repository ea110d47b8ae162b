// The readable form of a formula, read and written back.

#include <gtest/gtest.h>

#include <tuple>

#include "host/encoding.h"
#include "model/formula_source.h"

namespace {

std::string U8(const char* gbk) { return ny::GbkToUtf8(gbk); }

const char* const kExample =
    "# a comment\n"
    "name:  TESTX\n"
    "kind:  技术指标\n"
    "group: 反趋向指标\n"
    "title: 测试指标\n"
    "draw:  主图叠加\n"
    "param: N 1 100 9\n"
    "param: M -5 5 0\n"
    "axes:  -20; 0;80\n"
    "\n[template]\n周期 Param#1\n偏移 Param#2\n"
    "\n[usage]\n\n第一行\n第二行   \n\n"
    "[source]\nA:MA(C,N);\nB:A+M;\n\n";

TEST(FormulaSource, ReadsEveryFieldIntoTheDefinition) {
    CIndicator f;
    ny::FormulaSourceError error;
    ASSERT_TRUE(ny::ParseFormulaSource(ny::GbkToUtf8(kExample), &f, &error)) << error.line << " " << error.message;
    EXPECT_EQ(std::tuple(f.m_strName, f.m_MainType, f.m_SubType, f.m_strTitle, f.m_cDrawPos),
              std::tuple("TESTX", 0, 2, "测试指标", 1));
    ASSERT_EQ(f.m_arParams.size(), 2u);
    const CParam& m = *f.m_arParams[1];
    EXPECT_EQ(std::tuple(m.m_strName, m.m_nMin, m.m_nMax, m.m_nDefault), std::tuple("M", -5, 5, 0));
    EXPECT_EQ(f.m_strAxes, "-20; 0;80");
    ASSERT_EQ(f.m_arAxes.size(), 3u);
    EXPECT_EQ(std::tuple(f.m_arAxes[0]->m_nValue, f.m_arAxes[2]->m_nValue), std::tuple(-20, 80));
    // Blank lines around a section's text and blanks at line ends are left out; lines end in CR LF.
    EXPECT_EQ(std::tuple(f.m_strExtra, f.m_strUsage, f.m_strSource),
              std::tuple("周期 Param#1\r\n偏移 Param#2", "第一行\r\n第二行", "A:MA(C,N);\r\nB:A+M;"));
    EXPECT_TRUE(f.m_arExpressions.empty());
}

// The written form reads back the same; parameter names are kept in upper case (the statements
// that read them are), and a formula without a group goes to the user's own group of its kind.
TEST(FormulaSource, WrittenFormReadsBackTheSame) {
    const std::pair<std::string, std::string> cases[] = {
        {ny::GbkToUtf8(kExample), ""},
        {U8("name: LOWER\nkind: 技术指标\nparam: n 1 100 9\n[source]\nA:MA(C,n);\n"), "param: N 1 100 9"},
        {U8("name: A\nkind: 技术指标\n[source]\nC;"), U8("group: 自定指标\n")},
        {U8("name: A\nkind: 条件选股\n[source]\nC>O;"), U8("group: 自定选股\n")},
    };
    for (const auto& [text, expected] : cases) {
        CIndicator f, back;
        ny::FormulaSourceError error;
        ASSERT_TRUE(ny::ParseFormulaSource(text, &f, &error)) << error.message;
        const std::string written = ny::FormatFormulaSource(f);
        ASSERT_TRUE(ny::ParseFormulaSource(written, &back, &error)) << error.message;
        EXPECT_EQ(ny::FormatFormulaSource(back), written);
        EXPECT_NE(written.find(expected), std::string::npos) << written;
    }
}

struct BadSource {
    const char* text;  // GBK, converted to UTF-8 for the reader
    int line;
    const char* message;
};

TEST(FormulaSource, ProblemsAreNamedWithTheirLine) {
    const BadSource cases[] = {
        {"name: A\nkind: 技术指标\ncolour: red\n[source]\nC;", 3, "unknown field \"colour\""},
        {"name: A\nname: B\nkind: 技术指标\n[source]\nC;", 2, "field \"name\" given twice"},
        {"name: A\nkind: 技术指标\nparam: N 1 100\n[source]\nC;", 3, "a parameter is \"NAME SMALLEST LARGEST DEFAULT\""},
        {"name: A\nkind: 技术指标\nparam: N 1 100000 5\n[source]\nC;", 3, "\"100000\" is not a whole number of 16 bits"},
        {"name: A\nkind: 条件选股\ngroup: 趋向指标\n[source]\nC;", 3, "not a group of this kind"},
        {"name: A\nkind: 条件选股\ngroup: K线选股\n[source]\nC;", 3, "not a group of this kind"},
        {"name: A\nkind: 交易系统\naxes: 0\n[source]\nC;", 3, "only technical indicators have axis lines"},
        {"name: A B\nkind: 技术指标\n[source]\nC;", 1, "a name may not hold blanks or the characters . ; : , ( )"},
        {"name: A\nkind: 技术指标\n[notes]\nC;", 3, "unknown section [notes]"},
        {"name: A\nkind: 技术指标\n", 0, "no [source]"},
        {"name: A\nkind: 条件选股\nparam: N 1 9 5\n[template]\nno marks\n[source]\nC;", 0,
         "the template has 0 Param marks for 1 parameters"},
    };
    for (const BadSource& c : cases) {
        CIndicator f;
        ny::FormulaSourceError error;
        EXPECT_FALSE(ny::ParseFormulaSource(U8(c.text), &f, &error)) << c.text;
        EXPECT_EQ(error.line, c.line) << c.text;
        EXPECT_EQ(error.message, c.message) << c.text;
    }
    CIndicator f;
    ny::FormulaSourceError error;
    EXPECT_FALSE(ny::ParseFormulaSource("name: \xFF\xFE\nkind: x\n", &f, &error));
    EXPECT_EQ(error.line, 1);
}

}  // namespace
