#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "model/file_stream.h"
#include "model/formula_file.h"
#include "model/indicator.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes SaveBytes(const CIndicator& formula, BOOL bLong) {
    ny::MemoryStream stream;
    formula.Save(stream, bLong);
    return stream.Bytes();
}

void LoadBytes(CIndicator& formula, const Bytes& bytes, BOOL bLong) {
    ny::MemoryStream stream(bytes);
    formula.Load(stream, bLong);
}

int Short(const Bytes& b, size_t at) { return static_cast<short>(b[at] | b[at + 1] << 8); }
int Int(const Bytes& b, size_t at) {
    return static_cast<int>(b[at] | b[at + 1] << 8 | b[at + 2] << 16 | static_cast<unsigned>(b[at + 3]) << 24);
}
std::string Text(const Bytes& b, size_t at) { return std::string(reinterpret_cast<const char*>(&b[at])); }

CExpression* Statement(const char* name, const char* text, short type, int color, short width) {
    auto* expr = new CExpression;
    expr->m_strName = name;
    expr->m_strText = text;
    expr->m_nType = type;
    expr->m_lColor = color;
    expr->m_nWidth = width;
    return expr;
}

CParam* Param(const char* name, short max, short min, short def) {
    auto* param = new CParam;
    param->m_strName = name;
    param->m_nMax = max;
    param->m_nMin = min;
    param->m_nDefault = def;
    return param;
}

CAxeValue* Axe(short value) {
    auto* axe = new CAxeValue;
    axe->m_nValue = value;
    axe->m_cCritical = 1;
    return axe;
}

// A formula with every stored field set to something other than its default.
void FillFormula(CIndicator& f) {
    f.m_strName = "均线MA";
    f.m_strTitle = "移动平均线";
    f.m_strSource = "MA1:MA(CLOSE,N);\r\nMA2:MA(CLOSE,M);";
    f.m_cDrawPos = 1;
    f.m_cHasPassword = 1;
    f.m_strUsage = "用法注释";
    f.m_strExtra = "N日均线上穿M日均线";
    f.m_strPassword = "secret";
    f.m_strAxes = "20;80";
    f.m_SysIndex = 3;
    f.m_MainType = 1;
    f.m_SubType = -25;
    f.m_arExpressions.push_back(Statement("MA1", "MA(CLOSE,N)", 1, 0x00FF00FF, 2));
    f.m_arExpressions.push_back(Statement("", "CROSS(MA1,MA2)", 0, -1, -3));
    f.m_arParams.push_back(Param("N", 250, -250, 5));
    f.m_arParams.back()->m_nPeriodValue[1] = 7;
    f.m_arParams.back()->m_nPeriodValue[10] = -9;
    f.m_arParams.push_back(Param("M", 32767, -32768, 10));
    f.m_arAxes.push_back(Axe(20));
    f.m_arAxes.push_back(Axe(-80));
}

