// The translation of formulas into sentences: the filling of a pattern, and the whole system set.
// The sentences of single texts are the table of texts_test.cpp.

#include <filesystem>
#include <fstream>
#include <sstream>

#include "check/translate.h"
#include "check_fixture.h"
#include "model/formula_source.h"

namespace nytest {
namespace {

TEST(TranslateReplace, FillsOneQuestionMark) {
    struct Case {
        const char* pattern;
        int start, next;
        const char* value;
        const char* text;
        int nextAfter;
    } cases[] = {
        {"?的?", 0, 0, "A", "A的?", 1},
        {"A的?", 1, 1, "", "A的?", 4},   // the "?" stays, next behind it
        {"AB", 0, 5, "", "AB", 6},       // no "?": next moves one on
        {"AB", 0, 5, "X", "AB", 5},      // no "?": the value is dropped
        {"?", 1, 1, "B", "?", 1},        // a "?" before start is passed over
    };
    for (const Case& c : cases) {
        int next = c.next;
        EXPECT_EQ(ny::FormulaTranslator::ReplaceTran(c.pattern, c.start, c.value, next), c.text) << c.pattern;
        EXPECT_EQ(next, c.nextAfter) << c.pattern;
    }
}

TEST(TranslateWithoutLexer, StatementsStandAsWritten) {
    EXPECT_EQ(ny::FormulaTranslator(nullptr).GetTranslate("a:c;b:o"), "A:C\r\nB:O");
}

// Every formula of the system set: one sentence for each statement the syntax test cuts, and no
// argument left out of a pattern.
TEST_F(CheckTest, EverySystemFormulaIsTranslated) {
    int formulas = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(NY_SOURCE_DIR "/data/formulas")) {
        if (entry.path().extension() != ".fml") continue;
        SCOPED_TRACE(entry.path().string());
        std::ifstream file(entry.path(), std::ios::binary);
        std::stringstream source;
        source << file.rdbuf();
        CIndicator formula;
        ny::FormulaSourceError error;
        ASSERT_TRUE(ny::ParseFormulaSource(source.str(), &formula, &error));
        std::vector<CParam> params;
        for (const CParam* p : formula.m_arParams) params.push_back(*p);
        editor.SetText(formula.m_strSource);
        const SYNTestResult test = editor.GetTestResult(params);
        ASSERT_EQ(test.nResult, NY_TEST_OK);

        std::istringstream sentences(editor.GetTranslate());
        size_t count = 0;
        for (std::string sentence; std::getline(sentences, sentence); ++count) {
            EXPECT_FALSE(sentence.empty() || sentence == "\r");
            EXPECT_EQ(sentence.find('?'), std::string::npos) << ny::GbkToUtf8(sentence);
        }
        EXPECT_EQ(count, test.arItems.size());
        ++formulas;
    }
    EXPECT_GT(formulas, 50);
}

}  // namespace
}  // namespace nytest
