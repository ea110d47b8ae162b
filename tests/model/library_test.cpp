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

TEST_F(Library, SameNameOfTwoKindsStaysTwice) {
    EXPECT_EQ(g_MyAddIndicator(Make({"ABC", 1})), 0);
    EXPECT_EQ(g_MyAddIndicator(Make({"ABC", 0})), 0);
    EXPECT_EQ(Keys(), (std::vector<std::string>{"ABC0", "ABC1"}));
    EXPECT_EQ(g_MyGetIndicator("ABC", 1)->m_MainType, 1);
    EXPECT_EQ(g_MyGetIndicatorPos("ABC", 1), 1);
}

TEST_F(Library, OrderFollowsTheConcatenatedKey) {
    for (const Entry& entry : std::vector<Entry>{{"A", 2}, {"A1", 0}, {"B", 0}, {"A", 0}, {"AB", 0}, {"均线", 0}})
        g_MyAddIndicator(Make(entry));
    // "A10" sorts before "A2": by name alone "A" would come before "A1". Bytes compare unsigned,
    // so the GBK name comes last.
    EXPECT_EQ(Keys(), (std::vector<std::string>{"A0", "A10", "A2", "AB0", "B0", "均线0"}));
}

TEST_F(Library, ExistingKeyKeepsTheOldEntryAndTheCallersObject) {
    g_MyAddIndicator(Make({"X", 0, 0, "first"}));
    g_MyAddIndicator(Make({"Y", 0}));
    std::unique_ptr<CIndicator> again(Make({"X", 0, 0, "second"}));
    EXPECT_EQ(g_MyAddIndicator(again.get()), 0);
    EXPECT_EQ(g_MyIndicatorArray.size(), 2u);
    EXPECT_EQ(g_MyGetIndicator("X", 0)->m_strTitle, "first");
}

TEST_F(Library, UnknownNamesFindNothingAndRemoveNothing) {
    g_MyAddIndicator(Make({"MACD", 0}));
    EXPECT_EQ(g_MyGetIndicatorPos("MACD", 1), -1);
    EXPECT_EQ(g_MyGetIndicatorPos("macd", 0), -1);
    EXPECT_EQ(g_MyGetIndicator("KDJ", 0), nullptr);
    g_MyRemoveIndicatorByPos("KDJ", 0);
    EXPECT_EQ(g_MyIndicatorArray.size(), 1u);
    g_MyRemoveIndicatorByPos("MACD", 0);
    EXPECT_TRUE(g_MyIndicatorArray.empty());
}

std::string Numbered(int i) {
    std::string name = "F";
    name += std::to_string(i);
    return name;
}

TEST_F(Library, SearchFindsEveryEntryOfALargerArray) {
    for (int i = 0; i < 200; ++i) g_MyAddIndicator(Make({Numbered(i * 7919 % 200).c_str(), 0}));
    ASSERT_EQ(g_MyIndicatorArray.size(), 200u);
    const std::vector<std::string> keys = Keys();
    EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
    for (int i = 0; i < 200; ++i) {
        const int pos = g_MyGetIndicatorPos(Numbered(i), 0);
        ASSERT_GE(pos, 0);
        EXPECT_EQ(g_MyIndicatorArray[pos]->m_strName, Numbered(i));
    }
}

TEST(IndicatorType, KindsAndGroupsByTheirLabels) {
    const std::vector<std::pair<const char*, short>> labels = {
        {"技术指标", 0}, {"条件选股", 1}, {"交易系统", 2}, {"五彩K线", 3}, {"大盘指标", 0},
        {"趋向指标", 1}, {"反趋向指标", 2}, {"能量指标", 3}, {"量价指标", 4}, {"压力支撑", 5},
        {"特色指标", 6}, {"自定指标", 7}, {"指标选股", 20}, {"财务选股", 21}, {"行情选股", 22},
        {"K 线选股", 23}, {"综合选股", 24}, {"自定选股", 25}};
    for (const auto& [label, value] : labels) EXPECT_EQ(g_MyGetIndicatorType(label), value) << label;
    EXPECT_EQ(g_MyGetIndicatorType("K线选股"), -1);
    EXPECT_EQ(g_MyGetIndicatorType("五彩k线"), -1);
    EXPECT_EQ(g_MyGetIndicatorType(""), -1);
}

// ---- Start ----