void ExpectSameDefinition(const CIndicator& a, const CIndicator& b) {
    EXPECT_EQ(a.m_strName, b.m_strName);
    EXPECT_EQ(a.m_strTitle, b.m_strTitle);
    EXPECT_EQ(a.m_strSource, b.m_strSource);
    EXPECT_EQ(a.m_cDrawPos, b.m_cDrawPos);
    EXPECT_EQ(a.m_cHasPassword, b.m_cHasPassword);
    EXPECT_EQ(a.m_strUsage, b.m_strUsage);
    EXPECT_EQ(a.m_strExtra, b.m_strExtra);
    EXPECT_EQ(a.m_strPassword, b.m_strPassword);
    EXPECT_EQ(a.m_strAxes, b.m_strAxes);
    EXPECT_EQ(a.m_SysIndex, b.m_SysIndex);
    EXPECT_EQ(a.m_MainType, b.m_MainType);
    EXPECT_EQ(a.m_SubType, b.m_SubType);
    ASSERT_EQ(a.m_arExpressions.size(), b.m_arExpressions.size());
    for (size_t i = 0; i < a.m_arExpressions.size(); ++i) {
        const CExpression& x = *a.m_arExpressions[i];
        const CExpression& y = *b.m_arExpressions[i];
        EXPECT_EQ(x.m_strName, y.m_strName);
        EXPECT_EQ(x.m_strText, y.m_strText);
        EXPECT_EQ(x.m_nType, y.m_nType);
        EXPECT_EQ(x.m_lColor, y.m_lColor);
        EXPECT_EQ(x.m_nWidth, y.m_nWidth);
    }
    ASSERT_EQ(a.m_arParams.size(), b.m_arParams.size());
    for (size_t i = 0; i < a.m_arParams.size(); ++i) {
        const CParam& x = *a.m_arParams[i];
        const CParam& y = *b.m_arParams[i];
        EXPECT_EQ(x.m_strName, y.m_strName);
        EXPECT_EQ(x.m_nMax, y.m_nMax);
        EXPECT_EQ(x.m_nMin, y.m_nMin);
        EXPECT_EQ(x.m_nDefault, y.m_nDefault);
        for (int p = 1; p <= 10; ++p) EXPECT_EQ(x.m_nPeriodValue[p], y.m_nPeriodValue[p]);
    }
    ASSERT_EQ(a.m_arAxes.size(), b.m_arAxes.size());
    for (size_t i = 0; i < a.m_arAxes.size(); ++i)
        EXPECT_EQ(a.m_arAxes[i]->m_nValue, b.m_arAxes[i]->m_nValue);
}

TEST(FormulaRecord, EmptyFormulaTakes4013And12205Bytes) {
    CIndicator formula;
    const Bytes shortForm = SaveBytes(formula, FALSE);
    const Bytes longForm = SaveBytes(formula, TRUE);
    ASSERT_EQ(shortForm.size(), 4013u);
    ASSERT_EQ(longForm.size(), 12205u);
    for (size_t at : {4007u, 4009u, 4011u}) EXPECT_EQ(Short(shortForm, at), 0) << at;
    for (size_t at : {12199u, 12201u, 12203u}) EXPECT_EQ(Short(longForm, at), 0) << at;
}

TEST(FormulaRecord, FieldsSitAtTheirOffsetsInTheShortForm) {
    CIndicator formula;
    FillFormula(formula);
    const Bytes b = SaveBytes(formula, FALSE);
    // Head of 4,009 bytes, 2 statements of 552, count and 2 parameters of 58, count and 2 axes.
    ASSERT_EQ(b.size(), 4009u + 2 * 552 + 2 + 2 * 58 + 2 + 2 * 2);
    EXPECT_EQ(Text(b, 0), "均线MA");
    EXPECT_EQ(Text(b, 32), "移动平均线");
    EXPECT_EQ(Text(b, 160), formula.m_strSource);
    EXPECT_EQ(b[2208], 1);  // draw position
    EXPECT_EQ(b[2209], 1);  // password flag
    EXPECT_EQ(Text(b, 2210), "用法注释");
    EXPECT_EQ(Text(b, 3234), "N日均线上穿M日均线");
    EXPECT_EQ(Text(b, 3746), "secret");
    EXPECT_EQ(Text(b, 3874), "20;80");
    EXPECT_EQ(b[4002], 3);
    EXPECT_EQ(Short(b, 4003), 1);
    EXPECT_EQ(Short(b, 4005), -25);
    EXPECT_EQ(Short(b, 4007), 2);
    // First statement.
    EXPECT_EQ(Text(b, 4009), "MA1");
    EXPECT_EQ(Text(b, 4009 + 32), "MA(CLOSE,N)");
    EXPECT_EQ(Short(b, 4009 + 544), 1);
    EXPECT_EQ(Int(b, 4009 + 546), 0x00FF00FF);
    EXPECT_EQ(Short(b, 4009 + 550), 2);
    // Second statement: no name, no colour.
    EXPECT_EQ(b[4561], 0);
    EXPECT_EQ(Int(b, 4561 + 546), -1);
    // Parameters.
    const size_t params = 4009 + 2 * 552;
    EXPECT_EQ(Short(b, params), 2);
    EXPECT_EQ(Text(b, params + 2), "N");
    EXPECT_EQ(Short(b, params + 2 + 32), 250);
    EXPECT_EQ(Short(b, params + 2 + 34), -250);
    EXPECT_EQ(Short(b, params + 2 + 36), 5);
    EXPECT_EQ(Short(b, params + 2 + 38), 7);       // period 1
    EXPECT_EQ(Short(b, params + 2 + 38 + 18), -9);  // period 10
    EXPECT_EQ(Short(b, params + 2 + 58 + 32), 32767);
    EXPECT_EQ(Short(b, params + 2 + 58 + 34), -32768);
    // Axes.
    const size_t axes = params + 2 + 2 * 58;
    EXPECT_EQ(Short(b, axes), 2);
    EXPECT_EQ(Short(b, axes + 2), 20);
    EXPECT_EQ(Short(b, axes + 4), -80);
}

