// The readable form of a formula, read and written back.

#include <gtest/gtest.h>

#include <tuple>

#include "host/encoding.h"
#include "model/formula_source.h"
#include "tests/case_file.h"

namespace {

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
    std::vector<std::pair<std::string, std::string>> cases = {{ny::GbkToUtf8(kExample), ""}};
    for (const testcases::Row& row : testcases::ReadRows("cli/formula_sources.txt", "same")) cases.emplace_back(row[0], row[1]);
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

TEST(FormulaSource, ProblemsAreNamedWithTheirLine) {
    for (const testcases::Row& row : testcases::ReadRows("cli/formula_sources.txt", "bad")) {
        CIndicator f;
        ny::FormulaSourceError error;
        EXPECT_FALSE(ny::ParseFormulaSource(row[0], &f, &error)) << row.where;
        EXPECT_EQ(error.line, row.Int(1)) << row.where;
        if (!row[2].empty()) {
            EXPECT_EQ(error.message, row[2]) << row.where;
        }
    }
}

}  // namespace
