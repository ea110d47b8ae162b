// Formula records and file headers byte by byte, and what a reader makes of damaged bytes.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "model/file_stream.h"
#include "model/formula_file.h"
#include "model/indicator.h"
#include "tests/model/filled_formula.h"

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

TEST(FormulaRecord, EmptyFormulaTakes4013And12205BytesWithZeroCounts) {
    CIndicator formula;
    for (const auto& [bLong, size] : {std::pair{FALSE, 4013u}, std::pair{TRUE, 12205u}}) {
        const Bytes b = SaveBytes(formula, bLong);
        ASSERT_EQ(b.size(), size);
        for (size_t at : {size - 6, size - 4, size - 2}) EXPECT_EQ(Short(b, at), 0) << at;
    }
}

TEST(FormulaRecord, FieldsSitAtTheirOffsetsInBothForms) {
    CIndicator formula;
    FillFormula(formula);
    for (const auto& [bLong, source] : {std::pair{FALSE, 2048}, std::pair{TRUE, 10240}}) {
        const Bytes b = SaveBytes(formula, bLong);
        const size_t s = source - 2048, head = 4009 + s, params = head + 2 * 552, axes = params + 2 + 2 * 58;
        ASSERT_EQ(b.size(), axes + 2 + 2 * 2);
        const std::pair<size_t, std::string> texts[] = {
            {0, "均线MA"}, {32, "移动平均线"}, {160, formula.m_strSource}, {2210 + s, "用法注释"},
            {3234 + s, "N日均线上穿M日均线"}, {3746 + s, "secret"}, {3874 + s, "20;80"}, {head, "MA1"},
            {head + 32, "MA(CLOSE,N)"}, {head + 552, ""}, {params + 2, "N"}};
        for (const auto& [at, text] : texts) EXPECT_EQ(Text(b, at), text) << at;
        const std::pair<size_t, int> shorts[] = {
            {4003 + s, 1}, {4005 + s, -25}, {4007 + s, 2}, {head + 544, 1}, {head + 550, 2},
            {params, 2}, {params + 2 + 32, 250}, {params + 2 + 34, -250}, {params + 2 + 36, 5},
            {params + 2 + 38, 7}, {params + 2 + 38 + 18, -9}, {params + 2 + 58 + 32, 32767},
            {params + 2 + 58 + 34, -32768}, {axes, 2}, {axes + 2, 20}, {axes + 4, -80}};
        for (const auto& [at, value] : shorts) EXPECT_EQ(Short(b, at), value) << at;
        // Draw position, password flag and system index are single bytes.
        EXPECT_EQ(std::tuple(b[2208 + s], b[2209 + s], b[4002 + s]), std::tuple(1, 1, 3));
        EXPECT_EQ(Int(b, head + 546), 0x00FF00FF);
        EXPECT_EQ(Int(b, head + 552 + 546), -1);
    }
}

TEST(FormulaRecord, EveryDefinitionFieldSurvivesBothFormsAndTheRestTakesDefaults) {
    CIndicator original;
    FillFormula(original);
    for (BOOL bLong : {FALSE, TRUE}) {
        CIndicator loaded;
        LoadBytes(loaded, SaveBytes(original, bLong), bLong);
        EXPECT_EQ(SaveBytes(loaded, bLong), SaveBytes(original, bLong));
        EXPECT_EQ(loaded.m_arParams[0]->GetParam(10), -9);
        for (const CAxeValue* axe : loaded.m_arAxes) EXPECT_EQ(axe->m_cCritical, 0);
        EXPECT_EQ(loaded.m_IsEditable, 1);
        EXPECT_EQ(loaded.m_nBaseSet, 0);
        for (const CExpression* expr : loaded.m_arExpressions)
            EXPECT_EQ(std::tuple(expr->m_pData, expr->m_pPoints, expr->m_cComputed, expr->m_nFirst),
                      std::tuple(nullptr, nullptr, 0, 30000));
    }
}

// Text longer than its field is cut to width - 1 bytes, never inside a double-byte character.
TEST(FormulaText, LongTextIsCutToItsField) {
    std::string sixteen;
    for (int i = 0; i < 16; ++i) sixteen += "指";
    const struct {
        std::string name, source;
        BOOL bLong;
        std::string name_back, source_back;
    } cases[] = {
        {std::string(31, 'N'), "S", FALSE, std::string(31, 'N'), "S"},
        {std::string(40, 'N'), "S", FALSE, std::string(31, 'N'), "S"},
        {sixteen, "S", FALSE, sixteen.substr(0, 30), "S"},
        {"A" + sixteen, "S", FALSE, "A" + sixteen.substr(0, 30), "S"},
        {"N", std::string(3000, 'S'), FALSE, "N", std::string(2047, 'S')},
        {"N", std::string(10239, 'L'), TRUE, "N", std::string(10239, 'L')},
    };
    for (const auto& c : cases) {
        CIndicator formula, loaded;
        formula.m_strName = c.name;
        formula.m_strSource = c.source;
        const Bytes b = SaveBytes(formula, c.bLong);
        EXPECT_EQ(b[31], 0);
        EXPECT_EQ(b[32], 0);  // the title field starts clean
        LoadBytes(loaded, b, c.bLong);
        EXPECT_EQ(loaded.m_strName, c.name_back);
        EXPECT_EQ(loaded.m_strSource, c.source_back);
    }
}

