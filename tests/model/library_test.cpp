#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "host/global.h"
#include "model/file_stream.h"
#include "model/formula_file.h"
#include "model/library.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

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

Bytes FileBytes(const std::vector<Entry>& entries, BOOL bLong, short reserved = 0) {
    ny::MemoryStream stream;
    ny::WriteFormulaHeader(stream, reserved, static_cast<short>(entries.size()));
    for (const Entry& entry : entries) {
        std::unique_ptr<CIndicator> formula(Make(entry));
        formula->Save(stream, bLong);
    }
    return stream.Bytes();
}

std::vector<std::string> Keys() {
    std::vector<std::string> keys;
    for (const CIndicator* f : g_MyIndicatorArray) keys.push_back(f->m_strName + std::to_string(f->m_MainType));
    return keys;
}

class Library : public ::testing::Test {
protected:
    void SetUp() override {
        root = fs::path(NY_BINARY_DIR) / "library_test" /
               ::testing::UnitTest::GetInstance()->current_test_info()->name();
        fs::remove_all(root);
        fs::create_directories(root);
        g_MyExePath = root.string() + "/";
        g_MySysVerType = 0;
        g_UseGJSHQ = 0;
        ny::ClearMessages();
        g_MyRemoveIndicators();
    }
    void TearDown() override {
        g_MyRemoveIndicators();
        fs::remove_all(root);
    }

    void Write(const std::string& relative, const Bytes& bytes) {
        const fs::path path = root / relative;
        fs::create_directories(path.parent_path());
        std::ofstream out(path, std::ios::binary);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    Bytes Read(const std::string& relative) {
        std::ifstream in(root / relative, std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    std::vector<std::string> FolderEntries(const std::string& relative) {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(root / relative))
            names.push_back(entry.path().filename().string());
        return names;
    }

    fs::path root;
};

const char* const SYSTEM = "defineuser/indi/nysys.dat";
const char* const BASE = "defineuser/indi/nybase.dat";
const char* const USER = "defineuser/indi/nyuser.dat";

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
        EXPECT_EQ(g_MyGetIndicator(f.name, f.kind)->m_SubType, f.group) << f.name;
        EXPECT_EQ(g_MyGetIndicator(f.name, f.kind)->m_nBaseSet, f.baseSet) << f.name;
        EXPECT_EQ(g_MyGetIndicator(f.name, f.kind)->m_strTitle, f.title) << f.name;
    }
    EXPECT_TRUE(ny::RecordedMessages().empty());
}

TEST_F(Library, EditionAndSwitchChooseTheFurtherSets) {
    for (const char* file : {"ny2277.dat", "nybbeib.dat", "nyqlbase.dat", "nybase.dat"})
        Write(std::string("defineuser/indi/") + file, FileBytes({{file, 1, 22}}, TRUE));
    Write("defineuser/indi/lpgjs.dat", FileBytes({{"GJS", 1, 22}}, TRUE));
    Write("defineuser/indi/rmcustomindi.dat", FileBytes({{"RMI", 0, 3}, {"RMC", 1, 22}}, TRUE));
    Write("defineuser/indi/wqcustomindi.dat", FileBytes({{"WQ", 0, 3}}, TRUE));
    // Customer sets put only indicators into 特色指标 (RMC keeps 22); the others every formula.
    const struct { int edition, switchOn; std::vector<std::string> keys; short groupOfFirst; } cases[] = {
        {301, 0, {"ny2277.dat1"}, 6}, {73, 0, {"nybbeib.dat1"}, 6}, {15, 0, {"nyqlbase.dat1"}, 6},
        {701, 0, {"GJS1", "nyqlbase.dat1"}, 6}, {702, 0, {"nyqlbase.dat1"}, 6}, {703, 0, {"nyqlbase.dat1"}, 6},
        {72, 0, {"nyqlbase.dat1"}, 6}, {5, 0, {"nybase.dat1"}, 6}, {5, 1, {"GJS1", "nybase.dat1"}, 6},
        {30, 1, {"GJS1", "nybase.dat1"}, 6}, {30, 0, {"RMC1", "RMI0", "nybase.dat1"}, 22},
        {31, 0, {"WQ0", "nybase.dat1"}, 6}};
    for (const auto& c : cases) {
        g_MyRemoveIndicators();
        g_MySysVerType = c.edition;
        g_UseGJSHQ = c.switchOn;
        g_MyInitIndicator();
        EXPECT_EQ(Keys(), c.keys) << c.edition << " " << c.switchOn;
        EXPECT_EQ(g_MyIndicatorArray[0]->m_SubType, c.groupOfFirst) << c.edition;
        EXPECT_EQ(g_MyIndicatorArray[0]->m_nBaseSet, 1) << c.edition;
    }
}

