#pragma once
// Two modal dialogs of the host that the picking dialog opens.
//
// CAppendStockToGroupDlg: the user chooses a block of "自定义" from the list, or types the name
// of a new one, and confirms; the name is handed back in m_strGroupName. A name that can't be a
// file's title is refused with a message, and the dialog stays open.
//
// CAfterDownDataDialog: brings the local data up to date from the quote server: "开始下载" fetches
// the quotes of all stocks and the day's 1-minute bars of the stocks in m_arStocks through the
// refresh dialog, then the dialog ends with kDialogOk. "关闭" ends it without a download.

#include <vector>

#include "dialogs/dialog_base.h"

class CAppendStockToGroupDlg : public CNyDialog {
public:
    enum : int { IDC_GROUPS = 100, IDC_NAME, IDC_OK, IDC_CANCEL };
    explicit CAppendStockToGroupDlg(ny::DialogServices& ui) : CNyDialog(ui, "CAppendStockToGroupDlg") {}

    CString m_strGroupName;  // out: the chosen or typed block of "自定义"

protected:
    void OnInitDialog() override;

private:
    void OnOK();

    ny::ListView* m_pGroups = nullptr;
    ny::TextBox* m_pName = nullptr;
};

class CAfterDownDataDialog : public CNyDialog {
public:
    enum : int { IDC_LABEL = 100, IDC_DOWNLOAD, IDC_CLOSE };
    explicit CAfterDownDataDialog(ny::DialogServices& ui) : CNyDialog(ui, "CAfterDownDataDialog") {}

    std::vector<int> m_arStocks;  // in: the stocks whose 1-minute bars are fetched

protected:
    void OnInitDialog() override;

private:
    void OnDownload();
};
