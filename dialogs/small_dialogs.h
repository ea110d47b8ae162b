#pragma once
// The small dialogs around the formula dialogs: the password box, the value dialogs of a
// formula definition (axis line, statement, parameter, per-period parameter values, the whole
// definition), the formula chooser and the function chooser. Each is constructed with the
// window-system services, given its state, run with DoModal and read after kDialogOk. They hold
// only what the caller gives them; the arrays of CFormulaDlg stay the caller's, except the
// objects its Add and Del buttons make and delete.

#include <vector>

#include "catalog/function_manager.h"
#include "dialogs/dialog_base.h"
#include "model/indicator.h"

// Ids of the buttons that close a dialog.
enum : int { IDOK = 1, IDCANCEL = 2 };

class CDlgInputPassword : public CNyDialog {
public:
    enum : int { IDC_PASSWORD = 100 };
    static constexpr size_t kMaxPassword = 128;
    explicit CDlgInputPassword(ny::DialogServices& ui) : CNyDialog(ui, "CDlgInputPassword") {}
    CString m_strPassword;

protected:
    void OnInitDialog() override;
    void OnOK();

private:
    ny::TextBox* m_pBox = nullptr;
};

class CAxeValueDlg : public CNyDialog {
public:
    enum : int { IDC_VALUE = 100, IDC_CRITICAL = 101 };
    explicit CAxeValueDlg(ny::DialogServices& ui) : CNyDialog(ui, "CAxeValueDlg") {}
    CString m_strCaption;
    int m_nValue = 0;
    int m_bCritical = 0;

protected:
    void OnInitDialog() override;
    void OnOK();

private:
    ny::TextBox* m_pValue = nullptr;
    ny::CheckBox* m_pCritical = nullptr;
};

// m_nType is a radio group of two rows: row 0 "中间变量 :=" (0), row 1 "输出线 :" (1).
class CExpressionDlg : public CNyDialog {
public:
    enum : int { IDC_NAME = 100, IDC_TEXT = 101, IDC_TYPE = 102 };
    explicit CExpressionDlg(ny::DialogServices& ui) : CNyDialog(ui, "CExpressionDlg") {}
    CString m_strCaption;
    CString m_strName;
    CString m_strText;
    int m_nType = 0;

protected:
    void OnInitDialog() override;
    void OnOK();

private:
    ny::TextBox* m_pName = nullptr;
    ny::TextBox* m_pText = nullptr;
    ny::ComboBox* m_pType = nullptr;
};

class CParamDlg : public CNyDialog {
public:
    enum : int { IDC_NAME = 100, IDC_DEFAULT = 101, IDC_VALUE = 102 };
    explicit CParamDlg(ny::DialogServices& ui) : CNyDialog(ui, "CParamDlg") {}
    CString m_strCaption;
    CString m_strName;
    short m_nDefault = 0;
    short m_nValue = 0;
    int m_bValueOnly = 0;

protected:
    void OnInitDialog() override;
    void OnOK();

private:
    ny::TextBox* m_pName = nullptr;
    ny::TextBox* m_pDefault = nullptr;
    ny::TextBox* m_pValue = nullptr;
};

class CSetParamDlg : public CNyDialog {
public:
    enum : int { IDC_LIST = 100, IDC_EDIT = 101 };
    explicit CSetParamDlg(ny::DialogServices& ui) : CNyDialog(ui, "CSetParamDlg") {}
    std::vector<CParam*> m_arParams;
    short m_nPeriod = 1;

    void FillParamList();
    void OnButtonEdit();

protected:
    void OnInitDialog() override;

private:
    ny::ListView* m_pList = nullptr;
};

class CFormulaDlg : public CNyDialog {
public:
    enum : int {
        IDC_NAME = 100, IDC_TITLE, IDC_DRAW_ON_MAIN, IDC_PROTECTED,
        IDC_PARAM_LIST, IDC_PARAM_ADD, IDC_PARAM_DEL, IDC_PARAM_EDIT,
        IDC_AXE_LIST, IDC_AXE_ADD, IDC_AXE_DEL, IDC_AXE_EDIT,
        IDC_EXP_LIST, IDC_EXP_ADD, IDC_EXP_DEL, IDC_EXP_EDIT,
    };
    explicit CFormulaDlg(ny::DialogServices& ui) : CNyDialog(ui, "CFormulaDlg") {}
    CString m_strName;
    CString m_strTitle;
    int m_bDrawOnMain = 0;  // check box "主图叠加"; what it means is the caller's
    int m_bProtected = 0;   // check box "密码保护"; what it means is the caller's
    std::vector<CParam*> m_arParams;
    std::vector<CAxeValue*> m_arAxes;
    std::vector<CExpression*> m_arExpressions;

    void FillParamList();
    void FillAxeList();
    void FillExpList();
    void OnButtonParamAdd();
    void OnButtonParamDel();
    void OnButtonParamEdit();
    void OnButtonAxeAdd();
    void OnButtonAxeDel();
    void OnButtonAxeEdit();
    void OnButtonExpAdd();
    void OnButtonExpDel();
    void OnButtonExpEdit();

protected:
    void OnInitDialog() override;
    void OnOK();

private:
    // The selected row of a list, or -1 when none or when it is outside `count`.
    static int SelectedRow(ny::ListView& list, size_t count);
    ny::ListView* m_pParams = nullptr;
    ny::ListView* m_pAxes = nullptr;
    ny::ListView* m_pExpressions = nullptr;
    ny::TextBox* m_pName = nullptr;
    ny::TextBox* m_pTitle = nullptr;
    ny::CheckBox* m_pDrawOnMain = nullptr;
    ny::CheckBox* m_pProtected = nullptr;
};

class CDlgSelectIndicator : public CNyDialog {
public:
    enum : int { IDC_TREE = 100, IDC_USAGE = 101 };
    explicit CDlgSelectIndicator(ny::DialogServices& ui) : CNyDialog(ui, "CDlgSelectIndicator") {}
    int m_bMainChart = 0;
    short m_nKind = 0;
    CString m_strName;

    void InitIndicatorTree();
    void OnOK();
    void OnDblclkTreeIndicator();

protected:
    void OnInitDialog() override;

private:
    ny::TreeControl* m_pTree = nullptr;
};

class CFunctionDialog : public CNyDialog {
public:
    enum : int { IDC_CLASS_LIST = 100, IDC_FUNC_LIST = 101, IDC_HELP = 102 };
    explicit CFunctionDialog(ny::DialogServices& ui) : CNyDialog(ui, "CFunctionDialog") {}
    FUN_ITEM* m_pItem = nullptr;

    void FillFunc(int nClass);
    void FillFuncTipe(int row);
    void OnOK();
    void OnColumnClick(int column);

protected:
    void OnInitDialog() override;

private:
    ny::ListView* m_pClasses = nullptr;
    ny::ListView* m_pFunctions = nullptr;
    ny::TextBox* m_pHelp = nullptr;
};
