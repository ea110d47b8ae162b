// Random and truncated formula texts, built from the language's tokens with a fixed seed: the
// lexer, the test and the evaluator behind it must take all of them without a fault.

#include <array>
#include <memory>
#include <random>

#include "check/syntax_result.h"
#include "dialogs/formula_dialog.h"
#include "tests/check/check_fixture.h"
#include "tests/engine/formula_fixture.h"

namespace {

constexpr std::array<const char*, 84> kPieces = {
    "A", "B", "X", "MA5", "C", "close", "O", "H", "L", "VOL", "N", "MACD.DIF", "MACD.", ".X",
    "短线", "漲", "5日线", "MA(", "ema(", "ABS(", "IF(", "FOO(", "NOT(", "FINANCE(", "ISLASTBAR",
    "DRAWTEXT(", "STRCAT(", "REF(", "SMA(", "CROSS(", "MACD(", "0", "1", "5", ".5", "007",
    "1.2.3", "12.5", "+", "-", "*", "/", ">", ">=", "<", "<=", "=", "==", "!=", " AND ", " OR ",
    "&&", "||", ",", "(", ")", ":", ":=", ";", "{", "}", "{注释;}", "'", "''", "!", "#", "@",
    "，", "COLORRED", "LINETHICK", "LINETHICK3", "NODRAW", "COLORFF00FF", "COLOR1G", "VOLSTICK",
    " ", "\r\n", "\t", "\xB6", "\x81\x40", "\xFF", "\x01", "{", "'X#'"};

// Random formulas of the grammar: statements of the three forms over nested expressions.
class FormulaMaker {
public:
    explicit FormulaMaker(unsigned seed) : m_random(seed) {}

    std::string Formula() {
        std::string text;
        m_names = 0;
        for (int n = Pick(1, 4); n > 0; --n) text += Statement() + (Pick(0, 3) != 0 ? ";\r\n" : ";");
        return text;
    }

private:
    int Pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }
    template <size_t N>
    const char* OneOf(const std::array<const char*, N>& choices) { return choices[static_cast<size_t>(Pick(0, N - 1))]; }

    std::string Statement() {
        static const std::array<const char*, 6> attributes = {",COLORRED", ",linethick2", ",NODRAW",
                                                              ",COLOR00FF80", ",colorstick", ""};
        // Statements may use the names defined before them.
        const std::string name = "S" + std::to_string(m_names);
        switch (Pick(0, 2)) {
            case 0: return name + ":=" + Expression(0, m_names++);
            case 1: return name + ":" + Expression(0, m_names++) + OneOf(attributes);
            default: return (Pick(0, 1) != 0 ? "{c}" : "") + Expression(0, m_names) + OneOf(attributes);
        }
    }

    std::string Expression(int depth, int names) {
        static const std::array<const char*, 12> operators = {"+", "-", "*", "/", ">", ">=", "<",
                                                              "<=", "=", "!=", " AND ", " OR "};
        std::string text = (Pick(0, 5) == 0 ? "-" : "") + Term(depth, names);
        for (int n = Pick(0, 2); n > 0; --n) text += OneOf(operators) + Term(depth, names);
        return text;
    }

    std::string Term(int depth, int names) {
        static const std::array<const char*, 9> operands = {"C", "o", "HIGH", "L", "VOL", "N",
                                                            "5", "0.5", "ISLASTBAR"};
        if (depth > 1) return OneOf(operands);
        switch (Pick(0, 7)) {
            case 0: return "(" + Expression(depth + 1, names) + ")";
            case 1: return "MA(" + Expression(depth + 1, names) + "," + std::to_string(Pick(1, 6)) + ")";
            case 2: return "ABS(" + Expression(depth + 1, names) + ")";
            case 3: return "IF(" + Expression(depth + 1, names) + "," + Expression(depth + 1, names) + "," +
                           Expression(depth + 1, names) + ")";
            case 4: return "NOT(" + Expression(depth + 1, names) + ")";
            case 5: return names > 0 ? "S" + std::to_string(Pick(0, names - 1)) : "C";
            default: return OneOf(operands);
        }
    }

    std::mt19937 m_random;
    int m_names = 0;
};

class Fuzz : public nytest::CheckTest {
protected:

    // The paint tokens of a text cover each of its bytes once, in order.
    void ExpectTiled(const std::string& text) {
        CMyLexicalAnaly sink;
        editor.m_pfnPaintLexical(text.c_str(), &sink, 1);
        int next = 0;
        for (int i = 0; i < sink.GetTokenCount(); ++i) {
            const LEX_TOKEN token = sink.GetToken(static_cast<unsigned>(i));
            ASSERT_EQ(token.nPos, next) << ny::GbkToUtf8(text);
            ASSERT_GT(token.nLen, 0);
            next += token.nLen;
        }
        EXPECT_EQ(static_cast<size_t>(next), std::min<size_t>(text.size(), NY_LEXICAL_MAX_TEXT));
    }