TEST(FormulaRecord, LongFormMovesTheFieldsBehindTheSource) {
    CIndicator formula;
    FillFormula(formula);
    const Bytes b = SaveBytes(formula, TRUE);
    EXPECT_EQ(b[160 + 10240], 1);
    EXPECT_EQ(Text(b, 162 + 10240), "用法注释");
    EXPECT_EQ(Short(b, 1955 + 10240), 1);
    EXPECT_EQ(Short(b, 1959 + 10240), 2);
    EXPECT_EQ(Text(b, 1961 + 10240), "MA1");
}

TEST(FormulaRecord, EveryDefinitionFieldSurvivesBothForms) {
    CIndicator original;
    FillFormula(original);
    for (BOOL bLong : {FALSE, TRUE}) {
        CIndicator loaded;
        LoadBytes(loaded, SaveBytes(original, bLong), bLong);
        ExpectSameDefinition(original, loaded);
        // What the record doesn't hold takes its default.
        for (const CAxeValue* axe : loaded.m_arAxes) EXPECT_EQ(axe->m_cCritical, 0);
        EXPECT_EQ(loaded.m_IsEditable, 1);
        EXPECT_EQ(loaded.m_nBaseSet, 0);
        for (const CExpression* expr : loaded.m_arExpressions) {
            EXPECT_EQ(expr->m_pData, nullptr);
            EXPECT_EQ(expr->m_pPoints, nullptr);
            EXPECT_EQ(expr->m_cComputed, 0);
            EXPECT_EQ(expr->m_nFirst, 30000);
        }
    }
}

TEST(FormulaRecord, SubRecordsRoundTripOnTheirOwn) {
    CParam param;
    param.m_strName = "周期";
    param.m_nMax = 100;
    param.m_nMin = 1;
    param.m_nDefault = 14;
    param.SetParam(3, 21);
    ny::MemoryStream stream;
    param.Save(stream);
    ASSERT_EQ(stream.Bytes().size(), 58u);
    CParam back;
    back.Load(stream);
    EXPECT_EQ(back.m_strName, "周期");
    EXPECT_EQ(back.GetParam(3), 21);
    EXPECT_EQ(back.GetParam(1), 14);
    EXPECT_EQ(back.m_nMax, 100);
    EXPECT_EQ(back.m_nMin, 1);

    std::unique_ptr<CExpression> expr(Statement("DIF", "EMA(CLOSE,12)-EMA(CLOSE,26)", 1, 255, 1));
    ny::MemoryStream exprStream;
    expr->Save(exprStream);
    ASSERT_EQ(exprStream.Bytes().size(), 552u);
    CExpression exprBack;
    exprBack.Load(exprStream);
    EXPECT_EQ(exprBack.m_strText, "EMA(CLOSE,12)-EMA(CLOSE,26)");
    EXPECT_EQ(exprBack.m_lColor, 255);

    CAxeValue axe;
    axe.m_nValue = -1234;
    ny::MemoryStream axeStream;
    axe.Save(axeStream);
    ASSERT_EQ(axeStream.Bytes().size(), 2u);
    CAxeValue axeBack;
    axeBack.Load(axeStream);
    EXPECT_EQ(axeBack.m_nValue, -1234);
}

