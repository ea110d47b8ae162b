#include "dialogs/small_dialogs.h"

#include <cctype>
#include <memory>

#include "dialogs/formula_tree.h"
#include "model/library.h"

namespace {

bool IsDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

ny::TextBox& Box(ny::DialogWindow& wnd, int id, const char* label, const CString& text) {
    ny::TextBox& box = wnd.AddTextBox(id, label);
    box.SetText(text);
    return box;
}

ny::ListView& ListWithColumns(ny::DialogWindow& wnd, int id, std::initializer_list<const char*> columns) {
    ny::ListView& list = wnd.AddListView(id);
    int column = 0;
    for (const char* text : columns) list.InsertColumn(column++, text, 100);
    return list;
}

// Make, edit and delete the objects of one array of CFormulaDlg through its value dialog.
template <class T, class Edit>
void AddObject(std::vector<T*>& objects, const char* caption, Edit edit) {
    auto object = std::make_unique<T>();
    if (edit(*object, caption)) objects.push_back(object.release());
}

template <class T, class Edit>
void EditObject(std::vector<T*>& objects, int row, const char* caption, Edit edit) {
    if (row >= 0) edit(*objects[row], caption);
}

template <class T>
void DeleteObject(std::vector<T*>& objects, int row) {
    if (row < 0) return;
    delete objects[row];
    objects.erase(objects.begin() + row);
}

}  // namespace

// ---- CDlgInputPassword ----

void CDlgInputPassword::OnInitDialog() {
    m_pWnd->SetCaption("请输入密码");
    m_pBox = &m_pWnd->AddTextBox(IDC_PASSWORD, "", ny::TextStyle::Password);
    m_pBox->SetText(m_strPassword);
    m_pBox->SetFocus();
    AddOkCancel(IDOK, IDCANCEL, [this] { OnOK(); }, [this] { EndDialog(ny::kDialogCancel); });
}

void CDlgInputPassword::OnOK() {
    m_strPassword = m_pBox->GetText().substr(0, kMaxPassword);
    EndDialog(ny::kDialogOk);
}

// ---- CAxeValueDlg ----

void CAxeValueDlg::OnInitDialog() {
    m_pWnd->SetCaption(m_strCaption);
    m_pValue = &Box(*m_pWnd, IDC_VALUE, "", ny::DecimalText(m_nValue));
    m_pValue->charFilter = IsDigit;
    m_pCritical = &m_pWnd->AddCheckBox(IDC_CRITICAL, "临界线");
    m_pCritical->SetChecked(m_bCritical != 0);
    AddOkCancel(IDOK, IDCANCEL, [this] { OnOK(); }, [this] { EndDialog(ny::kDialogCancel); });
}

void CAxeValueDlg::OnOK() {
    m_nValue = ny::ReadDecimal(m_pValue->GetText());
    m_bCritical = m_pCritical->IsChecked() ? 1 : 0;
    if (m_nValue >= 10001) {
        Message("请输入一个0到10000之间的数 ");
        EndDialog(ny::kDialogCancel);
        return;
    }
    EndDialog(ny::kDialogOk);
}

// ---- CExpressionDlg ----

void CExpressionDlg::OnInitDialog() {
    m_pWnd->SetCaption(m_strCaption);
    m_pName = &Box(*m_pWnd, IDC_NAME, "公式名称", m_strName);
    m_pText = &Box(*m_pWnd, IDC_TEXT, "表达式", m_strText);
    m_pType = &m_pWnd->AddComboBox(IDC_TYPE, "");
    m_pType->AddString("中间变量 :=");
    m_pType->AddString("输出线 :");
    m_pType->SetCurSel(m_nType != 0 ? 1 : 0);
    AddOkCancel(IDOK, IDCANCEL, [this] { OnOK(); }, [this] { EndDialog(ny::kDialogCancel); });
}

void CExpressionDlg::OnOK() {
    m_strName = m_pName->GetText();
    m_strText = m_pText->GetText();
    m_nType = m_pType->GetCurSel() == 1 ? 1 : 0;
    EndDialog(ny::kDialogOk);
}

// ---- CParamDlg ----

