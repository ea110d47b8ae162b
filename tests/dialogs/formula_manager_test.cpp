// The formula manager in one scripted session: find a user formula under its group, change it
// through the formula dialog, export it, delete it, import it back byte-identical; the refusals
// of a wrong password and of a corrupt file.

#include <string>

#include "dialogs/formula_dialog.h"
#include "dialogs/formula_manager_dialog.h"
#include "dialogs/small_dialogs.h"
#include "host/files.h"
#include "tests/dialogs/dialogs_fixture.h"

namespace {

using M = CFormulaManagerDialog;

std::string Bytes(const std::string& path) {
    std::string bytes;
    ny::ReadWholeFile(path, &bytes);
    return bytes;
}

TEST_F(DialogsTest, ManagerFindsChangesExportsDeletesAndImportsAFormula) {
    AddFormula("MA", 0, 1, 1, "A:C;", "均线");
    AddFormula("MYF", 0, 7, 0, "A:C;", "我的");
    const std::string exported = m_dir.Path() + "myf.dat", again = m_dir.Path() + "again.dat";
    m_headless.files.m_answers = {exported, exported, again};
    // The formula dialog that "修改" opens: a new description, then OK.
    m_headless.dialogs.Expect("CFormulaManagerDialog", [&](ny::HeadlessDialog& wnd) {
        auto& tree = wnd.Get<ny::HeadlessTree>(M::IDC_TREE);
        auto click = [&](int id) { return wnd.Get<ny::HeadlessButton>(id).Click(); };
        const ny::TreeItem mine = tree.Find({"技术指标", "自定指标", "MYF 我的(用户)"});
        ASSERT_NE(mine, ny::kNoItem);
        EXPECT_EQ(tree.GetItemImage(mine), 3);
        EXPECT_NE(tree.Find({"技术指标", "趋向指标", "MA 均线(系统)"}), ny::kNoItem);

        tree.Choose(tree.Find({"技术指标", "趋向指标", "MA 均线(系统)"}));
        EXPECT_FALSE(click(M::IDC_DELETE)) << "a system formula can't be deleted";

        m_headless.dialogs.Expect("CFormulaDialog", [](ny::HeadlessDialog& f) {
            f.Get<ny::HeadlessTextBox>(CFormulaDialog::IDC_TITLE).Type("改过");
            f.Get<ny::HeadlessButton>(CFormulaDialog::IDC_OK).Click();
        });
        tree.Choose(tree.Find({"技术指标", "自定指标", "MYF 我的(用户)"}));
        EXPECT_TRUE(click(M::IDC_UPDATE));
        const ny::TreeItem changed = tree.Find({"技术指标", "自定指标", "MYF 改过(用户)"});
        ASSERT_NE(changed, ny::kNoItem);

        tree.Choose(changed);
        click(M::IDC_EXPORT);
        m_headless.messages.m_answers = {ny::MessageAnswer::Ok};
        click(M::IDC_DELETE);
        EXPECT_EQ(g_MyGetIndicator("MYF", 0), nullptr);
        EXPECT_EQ(tree.Find({"技术指标", "自定指标", "MYF 改过(用户)"}), ny::kNoItem);

        click(M::IDC_IMPORT);
        const ny::TreeItem back = tree.Find({"技术指标", "自定指标", "MYF 改过(用户)"});
        ASSERT_NE(back, ny::kNoItem);
        tree.Choose(back);
        click(M::IDC_EXPORT);
    });
    CFormulaManagerDialog dlg(m_ui);
    dlg.DoModal();
    EXPECT_TRUE(m_headless.dialogs.m_script.empty());
    EXPECT_EQ(m_headless.files.m_requests[0].proposedName, "MYF");
    EXPECT_EQ(m_headless.messages.m_shown.at(0).text, "确定删除选择指标?");
    EXPECT_FALSE(Bytes(exported).empty());
    EXPECT_EQ(Bytes(exported), Bytes(again));
}

TEST_F(DialogsTest, ManagerRefusalsLeaveTheLibraryAsItWas) {
    CIndicator* secret = AddFormula("SEC", 0, 7, 0, "A:C;", "密");
    secret->m_strPassword = "right";
    const std::string good = m_dir.Path() + "sec.dat", cut = m_dir.Path() + "cut.dat";
    ny::ExportFormula(*secret, good);
    ny::WriteFileAtomic(cut, Bytes(good).substr(0, 40));
    const struct {
        const char* what;
        int button;
        std::string password;  // typed into the password box, if one opens
        std::string file;      // answered by the file dialog
        std::string message;
    } rows[] = {
        {"wrong password on change", M::IDC_UPDATE, "wrong", "", "密码错误!"},
        {"wrong password on export", M::IDC_EXPORT, "Right", "", "密码错误!"},
        {"nothing selected for new", M::IDC_NEW, "", "", "请在左边公式树中选定一个与新建公式类型相同的结点!"},
        {"import of the same name", M::IDC_IMPORT, "", good, "SEC 在同类型指标中已存在!"},
        {"import of a cut file", M::IDC_IMPORT, "", cut, ""},
    };
    for (const auto& row : rows) {
        m_headless.messages.m_shown.clear();
        m_headless.files.m_answers = {row.file};
        const std::string before = Bytes(good);
        m_headless.dialogs.Expect("CFormulaManagerDialog", [&](ny::HeadlessDialog& wnd) {
            auto& tree = wnd.Get<ny::HeadlessTree>(M::IDC_TREE);
            if (row.button != M::IDC_NEW) tree.Choose(tree.Find({"技术指标", "自定指标", "SEC 密(用户)"}));
            m_headless.dialogs.Expect("CDlgInputPassword", [&](ny::HeadlessDialog& box) {
                box.Get<ny::HeadlessTextBox>(CDlgInputPassword::IDC_PASSWORD).Type(row.password);
                box.Get<ny::HeadlessButton>(IDOK).Click();
            });
            wnd.Get<ny::HeadlessButton>(row.button).Click();
        });
        CFormulaManagerDialog dlg(m_ui);
        dlg.DoModal();
        m_headless.dialogs.m_script.clear();
        EXPECT_EQ(g_MyIndicatorArray.size(), 1u) << row.what;
        EXPECT_EQ(secret->m_strTitle, "密") << row.what;
        if (!row.message.empty()) {
            ASSERT_FALSE(m_headless.messages.m_shown.empty()) << row.what;
            EXPECT_EQ(m_headless.messages.m_shown.back().text, row.message) << row.what;
        }
    }
}

}  // namespace
