// The translation of formulas into sentences. Every expected sentence is put together by hand from
// the catalog's patterns and short names.

#include <filesystem>
#include <fstream>
#include <sstream>

#include "check/translate.h"
#include "check_fixture.h"
#include "model/formula_source.h"

namespace nytest {
namespace {

struct SentenceCase {
    const char* name;
    const char* text;
    const char* sentence;
};

class TranslateTest : public CheckTest {
protected:
    CString Translate(const CString& text) {
        editor.SetText(text);
        return editor.GetTranslate();
    }
};

TEST_F(TranslateTest, SentencesOfStatements) {
    const std::string longComment = "{" + std::string(300, 'A') + "}";
    const std::string cutComment = "{" + std::string(254, 'A');
    const SentenceCase cases[] = {
        {"empty text", "", ""},
        {"worked example", "X:=REF(C,1)>O AND MA(V,5)>0;",
         "X赋值:1日前的收盘价>今开价 并且 成交量(手)的5日简单移动平均>0\r\n"},
        {"output with colour", "A:C,COLORRED", "A输出:收盘价,红色"},
        {"thickness with digit", "A:C,LINETHICK3", "A输出:收盘价,线型粗细"},
        {"or in words", "C>O OR C<O", "收盘价>今开价 或者 收盘价<今开价"},
        {"lower case", "ma(c,5)", "收盘价的5日简单移动平均"},
        {"unclosed, argument missing", "MA(C", "收盘价的?日简单移动平均"},
        {"unclosed, arguments complete", "MA(C,5", "收盘价的5日简单移动平均"},
        {"unclosed inner call comes first", "MA(REF(C,1", "1日前的收盘价?的?日简单移动平均"},
        {"stray closing parenthesis", "C)", "收盘价)"},
        {"price selector", "ZIG(3,5)", "收盘价5%的之字转向"},
        {"selector rewrite reaches later pieces", "ZIG(3,2)", "收盘价最低价%的之字转向"},
        {"parenthesis inside an argument", "MA((C+O)/2,5)", "(收盘价+今开价)/2的5日简单移动平均"},
        {"nested calls", "CROSS(MA(C,5),REF(MA(C,10),1))",
         "收盘价的5日简单移动平均上穿1日前的收盘价的10日简单移动平均"},
        {"three arguments reversed", "NDAY(C,O,3)", "最近3日今开价一直大于收盘价"},
        {"three arguments in order", "IF(C>O,1,0)", "如果是收盘价>今开价,返回1,否则返回0"},
        {"surplus argument dropped", "DRAWTEXT(C>O,L,'B')", "当满足条件收盘价>今开价时,在最低价位置书写文字"},
        {"no pattern drops the arguments", "STRCAT('A','B')", "字符串相加"},
        {"no arguments, translated in line", "NOT(C>O)", "取反(收盘价>今开价)"},
        {"unknown call keeps its arguments", "FOO(C,1)", "FOO(收盘价,1)"},
        {"quoted text word by word", "FOO('C O')", "FOO('收盘价今开价')"},
        {"argument chooses the row", "FINANCE(7)", "流通股本(万股)"},
        {"argument without a row", "FINANCE(999)", "FINANCE(999)"},
        {"family call without argument", "FINANCE(", "FINANCE("},
        {"statements and an empty one", "A:=C;;B:A+1", "A赋值:收盘价\r\nB输出:A+1"},
        {"comment holding a semicolon", "A:C{X;Y}+1;", "A输出:收盘价{X;Y}\r\n+1\r\n"},
        {"comment only", "{只是注释}", "{只是注释}"},
        {"long comment cut", longComment.c_str(), cutComment.c_str()},
    };
    for (const SentenceCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_GBK(Translate(c.text), c.sentence);
    }
}

TEST_F(TranslateTest, LibraryFormulasGiveTheirTitle) {
    LibraryMacd macd;
    const SentenceCase cases[] = {
        {"formula word", "MACD", "平滑异同平均"},
        {"formula line", "MACD.DEA>0", "平滑异同平均的DEA>0"},
        {"formula call", "MACD(12,26,9)", "平滑异同平均(12,26,9)"},
    };
    for (const SentenceCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_GBK(Translate(c.text), c.sentence);
    }
}

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
TEST_F(TranslateTest, EverySystemFormulaIsTranslated) {
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