void CParamDlg::OnInitDialog() {
    m_pWnd->SetCaption(m_strCaption);
    m_pName = &Box(*m_pWnd, IDC_NAME, "参数名称", m_strName);
    m_pDefault = &Box(*m_pWnd, IDC_DEFAULT, "缺省值", ny::DecimalText(m_nDefault));
    m_pValue = &Box(*m_pWnd, IDC_VALUE, "数值", ny::DecimalText(m_nValue));
    m_pName->SetReadOnly(m_bValueOnly != 0);
    m_pDefault->SetReadOnly(m_bValueOnly != 0);
    m_pValue->SetReadOnly(m_bValueOnly == 0);
    AddOkCancel(IDOK, IDCANCEL, [this] { OnOK(); }, [this] { EndDialog(ny::kDialogCancel); });
}

void CParamDlg::OnOK() {
    m_strName = m_pName->GetText();
    m_nDefault = static_cast<short>(ny::ReadDecimal(m_pDefault->GetText()));
    m_nValue = static_cast<short>(ny::ReadDecimal(m_pValue->GetText()));
    EndDialog(ny::kDialogOk);
}

// ---- CSetParamDlg ----

void CSetParamDlg::OnInitDialog() {
    m_pList = &ListWithColumns(*m_pWnd, IDC_LIST, {"参数名称", "缺省值", "当前值"});
    m_pList->onDblClick = [this] { OnButtonEdit(); };
    m_pWnd->AddButton(IDC_EDIT, "修改").onClick = [this] { OnButtonEdit(); };
    AddOkCancel(IDOK, IDCANCEL, [this] { EndDialog(ny::kDialogOk); }, [this] { EndDialog(ny::kDialogCancel); });
    FillParamList();
}

void CSetParamDlg::FillParamList() {
    m_pList->DeleteAllItems();
    for (size_t i = 0; i < m_arParams.size(); ++i) {
        const CParam& p = *m_arParams[i];
        const int row = m_pList->InsertItem(static_cast<int>(i), p.m_strName);
        m_pList->SetItemText(row, 1, ny::DecimalText(p.m_nDefault));
        const short value = p.GetParam(m_nPeriod);
        m_pList->SetItemText(row, 2, ny::DecimalText(value < 0 ? 0 : value));
    }
}

void CSetParamDlg::OnButtonEdit() {
    const int row = m_pList->GetSelectedRow();
    if (row < 0 || row >= static_cast<int>(m_arParams.size())) return;
    CParam& param = *m_arParams[row];
    CParamDlg dlg(m_ui);
    dlg.m_strCaption = "修改参数";
    dlg.m_bValueOnly = 1;
    dlg.m_strName = param.m_strName;
    dlg.m_nDefault = param.m_nDefault;
    const short value = param.GetParam(m_nPeriod);
    dlg.m_nValue = value < 0 ? 0 : value;
    if (dlg.DoModal() != ny::kDialogOk) return;
    // A stored 0 would read as "never set"; -1 keeps a typed 0 apart from that.
    param.SetParam(m_nPeriod, dlg.m_nValue == 0 ? -1 : dlg.m_nValue);
    FillParamList();
}

// ---- CFormulaDlg ----

namespace {

bool EditParam(ny::DialogServices& ui, CParam& param, const char* caption) {
    CParamDlg dlg(ui);
    dlg.m_strCaption = caption;
    dlg.m_strName = param.m_strName;
    dlg.m_nDefault = param.m_nDefault;
    if (dlg.DoModal() != ny::kDialogOk) return false;
    param.m_strName = dlg.m_strName;
    param.m_nDefault = dlg.m_nDefault;
    return true;
}

bool EditAxe(ny::DialogServices& ui, CAxeValue& axe, const char* caption) {
    CAxeValueDlg dlg(ui);
    dlg.m_strCaption = caption;
    dlg.m_nValue = axe.m_nValue;
    dlg.m_bCritical = axe.m_cCritical;
    if (dlg.DoModal() != ny::kDialogOk) return false;
    axe.m_nValue = static_cast<short>(dlg.m_nValue);
    axe.m_cCritical = static_cast<char>(dlg.m_bCritical);
    return true;
}

bool EditExpression(ny::DialogServices& ui, CExpression& expression, const char* caption) {
    CExpressionDlg dlg(ui);
    dlg.m_strCaption = caption;
    dlg.m_strName = expression.m_strName;
    dlg.m_strText = expression.m_strText;
    dlg.m_nType = expression.m_nType;
    if (dlg.DoModal() != ny::kDialogOk) return false;
    expression.m_strName = dlg.m_strName;
    expression.m_strText = dlg.m_strText;
    expression.m_nType = static_cast<short>(dlg.m_nType);
    return true;
}

}  // namespace

