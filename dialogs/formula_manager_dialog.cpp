#include "dialogs/formula_manager_dialog.h"

#include <algorithm>
#include <map>

#include "dialogs/formula_dialog.h"
#include "dialogs/formula_tree.h"
#include "dialogs/small_dialogs.h"
#include "host/global.h"
#include "model/library.h"

namespace {

const char* const kFormulaFilter = "指标文件 (*.dat)|*.dat|所有文件 (*.*)|*.*||";


}  // namespace

void CFormulaManagerDialog::OnInitDialog() {
    m_pTab = &m_pWnd->AddTabControl(IDC_TAB);
    m_pTree = &m_pWnd->AddTree(IDC_TREE);
    const struct {
        int id;
        const char* label;
        void (CFormulaManagerDialog::*handler)();
    } buttons[] = {
        {IDC_NEW, "新建", &CFormulaManagerDialog::OnNew}, {IDC_EXPORT, "导出", &CFormulaManagerDialog::OnExportFormula},
        {IDC_IMPORT, "导入", &CFormulaManagerDialog::OnImportFormula},
    };
    for (const auto& b : buttons) m_pWnd->AddButton(b.id, b.label).onClick = [this, h = b.handler] { (this->*h)(); };
    m_pWnd->AddButton(IDC_CLOSE, "关闭").onClick = [this] { EndDialog(ny::kDialogOk); };
    m_pUpdate = &m_pWnd->AddButton(IDC_UPDATE, "修改");
    m_pUpdate->onClick = [this] { OnUpdate(); };
    m_pDelete = &m_pWnd->AddButton(IDC_DELETE, "删除");
    m_pDelete->onClick = [this] { OnDelete(); };
    m_pUpdate->Enable(false);
    m_pDelete->Enable(false);
    int index = 0;
    for (const char* label : {"公式组", "全  部", "系  统", "用  户"}) m_pTab->InsertItem(index++, label);
    m_pTab->SetCurSel(kTabGroups);
    m_pTab->onSelChange = [this] { OnSelchangeTab(); };
    m_pTree->onSelChange = [this] { OnSelchangedIndicatorTree(); };
    m_pTree->onDblClick = [this] { OnDblclkIndicatorTree(); };
    FullFormulaGroupTree();
    const std::vector<ny::TreeItem> roots = m_pTree->GetChildren(ny::kNoItem);
    if (!roots.empty()) m_pTree->Expand(roots.front());
}

void CFormulaManagerDialog::FillTree(Shown shown, bool grouped) {
    m_pTree->DeleteAllItems();
    std::map<short, ny::TreeItem> roots;
    std::map<short, std::map<short, ny::TreeItem>> groups;
    for (const ny::FormulaLabel& kind : ny::kKindLabels) {
        roots[kind.value] = m_pTree->InsertItem(kind.label, ny::kImageRoot, ny::kNoItem);
        if (grouped) groups[kind.value] = ny::AddGroupNodes(*m_pTree, roots[kind.value], ny::GroupsOfKind(kind.value));
    }
    for (CIndicator* f : g_MyIndicatorArray) {
        if (f->m_IsEditable == 0 || !roots.count(f->m_MainType)) continue;
        if ((shown == Shown::System && f->m_SysIndex == 0) || (shown == Shown::User && f->m_SysIndex != 0)) continue;
        ny::TreeItem parent = roots[f->m_MainType];
        if (grouped && !ny::GroupsOfKind(f->m_MainType).empty()) {
            auto group = groups[f->m_MainType].find(f->m_SubType);
            if (group == groups[f->m_MainType].end()) continue;
            parent = group->second;
        }
        m_pTree->InsertItem(ny::FormulaItemText(*f), ny::FormulaImageOf(*f), parent, f);
    }
}

void CFormulaManagerDialog::FullFormulaGroupTree() { FillTree(Shown::All, true); }
void CFormulaManagerDialog::FullFormulaAllTree() { FillTree(Shown::All, false); }
void CFormulaManagerDialog::FullFormulaSystemTree() { FillTree(Shown::System, true); }
void CFormulaManagerDialog::FullFormulaUserTree() { FillTree(Shown::User, true); }

void CFormulaManagerDialog::FullFormulaCurTab(short mainType, short subType) {
    switch (m_pTab->GetCurSel()) {
        case kTabAll: FullFormulaAllTree(); break;
        case kTabSystem: FullFormulaSystemTree(); break;
        case kTabUser: FullFormulaUserTree(); break;
        default: FullFormulaGroupTree(); break;
    }
    for (ny::TreeItem root : m_pTree->GetChildren(ny::kNoItem)) {
        if (g_MyGetIndicatorType(m_pTree->GetItemText(root)) != mainType) continue;
        m_pTree->Expand(root);
        ny::TreeItem top = root;
        for (ny::TreeItem child : m_pTree->GetChildren(root))
            if (ny::FormulaOf(*m_pTree, child) == nullptr && g_MyGetIndicatorType(m_pTree->GetItemText(child)) == subType) {
                m_pTree->Expand(child);
                top = child;
                break;
            }
        m_pTree->SelectSetFirstVisible(top);
        break;
    }
    m_pUpdate->Enable(false);
    m_pDelete->Enable(false);
}