    // Tests the text and, when it passes, evaluates its statements over a few bars.
    void TestAndRun(const std::string& text) {
        editor.SetText(text);
        const SYNTestResult result = editor.GetTestResult(params);
        EXPECT_FALSE(CFormulaDialog::GetTestString(result, "F").empty());
        if (result.nResult != 0) return;
        ++passed;
        for (const SYNLineItem& item : result.arItems) {
            EXPECT_LE(item.strExpress.size(), static_cast<size_t>(NY_TEST_MAX_EXPRESSION));
            EXPECT_LE(item.strName.size(), static_cast<size_t>(NY_TEST_MAX_NAME));
        }
        CIndicator formula;
        nytest::RunTested(result, params, bars, formula);
    }

    nytest::LibraryMacd macd;
    const std::vector<CParam> params = {nytest::MakeParam("N", 1, 100, 3)};
    std::vector<CHisDay> bars = nytest::MakeBars({10, 11, 9.5f, 12, 12.5f, 11, 13, 14});
    int passed = 0;
};

TEST_F(Fuzz, RandomTextsOfTheLanguagesTokens) {
    std::mt19937 random(20240611);
    std::uniform_int_distribution<size_t> piece(0, kPieces.size() - 1);
    std::uniform_int_distribution<int> length(1, 40);
    for (int n = 0; n < 4000; ++n) {
        std::string text;
        for (int k = length(random); k > 0; --k) text += kPieces[piece(random)];
        ExpectTiled(text);
        TestAndRun(text);
    }
}

TEST_F(Fuzz, GrammaticalFormulasAndTheirMutations) {
    FormulaMaker maker(31337);
    std::mt19937 random(99);
    std::uniform_int_distribution<size_t> piece(0, kPieces.size() - 1);
    for (int n = 0; n < 2000; ++n) {
        std::string text = maker.Formula();
        TestAndRun(text);
        // The same formula with one piece put in, and cut short.
        std::uniform_int_distribution<size_t> at(0, text.size());
        text.insert(at(random), kPieces[piece(random)]);
        ExpectTiled(text);
        TestAndRun(text);
        TestAndRun(text.substr(0, at(random)));
    }
    // Many of them pass and reach the evaluator.
    EXPECT_GT(passed, 1000);
}

TEST_F(Fuzz, RandomBytes) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> byte(1, 255);
    std::uniform_int_distribution<int> length(0, 300);
    for (int n = 0; n < 1500; ++n) {
        std::string text;
        for (int k = length(random); k > 0; --k) text += static_cast<char>(byte(random));
        ExpectTiled(text);
        TestAndRun(text);
    }
}

TEST_F(Fuzz, EveryPrefixOfEverydayFormulas) {
    const char* formulas[] = {
        "{均线}\r\nma5:ma(close,5),colorwhite,linethick2;\r\nma10:ma(close,N),coloryellow;",
        "DIF:EMA(CLOSE,12)-EMA(CLOSE,26);\r\nDEA:EMA(DIF,9);\r\nMACD:(DIF-DEA)*2,COLORSTICK;",
        "RSV:=(CLOSE-LLV(LOW,9))/(HHV(HIGH,9)-LLV(LOW,9))*100;K:SMA(RSV,3,1);D:SMA(K,3,1);J:3*K-2*D;",
        "VOL,VOLSTICK;MAVOL:MA(VOL,5),NODRAW;DRAWTEXT(CROSS(C,O),L,'买入');X:C<-1 AND 漲>0",
        "A:C{X;Y}+1;B:=IF(C>O,C,-O);'''';COLOR00FF00",
    };
    for (const std::string formula : formulas)
        for (size_t end = 0; end <= formula.size(); ++end) {
            const std::string prefix = formula.substr(0, end);
            ExpectTiled(prefix);
            TestAndRun(prefix);
        }
}

TEST_F(Fuzz, LongTexts) {
    // Statements above every fixed size, and a text beyond what a token position can hold.
    std::string many;
    for (int i = 0; i < 3000; ++i) many += "A" + std::to_string(i) + ":=C+" + std::to_string(i) + ";";
    TestAndRun(many);
    TestAndRun(std::string(40000, 'A'));
    TestAndRun("A:" + std::string(40000, '('));
    TestAndRun("{" + std::string(40000, ';') + "}");
    TestAndRun(std::string(20000, '\'') + ";" + std::string(20000, '-'));
    EXPECT_EQ(editor.m_arIdentifiers.size(), 0u);
}

}  // namespace
