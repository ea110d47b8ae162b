// Every word of the language agrees across its consumers: the catalog (and the lexer module,
// built from the same rows), the syntax test and the evaluator's chain of words. A word added to
// one of them and not the others fails here.

#include <map>
#include <set>
#include <string>

#include "catalog/catalog_row.h"
#include "check/syntax_checker.h"
#include "check/word_classes.h"
#include "engine/chain.h"
#include "engine/eval_code.h"
#include "tests/check/check_fixture.h"
#include "tests/engine/formula_fixture.h"

namespace {

using nytest::CheckTest;

// A catalog row's word without its argument: FINANCE(7) is FINANCE.
std::string Stem(const std::string& name) { return name.substr(0, name.find('(')); }

bool Contains(const std::vector<const char*>& words, const std::string& word) {
    for (const char* w : words)
        if (word == w) return true;
    return false;
}

// A call of `name` with `count` arguments that each read the close.
std::string Call(const std::string& name, int count) {
    if (count == 0) return name;
    std::string text = name + "(";
    for (int i = 0; i < count; ++i) text += i == 0 ? "C" : ",C";
    return text + ")";
}

// Each function and data word of the catalog, not the style keywords, with its row.
template <typename F>
void ForEachCatalogWord(F visit) {
    for (int nClass = NY_FUNCLASS_QUOTE; nClass < NY_FUNCLASS_LINE_COLOR; ++nClass)
        for (const ny::CatalogRow& row : ny::CatalogRows(nClass)) visit(row);
}

class WordTable : public CheckTest {
protected:
    std::set<std::string> CatalogStems() const {
        std::set<std::string> stems;
        ForEachCatalogWord([&](const ny::CatalogRow& row) { stems.insert(Stem(row.name)); });
        return stems;
    }
    std::set<std::string> KeyWords() const { return {ny::KeyWords().begin(), ny::KeyWords().end()}; }
};

TEST_F(WordTable, EveryCatalogWordAndKeywordHasAChainEntryOrIsLeftOutOnPurpose) {
    std::set<std::string> words = CatalogStems();
    const std::set<std::string> keywords = KeyWords();
    words.insert(keywords.begin(), keywords.end());
    for (const std::string& word : words) {
        const bool chained = ny::FindBuiltInWord(word.c_str()) != nullptr;
        EXPECT_NE(chained, Contains(ny::WordsOutsideTheChain(), word)) << word;
    }
}

TEST_F(WordTable, EveryChainWordIsKnownToTheEditorUnlessReserved) {
    const std::set<std::string> stems = CatalogStems();
    const std::set<std::string> keywords = KeyWords();
    for (const ny::WordGroup& group : ny::BuiltInChain())
        for (const std::string word : group.words) {
            const bool known = stems.count(word) != 0 || keywords.count(word) != 0;
            EXPECT_NE(known, ny::IsReservedMarketWord(word.c_str())) << word;
        }
}

// Words whose arguments are quoted names (a missing quote is code 7): a call the evaluator takes.
const std::map<std::string, std::string> kLiteralCalls = {{"INMODULE", "INMODULE('行业','银行')"},
                                                          {"MODULESETNUM", "MODULESETNUM('行业','银行')"},
                                                          {"MODULESORT", "MODULESORT('行业','',14,0)"}};

// The argument count of each row is the evaluator's: the row's count is read without a count
// failure, one argument more fails with the count code. Words not evaluated yet end as unknown.
TEST_F(WordTable, ArgumentCountsAgreeWithTheEvaluator) {
    auto bars = nytest::RisingBars(30);
    CIndicator ind;
    nytest::AttachBars(ind, bars);
    CExpression drawStatement;
    drawStatement.AllocMem(30);
    ForEachCatalogWord([&](const ny::CatalogRow& row) {
        const ny::WordGroup* group = ny::FindBuiltInWord(Stem(row.name).c_str());
        if (group == nullptr) return;
        const bool evaluated = group->reader != nullptr || group->drawReader != nullptr;
        const auto literal = kLiteralCalls.find(row.name);
        if (literal != kLiteralCalls.end()) {
            const std::string& call = literal->second;
            EXPECT_NE(nytest::ReadValue(ind, call).code, NY_EVAL_UNKNOWN_WORD) << call;
            EXPECT_EQ(nytest::ReadValue(ind, call.substr(0, call.size() - 1) + ",1)").code, NY_EVAL_ARGUMENT_COUNT) << call;
            return;
        }
        int count = row.argCount;
        char code = nytest::ReadValue(ind, Call(row.name, count)).code;
        // A row of no arguments that the lexer reads as a plain word even before "(" (NOT) is
        // written with one argument, which the syntax test does not count.
        if (evaluated && count == 0 && code == NY_EVAL_UNKNOWN_WORD &&
            Lex(Call(row.name, 1)).front().first == NY_TOKEN_WORD) {
            count = 1;
            code = nytest::ReadValue(ind, Call(row.name, count)).code;
        }
        if (!evaluated) {
            EXPECT_EQ(code, NY_EVAL_UNKNOWN_WORD) << row.name;
            return;
        }
        // A quoted text read as a close fails as an unknown word; the catalog sweep of the picker's
        // tests gives them texts.
        const bool quotedText = row.name == std::string("INFOFILE") || row.name == std::string("STRING");
        EXPECT_TRUE(code != NY_EVAL_UNKNOWN_WORD || quotedText) << row.name;
        EXPECT_NE(code, NY_EVAL_ARGUMENT_COUNT) << row.name;
        // A draw command counts its arguments only where a statement receives it.
        if (count > 0) {
            CExpression* statement = group->drawReader != nullptr ? &drawStatement : nullptr;
            EXPECT_EQ(nytest::ReadValue(ind, Call(row.name, count + 1), statement).code,
                      NY_EVAL_ARGUMENT_COUNT)
                << row.name;
        }
    });
}

// The syntax test and the lexer module take every catalog call with its count and refuse one
// argument more; reserved words are refused.
TEST_F(WordTable, SyntaxTestAndLexerFollowTheCatalog) {
    ForEachCatalogWord([&](const ny::CatalogRow& row) {
        const std::string call = Call(row.name, row.argCount);
        // A row that carries its argument (FINANCE(7)) is a word to the lexer, as keywords are.
        const bool word = ny::IsKeyWord(ny::KeyWords(), row.name) || Stem(row.name) != row.name;
        EXPECT_EQ(Lex(call).front().first, word ? NY_TOKEN_WORD : NY_TOKEN_CALL) << row.name;
        EXPECT_EQ(Test("X:=" + call).nResult, NY_TEST_OK) << row.name;
        if (row.argCount > 0) {
            EXPECT_EQ(Test("X:=" + Call(row.name, row.argCount + 1)).nResult, NY_TEST_BAD_ARGUMENTS) << row.name;
        }
    });
    for (const ny::WordGroup& group : ny::BuiltInChain()) {
        for (const char* word : group.words) {
            if (ny::IsReservedMarketWord(word)) {
                EXPECT_NE(Test(std::string("X:=") + word).nResult, NY_TEST_OK) << word;
            }
        }
    }
}

}  // namespace
