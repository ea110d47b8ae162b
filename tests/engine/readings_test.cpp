// The readings of tests/engine/readings.txt, each row an expression over the bars of its block
// and what it must give; and the readers called on text that the statement path can't produce.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <memory>
#include <sstream>

#include "host/clock.h"
#include "host/encoding.h"
#include "host/files.h"
#include "host/group.h"
#include "tests/engine/formula_fixture.h"
#include "tests/host/temp_installation.h"
#include "tests/case_file.h"

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

// The bytes of the draw parameters at an offset, read as a T.
template <typename T>
float ParamAt(const CExpression& statement, size_t offset) {
    T value;
    std::memcpy(&value, statement.m_DrawParams + offset, sizeof value);
    return static_cast<float>(value);
}

// One item of a draw result: "kind=K", "TYPE@OFFSET=V" (TYPE char, short, int or float) of the
// draw parameters, "argS=V" a draw argument, "params=T" the parameters as text, "text=T".
void CheckDrawItem(const CExpression& statement, const std::string& item) {
    const std::string key = item.substr(0, item.find('=')), value = item.substr(key.size() + 1);
    const size_t at = key.find('@');
    const size_t offset = at == std::string::npos ? 0 : std::stoul(key.substr(at + 1));
    const std::string type = key.substr(0, at);
    if (key == "kind") {
        EXPECT_EQ(statement.m_nType, std::stoi(value));
    } else if (key == "params") {
        EXPECT_STREQ(statement.m_DrawParams, value.c_str());
    } else if (key == "text") {
        EXPECT_EQ(statement.m_strDrawText, value);
    } else if (key.rfind("arg", 0) == 0) {
        EXPECT_EQ(ny::LoadFloat(reinterpret_cast<const char*>(&statement.m_lDrawArgs[std::stoi(key.substr(3))])),
                  std::stof(value));
    } else {
        const float actual = type == "char"    ? ParamAt<signed char>(statement, offset)
                             : type == "short" ? ParamAt<short>(statement, offset)
                             : type == "int"   ? ParamAt<int>(statement, offset)
                                               : ParamAt<float>(statement, offset);
        EXPECT_EQ(actual, std::stof(value)) << item;
    }
}

// A reading into a statement: "text CODE "T"" checks the code and the statement's text; "draw
// [CODE] ITEM ..." the code (OK if not given) and items: "out: V ..." the values and "fN: V ..."
// field N of the draw data, each from bar 0 on (a field not given is 0 on every bar), and the
// items of CheckDrawItem.
void CheckStatementRow(CIndicator& ind, CExpression& statement, const std::string& text, std::istream& in,
                       const std::string& head) {
    statement.m_strDrawText.clear();
    statement.m_nType = 0;
    std::memset(statement.m_DrawParams, 0, sizeof statement.m_DrawParams);
    std::memset(statement.m_lDrawArgs, 0, sizeof statement.m_lDrawArgs);
    std::fill(statement.m_pDrawData, statement.m_pDrawData + 4 * statement.m_nAllocBars, 0.0f);
    ind.m_nNextInfoID = 1;
    const nytest::Reading r = nytest::ReadValue(ind, text, &statement);
    std::string code, expected;
    if (head == "text" && in >> code && std::getline(in, expected)) {
        EXPECT_EQ(r.code, CodeNamed(code));
        EXPECT_EQ("\"" + statement.m_strDrawText + "\"", expected.substr(expected.find('"')));
        return;
    }
    std::vector<std::string> items;
    for (std::string word; in >> word;) items.push_back(word);
    const bool coded = !items.empty() && items[0].find_first_of(":=") == std::string::npos;
    ASSERT_EQ(r.code, coded ? CodeNamed(items[0]) : NY_EVAL_OK);
    if (r.code != NY_EVAL_OK) return;
    std::vector<Values> fields(4, Values(statement.m_nAllocBars, 0.0f));
    for (size_t k = coded ? 1 : 0; k < items.size(); ++k) {
        if (items[k].back() != ':') {
            CheckDrawItem(statement, items[k]);
            continue;
        }
        Values values;
        while (k + 1 < items.size() && items[k + 1].find_first_of(":=") == std::string::npos)
            values.push_back(std::strtof(items[++k].c_str(), nullptr));
        const std::string key = items[k - values.size()];
        if (key == "out:") {
            EXPECT_EQ(Values(r.values.begin(), r.values.begin() + values.size()), values);
        } else {
            fields.at(std::stoi(key.substr(1))) = values;
        }
    }
    for (int field = 0; field < 4; ++field)
        for (size_t i = 0; i < std::min<size_t>(fields[field].size(), statement.m_nAllocBars); ++i)
            EXPECT_EQ(statement.m_pDrawData[4 * i + field], fields[field][i]) << "f" << field << " bar " << i;
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
    std::unique_ptr<CIndicator> ind;
    std::unique_ptr<TempInstallation> home;
    CExpression statement;
    std::vector<CHisDay> bars;
    int rows = 0;
    testcases::ForEachRow("engine/" + name, [&](const std::string& line) {
        if (std::string text, result; testcases::SplitAtArrow(ny::Utf8ToGbk(line), &text, &result)) {
            ASSERT_TRUE(ind) << "a row before the first bars";
            CheckRow(*ind, statement, text, result);
            ++rows;
            return;
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
        } else if (word == "index" && in >> path) {
            std::vector<CHisDay> days;  // DATE:CLOSE:ADVANCES:DECLINES
            for (std::string day; in >> day;) {
                std::replace(day.begin(), day.end(), ':', ' ');
                std::istringstream fields(day);
                int date = 0, advances = 0, declines = 0;
                float close = 0;
                fields >> date >> close >> advances >> declines;
                days.push_back({.m_lTime = date, .m_fHigh = close + 10, .m_fClose = close, .m_fVolume = 5000,
                                .m_lAdvDec = advances + declines * 1024});
            }
            home->Write(path, ny::EncodeBars(days));
        } else if (int bar, advances, declines; word == "advdec" && in >> bar >> advances >> declines) {
            bars.at(bar).m_lAdvDec = advances + declines * 1024;
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
        } else if (int date, time; word == "clock" && in >> date >> time) {
            CClockModule::SetClock(date, time);
        } else if (word == "stamps") {
            for (CHisDay& bar : bars) in >> bar.m_lTime;
        } else if (word == "column" && in >> name) {
            for (CHisDay& bar : bars) in >> bar.*nytest::FieldNamed(name);
        } else if (word == "drawstart") {
            in >> ind->m_nDrawStart;
        } else if (short value; word == "param" && in >> name >> value) {
            nytest::AddParam(*ind, name, value);
            for (std::string period; in >> period >> value;) ind->m_arParams.back()->SetParam(PeriodNamed(period), value);
        } else if (short first, end; word == "series" && in >> name >> first >> end) {
            nytest::AddSeries(*ind, name, Numbers(in), first, end);
        } else {
            ADD_FAILURE() << "not understood";
        }
    });
    CClockModule::UseSystemClock();
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
