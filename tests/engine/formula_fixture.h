#pragma once
// Builds a formula from "NAME:TEXT" statements and runs it over bars, the way the picker and the
// chart view do: Change, bars, AllocMem, Calc.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "engine/eval_code.h"
#include "engine/eval_context.h"
#include "model/indicator.h"

namespace nytest {

// Bars with open = close - 0.5, high = close + 1, low = close - 1, volume = 100 x close and
// amount = 1000 x close; dates count up from 20240102.
inline std::vector<CHisDay> MakeBars(const std::vector<float>& closes) {
    std::vector<CHisDay> bars;
    for (const float close : closes)
        bars.push_back({.m_lTime = 20240102 + static_cast<int>(bars.size()), .m_fOpen = close - 0.5f, .m_fHigh = close + 1,
                        .m_fLow = close - 1, .m_fClose = close, .m_fAmount = close * 1000, .m_fVolume = close * 100});
    return bars;
}

// The fields of a bar by name, for bars written and checked as text.
inline float CHisDay::*FieldNamed(const std::string& name) {
    static const std::pair<const char*, float CHisDay::*> kFields[] = {
        {"open", &CHisDay::m_fOpen},     {"high", &CHisDay::m_fHigh},   {"low", &CHisDay::m_fLow},
        {"close", &CHisDay::m_fClose},   {"volume", &CHisDay::m_fVolume}, {"pre", &CHisDay::m_fPreClose},
        {"capital", &CHisDay::m_fCapital}};
    for (const auto& [known, field] : kFields)
        if (name == known) return field;
    ADD_FAILURE() << "no field " << name;
    return &CHisDay::m_fClose;
}

// Closes 1, 2, 3, ... n.
inline std::vector<CHisDay> RisingBars(int n) {
    std::vector<float> closes;
    for (int i = 1; i <= n; ++i) closes.push_back(static_cast<float>(i));
    return MakeBars(closes);
}

// A parameter with its range and default value.
inline CParam MakeParam(const std::string& name, short min, short max, short value) {
    CParam param;
    param.m_strName = name;
    param.m_nMin = min;
    param.m_nMax = max;
    param.m_nDefault = value;
    return param;
}

// A parameter with its default value.
inline void AddParam(CIndicator& ind, const std::string& name, short value) {
    auto* param = new CParam;
    param->m_strName = name;
    param->m_nDefault = value;
    ind.m_arParams.push_back(param);
}

// A computed statement of the given values, valid on bars first..end-1, for use by name.
inline CExpression* AddSeries(CIndicator& ind, const std::string& name, const std::vector<float>& values,
                      short first, short end) {
    auto* expr = new CExpression;
    expr->m_strName = name;
    expr->AllocMem(static_cast<short>(values.size()));
    std::copy(values.begin(), values.end(), expr->m_pData);
    expr->m_nFirst = first;
    expr->m_nEnd = end;
    expr->m_cIsSeries = 1;
    expr->m_cComputed = 1;
    ind.m_arExpressions.push_back(expr);
    return expr;
}

struct Statement {
    std::string name;
    std::string text;
};

inline void AddStatement(CIndicator& ind, const Statement& statement) {
    auto* expr = new CExpression;
    expr->m_strName = statement.name;
    expr->m_strText = statement.text;
    ind.m_arExpressions.push_back(expr);
}

// A formula of a name and kind with the given statements, for the library or the picker (the
// last statement is a condition's verdict).
inline std::unique_ptr<CIndicator> MakeFormula(const std::vector<Statement>& statements, const std::string& name = "T",
                                               short kind = NY_KIND_CONDITION) {
    auto formula = std::make_unique<CIndicator>();
    formula->m_strName = name;
    formula->m_MainType = kind;
    for (const Statement& statement : statements) AddStatement(*formula, statement);
    return formula;
}

class Formula {
public:
    Formula(std::initializer_list<Statement> statements) {
        for (const Statement& statement : statements) Add(statement);
    }
    void Add(const Statement& statement) { AddStatement(ind, statement); }
    void AddParam(const std::string& name, short value) {
        nytest::AddParam(ind, name, value);
        ind.m_arParams.back()->m_nMin = -100;
        ind.m_arParams.back()->m_nMax = 1000;
    }