void CFormulaManagerDialog::OnSelchangeTab() { FullFormulaCurTab(0, -1); }

void CFormulaManagerDialog::OnSelchangedIndicatorTree() {
    const CIndicator* f = SelectedFormula();
    m_pUpdate->Enable(f != nullptr && f->m_IsEditable != 0);
    m_pDelete->Enable(f != nullptr && f->m_SysIndex == 0);
}

void CFormulaManagerDialog::OnDblclkIndicatorTree() { OnUpdate(); }

CIndicator* CFormulaManagerDialog::SelectedFormula() const { return ny::FormulaOf(*m_pTree, m_pTree->GetSelectedItem()); }

bool CFormulaManagerDialog::PasswordAccepted(const CIndicator& formula) {
    if (formula.m_strPassword.empty()) return true;
    CDlgInputPassword dlg(m_ui);
    if (dlg.DoModal() != ny::kDialogOk) return false;
    if (dlg.m_strPassword == formula.m_strPassword) return true;
    Message("密码错误!", ny::MessageButtons::Ok, ny::MessageIcon::Error);
    return false;
}

void CFormulaManagerDialog::OnNew() {
    const ny::TreeItem item = m_pTree->GetSelectedItem();
    if (item == ny::kNoItem) {
        Message("请在左边公式树中选定一个与新建公式类型相同的结点!");
        return;
    }
    short mainType = 0, subType = 7;
    if (const CIndicator* f = ny::FormulaOf(*m_pTree, item)) {
        mainType = f->m_MainType;
        subType = f->m_SubType;
    } else if (const ny::TreeItem parent = m_pTree->GetParentItem(item); parent != ny::kNoItem) {
        mainType = g_MyGetIndicatorType(m_pTree->GetItemText(parent));
        subType = g_MyGetIndicatorType(m_pTree->GetItemText(item));
    }
    CFormulaDialog dlg(m_ui);
    dlg.SetTarget(mainType, subType);
    if (dlg.DoModal() == ny::kDialogOk) FullFormulaCurTab(mainType, subType);
}

void CFormulaManagerDialog::OnUpdate() {
    CIndicator* f = SelectedFormula();
    if (f == nullptr || !PasswordAccepted(*f)) return;
    CFormulaDialog dlg(m_ui);
    dlg.SetTarget(f);
    dlg.DoModal();
    FullFormulaCurTab(f->m_MainType, f->m_SubType);
}

void CFormulaManagerDialog::OnDelete() {
    const CIndicator* f = SelectedFormula();
    if (f == nullptr) return;
    if (Message("确定删除选择指标?", ny::MessageButtons::OkCancel, ny::MessageIcon::Question) != ny::MessageAnswer::Ok)
        return;
    const ny::TreeItem item = m_pTree->GetSelectedItem();
    // The formula has no owner once it leaves the array: the library deletes it with its entry.
    const CString name = f->m_strName;
    const short mainType = f->m_MainType;
    auto entry = std::find_if(g_MyIndicatorArray.begin(), g_MyIndicatorArray.end(), [&](const CIndicator* p) {
        return p->m_MainType == mainType && p->m_SubType == f->m_SubType && p->m_strName == name;
    });
    if (entry == g_MyIndicatorArray.end()) return;
    m_pTree->DeleteItem(item);
    g_MyRemoveIndicatorByPos(name, mainType);
    OnSelchangedIndicatorTree();
}

void CFormulaManagerDialog::OnExportFormula() {
    const CIndicator* f = SelectedFormula();
    if (f == nullptr || f->m_IsEditable == 0) {
        Message("请选中可编辑的指标!");
        return;
    }
    if (!PasswordAccepted(*f)) return;
    ny::FileDialogRequest request{kFormulaFilter, "ind", f->m_strName, true};
    std::string path;
    if (!m_ui.files->AskSave(request, &path)) return;
    ny::ExportFormula(*f, path);
}

void CFormulaManagerDialog::OnImportFormula() {
    ny::FileDialogRequest request{kFormulaFilter, "ind", "", false};
    std::string path;
    if (!m_ui.files->AskOpen(request, &path)) return;
    {
        ny::MessageRoute route(*m_ui.messages);
        if (ny::ImportFormula(path) != ny::ImportStatus::Ok) return;
    }
    FullFormulaCurTab(0, -1);
}
