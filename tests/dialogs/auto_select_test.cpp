// The picking dialog over the sample market, driven as a user would: a pick with two conditions
// and a scope against an independent run of nyind, the result block and the quote table, a rule
// file stored and read back, and each refusal with its message.

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <set>

#include "catalog/function_manager.h"
#include "dialogs/auto_select_dialog.h"
#include "host/clock.h"
#include "host/comm_data.h"
#include "host/group.h"
#include "host/installation.h"
#include "host/stockdb.h"
#include "model/library.h"
#include "platform/headless_dialogs.h"
#include "tests/cli/nyind_runner.h"

namespace {

using D = CAutoSelectDialog;

// The user's hands on an open picking dialog.
struct User {
    ny::HeadlessDialog& wnd;

    ny::HeadlessTree& Tree(int id) const { return wnd.Get<ny::HeadlessTree>(id); }
    bool Click(int id) const { return wnd.Get<ny::HeadlessButton>(id).Click(); }
    // Chooses a condition in the tree, types its parameters into the boxes shown, adds it.
    void AddCondition(const std::vector<std::string>& item, const std::vector<std::string>& params) const {
        ASSERT_TRUE(Tree(D::IDC_CONDITION_TREE).Choose(Tree(D::IDC_CONDITION_TREE).Find(item)));
        wnd.Paint();
        for (size_t i = 0; i < params.size(); ++i)
            ASSERT_TRUE(wnd.Get<ny::HeadlessTextBox>(D::IDC_PARAM_EDIT + i).Type(params[i]));
        Click(D::IDC_ADDCONDITION);
    }
    void Tick(const std::vector<std::string>& item) const {
        ASSERT_TRUE(Tree(D::IDC_SCOPE_TREE).ClickCheck(Tree(D::IDC_SCOPE_TREE).Find(item)));
    }
    std::string Text(int id) const { return wnd.Get<ny::HeadlessTextBox>(id).GetText(); }
    std::vector<std::string> Rows() const {
        std::vector<std::string> rows;
        const auto& list = wnd.Get<ny::HeadlessListView>(D::IDC_CONDITION_LIST);
        for (int row = 0; row < list.GetItemCount(); ++row)
            rows.push_back(list.GetItemText(row, 0) + " " + list.GetItemText(row, 1));
        return rows;
    }
    // Starts the pick and lets the 1000 ms timer tick until the status shows the counts.
    void Pick() const {
        Click(D::IDC_EXCUSEL);
        for (int tick = 0; tick < 1200 && Text(D::IDC_STATUS).empty(); ++tick) {
            wnd.m_timer.Fire(D::kTimerId);
            usleep(50000);
        }
        ASSERT_FALSE(Text(D::IDC_STATUS).empty()) << "the pick did not end";
    }
};

const std::vector<std::string> kRising = {"系统指标", "行情选股", "LXSZ 连续上涨"};
const std::vector<std::string> kQuiet = {"系统指标", "行情选股", "SLXG 缩量"};
const std::vector<std::string> kShanghai = {"系统版块", "上海A股"};

class AutoSelectTest : public ::testing::Test {
protected:
    void SetUp() override {
        nyind_test::LinkInstallation(m_dir.path() / "home");
        ASSERT_TRUE(ny::OpenInstallation((m_dir.path() / "home").string()));
        CClockModule::SetClock(g_MyCurTradeDate, 150000);  // after the close, as nyind runs
        if (g_MyFunsMng.GetCount() == 0) g_MyFunsMng.LoadFun();
        g_MyInitIndicator();
    }
    void TearDown() override {
        g_MyRemoveIndicators();
        ny::CloseInstallation();
        CClockModule::UseSystemClock();
    }
    // Runs a picking dialog in which the user does `act`; the dialog's object afterwards.
    std::unique_ptr<D> Session(const std::function<void(User&)>& act) {
        auto dialog = std::make_unique<D>(m_ui);
        m_headless.dialogs.Expect("CAutoSelectDialog", [&](ny::HeadlessDialog& wnd) {
            User user{wnd};
            act(user);
            EXPECT_FALSE(wnd.m_bEnded) << "the dialog stays open";
        });
        dialog->DoModal();
        return dialog;
    }
    // The codes that nyind picks, run as its own process over an installation of its own.
    std::set<std::string> NyindPick(const std::string& args) { return nyind_test::PickedCodes(m_dir.path() / "nyind", args); }
    // The user loads the rule file of that name.
    void LoadRule(const char* name, User& user) {
        m_headless.dialogs.Expect("CSelStockFileDialog", [name](ny::HeadlessDialog& files) {
            auto& list = files.Get<ny::HeadlessListView>(CSelStockFileDialog::IDC_FILES);
            list.Choose(list.FindRow(name));
            files.Get<ny::HeadlessButton>(CSelStockFileDialog::IDC_OK).Click();
        });
        user.Click(D::IDC_LOADRULE);
    }
    static std::set<std::string> Codes(const std::vector<int>& ids) {
        std::set<std::string> codes;
        for (int id : ids) codes.insert(ny::FormatStockCode(id));
        return codes;
    }