TEST_F(Library, WrongMagicShowsTheMessageAndStopsTheSequence) {
    Write(SYSTEM, FileBytes({{"SYS", 0}}, FALSE));
    Bytes bad = FileBytes({{"BAD", 0}}, TRUE);
    bad[4] = 'M';
    Write(BASE, bad);
    Write(USER, FileBytes({{"MINE", 0}}, TRUE));
    g_MyInitIndicator();
    EXPECT_EQ(Keys(), std::vector<std::string>{"SYS0"});
    EXPECT_EQ(ny::RecordedMessages(), std::vector<CString>{"非法指标文件，请更新最新版本!"});
}

TEST_F(Library, MissingFilesAndSmallUserFilesArePassedOverInSilence) {
    fs::create_directories(root / BASE);  // a folder in the place of a file can't be read either
    Write(SYSTEM, FileBytes({}, FALSE));  // a valid empty file
    Bytes small(10240, 0);                // not even a valid header: it isn't looked at
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
    const Bytes full = FileBytes({{"FIRST", 0}, {"SECOND", 0}}, FALSE);
    ASSERT_EQ(full.size(), 12u + 2 * 4013);
    for (size_t length = 0; length <= full.size(); ++length) {
        g_MyRemoveIndicators();
        ny::ClearMessages();
        Write(SYSTEM, Bytes(full.begin(), full.begin() + length));
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
    Bytes huge = FileBytes({{"ONLY", 0}}, FALSE);
    huge[2] = 0xFF, huge[3] = 0x7F;  // 32767 formulas announced
    Write(SYSTEM, huge);
    Bytes negative = FileBytes({{"NEG", 0}}, TRUE);
    negative[2] = 0xFE, negative[3] = 0xFF;  // -2
    Write(BASE, negative);
    g_MyInitIndicator();
    EXPECT_EQ(Keys(), std::vector<std::string>{"ONLY0"});
}

// ---- Saving ----

TEST_F(Library, SaveStoresOnlyTheUsersOwnFormulas) {
    CIndicator* mine = Make({"MINE", 0, 7, "kept"});
    CIndicator* system = Make({"SYS", 0});
    system->m_SysIndex = 1;
    CIndicator* base = Make({"BASE", 0});
    base->m_nBaseSet = 1;
    CIndicator* hidden = Make({"HIDDEN", 0});
    hidden->m_IsEditable = 0;
    CIndicator* condition = Make({"MINE", 1, 25});
    for (CIndicator* f : {mine, system, base, hidden, condition}) g_MyAddIndicator(f);
    g_MySaveIndicator();

    const Bytes file = Read(USER);
    ASSERT_EQ(file.size(), 12u + 2 * 12205);
    EXPECT_EQ(Bytes(file.begin(), file.begin() + 12), (Bytes{0, 0, 2, 0, 'm', 'y', 'o', 'k', 0, 0, 0, 0}));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&file[12])), "MINE");
    EXPECT_EQ(file[12 + 1955 + 10240], 0);  // array order: the indicator, then the condition
    EXPECT_EQ(file[12 + 12205 + 1955 + 10240], 1);
    EXPECT_EQ(FolderEntries("defineuser/indi"), std::vector<std::string>{"nyuser.dat"});

    g_MyRemoveIndicators();
    g_MyInitIndicator();
    EXPECT_EQ(Keys(), (std::vector<std::string>{"MINE0", "MINE1"}));
    EXPECT_EQ(g_MyGetIndicator("MINE", 0)->m_strTitle, "kept");
}

