#pragma once
// The formula editor dialog: name, description, kind and group, up to eight parameters on two
// pages, axis lines, password, the source in the script editor, usage notes. It tests the text
// with the syntax test, shows the result or the translation in its information box, and on OK
// turns the passed test into the statements of a formula that it puts into the library (new
// mode) or updates in place (change mode). It writes no file: storing the library is the
// host's g_MySaveIndicator. Refusals are texts in the information box or message boxes; the
// dialog then stays open and the library is unchanged. Runs on the user-interface thread.

#include <memory>
#include <vector>

#include "check/syntax_result.h"
#include "dialogs/dialog_base.h"
#include "editor/editor_platform.h"
#include "model/indicator.h"

class ColorEditWnd;

// One page of four parameter rows: a name box and three number boxes (smallest, largest,
// default) per row, under a header. The boxes are the dialog's; the page only places and shows
// them. Number boxes take digits, "-", "." and backspace.
class CParamPage {
public:
    static constexpr int kRows = 4;
    enum Column : int { kName = 0, kMin = 1, kMax = 2, kDefault = 3 };

    // Makes the header and the sixteen boxes with ids from `firstId` on: row * 4 + column.
    void Create(ny::DialogWindow& wnd, int headerId, int firstId);
    void Show(bool show);
    ny::TextBox& Box(int row, int column) const { return *m_pBoxes[row * 4 + column]; }

private:
    ny::Control* m_pHeader = nullptr;
    ny::TextBox* m_pBoxes[kRows * 4] = {};
};
class CParamPage1 : public CParamPage {};  // parameters 1 to 4
class CParamPage2 : public CParamPage {};  // parameters 5 to 8

class CFormulaDialog : public CNyDialog, public ny::EditorOwner {
public:
    enum : int {
        IDC_NAME = 1000, IDC_TITLE, IDC_PASSWORD_CHECK, IDC_PASSWORD, IDC_AXES_LABEL, IDC_AXES,
        IDC_DRAW_LABEL, IDC_DRAW, IDC_GROUP_LABEL, IDC_GROUP, IDC_TAB, IDC_INFO, IDC_EDITOR,
        IDC_OK, IDC_CANCEL, IDC_INSERT_FUNCTION, IDC_TEST, IDC_TRANSLATE, IDC_TESTRESULT, IDC_PARAMTIP, IDC_USETIP,
        IDC_PAGE1_HEADER, IDC_PAGE2_HEADER,
        IDC_PAGE1 = 1100,  // the sixteen boxes of page 1, then those of page 2 from IDC_PAGE2
        IDC_PAGE2 = 1116,
    };
    // What the information box shows.
    enum InfoMode : int { kInfoNone = 0, kInfoTranslation = 1, kInfoTestResult = 2, kInfoParamHelp = 3, kInfoUsage = 4 };
    static constexpr size_t kMaxSource = 10000;

    explicit CFormulaDialog(ny::DialogServices& ui);
    ~CFormulaDialog() override;

    // Change mode: the dialog edits this formula of the library in place.
    void SetTarget(CIndicator* indicator);
    // New mode: a formula of this kind and group.
    void SetTarget(int mainType, int subType);

    // The message for a result's code, with `strName` as the formula's name and the result's
    // strError as the word that the message names. 0 gives "通过测试".
    static CString GetTestString(const SYNTestResult& result, const CString& strName);
    // The parameter check of the dialog: a largest value not above the smallest is
    // NY_TEST_PARAM_RANGE, a default outside them NY_TEST_PARAM_DEFAULT; 0 when all pass.
    static int TestParam(const std::vector<CParam>& params);

    void OnOK();
    void OnBnClickedCancel();
    void OnInsertFunction();
    void OnTestFormual();
    void OnTransltate();
    void OnTestresult();
    void OnParamtip();
    void OnUsetip();
    void OnSelchangeTabParma();
    void ShowTranslation(const CString& sentence) override;

    CString m_strName;
    CString m_strTitle;
    CString m_strPassword;
    CString m_strAxes;
    CParamPage* m_pPages[2] = {};
    int m_nCurPage = 0;
    std::unique_ptr<ColorEditWnd> m_pEdit;
    int m_nTarget = 0;
    CIndicator* m_pIndicator = nullptr;
    int m_nNewMainType = 0;
    int m_nNewSubType = -1;
    std::vector<CParam> m_vecParams;
    CString m_strUsage;
    int m_nInfoMode = kInfoNone;

protected:
    void OnInitDialog() override;

private:
    void CreateControls();
    void FillChangeMode();
    void SetFormulaType(int kind, int subType);
    void HideDraw(int all);
    void SetButtonStyle(int mode);
    void GetAllParam();
    void SetAllParam(const std::vector<CParam*>& params);
    // Reads the boxes into the fields.
    void ReadValues();
    void ShowResult(int code);
    void ShowResult(const SYNTestResult& result);
    // The checks before the syntax test: a name, no other formula of the name (when
    // `checkName`), the parameters. The code of the first that fails, or 0.
    int CheckValues(bool checkName, short mainType);
    // The syntax test of the editor's text with m_vecParams, shown when it fails.
    bool PassTest(SYNTestResult* result);
    void StoreInto(CIndicator& formula, const SYNTestResult& result, bool withAxes);
    void CloseEditor();

    CParamPage1 m_page1;
    CParamPage2 m_page2;
    ny::Window* m_pEditorWindow = nullptr;
    ny::TextBox* m_pNameBox = nullptr;
    ny::TextBox* m_pTitleBox = nullptr;
    ny::CheckBox* m_pPasswordCheck = nullptr;
    ny::TextBox* m_pPasswordBox = nullptr;
    ny::Control* m_pAxesLabel = nullptr;
    ny::TextBox* m_pAxesBox = nullptr;
    ny::Control* m_pDrawLabel = nullptr;
    ny::ComboBox* m_pDrawList = nullptr;
    ny::Control* m_pGroupLabel = nullptr;
    ny::ComboBox* m_pGroupList = nullptr;
    ny::TabControl* m_pTab = nullptr;
    ny::TextBox* m_pInfo = nullptr;
    ny::PushButton* m_pInfoButtons[4] = {};  // the buttons of modes 1 to 4
};
