// The library: the sorted array, the start sequence of formula files, saving, export and import.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include "host/files.h"
#include "host/global.h"
#include "model/file_stream.h"
#include "model/formula_file.h"
#include "model/library.h"
#include "tests/case_file.h"
#include "tests/host/temp_installation.h"

namespace {

namespace fs = std::filesystem;

struct Entry {
    const char* name;
    short mainType;
    short subType = 0;
    const char* title = "";
};

CIndicator* Make(const Entry& entry) {
    auto* formula = new CIndicator;
    formula->m_strName = entry.name;
    formula->m_MainType = entry.mainType;
    formula->m_SubType = entry.subType;
    formula->m_strTitle = entry.title;
    return formula;
}

std::string FileBytes(const std::vector<Entry>& entries, BOOL bLong, short reserved = 0) {
    ny::MemoryStream stream;
    ny::WriteFormulaHeader(stream, reserved, static_cast<short>(entries.size()));
    for (const Entry& entry : entries) std::unique_ptr<CIndicator>(Make(entry))->Save(stream, bLong);
    return std::string(stream.Bytes().begin(), stream.Bytes().end());
}

std::vector<std::string> Keys() {
    std::vector<std::string> keys;
    for (const CIndicator* f : g_MyIndicatorArray) keys.push_back(f->m_strName + std::to_string(f->m_MainType));
    return keys;
}

class Library : public ::testing::Test {
protected:
    void SetUp() override {
        g_MyExePath = m_dir.Path();
        g_MySysVerType = 0;
        g_UseGJSHQ = 0;
        ny::ClearMessages();
        g_MyRemoveIndicators();
    }
    void TearDown() override { g_MyRemoveIndicators(); }

    void Write(const std::string& relative, const std::string& bytes) { m_dir.Write(relative, bytes); }
    std::string Read(const std::string& relative) {
        std::string bytes;
        ny::ReadWholeFile(m_dir.Path() + relative, &bytes);
        return bytes;
    }
    std::string Path(const std::string& relative) { return m_dir.Path() + relative; }
    long FilesIn(const std::string& relative) {
        return std::distance(fs::directory_iterator(Path(relative)), fs::directory_iterator());
    }