    nyind_test::TempDir m_dir;
    ny::HeadlessDialogServices m_headless;
    ny::DialogServices m_ui = m_headless.Services();
};

TEST_F(AutoSelectTest, PickEqualsNyindAndFillsTheBlockAndARuleFileGivesItAgain) {
    const std::set<std::string> expected = NyindPick("--cond LXSZ:2 --cond SLXG:10,100 --scope sh");
    ASSERT_FALSE(expected.empty());
    const auto first = Session([&](User& user) {
        user.AddCondition(kRising, {"2"});
        user.AddCondition(kQuiet, {"10", "100"});
        EXPECT_EQ(user.Rows(), (std::vector<std::string>{"1 LXSZ(2)", "2 SLXG(10,100)"}));
        EXPECT_EQ(user.Text(D::IDC_EXPRESSION), "{1} AND {2}");
        user.Tick(kShanghai);
        user.Pick();
        m_headless.dialogs.Expect("CSaveSelConditonDialog", [](ny::HeadlessDialog& save) {
            EXPECT_EQ(save.Get<ny::HeadlessTextBox>(CSaveSelConditonDialog::IDC_NAME).GetText(), "LXSZ_SLXG");
            save.Get<ny::HeadlessButton>(CSaveSelConditonDialog::IDC_OK).Click();
        });
        user.Click(D::IDC_SAVERULE);
    });
    EXPECT_EQ(Codes(first->m_arResult), expected);
    EXPECT_EQ(CGroup::ReadGroupFile("自定义", "智能选股"), first->m_arResult);
    EXPECT_TRUE(g_MyChildView->m_bShowQuoteTable);
    EXPECT_EQ(g_MyChildView->m_QuoteTable.m_strName, "智能选股");
    EXPECT_EQ(g_MyChildView->m_QuoteTable.m_arStockIDs.size(), first->m_arResult.size());

    // The rule keeps the order and AND, not the parameters: those stay in the library's formulas.
    const auto second = Session([&](User& user) {
        LoadRule("LXSZ_SLXG", user);
        EXPECT_EQ(user.Rows(), (std::vector<std::string>{"1 LXSZ(2)", "2 SLXG(10,100)"}));
        user.Tick(kShanghai);
        user.Pick();
    });
    EXPECT_EQ(second->m_arResult, first->m_arResult);
}

TEST_F(AutoSelectTest, RefusalsShowTheirMessageAndKeepTheDialogOpen) {
    const std::string cut(4 + 100, '\x01');
    nyind_test::WriteText(m_dir.path() / "home/data/autostock/CUT.ast", cut);
    const std::string gone = std::string("\x02\0\0\0", 4) + "GONE" + std::string(252, '\0') + "LXSZ" +
                             std::string(252, '\0') + "\x02";
    nyind_test::WriteText(m_dir.path() / "home/data/autostock/GONE.ast", gone);
    const struct {
        const char* what;
        std::function<void(User&)> act;
        std::string message;                 // empty: none
        std::vector<std::string> rows;       // the condition list afterwards
    } cases[] = {
        {"no condition", [](User& u) { u.Tick(kShanghai); u.Click(D::IDC_EXCUSEL); }, "请加入选股条件", {}},
        {"no scope", [](User& u) { u.AddCondition(kRising, {"3"}); u.Click(D::IDC_EXCUSEL); }, "请选择选股票范围",
         {"1 LXSZ(3)"}},
        {"dates reversed",
         [](User& u) {
             u.AddCondition(kRising, {"3"});
             u.Tick(kShanghai);
             u.wnd.Get<ny::HeadlessCheckBox>(D::IDC_HISDATE).Click();
             u.wnd.Get<ny::HeadlessDatePicker>(D::IDC_BEGIN_DATE).Pick(20210601);
             u.wnd.Get<ny::HeadlessDatePicker>(D::IDC_END_DATE).Pick(20210501);
             u.Click(D::IDC_EXCUSEL);
         },
         "起始日期应在终止日期之前", {"1 LXSZ(3)"}},
        {"condition twice", [](User& u) { u.AddCondition(kRising, {"3"}); u.AddCondition(kRising, {"4"}); },
         "该指标已在列表中", {"1 LXSZ(3)"}},
        {"parameter below its minimum", [](User& u) { u.AddCondition(kRising, {"-5"}); }, "", {"1 LXSZ(2)"}},
        {"saving an empty list", [](User& u) { u.Click(D::IDC_SAVERULE); }, "选股条件列表中无条件,请先加入条件", {}},
        {"truncated rule file", [&](User& u) { LoadRule("CUT", u); },
         std::string(MSG_RULE_FILE_DAMAGED) + "CUT", {}},
        {"rule naming a deleted condition", [&](User& u) { LoadRule("GONE", u); }, "",
         {"1 LXSZ(3)"}},
    };
    for (const auto& c : cases) {
        m_headless.messages.m_shown.clear();
        Session([&](User& user) {
            c.act(user);
            EXPECT_EQ(user.Rows(), c.rows) << c.what;
            if (c.message.empty()) {
                EXPECT_TRUE(m_headless.messages.m_shown.empty()) << c.what;
            } else {
                ASSERT_EQ(m_headless.messages.m_shown.size(), 1u) << c.what;
                EXPECT_EQ(m_headless.messages.m_shown[0].text, c.message) << c.what;
            }
        });
        // Each case starts from the formulas' stored parameters.
        g_MyRemoveIndicators();
        g_MyInitIndicator();
    }
}

}  // namespace