TEST_F(Library, StartReadsSystemBaseAndUserFilesWithTheirSettings) {
    Write(SYSTEM, FileBytes({{"SYS", 0, 2}}, FALSE));
    Write(BASE, FileBytes({{"BASEIND", 0, 1}, {"BASECOND", 1, 21}}, TRUE));
    Write(USER, FileBytes({{"MINE", 0, 7}}, TRUE));
    g_MyInitIndicator();
    EXPECT_EQ(Keys(), (std::vector<std::string>{"BASECOND1", "BASEIND0", "MINE0", "SYS0"}));
    EXPECT_EQ(g_MyGetIndicator("SYS", 0)->m_SubType, 2);
    EXPECT_EQ(g_MyGetIndicator("SYS", 0)->m_nBaseSet, 0);
    EXPECT_EQ(g_MyGetIndicator("BASEIND", 0)->m_SubType, 6);
    EXPECT_EQ(g_MyGetIndicator("BASECOND", 1)->m_SubType, 6);
    EXPECT_EQ(g_MyGetIndicator("BASECOND", 1)->m_nBaseSet, 1);
    EXPECT_EQ(g_MyGetIndicator("MINE", 0)->m_SubType, 7);
    EXPECT_EQ(g_MyGetIndicator("MINE", 0)->m_nBaseSet, 0);
    EXPECT_TRUE(ny::RecordedMessages().empty());
}

TEST_F(Library, TheFileReadFirstWinsASharedKey) {
    Write(SYSTEM, FileBytes({{"MA", 0, 0, "system"}}, FALSE));
    Write(USER, FileBytes({{"MA", 0, 0, "user"}, {"MA", 1, 0, "user condition"}}, TRUE));
    g_MyInitIndicator();
    ASSERT_EQ(g_MyIndicatorArray.size(), 2u);
    EXPECT_EQ(g_MyGetIndicator("MA", 0)->m_strTitle, "system");
    EXPECT_EQ(g_MyGetIndicator("MA", 1)->m_strTitle, "user condition");
}

TEST_F(Library, EditionChoosesTheBaseSet) {
    const std::vector<std::pair<int, const char*>> editions = {
        {301, "ny2277.dat"}, {73, "nybbeib.dat"}, {15, "nyqlbase.dat"}, {701, "nyqlbase.dat"},
        {702, "nyqlbase.dat"}, {703, "nyqlbase.dat"}, {72, "nyqlbase.dat"}, {5, "nybase.dat"}};
    for (const char* file : {"ny2277.dat", "nybbeib.dat", "nyqlbase.dat", "nybase.dat"})
        Write(std::string("defineuser/indi/") + file, FileBytes({{file, 0}}, TRUE));
    for (const auto& [edition, file] : editions) {
        g_MySysVerType = edition;
        g_MyInitIndicator();
        EXPECT_EQ(Keys(), std::vector<std::string>{std::string(file) + "0"}) << edition;
    }
}

TEST_F(Library, OneFurtherSetByTheSwitchOrTheEdition) {
    Write("defineuser/indi/lpgjs.dat", FileBytes({{"GJS", 1, 22}}, TRUE));
    Write("defineuser/indi/rmcustomindi.dat", FileBytes({{"RMI", 0, 3}, {"RMC", 1, 22}}, TRUE));
    Write("defineuser/indi/wqcustomindi.dat", FileBytes({{"WQ", 0, 3}}, TRUE));

    g_MySysVerType = 30;
    g_UseGJSHQ = 1;
    g_MyInitIndicator();
    EXPECT_EQ(Keys(), std::vector<std::string>{"GJS1"});
    EXPECT_EQ(g_MyGetIndicator("GJS", 1)->m_SubType, 6);

    g_UseGJSHQ = 0;
    g_MyInitIndicator();
    EXPECT_EQ(Keys(), (std::vector<std::string>{"RMC1", "RMI0"}));
    EXPECT_EQ(g_MyGetIndicator("RMI", 0)->m_SubType, 6);
    EXPECT_EQ(g_MyGetIndicator("RMC", 1)->m_SubType, 22);  // only indicators change their group
    EXPECT_EQ(g_MyGetIndicator("RMC", 1)->m_nBaseSet, 1);

    g_MySysVerType = 31;
    g_MyInitIndicator();
    EXPECT_EQ(Keys(), std::vector<std::string>{"WQ0"});

    g_MySysVerType = 701;  // this edition always takes the further set
    g_MyInitIndicator();
    EXPECT_EQ(Keys(), std::vector<std::string>{"GJS1"});
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
    EXPECT_EQ(ny::RecordedMessages()[0],
              "\xB7\xC7\xB7\xA8\xD6\xB8\xB1\xEA\xCE\xC4\xBC\xFE\xA3\xAC\xC7\xEB\xB8\xFC\xD0\xC2"
              "\xD7\xEE\xD0\xC2\xB0\xE6\xB1\xBE!");
}