    TempInstallation m_dir;
};

const char* const SYSTEM = "defineuser/indi/nysys.dat";
const char* const BASE = "defineuser/indi/nybase.dat";
const char* const USER = "defineuser/indi/nyuser.dat";
const std::string kMagic("myok\0\0\0\0", 8);

// ---- The sorted array ----

TEST_F(Library, KeyIsNameAndKindAndAnExistingKeyKeepsTheOldEntry) {
    for (const Entry& entry : std::vector<Entry>{{"A", 2}, {"A1", 0}, {"B", 0}, {"A", 0, 0, "first"}, {"AB", 0}, {"均线", 0}})
        g_MyAddIndicator(Make(entry));
    // "A10" sorts before "A2": by name alone "A" would come before "A1". Bytes compare unsigned,
    // so the GBK name comes last.
    EXPECT_EQ(Keys(), (std::vector<std::string>{"A0", "A10", "A2", "AB0", "B0", "均线0"}));
    std::unique_ptr<CIndicator> again(Make({"A", 0, 0, "second"}));
    EXPECT_EQ(g_MyAddIndicator(again.get()), 0);
    EXPECT_EQ(g_MyIndicatorArray.size(), 6u);
    EXPECT_EQ(g_MyGetIndicator("A", 0)->m_strTitle, "first");
    EXPECT_EQ(g_MyGetIndicatorPos("A", 2), 2);
    for (const auto& [name, kind] : {std::pair{"A", 1}, std::pair{"a", 0}, std::pair{"KDJ", 0}}) {
        EXPECT_EQ(g_MyGetIndicatorPos(name, kind), -1);
        EXPECT_EQ(g_MyGetIndicator(name, kind), nullptr);
        g_MyRemoveIndicatorByPos(name, kind);
    }
    EXPECT_EQ(g_MyIndicatorArray.size(), 6u);
    g_MyRemoveIndicatorByPos("A", 2);
    EXPECT_EQ(Keys(), (std::vector<std::string>{"A0", "A10", "AB0", "B0", "均线0"}));
}

TEST_F(Library, SearchFindsEveryEntryOfALargerArray) {
    auto numbered = [](int i) { return "F" + std::to_string(i); };
    for (int i = 0; i < 200; ++i) g_MyAddIndicator(Make({numbered(i * 7919 % 200).c_str(), 0}));
    ASSERT_EQ(g_MyIndicatorArray.size(), 200u);
    const std::vector<std::string> keys = Keys();
    EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
    for (int i = 0; i < 200; ++i) EXPECT_EQ(g_MyIndicatorArray[g_MyGetIndicatorPos(numbered(i), 0)]->m_strName, numbered(i));
}

TEST(IndicatorType, LabelsMatchExactly) {
    const std::pair<const char*, short> labels[] = {{"五彩K线", 3}, {"大盘指标", 0}, {"自定指标", 7}, {"K 线选股", 23},
                                                    {"K线选股", -1}, {"五彩k线", -1}, {"", -1}};
    for (const auto& [label, value] : labels) EXPECT_EQ(g_MyGetIndicatorType(label), value) << label;
}

// ---- Start ----

TEST_F(Library, StartReadsSystemBaseAndUserFilesWithTheirSettings) {
    Write(SYSTEM, FileBytes({{"SYS", 0, 2}, {"MA", 0, 0, "system"}}, FALSE));
    Write(BASE, FileBytes({{"BASEIND", 0, 1}, {"BASECOND", 1, 21}}, TRUE));
    Write(USER, FileBytes({{"MINE", 0, 7}, {"MA", 0, 0, "user"}, {"MA", 1, 0, "user condition"}}, TRUE));
    g_MyInitIndicator();
    EXPECT_EQ(Keys(), (std::vector<std::string>{"BASECOND1", "BASEIND0", "MA0", "MA1", "MINE0", "SYS0"}));
    // Name, group and base-set mark after the load; the file read first wins a shared key.
    const struct { const char* name; short kind, group, baseSet; const char* title; } loaded[] = {
        {"SYS", 0, 2, 0, ""}, {"BASEIND", 0, 6, 1, ""}, {"BASECOND", 1, 6, 1, ""}, {"MINE", 0, 7, 0, ""},
        {"MA", 0, 0, 0, "system"}, {"MA", 1, 0, 0, "user condition"}};
    for (const auto& f : loaded) {
        const CIndicator* got = g_MyGetIndicator(f.name, f.kind);
        EXPECT_EQ(std::tuple(got->m_SubType, got->m_nBaseSet, got->m_strTitle), std::tuple(f.group, f.baseSet, f.title)) << f.name;
    }
    EXPECT_TRUE(ny::RecordedMessages().empty());
}

TEST_F(Library, EditionAndSwitchChooseTheFurtherSets) {
    for (const char* file : {"ny2277.dat", "nybbeib.dat", "nyqlbase.dat", "nybase.dat"})
        Write(std::string("defineuser/indi/") + file, FileBytes({{file, 1, 22}}, TRUE));
    Write("defineuser/indi/lpgjs.dat", FileBytes({{"GJS", 1, 22}}, TRUE));
    Write("defineuser/indi/rmcustomindi.dat", FileBytes({{"RMI", 0, 3}, {"RMC", 1, 22}}, TRUE));
    Write("defineuser/indi/wqcustomindi.dat", FileBytes({{"WQ", 0, 3}}, TRUE));
    for (const testcases::Row& row : testcases::ReadRows("model/cases.txt", "edition")) {
        g_MyRemoveIndicators();
        g_MySysVerType = row.Int(0);
        g_UseGJSHQ = row.Int(1);
        g_MyInitIndicator();
        std::string keys;
        for (const std::string& key : Keys()) keys += (keys.empty() ? "" : " ") + key;
        EXPECT_EQ(keys, row[2]) << row.where;
        EXPECT_EQ(g_MyIndicatorArray[0]->m_SubType, row.Int(3)) << row.where;
        EXPECT_EQ(g_MyIndicatorArray[0]->m_nBaseSet, 1) << row.where;
    }
}

TEST_F(Library, WrongMagicShowsTheMessageAndStopsTheSequence) {
    Write(SYSTEM, FileBytes({{"SYS", 0}}, FALSE));
    std::string bad = FileBytes({{"BAD", 0}}, TRUE);
    bad[4] = 'M';
    Write(BASE, bad);
    Write(USER, FileBytes({{"MINE", 0}}, TRUE));
    g_MyInitIndicator();
    EXPECT_EQ(Keys(), std::vector<std::string>{"SYS0"});
    EXPECT_EQ(ny::RecordedMessages(), std::vector<CString>{"非法指标文件，请更新最新版本!"});
}

TEST_F(Library, MissingFilesAndSmallUserFilesArePassedOverInSilence) {
    fs::create_directories(Path(BASE));  // a folder in the place of a file can't be read either
    Write(SYSTEM, FileBytes({}, FALSE));  // a valid empty file
    std::string small(10240, '\0');         // not even a valid header: it isn't looked at
    Write(USER, small);
    g_MyInitIndicator();
    EXPECT_TRUE(g_MyIndicatorArray.empty());
    EXPECT_TRUE(ny::RecordedMessages().empty());
    small.push_back(0);  // one byte more: now it is read, and its magic is wrong
    Write(USER, small);
    g_MyInitIndicator();
    EXPECT_EQ(ny::RecordedMessages().size(), 1u);
}

TEST_F(Library, SystemFileTruncatedAtAnyByteLoadsWhatIsThere) {
    const std::string full = FileBytes({{"FIRST", 0}, {"SECOND", 0}}, FALSE);
    ASSERT_EQ(full.size(), 12u + 2 * 4013);
    for (size_t length = 0; length <= full.size(); ++length) {
        g_MyRemoveIndicators();
        ny::ClearMessages();
        Write(SYSTEM, full.substr(0, length));
        g_MyInitIndicator();
        // Until the 4 bytes of the magic are there the file is refused.
        ASSERT_EQ(ny::RecordedMessages().size(), length < 8 ? 1u : 0u) << length;
        // Every record begun is loaded with the part of its name that is there.
        std::vector<std::string> expected;
        if (length > 12) expected.push_back(std::string("FIRST").substr(0, length - 12) + "0");
        if (length > 12 + 4013) expected.push_back(std::string("SECOND").substr(0, length - 12 - 4013) + "0");
        ASSERT_EQ(Keys(), expected) << length;
    }
}

TEST_F(Library, CountsPastTheEndOrBelowZeroMakeNoEmptyFormulas) {
    std::string huge = FileBytes({{"ONLY", 0}}, FALSE);
    huge[2] = '\xFF', huge[3] = '\x7F';  // 32767 formulas announced
    Write(SYSTEM, huge);
    std::string negative = FileBytes({{"NEG", 0}}, TRUE);
    negative[2] = '\xFE', negative[3] = '\xFF';  // -2
    Write(BASE, negative);
    g_MyInitIndicator();
    EXPECT_EQ(Keys(), std::vector<std::string>{"ONLY0"});
}

// ---- Saving ----

TEST_F(Library, SaveStoresOnlyTheUsersOwnFormulasReplacingTheOldFile) {
    Write(USER, std::string(50000, '\xAB'));
    CIndicator* system = Make({"SYS", 0});
    system->m_SysIndex = 1;
    CIndicator* base = Make({"BASE", 0});
    base->m_nBaseSet = 1;
    CIndicator* hidden = Make({"HIDDEN", 0});
    hidden->m_IsEditable = 0;
    for (CIndicator* f : {Make({"MINE", 0, 7, "kept"}), system, base, hidden, Make({"MINE", 1, 25})}) g_MyAddIndicator(f);
    g_MySaveIndicator();

    const std::string file = Read(USER);
    ASSERT_EQ(file.size(), 12u + 2 * 12205);
    EXPECT_EQ(file.substr(0, 12), std::string("\0\0\2\0", 4) + kMagic);
    EXPECT_EQ(file.substr(12, 5), std::string("MINE", 5));
    EXPECT_EQ(file[12 + 1955 + 10240], 0);  // array order: the indicator, then the condition
    EXPECT_EQ(file[12 + 12205 + 1955 + 10240], 1);
    EXPECT_EQ(FilesIn("defineuser/indi"), 1);
    g_MyRemoveIndicators();
    g_MyInitIndicator();
    EXPECT_EQ(Keys(), (std::vector<std::string>{"MINE0", "MINE1"}));
    EXPECT_EQ(g_MyGetIndicator("MINE", 0)->m_strTitle, "kept");

    // The target is a folder with something in it: the rename fails and nothing changes.
    fs::remove(Path(USER));
    fs::create_directories(Path(USER) + "/keep");
    g_MySaveIndicator();
    EXPECT_TRUE(fs::is_directory(Path(USER) + "/keep"));
    EXPECT_EQ(FilesIn("defineuser/indi"), 1);
    EXPECT_TRUE(ny::RecordedMessages().empty());
}

// ---- Export and import ----

TEST_F(Library, ExportWritesTheExchangeFormWhichImportReads) {
    std::unique_ptr<CIndicator> formula(Make({"EXP", 1, 20}));
    formula->m_strSource = std::string(3000, 'S');
    ASSERT_TRUE(ny::ExportFormula(*formula, Path("out/exp.dat")));
    const std::string file = Read("out/exp.dat");
    ASSERT_EQ(file.size(), 12u + 4013);
    EXPECT_EQ(file.substr(0, 12), std::string("\1\0\1\0", 4) + kMagic);
    EXPECT_EQ(ny::ImportFormula(Path("out/exp.dat")), ny::ImportStatus::Ok);
    ASSERT_NE(g_MyGetIndicator("EXP", 1), nullptr);
    EXPECT_EQ(g_MyGetIndicator("EXP", 1)->m_SubType, 20);
    EXPECT_EQ(g_MyGetIndicator("EXP", 1)->m_strSource, std::string(2047, 'S'));
}

TEST_F(Library, ImportRefusesWrongMagicAndCountAboveOneAndTakesCountZero) {
    Write("two.dat", FileBytes({{"A", 0}, {"B", 0}}, FALSE, 1));
    std::string bad = FileBytes({{"A", 0}}, FALSE, 1);
    bad[7] = 'x';
    Write("bad.dat", bad);
    Write("zero.dat", FileBytes({}, FALSE, 1));
    const std::pair<const char*, ny::ImportStatus> cases[] = {
        {"two.dat", ny::ImportStatus::Invalid}, {"bad.dat", ny::ImportStatus::Invalid},
        {"zero.dat", ny::ImportStatus::Ok}, {"none.dat", ny::ImportStatus::CannotOpen}};
    for (const auto& [file, status] : cases) {
        ny::ClearMessages();
        int added = -1;
        EXPECT_EQ(ny::ImportFormula(Path(file), &added), status) << file;
        EXPECT_EQ(added, 0) << file;
        EXPECT_EQ(ny::RecordedMessages(), status == ny::ImportStatus::Invalid
                                              ? std::vector<CString>{"非法指标文件,请检查指标文件!"}
                                              : std::vector<CString>{}) << file;
    }
    EXPECT_TRUE(g_MyIndicatorArray.empty());
}

TEST_F(Library, ImportOfAnExistingNameAndKindIsRefusedButAnotherKindIsTaken) {
    g_MyAddIndicator(Make({"KDJ", 0, 0, "mine"}));
    Write("same.dat", FileBytes({{"KDJ", 0, 0, "theirs"}}, FALSE, 1));
    Write("other.dat", FileBytes({{"KDJ", 1, 20, "theirs"}}, FALSE, 1));
    int added = -1;
    EXPECT_EQ(ny::ImportFormula(Path("same.dat"), &added), ny::ImportStatus::Ok);
    EXPECT_EQ(added, 0);
    EXPECT_EQ(ny::RecordedMessages(), std::vector<CString>{"KDJ 在同类型指标中已存在!"});
    EXPECT_EQ(g_MyGetIndicator("KDJ", 0)->m_strTitle, "mine");
    EXPECT_EQ(ny::ImportFormula(Path("other.dat"), &added), ny::ImportStatus::Ok);
    EXPECT_EQ(added, 1);
    EXPECT_EQ(Keys(), (std::vector<std::string>{"KDJ0", "KDJ1"}));
}

}  // namespace