TEST(FormulaText, NameOf31BytesSurvivesAndLongerTextIsCut) {
    CIndicator formula;
    formula.m_strName = std::string(31, 'N');
    CIndicator loaded;
    LoadBytes(loaded, SaveBytes(formula, FALSE), FALSE);
    EXPECT_EQ(loaded.m_strName, std::string(31, 'N'));

    formula.m_strName = std::string(40, 'N');
    const Bytes b = SaveBytes(formula, FALSE);
    EXPECT_EQ(b[31], 0);
    EXPECT_EQ(b[32], 0);  // the title field starts clean
    CIndicator cut;
    LoadBytes(cut, b, FALSE);
    EXPECT_EQ(cut.m_strName, std::string(31, 'N'));
}

TEST(FormulaText, CuttingNeverSplitsADoubleByteCharacter) {
    std::string sixteen;
    for (int i = 0; i < 16; ++i) sixteen += "指";
    CIndicator formula;
    formula.m_strName = sixteen;  // 32 bytes: the 16th character doesn't fit
    CIndicator loaded;
    LoadBytes(loaded, SaveBytes(formula, FALSE), FALSE);
    EXPECT_EQ(loaded.m_strName, sixteen.substr(0, 30));

    formula.m_strName = "A" + sixteen;  // 33 bytes: "A" and 15 characters fill 31
    CIndicator loaded2;
    LoadBytes(loaded2, SaveBytes(formula, FALSE), FALSE);
    EXPECT_EQ(loaded2.m_strName, "A" + sixteen.substr(0, 30));
}

TEST(FormulaText, LoadStopsAtTheFirstZeroAndDropsThe32ndByteOfAFullField) {
    CIndicator formula;
    Bytes b = SaveBytes(formula, FALSE);
    std::memset(b.data(), 'X', 32);                 // name field without a zero
    std::memset(b.data() + 32, 'T', 128);            // title field without a zero
    std::memset(b.data() + 2210, 'U', 1024);         // usage field without a zero
    const char password[] = "pw\0garbage";         // bytes behind the zero don't count
    std::memcpy(b.data() + 3746, password, sizeof(password));
    CIndicator loaded;
    LoadBytes(loaded, b, FALSE);
    EXPECT_EQ(loaded.m_strPassword, "pw");
    EXPECT_EQ(loaded.m_strName, std::string(31, 'X'));
    EXPECT_EQ(loaded.m_strTitle, std::string(127, 'T'));
    EXPECT_EQ(loaded.m_strUsage, std::string(1023, 'U'));
}

TEST(FormulaText, ShortFormKeeps2047BytesOfSource) {
    CIndicator formula;
    formula.m_strSource = std::string(3000, 'S');
    CIndicator shortBack;
    LoadBytes(shortBack, SaveBytes(formula, FALSE), FALSE);
    EXPECT_EQ(shortBack.m_strSource, std::string(2047, 'S'));
    formula.m_strSource = std::string(10239, 'L');
    CIndicator longBack;
    LoadBytes(longBack, SaveBytes(formula, TRUE), TRUE);
    EXPECT_EQ(longBack.m_strSource.size(), 10239u);
}

// Statements that a cut at `length` bytes leaves: each record begun gets an object.
size_t StatementsBefore(size_t length, size_t head, size_t statements) {
    if (length <= head) return 0;
    return std::min(statements, (length - head + 551) / 552);
}

TEST(DamagedRecord, TruncationAtEveryByteLoadsWhatIsThere) {
    CIndicator original;
    FillFormula(original);
    const Bytes full = SaveBytes(original, FALSE);
    for (size_t length = 0; length <= full.size(); ++length) {
        CIndicator loaded;
        LoadBytes(loaded, Bytes(full.begin(), full.begin() + length), FALSE);
        ASSERT_EQ(loaded.m_arExpressions.size(), StatementsBefore(length, 4009, 2)) << length;
        if (length >= 32) {
            EXPECT_EQ(loaded.m_strName, original.m_strName) << length;
        }
        if (length < 4009) {
            EXPECT_TRUE(loaded.m_arParams.empty()) << length;
        }
        if (length == full.size()) ExpectSameDefinition(original, loaded);
    }
}

