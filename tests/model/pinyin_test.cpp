#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "host/group.h"
#include "host/pinyin.h"
#include "model/library.h"

namespace {

std::vector<CString> Codes(const CString& name) {
    CIndicator formula;
    formula.m_strName = name;
    formula.m_arPYCodes = {"stale"};
    g_MyMakeIndicatorPY(&formula);
    return formula.m_arPYCodes;
}

std::set<CString> CodeSet(const CString& name) {
    const std::vector<CString> codes = Codes(name);
    return std::set<CString>(codes.begin(), codes.end());
}

using List = std::vector<CString>;

TEST(PinyinCodes, LettersAndDigitsGoInAsTheyAre) {
    EXPECT_EQ(Codes("ABC"), List{"ABC"});
    EXPECT_EQ(Codes("MA5"), List{"MA5"});
    EXPECT_EQ(Codes("macd"), List{"MACD"});
    EXPECT_EQ(Codes("Boll-m (2)"), List{"BOLLM2"});
    EXPECT_EQ(Codes(""), List{});
    EXPECT_EQ(Codes("+-*/"), List{});
}

TEST(PinyinCodes, EachChineseCharacterAddsItsInitial) {
    EXPECT_EQ(Codes("指标"), List{"ZB"});
    EXPECT_EQ(Codes("均线MA"), List{"JXMA"});
    EXPECT_EQ(Codes("资金流向"), List{"ZJLX"});
    EXPECT_EQ(Codes("能量指标"), List{"NLZB"});
    EXPECT_EQ(Codes("K线"), List{"KX"});
}

TEST(PinyinCodes, BothEndsOfLevelOneAndLevelTwo) {
    EXPECT_EQ(Codes("啊"), List{"A"});   // B0A1, first of level 1
    EXPECT_EQ(Codes("座"), List{"Z"});   // D7F9, last of level 1
    EXPECT_EQ(Codes("亍"), List{"C"});   // D8A1, first of level 2
    EXPECT_EQ(Codes("齄"), List{"Z"});   // F7FE, last of level 2
}

TEST(PinyinCodes, LevelTwoCharactersGetTheirInitials) {
    EXPECT_EQ(Codes("鑫"), List{"X"});
    EXPECT_EQ(Codes("琪"), List{"Q"});
    EXPECT_EQ(Codes("昊"), List{"H"});
    EXPECT_EQ(Codes("炜A"), List{"WA"});
}

TEST(PinyinCodes, APolyphoneGivesOneStringPerReading) {
    EXPECT_EQ(CodeSet("长线"), (std::set<CString>{"CX", "ZX"}));
    EXPECT_EQ(Codes("长线").size(), 2u);
    EXPECT_EQ(CodeSet("行情"), (std::set<CString>{"HQ", "XQ"}));
    EXPECT_EQ(CodeSet("A重B"), (std::set<CString>{"ACB", "AZB"}));
}

TEST(PinyinCodes, TwoPolyphonesGiveEveryCombination) {
    EXPECT_EQ(CodeSet("重长"), (std::set<CString>{"CC", "CZ", "ZC", "ZZ"}));
    EXPECT_EQ(Codes("重长").size(), 4u);
}

TEST(PinyinCodes, ThreeReadingsGiveThreeStringsWithoutRepeats) {
    // 咯: ge, ka, lo
    EXPECT_EQ(CodeSet("X咯"), (std::set<CString>{"XG", "XK", "XL"}));
    EXPECT_EQ(Codes("X咯").size(), 3u);
}

TEST(PinyinCodes, BytesOutsideGb2312AddNothing) {
    EXPECT_EQ(Codes("A\x81\x40" "B"), List{"AB"});  // GBK extension, before level 1
    EXPECT_EQ(Codes("A\xB1\x40" "B"), List{"AB"});  // GBK extension code between two level-1 runs
    EXPECT_EQ(Codes("AB\xB0"), List{"AB"});          // a lead byte at the end
    EXPECT_EQ(Codes("\xA1\xA1" "C"), List{"C"});     // full-width blank
}

TEST(PinyinCodes, AZeroByteEndsTheName) {
    EXPECT_EQ(Codes(CString("AB\0CD", 5)), List{"AB"});
}

TEST(PinyinTables, EveryGb2312CharacterHasOneLetterPerReading) {
    for (unsigned lead = 0xB0; lead <= 0xF7; ++lead) {
        for (unsigned trail = 0xA1; trail <= 0xFE; ++trail) {
            if (lead == 0xD7 && trail > 0xF9) continue;  // the unused end of level 1
            const char name[] = {static_cast<char>(lead), static_cast<char>(trail), 0};
            const std::vector<CString> codes = Codes(name);
            ASSERT_FALSE(codes.empty()) << std::hex << lead << trail;
            for (const CString& code : codes) {
                ASSERT_EQ(code.size(), 1u) << std::hex << lead << trail;
                ASSERT_TRUE(code[0] >= 'A' && code[0] <= 'Z' && code[0] != 'I' && code[0] != 'U' &&
                            code[0] != 'V') << std::hex << lead << trail;
            }
            ASSERT_EQ(std::set<CString>(codes.begin(), codes.end()).size(), codes.size());
        }
    }
}

TEST(PinyinTables, CodeRunsAreOrderedAndDisjoint) {
    const std::string letters = "ABCDEFGHJKLMNOPQRSTWXYZ";
    auto code = [](const char* p) { return static_cast<unsigned char>(p[0]) << 8 | static_cast<unsigned char>(p[1]); };
    for (int i = 0; i < NY_PYCODE_ENTRIES; ++i) {
        const char* entry = g_MypPYCODE[i];
        EXPECT_EQ(entry[6], letters[i]);
        EXPECT_LE(code(entry), code(entry + 2));
        if (i > 0) {
            EXPECT_LT(code(g_MypPYCODE[i - 1] + 2), code(entry));
        }
    }
    EXPECT_EQ(code(g_MypPYCODE[0]), 0xB0A1);
    EXPECT_EQ(code(g_MypPYCODE[NY_PYCODE_ENTRIES - 1] + 2), 0xD7F9);
}

TEST(GroupPinyin, AppendAndDouble) {
    std::vector<CString> codes;
    CGroup::AppendPy(codes, 'A');
    EXPECT_EQ(codes, List{"A"});
    CGroup::AppendPy(codes, 'B');
    CGroup::DoublePy(codes, 'C');
    EXPECT_EQ(codes, (List{"AB", "AC"}));
    CGroup::DoublePy(codes, 'D');  // a third reading of the same character
    EXPECT_EQ(codes, (List{"AB", "AC", "AD"}));
    CGroup::AppendPy(codes, 'E');
    CGroup::DoublePy(codes, 'F');
    EXPECT_EQ(codes, (List{"ABE", "ACE", "ADE", "ABF", "ACF", "ADF"}));
}

}  // namespace
