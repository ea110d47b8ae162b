#include "host/group.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "host/encoding.h"
#include "host/files.h"
#include "host/installation.h"
#include "host/stockdb.h"
#include "tests/host/temp_installation.h"

namespace {

class Blocks : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir.Write("data/stocks.csv", "SH600001,A,A,A\nSH600002,B,B,A\nSZ000001,C,C,A\n");
        m_dir.Write("data/quotes.csv", "date=20210630\ncode,last\nSH600001,12\nSH600002,8\nSZ000001,10\n");
        ASSERT_TRUE(ny::OpenInstallation(m_dir.Path()));
    }
    TempInstallation m_dir;
};

// The ids of the stocks of a block, in the block's order.
std::vector<int> Ids(const CString& category, const CString& name) {
    std::vector<CStock*> stocks;
    CGroup::GetStock(category, name, stocks);
    std::vector<int> ids;
    for (const CStock* stock : stocks) ids.push_back(stock->m_lStockID);
    return ids;
}

TEST_F(Blocks, CreatedBlockIsReadBackInOrder) {
    ASSERT_TRUE(CGroup::CreateGroup("行业", "银行", {1000001, 600001}));
    ASSERT_TRUE(CGroup::CreateGroup("行业", "钢铁", {600002}));
    std::vector<CString> names;
    CGroup::GetGroup("行业", names);
    // GBK order: 钢 (B8D6) before 银 (D2F8).
    EXPECT_EQ(names, (std::vector<CString>{"钢铁", "银行"}));
    EXPECT_EQ(Ids("行业", "银行"), (std::vector<int>{1000001, 600001}));
    CGroup::GetGroup("概念", names);
    EXPECT_TRUE(names.empty());
}

TEST_F(Blocks, ResultBlockFileHasItsHeaderAndIds) {
    ASSERT_TRUE(CGroup::CreateGroup("自定义", "智能选股", {600002, 1000001}));
    const std::string path = m_dir.Path() + "data/blocks/" + ny::GbkToUtf8("自定义") + "/" +
                             ny::GbkToUtf8("智能选股") + ".blk";
    EXPECT_EQ(CGroup::GetGroupFilePath("自定义", "智能选股"), path);
    std::string bytes;
    ASSERT_TRUE(ny::ReadWholeFile(path, &bytes));
    ASSERT_EQ(bytes.size(), 84u + 8u);
    EXPECT_EQ(bytes.substr(0, 4), "NYBK");
    EXPECT_EQ(ny::LoadInt(bytes.data() + 8), 2);
    EXPECT_EQ(bytes.substr(12, 8), CString("智能选股"));
    EXPECT_EQ(ny::LoadInt(bytes.data() + 84), 600002);
    EXPECT_EQ(ny::LoadInt(bytes.data() + 88), 1000001);
}

TEST_F(Blocks, CreatingAgainReplacesTheBlock) {
    ASSERT_TRUE(CGroup::CreateGroup("自定义", "智能选股", {600001, 600002, 1000001}));
    ASSERT_TRUE(CGroup::CreateGroup("自定义", "智能选股", {1000001}));
    EXPECT_EQ(Ids("自定义", "智能选股"), std::vector<int>{1000001});
    ASSERT_TRUE(CGroup::CreateGroup("自定义", "智能选股", {}));
    EXPECT_TRUE(Ids("自定义", "智能选股").empty());
    EXPECT_FALSE(std::filesystem::exists(CGroup::GetGroupFilePath("自定义", "智能选股") + ".tmp"));
}

TEST_F(Blocks, RefusesNamesThatAreNotOneFile) {
    for (const char* name : {"", "../x", "a/b"}) EXPECT_FALSE(CGroup::CreateGroup("自定义", name, {600001})) << name;
}

TEST_F(Blocks, InitKnowsPositionsAndSortsByAQuoteColumn) {
    ASSERT_TRUE(CGroup::CreateGroup("自选", "自选", {600001, 777777, 600002, 1000001}));
    CGroup group;
    group.m_strCategory = "自选";
    group.m_strName = "自选";
    group.init();
    ASSERT_EQ(group.m_arStockIDs.size(), 3u);  // the unknown id is left out
    EXPECT_EQ(group.ID2Pos(600002), 1);
    EXPECT_EQ(group.ID2Pos(777777), -1);
    group.m_nSortColumn = 2;  // latest price: 12, 8, 10
    group.m_cSortOrder = 1;
    group.init();
    EXPECT_EQ(group.m_arStockIDs, (std::vector<int>{600002, 1000001, 600001}));
    group.m_cSortOrder = -1;
    group.init();
    EXPECT_EQ(group.m_arStockIDs, (std::vector<int>{600001, 1000001, 600002}));
    group.m_strName = "none";
    group.init();
    EXPECT_TRUE(group.m_arStockIDs.empty());
}

TEST_F(Blocks, DamagedBlockFilesAreReported) {
    const std::string folder = "data/blocks/" + ny::GbkToUtf8("概念") + "/";
    m_dir.Write(folder + "short.blk", "NYBK");
    m_dir.Write(folder + "alien.blk", std::string(90, 'x'));
    std::string truncated(84, '\0');
    truncated.replace(0, 4, "NYBK");
    truncated[8] = 2;  // says two ids
    ny::StoreInt(&truncated, 600001);
    truncated += "\x01\x02";  // half of the second
    m_dir.Write(folder + "cut.blk", truncated);
    EXPECT_TRUE(Ids("概念", "short").empty());
    EXPECT_TRUE(Ids("概念", "alien").empty());
    EXPECT_EQ(Ids("概念", "cut"), std::vector<int>{600001});
    EXPECT_EQ(ny::InstallationProblems().size(), 3u);
    std::vector<CString> names;
    CGroup::GetGroup("概念", names);
    EXPECT_EQ(names, (std::vector<CString>{"alien", "cut", "short"}));
}

}  // namespace