void CFormulaDlg::OnInitDialog() {
    m_pName = &Box(*m_pWnd, IDC_NAME, "公式名称", m_strName);
    m_pTitle = &Box(*m_pWnd, IDC_TITLE, "公式描述", m_strTitle);
    m_pDrawOnMain = &m_pWnd->AddCheckBox(IDC_DRAW_ON_MAIN, "主图叠加");
    m_pDrawOnMain->SetChecked(m_bDrawOnMain != 0);
    m_pProtected = &m_pWnd->AddCheckBox(IDC_PROTECTED, "密码保护");
    m_pProtected->SetChecked(m_bProtected != 0);
    m_pParams = &ListWithColumns(*m_pWnd, IDC_PARAM_LIST, {"参数名称", "缺省值"});
    m_pAxes = &ListWithColumns(*m_pWnd, IDC_AXE_LIST, {"坐标位置"});
    m_pExpressions = &ListWithColumns(*m_pWnd, IDC_EXP_LIST, {"公式名称", "表达式"});
    const struct {
        int id;
        const char* label;
        void (CFormulaDlg::*handler)();
    } buttons[] = {
        {IDC_PARAM_ADD, "增加", &CFormulaDlg::OnButtonParamAdd}, {IDC_PARAM_DEL, "删除", &CFormulaDlg::OnButtonParamDel},
        {IDC_PARAM_EDIT, "修改", &CFormulaDlg::OnButtonParamEdit}, {IDC_AXE_ADD, "增加", &CFormulaDlg::OnButtonAxeAdd},
        {IDC_AXE_DEL, "删除", &CFormulaDlg::OnButtonAxeDel}, {IDC_AXE_EDIT, "修改", &CFormulaDlg::OnButtonAxeEdit},
        {IDC_EXP_ADD, "增加", &CFormulaDlg::OnButtonExpAdd}, {IDC_EXP_DEL, "删除", &CFormulaDlg::OnButtonExpDel},
        {IDC_EXP_EDIT, "修改", &CFormulaDlg::OnButtonExpEdit},
    };
    for (const auto& button : buttons) m_pWnd->AddButton(button.id, button.label).onClick = [this, h = button.handler] { (this->*h)(); };
    m_pParams->onDblClick = [this] { OnButtonParamEdit(); };
    m_pAxes->onDblClick = [this] { OnButtonAxeEdit(); };
    m_pExpressions->onDblClick = [this] { OnButtonExpEdit(); };
    AddOkCancel(IDOK, IDCANCEL, [this] { OnOK(); }, [this] { EndDialog(ny::kDialogCancel); });
    FillParamList();
    FillAxeList();
    FillExpList();
}

void CFormulaDlg::OnOK() {
    m_strName = m_pName->GetText();
    m_strTitle = m_pTitle->GetText();
    m_bDrawOnMain = m_pDrawOnMain->IsChecked() ? 1 : 0;
    m_bProtected = m_pProtected->IsChecked() ? 1 : 0;
    EndDialog(ny::kDialogOk);
}

int CFormulaDlg::SelectedRow(ny::ListView& list, size_t count) {
    const int row = list.GetSelectedRow();
    return row >= 0 && row < static_cast<int>(count) ? row : -1;
}

void CFormulaDlg::FillParamList() {
    m_pParams->DeleteAllItems();
    for (const CParam* p : m_arParams) {
        const int row = m_pParams->InsertItem(m_pParams->GetItemCount(), p->m_strName);
        m_pParams->SetItemText(row, 1, ny::DecimalText(p->m_nDefault));
    }
}

void CFormulaDlg::FillAxeList() {
    m_pAxes->DeleteAllItems();
    for (const CAxeValue* axe : m_arAxes) m_pAxes->InsertItem(m_pAxes->GetItemCount(), ny::DecimalText(axe->m_nValue));
}