TEST(DamagedRecord, CutInsideAStatementKeepsItsLeadingFieldsAndZeroesTheRest) {
    CIndicator original;
    FillFormula(original);
    const Bytes full = SaveBytes(original, FALSE);
    CIndicator loaded;
    LoadBytes(loaded, Bytes(full.begin(), full.begin() + 4009 + 40), FALSE);
    ASSERT_EQ(loaded.m_arExpressions.size(), 1u);
    EXPECT_EQ(loaded.m_arExpressions[0]->m_strName, "MA1");
    EXPECT_EQ(loaded.m_arExpressions[0]->m_strText, "MA(CLOSE");
    EXPECT_EQ(loaded.m_arExpressions[0]->m_lColor, 0);
    EXPECT_EQ(loaded.m_arExpressions[0]->m_nWidth, 0);
}

TEST(DamagedRecord, HugeCountStopsAtTheEndOfTheStream) {
    CIndicator original;
    FillFormula(original);
    Bytes b = SaveBytes(original, FALSE);
    b[4007] = 0xFF;
    b[4008] = 0x7F;  // 32767 statements announced, 2 present and then 124 bytes more
    CIndicator loaded;
    LoadBytes(loaded, b, FALSE);
    // The 124 bytes of counts, parameters and axes make one more, partial, statement.
    EXPECT_EQ(loaded.m_arExpressions.size(), 3u);
    EXPECT_TRUE(loaded.m_arParams.empty());
    EXPECT_TRUE(loaded.m_arAxes.empty());
}

TEST(DamagedRecord, NegativeCountLoadsNothingOfThatKind) {
    CIndicator empty;
    Bytes b = SaveBytes(empty, FALSE);
    b[4007] = 0xFF;
    b[4008] = 0xFF;  // -1 statements
    CParam param;
    param.m_strName = "N";
    ny::MemoryStream tail;
    param.Save(tail);
    b[4009] = 1;  // one parameter follows
    b.insert(b.begin() + 4011, tail.Bytes().begin(), tail.Bytes().end());
    CIndicator loaded;
    LoadBytes(loaded, b, FALSE);
    EXPECT_TRUE(loaded.m_arExpressions.empty());
    ASSERT_EQ(loaded.m_arParams.size(), 1u);
    EXPECT_EQ(loaded.m_arParams[0]->m_strName, "N");
}

TEST(FileHeader, WritesReservedCountAndMagic) {
    ny::MemoryStream stream;
    ny::WriteFormulaHeader(stream, 1, 3);
    const Bytes expected = {1, 0, 3, 0, 'm', 'y', 'o', 'k', 0, 0, 0, 0};
    EXPECT_EQ(stream.Bytes(), expected);
    const ny::FormulaFileHeader header = ny::ReadFormulaHeader(stream);
    EXPECT_TRUE(header.magicOk);
    EXPECT_EQ(header.reserved, 1);
    EXPECT_EQ(header.count, 3);
}

TEST(FileHeader, OnlyTheFirstFourMagicBytesCount) {
    ny::MemoryStream ok(Bytes{0, 0, 0, 0, 'm', 'y', 'o', 'k', 'x', 'y', 'z', 'w'});
    EXPECT_TRUE(ny::ReadFormulaHeader(ok).magicOk);
    ny::MemoryStream bad(Bytes{0, 0, 0, 0, 'm', 'y', 'o', 'K', 0, 0, 0, 0});
    EXPECT_FALSE(ny::ReadFormulaHeader(bad).magicOk);
    ny::MemoryStream cut(Bytes{0, 0, 1, 0, 'm', 'y', 'o'});
    EXPECT_FALSE(ny::ReadFormulaHeader(cut).magicOk);
}

}  // namespace
