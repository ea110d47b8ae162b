// The tables of tests/check/texts.txt: the tokens of texts, the statements and codes of the
// syntax test, the sentences of the translation and the reports of the formula dialog.

#include <map>
#include <sstream>

#include "check/syntax_result.h"
#include "dialogs/formula_dialog.h"
#include "tests/check/check_fixture.h"
#include "tests/case_file.h"

namespace {

#define TOKEN(name) {#name, NY_TOKEN_##name}
#define CODE(name) {#name, NY_TEST_##name}
const std::map<std::string, int> kTokens = {
    TOKEN(PLUS), TOKEN(MINUS), TOKEN(TIMES), TOKEN(DIVIDE), TOKEN(CALL), TOKEN(NUMBER), TOKEN(AND),
    TOKEN(OR), TOKEN(GREATER), TOKEN(GREATER_EQUAL), TOKEN(LESS), TOKEN(LESS_EQUAL), TOKEN(EQUAL),
    TOKEN(NOT_EQUAL), TOKEN(OUTPUT), TOKEN(ASSIGN), TOKEN(LPAREN), TOKEN(RPAREN), TOKEN(COMMA),
    TOKEN(BLANK), TOKEN(WORD), TOKEN(OTHER), TOKEN(COMMENT)};
const std::map<std::string, int> kCodes = {
    CODE(OK), CODE(NO_NAME), CODE(EMPTY), CODE(BAD_FUNCTION), CODE(BAD_ARGUMENTS), CODE(OPEN_CALL),
    CODE(BAD_MARKER), CODE(SECOND_ASSIGN), CODE(UNKNOWN_WORD), CODE(TOO_MANY_ARGS),
    CODE(BAD_EXPRESSION), CODE(BAD_CHARACTER), CODE(SECOND_UNKNOWN), CODE(BAD_START)};
#undef TOKEN
#undef CODE

// A code by name, or a bare number.
int Named(const std::map<std::string, int>& names, const std::string& name) {
    if (const auto it = names.find(name); it != names.end()) return it->second;
    if (!name.empty() && (std::isdigit(name[0]) != 0 || name[0] == '-')) return std::stoi(name);
    ADD_FAILURE() << "no code " << name;
    return 0;
}

// The bytes of a table text: UTF-8 as GBK, and the escapes \r \n \t \s \\ \xHH \R<count>(<text>).
std::string Unescape(const std::string& utf8) {
    std::string out, plain;
    for (size_t i = 0; i < utf8.size(); ++i) {
        if (utf8[i] != '\\' || i + 1 == utf8.size()) {
            plain += utf8[i];
            continue;
        }
        out += ny::Utf8ToGbk(plain);
        plain.clear();
        switch (const char escape = utf8[++i]) {
            case 'r': out += '\r'; break;
            case 'n': out += '\n'; break;
            case 't': out += '\t'; break;
            case 's': out += ' '; break;
            case 'x':
                out += static_cast<char>(std::stoi(utf8.substr(i + 1, 2), nullptr, 16));
                i += 2;
                break;
            case 'R': {
                const size_t open = utf8.find('(', i), close = utf8.find(')', open);
                for (int n = std::stoi(utf8.substr(i + 1, open - i - 1)); n > 0; --n)
                    out += ny::Utf8ToGbk(utf8.substr(open + 1, close - open - 1));
                i = close;
                break;
            }
            default: out += escape;
        }
    }
    return out + ny::Utf8ToGbk(plain);
}

std::string Trim(const std::string& text) {
    const size_t first = text.find_first_not_of(' '), last = text.find_last_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

// The fields of a row between "|", without the blanks around them.
std::vector<std::string> Fields(const std::string& text) {
    std::vector<std::string> fields;
    std::istringstream in(text);
    for (std::string field; std::getline(in, field, '|');) fields.push_back(Trim(field));
    if (!text.empty() && text.back() == '|') fields.emplace_back();
    return fields;
}

class Texts : public nytest::CheckTest {
protected:
    void Tokens(const std::string& text, const std::string& expected, bool paint) {
        const auto tokens = Lex(Unescape(text), paint);
        std::istringstream in(expected);
        size_t k = 0;
        for (std::string token; in >> token; ++k) {
            if (token == "...") return;  // the leading tokens only
            ASSERT_LT(k, tokens.size());
            const size_t colon = token.find(':');
            EXPECT_EQ(tokens[k].first, Named(kTokens, token.substr(0, colon))) << "token " << k;
            EXPECT_GBK(tokens[k].second, Unescape(token.substr(colon + 1)));
        }
        EXPECT_EQ(k, tokens.size());
    }

    void Item(const std::string& text, const std::vector<std::string>& expected) {
        const SYNTestResult result = Test(Unescape(text), params);
        ASSERT_EQ(result.nResult, NY_TEST_OK) << ny::GbkToUtf8(result.strError);
        ASSERT_EQ(result.arItems.size(), 1u);
        ASSERT_EQ(expected.size(), 3u);
        const SYNLineItem& item = result.arItems.front();
        std::istringstream style(expected[0]);
        std::string type, color, width;
        style >> type >> color >> width;
        EXPECT_EQ(item.nType, std::stoi(type));
        EXPECT_EQ(item.lColor, std::stoi(color, nullptr, 0));
        EXPECT_EQ(item.nWidth, std::stoi(width));
        EXPECT_GBK(item.strName, Unescape(expected[1]));
        EXPECT_GBK(item.strExpress, Unescape(expected[2]));
    }

    void Code(const std::string& text, const std::vector<std::string>& expected) {
        const SYNTestResult result = Test(Unescape(text), params);
        EXPECT_EQ(result.nResult, Named(kCodes, expected[0]));
        if (expected.size() > 1) {
            EXPECT_GBK(result.strError, Unescape(expected[1]));
        }
    }

    void Report(const std::vector<std::string>& input, const std::string& expected) {
        ASSERT_EQ(input.size(), 3u);
        SYNTestResult result;
        result.nResult = Named(kCodes, input[0]);
        result.strError = Unescape(input[1]);
        EXPECT_GBK(CFormulaDialog::GetTestString(result, Unescape(input[2])), Unescape(expected));
    }

    nytest::LibraryMacd macd;
    const std::vector<CParam> params = {nytest::MakeParam("n", 1, 100, 5)};
};

TEST_F(Texts, OfTheTables) {
    std::string section;
    int rows = 0;
    testcases::ForEachRow("check/texts.txt", [&](const std::string& line) {
        if (line.rfind("== ", 0) == 0) {
            section = line.substr(3);
            return;
        }
        std::string text, expected;
        ASSERT_TRUE(testcases::SplitAtArrow(line, &text, &expected));
        expected = Trim(expected);
        ++rows;
        if (section == "lex" || section == "paint") {
            Tokens(text, expected, section == "paint");
        } else if (section == "item") {
            Item(text, Fields(expected));
        } else if (section == "test") {
            Code(text, Fields(expected));
        } else if (section == "translate") {
            editor.SetText(Unescape(text));
            EXPECT_GBK(editor.GetTranslate(), Unescape(expected));
        } else if (section == "report") {
            Report(Fields(text), expected);
        } else {
            FAIL() << "no section " << section;
        }
    });
    EXPECT_GT(rows, 130);
}

}  // namespace
