#include "dialogs/host_dialogs.h"

#include "host/group.h"
#include "picker/refresh.h"

namespace {
const char* const kCustomCategory = "自定义";
}

void CAppendStockToGroupDlg::OnInitDialog() {
    m_pWnd->SetCaption("选股入板块");
    m_pGroups = &m_pWnd->AddListView(IDC_GROUPS);
    m_pGroups->InsertColumn(0, "板块名称", 160);
    std::vector<CString> names;
    CGroup::GetGroup(kCustomCategory, names);
    for (const CString& name : names) m_pGroups->InsertItem(m_pGroups->GetItemCount(), name);
    m_pName = &m_pWnd->AddTextBox(IDC_NAME, "板块名称");
    m_pName->SetText(m_strGroupName);
    m_pGroups->onSelChange = [this] { m_pName->SetText(m_pGroups->GetItemText(m_pGroups->GetSelectedRow(), 0)); };
    AddOkCancel(IDC_OK, IDC_CANCEL, [this] { OnOK(); }, [this] { EndDialog(ny::kDialogCancel); });
}

void CAppendStockToGroupDlg::OnOK() {
    const CString name = m_pName->GetText();
    if (!ny::IsPlainFileName(name)) {
        Message(ny::MSG_BAD_FILE_NAME);
        return;
    }
    m_strGroupName = name;
    EndDialog(ny::kDialogOk);
}

void CAfterDownDataDialog::OnInitDialog() {
    m_pWnd->SetCaption("下载数据");
    m_pWnd->AddLabel(IDC_LABEL, "下载全部股票的行情和当天的分时数据");
    m_pWnd->AddButton(IDC_DOWNLOAD, "开始下载").onClick = [this] { OnDownload(); };
    m_pWnd->AddButton(IDC_CLOSE, "关闭").onClick = [this] { EndDialog(ny::kDialogCancel); };
}

void CAfterDownDataDialog::OnDownload() {
    CCondStocksRequestDataDlg(ny::RefreshMode::Quotes, {}).DoModal();
    if (!m_arStocks.empty()) CCondStocksRequestDataDlg(ny::RefreshMode::Minute, m_arStocks).DoModal();
    EndDialog(ny::kDialogOk);
}