TEST_F(Library, SaveReplacesTheWholeOldFileOrLeavesNoTrace) {
    Write(USER, Bytes(50000, 0xAB));
    g_MyAddIndicator(Make({"ONE", 0}));
    g_MySaveIndicator();
    EXPECT_EQ(Read(USER).size(), 12u + 12205);
    // The target is a folder with something in it: the rename fails and nothing changes.
    fs::remove(root / USER);
    fs::create_directories(root / USER / "keep");
    g_MySaveIndicator();
    EXPECT_TRUE(fs::is_directory(root / USER / "keep"));
    EXPECT_EQ(FolderEntries("defineuser/indi"), std::vector<std::string>{"nyuser.dat"});
    EXPECT_TRUE(ny::RecordedMessages().empty());
}

TEST(AtomicWrite, FailedWriteKeepsTheOldFile) {
    const fs::path folder = fs::path(NY_BINARY_DIR) / "library_test" / "atomic";
    fs::remove_all(folder);
    const std::string path = (folder / "sub" / "target.dat").string();
    ASSERT_TRUE(ny::WriteFileAtomically(path, [](CBinStream& s) { s.Write("old", 3); }));
    // The temporary file can't be made (a folder stands in its place): the target stays.
    fs::create_directory(path + ".tmp");
    const bool ok = ny::WriteFileAtomically(path, [](CBinStream& s) { s.Write("new", 3); });
    EXPECT_FALSE(ok);
    fs::remove(path + ".tmp");
    std::ifstream in(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "sub"), fs::directory_iterator()), 1);
    fs::remove_all(folder);
}

// ---- Export and import ----

TEST_F(Library, ExportWritesTheExchangeForm) {
    std::unique_ptr<CIndicator> formula(Make({"EXP", 1, 20}));
    formula->m_strSource = std::string(3000, 'S');
    const std::string path = (root / "out" / "exp.dat").string();
    ASSERT_TRUE(ny::ExportFormula(*formula, path));
    const Bytes file = Read("out/exp.dat");
    ASSERT_EQ(file.size(), 12u + 4013);
    EXPECT_EQ(Bytes(file.begin(), file.begin() + 12), (Bytes{1, 0, 1, 0, 'm', 'y', 'o', 'k', 0, 0, 0, 0}));

    EXPECT_EQ(ny::ImportFormula(path), ny::ImportStatus::Ok);
    ASSERT_NE(g_MyGetIndicator("EXP", 1), nullptr);
    EXPECT_EQ(g_MyGetIndicator("EXP", 1)->m_SubType, 20);
    EXPECT_EQ(g_MyGetIndicator("EXP", 1)->m_strSource, std::string(2047, 'S'));
}

TEST_F(Library, ImportRefusesWrongMagicAndCountAboveOneAndTakesCountZero) {
    Write("two.dat", FileBytes({{"A", 0}, {"B", 0}}, FALSE, 1));
    Bytes bad = FileBytes({{"A", 0}}, FALSE, 1);
    bad[7] = 'x';
    Write("bad.dat", bad);
    Write("zero.dat", FileBytes({}, FALSE, 1));
    const std::pair<const char*, ny::ImportStatus> cases[] = {
        {"two.dat", ny::ImportStatus::Invalid}, {"bad.dat", ny::ImportStatus::Invalid},
        {"zero.dat", ny::ImportStatus::Ok}, {"none.dat", ny::ImportStatus::CannotOpen}};
    for (const auto& [file, status] : cases) {
        ny::ClearMessages();
        int added = -1;
        EXPECT_EQ(ny::ImportFormula((root / file).string(), &added), status) << file;
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
    EXPECT_EQ(ny::ImportFormula((root / "same.dat").string(), &added), ny::ImportStatus::Ok);
    EXPECT_EQ(added, 0);
    EXPECT_EQ(ny::RecordedMessages(), std::vector<CString>{"KDJ 在同类型指标中已存在!"});
    EXPECT_EQ(g_MyGetIndicator("KDJ", 0)->m_strTitle, "mine");
    EXPECT_EQ(ny::ImportFormula((root / "other.dat").string(), &added), ny::ImportStatus::Ok);
    EXPECT_EQ(added, 1);
    EXPECT_EQ(Keys(), (std::vector<std::string>{"KDJ0", "KDJ1"}));
}

}  // namespace