TEST(FormulaText, LoadStopsAtTheFirstZeroAndDropsTheLastByteOfAFullField) {
    Bytes b = SaveBytes(CIndicator(), FALSE);
    std::memset(b.data(), 'X', 32);          // name field without a zero
    std::memset(b.data() + 32, 'T', 128);    // title field without a zero
    std::memset(b.data() + 2210, 'U', 1024); // usage field without a zero
    const char password[] = "pw\0garbage";  // bytes behind the zero don't count
    std::memcpy(b.data() + 3746, password, sizeof(password));
    CIndicator loaded;
    LoadBytes(loaded, b, FALSE);
    EXPECT_EQ(std::tuple(loaded.m_strPassword, loaded.m_strName, loaded.m_strTitle, loaded.m_strUsage),
              std::tuple("pw", std::string(31, 'X'), std::string(127, 'T'), std::string(1023, 'U')));
}

TEST(DamagedRecord, TruncationAtEveryByteLoadsWhatIsThere) {
    CIndicator original;
    FillFormula(original);
    const Bytes full = SaveBytes(original, FALSE);
    for (size_t length = 0; length <= full.size(); ++length) {
        CIndicator loaded;
        LoadBytes(loaded, Bytes(full.begin(), full.begin() + length), FALSE);
        // Each statement record begun gets an object.
        const size_t statements = length <= 4009 ? 0 : std::min<size_t>(2, (length - 4009 + 551) / 552);
        ASSERT_EQ(loaded.m_arExpressions.size(), statements) << length;
        EXPECT_EQ(loaded.m_strName, length >= 32 ? original.m_strName : loaded.m_strName) << length;
        EXPECT_TRUE(length >= 4009 || loaded.m_arParams.empty()) << length;
        EXPECT_TRUE(length < full.size() || SaveBytes(loaded, FALSE) == full);
    }
    // A cut inside a statement keeps its leading fields and zeroes the rest.
    CIndicator cut;
    LoadBytes(cut, Bytes(full.begin(), full.begin() + 4009 + 40), FALSE);
    const CExpression& first = *cut.m_arExpressions[0];
    EXPECT_EQ(std::tuple(first.m_strName, first.m_strText, first.m_lColor, first.m_nWidth), std::tuple("MA1", "MA(CLOSE", 0, 0));
}

TEST(DamagedRecord, HugeCountStopsAtTheEndAndNegativeCountLoadsNothing) {
    CIndicator original;
    FillFormula(original);
    Bytes b = SaveBytes(original, FALSE);
    b[4007] = 0xFF, b[4008] = 0x7F;  // 32767 statements announced, 2 present and then 124 bytes more
    CIndicator huge;
    LoadBytes(huge, b, FALSE);
    // The 124 bytes of counts, parameters and axes make one more, partial, statement.
    EXPECT_EQ(huge.m_arExpressions.size(), 3u);
    EXPECT_TRUE(huge.m_arParams.empty());
    EXPECT_TRUE(huge.m_arAxes.empty());

    b = SaveBytes(CIndicator(), FALSE);
    b[4007] = 0xFF, b[4008] = 0xFF;  // -1 statements, then one parameter
    b[4009] = 1;
    ny::MemoryStream param;
    CParam n;
    n.m_strName = "N";
    n.Save(param);
    b.insert(b.begin() + 4011, param.Bytes().begin(), param.Bytes().end());
    CIndicator negative;
    LoadBytes(negative, b, FALSE);
    EXPECT_TRUE(negative.m_arExpressions.empty());
    ASSERT_EQ(negative.m_arParams.size(), 1u);
    EXPECT_EQ(negative.m_arParams[0]->m_strName, "N");
}

TEST(FileHeader, WritesReservedCountAndMagicAndReadsTheFirstFourMagicBytes) {
    ny::MemoryStream stream;
    ny::WriteFormulaHeader(stream, 1, 3);
    EXPECT_EQ(stream.Bytes(), (Bytes{1, 0, 3, 0, 'm', 'y', 'o', 'k', 0, 0, 0, 0}));
    const ny::FormulaFileHeader header = ny::ReadFormulaHeader(stream);
    EXPECT_EQ(std::tuple(header.magicOk, header.reserved, header.count), std::tuple(true, 1, 3));
    const std::pair<Bytes, bool> cases[] = {{{0, 0, 0, 0, 'm', 'y', 'o', 'k', 'x', 'y', 'z', 'w'}, true},
                                            {{0, 0, 0, 0, 'm', 'y', 'o', 'K', 0, 0, 0, 0}, false},
                                            {{0, 0, 1, 0, 'm', 'y', 'o'}, false}};
    for (const auto& [bytes, ok] : cases) {
        ny::MemoryStream in(bytes);
        EXPECT_EQ(ny::ReadFormulaHeader(in).magicOk, ok);
    }
}

}  // namespace
