// The readings of tests/engine/readings.txt, each row an expression over the bars of its block
// and what it must give; and the readers called on text that the statement path can't produce.

#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>

#include "host/encoding.h"
#include "host/group.h"
#include "tests/engine/formula_fixture.h"
#include "tests/host/temp_installation.h"

namespace {

using Values = std::vector<float>;

Values Numbers(std::istream& in) {
    Values values;
    for (std::string word; in >> word;) values.push_back(std::strtof(word.c_str(), nullptr));
    return values;
}

short PeriodNamed(const std::string& name) {
    static const char* const kNames[] = {"day",  "week", "month", "quarter", "year",
                                         "min1", "min5", "min15", "min30",   "min60"};
    for (short i = 0; i < 10; ++i)
        if (name == kNames[i]) return static_cast<short>(NY_PERIOD_DAY + i);
    ADD_FAILURE() << "no period " << name;
    return NY_PERIOD_DAY;
}

int CodeNamed(const std::string& name) {
    for (int code = 0; code < 128; ++code)
        if (const char* known = ny::EvalCodeName(code); known != nullptr && name == known) return code;
    ADD_FAILURE() << "no code " << name;
    return -1;
}

// A reading into a statement: "text CODE "T"" checks the code and the statement's text, "draw F:
// V ..." field F of the draw data from bar 0 on.
void CheckStatementRow(CIndicator& ind, CExpression& statement, const std::string& text, std::istream& in,
                       const std::string& head) {
    statement.m_strDrawText.clear();
    std::fill(statement.m_pDrawData, statement.m_pDrawData + 4 * statement.m_nAllocBars, 0.0f);
    ind.m_nNextInfoID = 1;
    const nytest::Reading r = nytest::ReadValue(ind, text, &statement);
    std::string code, expected;
    if (head == "text" && in >> code && std::getline(in, expected)) {
        EXPECT_EQ(r.code, CodeNamed(code));
        EXPECT_EQ("\"" + statement.m_strDrawText + "\"", expected.substr(expected.find('"')));
        return;
    }
    ASSERT_EQ(r.code, NY_EVAL_OK);
    int field = 0;
    in >> field;
    in.ignore(1);  // the ":"
    const Values values = Numbers(in);
    for (size_t i = 0; i < values.size() && i < static_cast<size_t>(statement.m_nAllocBars); ++i)
        EXPECT_EQ(statement.m_pDrawData[4 * i + field], values[i]) << "bar " << i;
}

// Checks one reading against its result (see the head of readings.txt for the forms).
void CheckRow(CIndicator& ind, CExpression& statement, const std::string& text, const std::string& result) {
    std::istringstream in(result);
    std::string head;
    in >> head;
    if (head == "text" || head == "draw") return CheckStatementRow(ind, statement, text, in, head);
    const nytest::Reading r =
        text[0] == '?' ? nytest::ReadCondition(ind, text.substr(1)) : nytest::ReadValue(ind, text);
    const bool constant = head == "=", series = head[0] == '@' || std::isdigit(head[0]);
    if (!constant && !series && head != "empty") {
        EXPECT_EQ(r.code, CodeNamed(head));
        return;
    }
    ASSERT_EQ(r.code, NY_EVAL_OK);
    if (head == "empty") {
        EXPECT_GT(r.from, r.to);
        return;
    }
    EXPECT_EQ(r.isSeries, series ? 1 : 0);
    int first = 0;
    if (head[0] == '@') {
        first = std::stoi(head.substr(1));
    } else if (series) {
        first = std::stoi(head);
        EXPECT_EQ(r.from, first);
        EXPECT_EQ(r.to, std::stoi(head.substr(head.find("..") + 2)));
    } else {
        EXPECT_EQ(r.from, 0);
    }
    const Values expected = Numbers(in);
    ASSERT_LE(first + expected.size(), r.values.size());
    for (size_t k = 0; k < expected.size(); ++k) {
        const float actual = r.values[first + k];
        if (std::isnan(expected[k]))
            EXPECT_TRUE(std::isnan(actual)) << "bar " << first + k << ": " << actual;
        else
            EXPECT_EQ(actual, expected[k]) << "bar " << first + k;
    }
}

// Checks every row of a table of readings; the number of rows read.
int CheckTable(const std::string& name) {
    std::ifstream file(NY_SOURCE_DIR "/tests/engine/" + name);
    EXPECT_TRUE(file) << name;
    std::unique_ptr<CIndicator> ind;
    std::unique_ptr<TempInstallation> home;
    CExpression statement;
    std::vector<CHisDay> bars;
    int number = 0, rows = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        if (line.empty() || line[0] == '#') continue;
        SCOPED_TRACE(name + ":" + std::to_string(number) + ": " + line);
        if (const size_t arrow = line.find(" -> "); arrow != std::string::npos) {
            if (!ind) {
                ADD_FAILURE() << "a row before the first bars";
                continue;
            }
            const std::string gbk = ny::Utf8ToGbk(line);
            CheckRow(*ind, statement, gbk.substr(0, gbk.find(" -> ")), gbk.substr(gbk.find(" -> ") + 4));
            ++rows;
            continue;
        }
        std::istringstream in(line);
        std::string word, name;
        in >> word;
        if (word == "bars") {
            ind = std::make_unique<CIndicator>();
            bars = nytest::MakeBars(Numbers(in));
            nytest::AttachBars(*ind, bars);
            ind->Context().m_nCurSpan = static_cast<short>(bars.size());
            statement.AllocMem(static_cast<short>(bars.size()));
        } else if (word == "home") {
            home = std::make_unique<TempInstallation>();
        } else if (std::string path, text; word == "file" && in >> path) {
            std::getline(in, text);
            for (auto [from, to] : {std::pair<const char*, char>{"\\n", '\n'}, {"\\r", '\r'}})
                for (size_t at; (at = text.find(from)) != std::string::npos;) text.replace(at, 2, 1, to);
            home->Write(path, text.substr(std::min<size_t>(1, text.size())));
        } else if (word == "flow" && in >> path) {
            std::string records;  // word k of the i-th record holds k + 100 i
            for (int date, serial = 0; in >> date; ++serial) {
                float words[65] = {};
                for (int k = 1; k <= 24; ++k) words[k] = static_cast<float>(k + 100 * serial);
                std::memcpy(words, &date, 4);
                records.append(reinterpret_cast<const char*>(words), sizeof(words));
            }
            home->Write(path, records);
        } else if (std::string category; word == "block" && in >> category >> name) {
            std::vector<int> ids;
            for (int id; in >> id;) ids.push_back(id);
            EXPECT_TRUE(CGroup::CreateGroup(ny::Utf8ToGbk(category), ny::Utf8ToGbk(name), ids));
        } else if (int computed; word == "statement" && in >> name >> computed) {
            nytest::AddSeries(*ind, name, Values(bars.size()), 0, static_cast<short>(bars.size()));
            ind->m_arExpressions.back()->m_cComputed = static_cast<char>(computed);
            in >> ind->m_arExpressions.back()->m_strDrawText;
        } else if (word == "open") {
            EXPECT_TRUE(ny::OpenInstallation(home->Path()));
        } else if (word == "stock") {
            in >> ind->m_lStockID;
        } else if (word == "name" && in >> name) {
            ind->m_strName = name;
        } else if (word == "period" && in >> name) {
            ind->m_nPeriod = PeriodNamed(name);
        } else if (word == "stamps") {
            for (CHisDay& bar : bars) in >> bar.m_lTime;
        } else if (word == "drawstart") {
            in >> ind->m_nDrawStart;
        } else if (short value; word == "param" && in >> name >> value) {
            nytest::AddParam(*ind, name, value);
        } else if (short first, end; word == "series" && in >> name >> first >> end) {
            nytest::AddSeries(*ind, name, Numbers(in), first, end);
        } else {
            ADD_FAILURE() << "not understood";
        }
    }
    return rows;
}