void CFormulaDlg::FillExpList() {
    m_pExpressions->DeleteAllItems();
    for (const CExpression* e : m_arExpressions) {
        const int row = m_pExpressions->InsertItem(m_pExpressions->GetItemCount(), e->m_strName);
        m_pExpressions->SetItemText(row, 1, (e->m_nType != 0 ? "= " : ": ") + e->m_strText);
    }
}

void CFormulaDlg::OnButtonParamAdd() {
    AddObject(m_arParams, "增加参数", [this](CParam& p, const char* c) { return EditParam(m_ui, p, c); });
    FillParamList();
}

void CFormulaDlg::OnButtonParamEdit() {
    EditObject(m_arParams, SelectedRow(*m_pParams, m_arParams.size()), "修改参数",
               [this](CParam& p, const char* c) { return EditParam(m_ui, p, c); });
    FillParamList();
}

void CFormulaDlg::OnButtonParamDel() {
    DeleteObject(m_arParams, SelectedRow(*m_pParams, m_arParams.size()));
    FillParamList();
}

void CFormulaDlg::OnButtonAxeAdd() {
    AddObject(m_arAxes, "增加坐标线位置", [this](CAxeValue& a, const char* c) { return EditAxe(m_ui, a, c); });
    FillAxeList();
}

void CFormulaDlg::OnButtonAxeEdit() {
    EditObject(m_arAxes, SelectedRow(*m_pAxes, m_arAxes.size()), "修改坐标线位置",
               [this](CAxeValue& a, const char* c) { return EditAxe(m_ui, a, c); });
    FillAxeList();
}

void CFormulaDlg::OnButtonAxeDel() {
    DeleteObject(m_arAxes, SelectedRow(*m_pAxes, m_arAxes.size()));
    FillAxeList();
}

void CFormulaDlg::OnButtonExpAdd() {
    AddObject(m_arExpressions, "增加表达式", [this](CExpression& e, const char* c) { return EditExpression(m_ui, e, c); });
    FillExpList();
}

void CFormulaDlg::OnButtonExpEdit() {
    EditObject(m_arExpressions, SelectedRow(*m_pExpressions, m_arExpressions.size()), "修改表达式",
               [this](CExpression& e, const char* c) { return EditExpression(m_ui, e, c); });
    FillExpList();
}

void CFormulaDlg::OnButtonExpDel() {
    DeleteObject(m_arExpressions, SelectedRow(*m_pExpressions, m_arExpressions.size()));
    FillExpList();
}

// ---- CDlgSelectIndicator ----

void CDlgSelectIndicator::OnInitDialog() {
    m_pWnd->SetCaption("选择指标");
    m_pTree = &m_pWnd->AddTree(IDC_TREE);
    m_pTree->onDblClick = [this] { OnDblclkTreeIndicator(); };
    m_pWnd->AddButton(IDC_USAGE, "用法");
    AddOkCancel(IDOK, IDCANCEL, [this] { OnOK(); }, [this] { EndDialog(ny::kDialogCancel); });
    InitIndicatorTree();
}

void CDlgSelectIndicator::InitIndicatorTree() {
    m_pTree->DeleteAllItems();
    const bool byKind = m_nKind == 2 || m_nKind == 3;
    const char* rootLabel = m_nKind == 3 ? "五彩K线" : m_nKind == 2 ? "交易系统" : m_bMainChart ? "主图指标" : "技术指标";
    const ny::TreeItem root = m_pTree->InsertItem(rootLabel, ny::kImageRoot, ny::kNoItem);
    std::map<short, ny::TreeItem> groups;
    if (!byKind && !m_bMainChart) groups = ny::AddGroupNodes(*m_pTree, root, ny::kIndicatorGroups);
    for (CIndicator* f : g_MyIndicatorArray) {
        ny::TreeItem parent = root;
        if (byKind) {
            if (f->m_IsEditable == 0 || f->m_MainType != m_nKind) continue;
        } else if (m_bMainChart) {
            if (f->m_MainType == 2 || f->m_cDrawPos != 1) continue;
        } else {
            auto group = groups.find(f->m_SubType);
            if (f->m_IsEditable == 0 || f->m_MainType != 0 || group == groups.end()) continue;
            parent = group->second;
        }
        m_pTree->InsertItem(ny::FormulaItemText(*f, byKind), ny::FormulaImageOf(*f), parent, f);
    }
    m_pTree->Expand(root);
}