TEST_F(Library, MissingFilesArePassedOverInSilence) {
    fs::create_directories(root / BASE);  // a folder in the place of a file can't be read either
    Write(USER, FileBytes({{"MINE", 0}}, TRUE));
    g_MyInitIndicator();
    EXPECT_EQ(Keys(), std::vector<std::string>{"MINE0"});
    EXPECT_TRUE(ny::RecordedMessages().empty());
}

TEST_F(Library, UserFileOf10240BytesOrLessIsNotRead) {
    Bytes small(10240, 0);  // not even a valid header: it isn't looked at
    Write(USER, small);
    g_MyInitIndicator();
    EXPECT_TRUE(g_MyIndicatorArray.empty());
    EXPECT_TRUE(ny::RecordedMessages().empty());

    small.push_back(0);  // one byte more: now it is read, and its magic is wrong
    Write(USER, small);
    g_MyInitIndicator();
    EXPECT_EQ(ny::RecordedMessages().size(), 1u);
}

TEST_F(Library, EmptyFileWithValidHeaderLoadsNothing) {
    Write(SYSTEM, FileBytes({}, FALSE));
    ASSERT_EQ(Read(SYSTEM).size(), 12u);
    Write(BASE, FileBytes({{"B", 0}}, TRUE));
    g_MyInitIndicator();
    EXPECT_EQ(Keys(), std::vector<std::string>{"B0"});
    EXPECT_TRUE(ny::RecordedMessages().empty());
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
    huge[2] = 0xFF;
    huge[3] = 0x7F;  // 32767 formulas announced
    Write(SYSTEM, huge);
    Bytes negative = FileBytes({{"NEG", 0}}, TRUE);
    negative[2] = 0xFE;
    negative[3] = 0xFF;  // -2
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

TEST_F(Library, SaveReplacesTheWholeOldFile) {
    Write(USER, Bytes(50000, 0xAB));
    g_MyAddIndicator(Make({"ONE", 0}));
    g_MySaveIndicator();
    EXPECT_EQ(Read(USER).size(), 12u + 12205);
}

TEST_F(Library, SaveThatCannotReplaceTheFileLeavesNoTrace) {
    // The target is a folder with something in it: the rename fails and nothing changes.
    fs::create_directories(root / USER / "keep");
    g_MyAddIndicator(Make({"ONE", 0}));
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

TEST_F(Library, ImportRefusesWrongMagicAndCountAboveOne) {
    Bytes two = FileBytes({{"A", 0}, {"B", 0}}, FALSE, 1);
    Write("two.dat", two);
    Bytes bad = FileBytes({{"A", 0}}, FALSE, 1);
    bad[7] = 'x';
    Write("bad.dat", bad);
    for (const char* file : {"two.dat", "bad.dat"}) {
        ny::ClearMessages();
        int added = -1;
        EXPECT_EQ(ny::ImportFormula((root / file).string(), &added), ny::ImportStatus::Invalid);
        EXPECT_EQ(added, 0);
        EXPECT_EQ(ny::RecordedMessages(), std::vector<CString>{"非法指标文件,请检查指标文件!"}) << file;
    }
    EXPECT_TRUE(g_MyIndicatorArray.empty());
}

TEST_F(Library, ImportOfCountZeroOrAMissingFileAddsNothing) {
    Write("zero.dat", FileBytes({}, FALSE, 1));
    EXPECT_EQ(ny::ImportFormula((root / "zero.dat").string()), ny::ImportStatus::Ok);
    EXPECT_EQ(ny::ImportFormula((root / "none.dat").string()), ny::ImportStatus::CannotOpen);
    EXPECT_TRUE(g_MyIndicatorArray.empty());
    EXPECT_TRUE(ny::RecordedMessages().empty());
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