    int Run(std::vector<CHisDay> newBars, short drawStart = 0) {
        bars = std::move(newBars);
        const short count = static_cast<short>(bars.size());
        ind.Change();
        ind.m_pHisDay = bars.data();
        ind.m_nBarCount = count;
        ind.m_nDrawStart = drawStart;
        ind.m_nDrawEnd = count;
        ind.AllocMem(count);
        return ind.Calc(0, count);
    }

    const CExpression& operator[](const std::string& name) const { return *ind.Find(name); }
    float At(const std::string& name, int bar) const { return ind.Find(name)->m_pData[bar]; }

    CIndicator ind;
    std::vector<CHisDay> bars;
};

// What one run leaves in a statement: computed or not, the first bar of its range (kAnyFirst: not
// looked at) and values at some bars.
constexpr short kAnyFirst = -1;
struct Outcome {
    const char* name;
    char computed;
    short first;
    std::vector<std::pair<int, float>> values;  // bar, value
};
// A formula run over bars from drawStart (the first bar the market may be read from), and what
// it must leave in its statements.
struct RunCase {
    const char* what;
    std::vector<Statement> statements;
    std::vector<CHisDay> bars;
    short drawStart;
    std::vector<Outcome> outcomes;
};
inline void ExpectRuns(const std::vector<RunCase>& cases) {
    for (const RunCase& c : cases) {
        Formula f({});
        for (const Statement& statement : c.statements) f.Add(statement);
        f.Run(c.bars, c.drawStart);
        for (const Outcome& o : c.outcomes) {
            EXPECT_EQ(f[o.name].m_cComputed, o.computed) << c.what << ": " << o.name;
            if (o.first != kAnyFirst) {
                EXPECT_EQ(f[o.name].m_nFirst, o.first) << c.what << ": " << o.name;
            }
            for (const auto& [bar, value] : o.values) EXPECT_EQ(f.At(o.name, bar), value) << c.what << ": " << bar;
        }
    }
}

// Evaluates one expression text alone over the bars and returns the code of CalExp; the value
// and the range are left in the out parameters. A draw command needs the statement it fills.
struct Reading {
    char code = 0;
    char isSeries = 0;
    short from = 0;
    short to = 0;
    std::vector<float> values;
};

inline Reading ReadValue(CIndicator& ind, const std::string& text, CExpression* expr = nullptr) {
    Reading reading;
    char line[600] = {};
    text.copy(line, std::min<size_t>(text.size(), 520));
    reading.values.assign(std::max<int>(ind.m_nBarCount, 1), 0.0f);
    reading.from = 0;
    reading.to = static_cast<short>(ind.m_nBarCount - 1);
    ind.Context().m_nCurFrom = ind.m_nDrawStart;
    ind.Context().m_nCurTo = ind.m_nDrawEnd;
    reading.isSeries = 1;
    reading.code = ind.CalExp(line, reading.values.data(), &reading.from, &reading.to,
                              &reading.isSeries, expr);
    return reading;
}

// Reads a condition text with the condition grammar, closed by ',' as a function argument is;
// the truth of each bar is left in the values.
inline Reading ReadCondition(CIndicator& ind, const std::string& text) {
    Reading cond;
    std::vector<char> line(text.begin(), text.end());
    line.push_back(',');
    line.push_back(';');
    line.push_back('\0');
    std::vector<char> truth(std::max<int>(ind.m_nBarCount, 1), 0);
    cond.to = static_cast<short>(ind.m_nBarCount - 1);
    ind.Context().m_nCurFrom = ind.m_nDrawStart;
    ind.Context().m_nCurTo = ind.m_nDrawEnd;
    ind.Context().m_pCursor = line.data();
    cond.isSeries = 1;
    cond.code = ind.ReadLogical(truth.data(), &cond.from, &cond.to, &cond.isSeries);
    cond.values.assign(truth.begin(), truth.end());
    return cond;
}

// Puts bars into a formula object without running it, for direct readings.
inline void AttachBars(CIndicator& ind, std::vector<CHisDay>& bars, short drawStart = 0) {
    ind.m_pHisDay = bars.data();
    ind.m_nBarCount = static_cast<short>(bars.size());
    ind.m_nDrawStart = drawStart;
    ind.m_nDrawEnd = static_cast<short>(bars.size());
}

}  // namespace nytest
