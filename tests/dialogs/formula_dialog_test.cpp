// The formula dialog in scripted sessions: a new formula with parameters, axis lines and a
// password from the boxes to the library and the user's file; every refusal with its text.

#include <string>
#include <tuple>
#include <vector>

#include "dialogs/formula_dialog.h"
#include "editor/color_edit_wnd.h"
#include "tests/dialogs/dialogs_fixture.h"

namespace {

using D = CFormulaDialog;

// One user action in the dialog.
struct Act {
    enum Kind { Type, Click, Tick, Source, Tab } kind;
    int id = 0;
    std::string text = {};
};

int ParamBox(int param, int column) { return D::IDC_PAGE1 + param * 4 + column; }

std::vector<Act> ParamRow(int param, const char* name, const char* lo, const char* hi, const char* def) {
    return {{Act::Type, ParamBox(param, 0), name}, {Act::Type, ParamBox(param, 1), lo},
            {Act::Type, ParamBox(param, 2), hi}, {Act::Type, ParamBox(param, 3), def}};
}

std::vector<Act> operator+(std::vector<Act> a, const std::vector<Act>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

void Perform(ny::HeadlessDialog& wnd, CFormulaDialog& dlg, const Act& act) {
    switch (act.kind) {
        case Act::Type: ASSERT_TRUE(wnd.Get<ny::HeadlessTextBox>(act.id).Type(act.text)) << act.id; break;
        case Act::Click: wnd.Get<ny::HeadlessButton>(act.id).Click(); break;
        case Act::Tick: wnd.Get<ny::HeadlessCheckBox>(act.id).Click(); break;
        case Act::Source: dlg.m_pEdit->SetText(act.text); break;
        case Act::Tab: wnd.Get<ny::HeadlessTabControl>(act.id).Choose(std::stoi(act.text)); break;
    }
}

// Runs the dialog with the actions; the window as it was left, for a look at its boxes.
struct Session {
    int result = 0;
    bool ended = false;
    std::string info;
};

Session RunDialog(ny::HeadlessDialogServices& headless, CFormulaDialog& dlg, const std::vector<Act>& acts) {
    Session session;
    headless.dialogs.Expect("CFormulaDialog", [&](ny::HeadlessDialog& wnd) {
        for (const Act& act : acts) Perform(wnd, dlg, act);
        session.ended = wnd.m_bEnded;
        session.info = wnd.Get<ny::HeadlessTextBox>(D::IDC_INFO).m_text;
    });
    session.result = dlg.DoModal();
    return session;
}

const std::vector<Act> kNewFormula =
    std::vector<Act>{{Act::Type, D::IDC_NAME, "MYF"}, {Act::Type, D::IDC_TITLE, "我的均线"},
                     {Act::Source, 0, "MA1:MA(CLOSE,N);\r\nMA2:MA(CLOSE,M);"}} +
    ParamRow(0, "N", "1", "100", "10") + ParamRow(1, "M", "2", "50", "20") +
    std::vector<Act>{{Act::Type, D::IDC_AXES, "20;80;"}, {Act::Tick, D::IDC_PASSWORD_CHECK},
                     {Act::Type, D::IDC_PASSWORD, "pw"}};

TEST_F(DialogsTest, NewFormulaPassesTheTestAndGoesIntoTheLibraryAndTheUsersFile) {
    CFormulaDialog dlg(m_ui);
    dlg.SetTarget(0, 7);
    const Session session = RunDialog(m_headless, dlg, kNewFormula + std::vector<Act>{{Act::Click, D::IDC_TEST}, {Act::Click, D::IDC_OK}});
    EXPECT_TRUE(session.ended);
    EXPECT_EQ(session.result, ny::kDialogOk);
    EXPECT_EQ(session.info, "通过测试");

    g_MySaveIndicator();
    g_MyRemoveIndicators();
    g_MyInitIndicator();
    const CIndicator* f = g_MyGetIndicator("MYF", 0);
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(std::tuple(f->m_strTitle, f->m_SubType, f->m_SysIndex, f->m_cDrawPos, f->m_strPassword, f->m_strAxes),
              std::tuple("我的均线", 7, 0, 0, "pw", "20;80;"));
    std::vector<short> axes;
    for (const CAxeValue* axe : f->m_arAxes) axes.push_back(axe->m_nValue);
    EXPECT_EQ(axes, (std::vector<short>{20, 80}));
    std::vector<std::tuple<CString, short, short, short>> params;
    for (const CParam* p : f->m_arParams) params.emplace_back(p->m_strName, p->m_nMin, p->m_nMax, p->m_nDefault);
    EXPECT_EQ(params, (std::vector<std::tuple<CString, short, short, short>>{{"N", 1, 100, 10}, {"M", 2, 50, 20}}));
    ASSERT_EQ(f->m_arExpressions.size(), 2u);
    EXPECT_EQ(f->m_arExpressions[0]->m_strName, "MA1");
    EXPECT_EQ(f->m_arExpressions[1]->m_strText, "MA(CLOSE,M)");
}

TEST_F(DialogsTest, EachRefusalShowsItsTextKeepsTheDialogOpenAndTheLibraryAsItWas) {
    AddFormula("MA", 0, 1, 1);
    const std::vector<Act> named{{Act::Type, D::IDC_NAME, "X"}, {Act::Source, 0, "A:C;"}};
    const struct {
        const char* what;
        std::vector<Act> acts;
        std::string info;     // the information box afterwards
        std::string message;  // or the message box shown
    } rows[] = {
        {"empty name", {{Act::Source, 0, "A:C;"}},
         "当前公式: 请写公式名字.\r\n错误句: \r\n详细信息: 公式没有名字\r\n错误起始位置: 0 长度: 0\r\n", ""},
        {"name of the same kind", {{Act::Type, D::IDC_NAME, "MA"}, {Act::Source, 0, "A:C;"}},
         "当前公式: MA\r\n错误句: \r\n详细信息: 新建的公式，名称与已有的公式名称重名,请修改.\r\n错误起始位置: 0 长度: 0\r\n", ""},
        {"smallest not below largest", named + ParamRow(0, "N", "5", "5", "5"), "当前公式: X\r\n参数最小值应小于最大值!\r\n", ""},
        {"default above largest", named + std::vector<Act>{{Act::Tab, D::IDC_TAB, "1"}} + ParamRow(4, "N", "1", "5", "6"), "当前公式: X\r\n缺省值超出范围!\r\n", ""},
        {"source too long", {{Act::Type, D::IDC_NAME, "X"}, {Act::Source, 0, "A:" + std::string(9999, '1')}}, "",
         "公式源码过长,请精简，本源码支持最多大约150行指标源码!"},
    };
    for (const auto& row : rows) {
        m_headless.messages.m_shown.clear();
        CFormulaDialog dlg(m_ui);
        dlg.SetTarget(0, 7);
        const Session session = RunDialog(m_headless, dlg, row.acts + std::vector<Act>{{Act::Click, D::IDC_OK}});
        EXPECT_FALSE(session.ended) << row.what;
        EXPECT_EQ(g_MyIndicatorArray.size(), 1u) << row.what;
        if (!row.info.empty()) {
            EXPECT_EQ(session.info, row.info) << row.what;
        }
        if (!row.message.empty()) {
            ASSERT_EQ(m_headless.messages.m_shown.size(), 1u) << row.what;
            EXPECT_EQ(m_headless.messages.m_shown[0].text, row.message) << row.what;
        }
    }
}

TEST_F(DialogsTest, SourceOfExactlyTenThousandCharactersIsTested) {
    CFormulaDialog dlg(m_ui);
    dlg.SetTarget(0, 7);
    const Session session = RunDialog(m_headless, dlg, {{Act::Type, D::IDC_NAME, "X"}, {Act::Source, 0, "A:" + std::string(9998, '1')},
                                                  {Act::Click, D::IDC_OK}});
    EXPECT_TRUE(m_headless.messages.m_shown.empty());
    EXPECT_NE(session.info.find("当前公式: X"), std::string::npos);
}

TEST_F(DialogsTest, ChangeModeShowsTheFormulaAndRefusesASystemFormula) {
    CIndicator* system = AddFormula("MA", 0, 7, 1, "A:C;", "均线");
    CFormulaDialog dlg(m_ui);
    dlg.SetTarget(system);
    std::string name, group, title;
    bool nameReadOnly = false;
    m_headless.dialogs.Expect("CFormulaDialog", [&](ny::HeadlessDialog& wnd) {
        title = wnd.GetCaption();
        name = wnd.Get<ny::HeadlessTextBox>(D::IDC_NAME).m_text;
        nameReadOnly = wnd.Get<ny::HeadlessTextBox>(D::IDC_NAME).m_bReadOnly;
        auto& groups = wnd.Get<ny::HeadlessComboBox>(D::IDC_GROUP);
        group = groups.GetText(groups.GetCurSel());
        wnd.Get<ny::HeadlessButton>(D::IDC_OK).Click();
    });
    dlg.DoModal();
    EXPECT_EQ(title, "指标公式编辑器");
    EXPECT_EQ(name, "MA");
    EXPECT_TRUE(nameReadOnly);
    EXPECT_EQ(group, "自定指标");
    EXPECT_EQ(dlg.m_nInfoMode, D::kInfoTranslation);
    ASSERT_EQ(m_headless.messages.m_shown.size(), 1u);
    EXPECT_EQ(m_headless.messages.m_shown[0].text, "系统公式不能更改，只能修改自定义公式!");
}

}  // namespace
