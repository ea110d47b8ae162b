#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "host/group.h"
#include "host/pinyin.h"
#include "model/library.h"
#include "tests/case_file.h"

namespace {

std::vector<CString> Codes(const CString& name) {
    CIndicator formula;
    formula.m_strName = name;
    formula.m_arPYCodes = {"stale"};
    g_MyMakeIndicatorPY(&formula);
    return formula.m_arPYCodes;
}

using List = std::vector<CString>;

TEST(PinyinCodes, InitialsOfNames) {
    for (const testcases::Row& row : testcases::ReadRows("model/cases.txt", "pinyin")) {
        List codes = Codes(row.Gbk(0));
        std::sort(codes.begin(), codes.end());
        std::string joined;
        for (const CString& code : codes) joined += (joined.empty() ? "" : " ") + code;
        EXPECT_EQ(joined, row[1]) << row.where;
    }
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