void CDlgSelectIndicator::OnOK() {
    m_strName.clear();
    if (const CIndicator* f = ny::FormulaOf(*m_pTree, m_pTree->GetSelectedItem())) {
        m_strName = f->m_strName;
        m_nKind = f->m_MainType;
    }
    EndDialog(ny::kDialogOk);
}

void CDlgSelectIndicator::OnDblclkTreeIndicator() {
    const CIndicator* f = ny::FormulaOf(*m_pTree, m_pTree->GetSelectedItem());
    if (f == nullptr) return;
    m_strName = f->m_strName;
    EndDialog(ny::kDialogOk);
}

// ---- CFunctionDialog ----

void CFunctionDialog::OnInitDialog() {
    m_pWnd->SetCaption("插入函数");
    m_pClasses = &ListWithColumns(*m_pWnd, IDC_CLASS_LIST, {""});
    for (int nClass = 0; ny::FunctionClassCaption(nClass) != nullptr; ++nClass)
        m_pClasses->InsertItem(nClass, ny::FunctionClassCaption(nClass));
    m_pFunctions = &ListWithColumns(*m_pWnd, IDC_FUNC_LIST, {"函数名", "函数说明"});
    m_pFunctions->SetProperty("SORT_COLUMN", 0);
    m_pFunctions->SetProperty("SORT_DIRECTION", 1);
    m_pHelp = &m_pWnd->AddTextBox(IDC_HELP, "", ny::TextStyle::MultiLine);
    m_pHelp->SetReadOnly(true);
    m_pClasses->onSelChange = [this] { FillFunc(m_pClasses->GetSelectedRow()); };
    m_pFunctions->onSelChange = [this] { FillFuncTipe(m_pFunctions->GetSelectedRow()); };
    m_pFunctions->onDblClick = [this] {
        FillFuncTipe(m_pFunctions->GetSelectedRow());
        OnOK();
    };
    m_pFunctions->onColumnClick = [this](int column) { OnColumnClick(column); };
    AddOkCancel(IDOK, IDCANCEL, [this] { OnOK(); }, [this] { EndDialog(ny::kDialogCancel); });
    FillFunc(0);
}

void CFunctionDialog::FillFunc(int nClass) {
    m_pFunctions->DeleteAllItems();
    for (int i = 0; i < g_MyFunsMng.GetCount(); ++i) {
        FUN_ITEM* item = g_MyFunsMng.GetFun(i);
        if (nClass != 0 && item->m_cClass != nClass) continue;
        const int row = m_pFunctions->InsertItem(m_pFunctions->GetItemCount(), item->m_strName, item);
        m_pFunctions->SetItemText(row, 1, item->m_strShort);
    }
    m_pHelp->SetText("");
}

void CFunctionDialog::FillFuncTipe(int row) {
    const auto* item = static_cast<const FUN_ITEM*>(m_pFunctions->GetItemData(row));
    if (item == nullptr) return;
    CString text = item->m_strDesc;
    if (!item->m_strUsage.empty()) text += "\r\n用法\r\n" + item->m_strUsage;
    if (!item->m_strExample.empty()) text += "\r\n  例如:" + item->m_strExample;
    m_pHelp->SetText(text);
}

void CFunctionDialog::OnOK() {
    auto* item = static_cast<FUN_ITEM*>(m_pFunctions->GetItemData(m_pFunctions->GetSelectedRow()));
    if (item == nullptr) return;
    m_pItem = item;
    EndDialog(ny::kDialogOk);
}

void CFunctionDialog::OnColumnClick(int column) {
    int direction = m_pFunctions->GetProperty("SORT_DIRECTION");
    if (column == m_pFunctions->GetProperty("SORT_COLUMN")) direction = 1 - direction;
    m_pFunctions->SetProperty("SORT_COLUMN", column);
    m_pFunctions->SetProperty("SORT_DIRECTION", direction);
    ny::ListView& list = *m_pFunctions;
    list.SortItems([&list, column, direction](int a, int b) {
        const std::string left = list.GetItemText(a, column), right = list.GetItemText(b, column);
        return direction == 1 ? right < left : left < right;
    });
}