TEST(Readings, OfTheTable) { EXPECT_GT(CheckTable("readings.txt"), 450); }
TEST(Readings, OfTheTurningPoints) { EXPECT_GT(CheckTable("turning_points.txt"), 30); }
TEST(Readings, OfTheMarketDetail) { EXPECT_GT(CheckTable("market_detail.txt"), 80); }

// A reader called with the cursor on text behind the function's name, with the statement's ";"
// before the call's ")" or with series refused by the caller.
TEST(Readings, ReadersCalledDirectly) {
    using Reader = char (CIndicator::*)(char*, float*, short*, short*, char, char*);
    const struct {
        Reader reader;
        const char* word;
        const char* text;
        char permission;
        EvalCode code;
    } rows[] = {
        {&CIndicator::ReadMA, "MA", "(CLOSE,5;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadSMA, "SMA", "(CLOSE,5,1;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadIf, "IF", "(1,2,3;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadDATETODAY, "DATETODAY", "(1;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadCROSS, "X", "(C,1;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadLONGCROSS, "X", "(C,1;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadCOUNT, "X", "(C,1;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadLAST, "X", "(C,1;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadLogicalFun, "X", "(C,1;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadBARSCOUNT, "X", "(C,1;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadFINDHIGH, "X", "(C,1;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadForCla, "X", "(C,1;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadMathFunc1, "ABS", "(1;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadMathFunc2, "MOD", "(1;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadMathFunc3, "RGB", "(1;", 1, NY_EVAL_UNTERMINATED},
        {&CIndicator::ReadMathFunc1, "ABS", "(CLOSE);", 0, NY_EVAL_SERIES_NOT_ALLOWED},
        {&CIndicator::ReadMathFunc2, "MAX", "(1,CLOSE);", 0, NY_EVAL_SERIES_NOT_ALLOWED},
    };
    std::vector<CHisDay> bars = nytest::RisingBars(3);
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.word) + row.text);
        CIndicator ind;
        nytest::AttachBars(ind, bars);
        std::string name = row.word, text = row.text;
        Values out(bars.size(), 0.0f);
        short from = 0, to = 2;
        char isSeries = 1;
        ind.Context().m_nCurFrom = 0;
        ind.Context().m_nCurTo = 3;
        ind.Context().m_pCursor = text.data();
        EXPECT_EQ((ind.*row.reader)(name.data(), out.data(), &from, &to, row.permission, &isSeries),
                  row.code);
    }
}

}  // namespace
