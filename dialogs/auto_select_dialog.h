#pragma once
// The picking dialog "智能选股": conditions from a tree of the library's condition formulas with
// their parameters, joined by AND or OR; a scope of stocks ticked in a tree; a bar period and
// optional history dates; the pick through the engine on its worker thread, polled every
// 1000 ms; the result stored as a block of "自定义" and shown in the quote table. Condition lists
// are stored in rule files (data/autostock/NAME.ast) and read back. Two small dialogs belong to
// it: CSaveSelConditonDialog (the file name) and CSelStockFileDialog (choose or delete a rule).
//
// The conditions are the library's own formulas (no copies): a parameter typed here is stored
// in the formula's m_nDefault. While a pick runs the worker evaluates them, so nothing else may.
// Runs on the user-interface thread; refusals are message boxes and the dialog stays open.

#include <set>
#include <vector>

#include "dialogs/dialog_base.h"
#include "model/indicator.h"
#include "picker/cond_stocks.h"

class CAutoSelectDialog : public CNyDialog {
public:
    enum : int {
        IDC_CONDITION_TREE = 100, IDC_SCOPE_TREE, IDC_CONDITION_LIST, IDC_PERIOD, IDC_FUQUAN, IDC_VARPERIOD,
        IDC_HISDATE, IDC_BEGIN_DATE, IDC_END_DATE, IDC_PROGRESS, IDC_EXPRESSION, IDC_STATUS, IDC_ADDCONDITION,
        IDC_DELCONDITION, IDC_AND, IDC_OR, IDC_EXCUSEL, IDC_ADDMODULE, IDC_SAVERULE, IDC_LOADRULE, IDC_CLOSE,
        IDC_PARAM_EDIT = 200,  // the ten parameter boxes, 200 to 209
        IDC_PARAM_SPIN = 220,  // their spin controls, 220 to 229
    };
    static constexpr int kMaxParamBoxes = 10;
    static constexpr int kTimerId = 1;
    static constexpr int kTimerMs = 1000;

    explicit CAutoSelectDialog(ny::DialogServices& ui) : CNyDialog(ui, "CAutoSelectDialog") {}
    ~CAutoSelectDialog() override;

    void OnClose();
    void OnPaint(ny::PaintSurface& surface);
    void OnTimer();
    void OnAddcondition();
    void OnDelcondition();
    void OnAndButton();
    void OnOrButton();
    void OnExcuselStock();
    void OnAddModule();
    void OnSaverule();
    void OnLoadrule();
    void OnVarperio() { m_nVarPeriod = !m_nVarPeriod; }
    void OnFuquan() { m_nPower = !m_nPower; }
    void OnHisdate();
    void OnSelchangedSelconditionTree();
    void OnClickSelscopeTree(ny::TreeItem item, bool wasChecked) { TravelTree(item, wasChecked); }
    // Gives every descendant of `item` the state that the click gave it (the opposite of `wasChecked`).
    void TravelTree(ny::TreeItem item, bool wasChecked);

    void FillSelConditon();
    void FillSelScope();
    void GetAllStocks();
    void CreateParamEdit();
    void HideAllControl();
    void DrawParam(ny::PaintSurface& surface);
    // Draws one line of the template at `y`, placing a parameter box at each "Param" mark;
    // `param` is the index of the next box and runs on across lines.
    void DrawLineParam(ny::PaintSurface& surface, const CString& line, int y, int& param);

    // Shows the progress of the latest status and, once the pick has ended, its result.
    long NotfifySelOver(unsigned long, long);

    int m_nPower = 1;
    int m_nVarPeriod = 0;
    int m_nHisDate = 0;
    CIndicator* m_pCurCondition = nullptr;
    char m_cLogic = 1;
    std::vector<CIndicator*> m_arConditions;  // the library's formulas, in list order
    std::vector<int> m_arStocks;
    std::vector<int> m_arResult;
    short m_nPeriod = 1;
    int m_lBeginDate = 0;
    int m_lEndDate = 0;
    std::set<int> m_setStocks;
    CCondStocks m_CondStocks;
    CString m_strBlock = "智能选股";
    CondStocksSTATUS m_Status;
    int m_nClearList = 0;
    ny::TextBox* m_arEdits[kMaxParamBoxes] = {};
    ny::SpinBox* m_arSpins[kMaxParamBoxes] = {};

protected:
    void OnInitDialog() override;

private:
    // The checks and the start that "执行选股" and "选股入板块" share; `toModule` is the latter.
    void StartPick(bool toModule);
    // The history dates from the pickers, today at most; false, with the message shown, when
    // they are in the wrong order.
    bool TakeHistoryDates();
    // Offers a download when the local data may not cover the pick.
    void CheckLocalData(bool toModule);
    void AddConditionRow(CIndicator* formula);
    void RebuildConditionRows();
    void ShowExpression();
    void AddStocksOfGroup(const CString& category, const CString& name);

    ny::TreeControl* m_pConditionTree = nullptr;
    ny::TreeControl* m_pScopeTree = nullptr;
    ny::ListView* m_pConditionList = nullptr;
    ny::ComboBox* m_pPeriod = nullptr;
    ny::DatePicker* m_pBeginDate = nullptr;
    ny::DatePicker* m_pEndDate = nullptr;
    ny::ProgressBar* m_pProgress = nullptr;
    ny::TextBox* m_pExpression = nullptr;
    ny::TextBox* m_pStatus = nullptr;
};

// The file name of a rule to save: one text box, set by the caller before and read after.
class CSaveSelConditonDialog : public CNyDialog {
public:
    enum : int { IDC_NAME = 100, IDC_OK, IDC_CANCEL };
    explicit CSaveSelConditonDialog(ny::DialogServices& ui) : CNyDialog(ui, "CSaveSelConditonDialog") {}
    CString m_strFileName;

protected:
    void OnInitDialog() override;

private:
    ny::TextBox* m_pName = nullptr;
};

// The rule files of the installation by name: choose one, or delete the selected one at once.
class CSelStockFileDialog : public CNyDialog {
public:
    enum : int { IDC_FILES = 100, IDC_DELFILE, IDC_OK, IDC_CANCEL };
    explicit CSelStockFileDialog(ny::DialogServices& ui) : CNyDialog(ui, "CSelStockFileDialog") {}
    CString m_strFileName;  // out: the chosen rule, or empty

    void OnDelfile();
    void OnOK();

protected:
    void OnInitDialog() override;

private:
    ny::ListView* m_pFiles = nullptr;
};

extern const char* const MSG_NO_PARAMS;               // "该指标不需要参数设置"
extern const char* const MSG_CONDITION_IN_LIST;       // "该指标已在列表中"
extern const char* const MSG_SAVE_EMPTY_LIST;         // "选股条件列表中无条件,请先加入条件"
extern const char* const MSG_DOWNLOAD_DAY_DATA;       // the prompt for day data
extern const char* const MSG_DOWNLOAD_DATA;           // the prompt of "选股入板块" for minute data
extern const char* const MSG_PICK_SUMMARY;            // "选中数量: %d,总数: %d\r\n选中比例: %0.2f%%"
extern const char* const MSG_RULE_FILE_DAMAGED;       // a rule file that is not whole
extern const char* const MSG_RULE_FILE_NOT_SAVED;     // a rule file that can't be written
