#include "dialogs/formula_dialog.h"

#include <cctype>

#include "dialogs/small_dialogs.h"
#include "editor/color_edit_wnd.h"
#include "model/library.h"

namespace {

// The text of a code, behind the line that names the formula; %s stands for the word.
const char* MessageOf(int code) {
    switch (code) {
        case NY_TEST_NAME_TAKEN:
            return "错误句: \r\n详细信息: 新建的公式，名称与已有的公式名称重名,请修改.\r\n"
                   "错误起始位置: 0 长度: 0\r\n";
        case NY_TEST_EMPTY: return "无编译内容\r\n";
        case NY_TEST_BAD_FUNCTION: return "%s函数名错误\r\n";
        case NY_TEST_BAD_ARGUMENTS: return "%s函数参数错误\r\n";
        case NY_TEST_OPEN_CALL: return "函数式子不完整\r\n";
        case NY_TEST_BAD_MARKER:
        case NY_TEST_SECOND_ASSIGN: return "%s表达式语法不正确\r\n";
        case NY_TEST_UNKNOWN_WORD: return "%s未知字符串\r\n";
        case NY_TEST_BAD_EXPRESSION: return "%s表达式错误\r\n";
        case NY_TEST_BAD_CHARACTER: return "%s不应该包含如!@#$等字符串\r\n";
        case NY_TEST_SECOND_UNKNOWN: return "在%s前又错误的定义一次变量，或者该变量未定义，请检查!!, \r\n";
        case NY_TEST_BAD_START: return "在%s前定义了错误的变量类型或未定义或者特殊符号，请检查!!, \r\n";
        case NY_TEST_PARAM_RANGE: return "参数最小值应小于最大值!\r\n";
        case NY_TEST_PARAM_DEFAULT: return "缺省值超出范围!\r\n";
        default: return "未知错误\r\n";
    }
}

// The message with its first %s replaced by `word`, taken as it stands.
CString Fill(const CString& message, const CString& word) {
    const size_t mark = message.find("%s");
    return mark == CString::npos ? message : message.substr(0, mark) + word + message.substr(mark + 2);
}

}  // namespace

CString CFormulaDialog::GetTestString(const SYNTestResult& result, const CString& strName) {
    if (result.nResult == NY_TEST_OK) return "通过测试";
    if (result.nResult == NY_TEST_NO_NAME)
        return "当前公式: 请写公式名字.\r\n错误句: \r\n详细信息: 公式没有名字\r\n错误起始位置: 0 长度: 0\r\n";
    return "当前公式: " + strName + "\r\n" + Fill(MessageOf(result.nResult), result.strError);
}

namespace {

const char* const kEditorTitles[] = {"指标公式编辑器", "条件选股编辑器", "交易系统编辑器", "五彩K线编辑器"};
const char* const kDrawRows[] = {"副图", "主图叠加"};

bool IsNumberKey(char c) { return std::isdigit(static_cast<unsigned char>(c)) || c == '-' || c == '.' || c == '\b'; }

const char* EditorTitle(int mainType) { return mainType >= 0 && mainType < 4 ? kEditorTitles[mainType] : ""; }

}  // namespace

// ---- CParamPage ----

void CParamPage::Create(ny::DialogWindow& wnd, int headerId, int firstId) {
    m_pHeader = &wnd.AddLabel(headerId, "  参数\t     最小值\t 最大值\t     缺省值");
    for (int i = 0; i < kRows * 4; ++i) {
        m_pBoxes[i] = &wnd.AddTextBox(firstId + i, "");
        if (i % 4 != kName) m_pBoxes[i]->charFilter = IsNumberKey;
    }
}

void CParamPage::Show(bool show) {
    m_pHeader->Show(show);
    for (ny::TextBox* box : m_pBoxes) box->Show(show);
}

// ---- CFormulaDialog ----

CFormulaDialog::CFormulaDialog(ny::DialogServices& ui) : CNyDialog(ui, "CFormulaDialog") {
    m_pPages[0] = &m_page1;
    m_pPages[1] = &m_page2;
}

CFormulaDialog::~CFormulaDialog() = default;

void CFormulaDialog::SetTarget(CIndicator* indicator) {
    m_nTarget = 1;
    m_pIndicator = indicator;
}

void CFormulaDialog::SetTarget(int mainType, int subType) {
    m_nTarget = 0;
    m_pIndicator = nullptr;
    m_nNewMainType = mainType;
    m_nNewSubType = subType;
}

int CFormulaDialog::TestParam(const std::vector<CParam>& params) {
    for (const CParam& p : params) {
        if (p.m_nMax <= p.m_nMin) return NY_TEST_PARAM_RANGE;
        if (p.m_nDefault < p.m_nMin || p.m_nDefault > p.m_nMax) return NY_TEST_PARAM_DEFAULT;
    }
    return NY_TEST_OK;
}

void CFormulaDialog::CreateControls() {
    ny::DialogWindow& wnd = *m_pWnd;
    m_pNameBox = &wnd.AddTextBox(IDC_NAME, "公式名称");
    m_pTitleBox = &wnd.AddTextBox(IDC_TITLE, "公式描述");
    m_pPasswordCheck = &wnd.AddCheckBox(IDC_PASSWORD_CHECK, "密码保护");
    m_pPasswordBox = &wnd.AddTextBox(IDC_PASSWORD, "", ny::TextStyle::Password);
    m_pAxesLabel = &wnd.AddLabel(IDC_AXES_LABEL, "坐标线位置,最多7个,用分号隔开");
    m_pAxesBox = &wnd.AddTextBox(IDC_AXES, "");
    m_pDrawLabel = &wnd.AddLabel(IDC_DRAW_LABEL, "画线方法");
    m_pDrawList = &wnd.AddComboBox(IDC_DRAW, "画线方法");
    m_pGroupLabel = &wnd.AddLabel(IDC_GROUP_LABEL, "公式类型");
    m_pGroupList = &wnd.AddComboBox(IDC_GROUP, "公式类型");
    m_pTab = &wnd.AddTabControl(IDC_TAB);
    m_pTab->InsertItem(0, "参数1-4");
    m_pTab->InsertItem(1, "参数5-8");
    m_pTab->SetCurSel(0);
    m_pTab->onSelChange = [this] { OnSelchangeTabParma(); };
    m_page1.Create(wnd, IDC_PAGE1_HEADER, IDC_PAGE1);
    m_page2.Create(wnd, IDC_PAGE2_HEADER, IDC_PAGE2);
    m_page2.Show(false);
    m_nCurPage = 0;
    m_pInfo = &wnd.AddTextBox(IDC_INFO, "", ny::TextStyle::MultiLine);
    const struct {
        int id;
        const char* label;
        void (CFormulaDialog::*handler)();
    } buttons[] = {
        {IDC_TRANSLATE, "动态翻译", &CFormulaDialog::OnTransltate}, {IDC_TESTRESULT, "测试结果", &CFormulaDialog::OnTestresult},
        {IDC_PARAMTIP, "参数精灵", &CFormulaDialog::OnParamtip}, {IDC_USETIP, "用法注释", &CFormulaDialog::OnUsetip},
        {IDC_OK, "确定", &CFormulaDialog::OnOK}, {IDC_CANCEL, "取消", &CFormulaDialog::OnBnClickedCancel},
        {IDC_INSERT_FUNCTION, "插入函数", &CFormulaDialog::OnInsertFunction}, {IDC_TEST, "测试公式", &CFormulaDialog::OnTestFormual},
    };
    for (size_t i = 0; i < std::size(buttons); ++i) {
        ny::PushButton& button = wnd.AddButton(buttons[i].id, buttons[i].label);
        // After OK or Cancel the editor is gone and the buttons do nothing.
        button.onClick = [this, h = buttons[i].handler] { if (m_pEdit) (this->*h)(); };
        if (i < 4) m_pInfoButtons[i] = &button;
    }
    // No help text for parameters exists in this module.
    m_pInfoButtons[kInfoParamHelp - 1]->Enable(false);
    // The editor fills the frame below the fields: 2 pixels in at the sides and the bottom, 8 at the top.
    const ny::Rect frame{8, 200, 632, 472};
    m_pEditorWindow = &wnd.AddChildWindow(IDC_EDITOR, {frame.left + 2, frame.top + 8, frame.right - 2, frame.bottom - 2});
    // A window on a display lends the editor its caret, clipboard, menu, line list and tip.
    ny::Window& editor = *m_pEditorWindow;
    const ny::EditorPlatform platform{&editor, editor.GetCaret(), editor.GetClipboard(), editor.GetPopupMenu(),
                                      editor.GetListBox(), editor.GetTipWindow()};
    m_pEdit = std::make_unique<ColorEditWnd>(platform, this, IDC_EDITOR, 4, 100, "Fixedsys", true);
}

void CFormulaDialog::OnInitDialog() {
    CreateControls();
    if (m_nTarget == 1 && m_pIndicator != nullptr) {
        FillChangeMode();
        return;
    }
    m_pWnd->SetCaption(EditorTitle(m_nNewMainType));
    if (m_nNewMainType == 0) {
        SetFormulaType(0, m_nNewSubType);
        for (const char* row : kDrawRows) m_pDrawList->AddString(row);
        m_pDrawList->SetCurSel(0);
    } else if (m_nNewMainType == 1) {
        SetFormulaType(1, m_nNewSubType);
        HideDraw(0);
    } else {
        HideDraw(1);
    }
}

void CFormulaDialog::FillChangeMode() {
    const CIndicator& f = *m_pIndicator;
    m_pWnd->SetCaption(EditorTitle(f.m_MainType));
    if (f.m_MainType == 0) {
        for (const char* row : kDrawRows) m_pDrawList->AddString(row);
        m_pDrawList->SetCurSel(f.m_cDrawPos);
        SetFormulaType(0, f.m_SubType);
    } else if (f.m_MainType == 1) {
        SetFormulaType(1, f.m_SubType);
        HideDraw(0);
    } else {
        HideDraw(1);
    }
    if ((f.m_MainType == 0 || f.m_MainType == 1) && f.m_SysIndex == 1) m_pNameBox->SetReadOnly(true);
    m_strName = f.m_strName;
    m_strTitle = f.m_strTitle;
    m_pNameBox->SetText(m_strName);
    m_pTitleBox->SetText(m_strTitle);
    if (!f.m_strPassword.empty()) {
        m_pPasswordCheck->SetChecked(true);
        m_strPassword = f.m_strPassword;
        m_pPasswordBox->SetText(m_strPassword);
    }
    if (!f.m_strSource.empty()) m_pEdit->ReplaceSelText(f.m_strSource.c_str());
    if (!f.m_arParams.empty()) SetAllParam(f.m_arParams);
    if (!f.m_arAxes.empty()) {
        m_strAxes = f.m_strAxes;
        m_pAxesBox->SetText(m_strAxes);
    }
    m_strUsage = f.m_strUsage;
    OnTransltate();
}

void CFormulaDialog::SetFormulaType(int kind, int subType) {
    m_pGroupList->ResetContent();
    for (const ny::FormulaLabel& group : kind == 0 ? ny::kIndicatorGroups : ny::kConditionGroups)
        m_pGroupList->AddString(group.label);
    if (kind == 0) m_pGroupList->SetCurSel(subType);
    else m_pGroupList->SetCurSel(subType == -1 ? 5 : subType - 20);
}

void CFormulaDialog::HideDraw(int all) {
    for (ny::Control* control : {m_pDrawLabel, static_cast<ny::Control*>(m_pDrawList), m_pAxesLabel,
                                 static_cast<ny::Control*>(m_pAxesBox)})
        control->Show(false);
    if (all == 0) return;
    m_pGroupLabel->Show(false);
    m_pGroupList->Show(false);
}

void CFormulaDialog::SetButtonStyle(int mode) {
    for (ny::PushButton* button : m_pInfoButtons) button->SetPressed(false);
    m_pInfoButtons[mode - 1]->SetPressed(true);
    if (m_nInfoMode == kInfoUsage && mode != kInfoUsage) m_strUsage = m_pInfo->GetText();
    m_pInfo->SetReadOnly(mode == kInfoTranslation || mode == kInfoTestResult);
    m_nInfoMode = mode;
}

void CFormulaDialog::OnTransltate() {
    SetButtonStyle(kInfoTranslation);
    m_pInfo->SetText(m_pEdit->GetTranslate());
}

void CFormulaDialog::ShowTranslation(const CString& sentence) {
    if (m_pInfo == nullptr) return;
    SetButtonStyle(kInfoTranslation);
    m_pInfo->SetText(sentence);
}

void CFormulaDialog::OnTestresult() {
    ReadValues();
    SetButtonStyle(kInfoTestResult);
    OnTestFormual();
}

void CFormulaDialog::OnParamtip() { SetButtonStyle(kInfoParamHelp); }

void CFormulaDialog::OnUsetip() {
    SetButtonStyle(kInfoUsage);
    if (m_nTarget == 1) m_pInfo->SetText(m_strUsage);
}

void CFormulaDialog::OnSelchangeTabParma() {
    m_pPages[m_nCurPage]->Show(false);
    m_nCurPage = m_pTab->GetCurSel() == 1 ? 1 : 0;
    m_pPages[m_nCurPage]->Show(true);
}

void CFormulaDialog::OnInsertFunction() {
    CFunctionDialog dlg(m_ui);
    if (dlg.DoModal() == ny::kDialogOk && dlg.m_pItem != nullptr) m_pEdit->ReplaceSelText(dlg.m_pItem->m_strName.c_str());
}

void CFormulaDialog::ReadValues() {
    m_strName = m_pNameBox->GetText();
    m_strTitle = m_pTitleBox->GetText();
    m_strPassword = m_pPasswordBox->GetText();
    m_strAxes = m_pAxesBox->GetText();
}

void CFormulaDialog::GetAllParam() {
    m_vecParams.clear();
    for (const CParamPage* page : m_pPages)
        for (int row = 0; row < CParamPage::kRows; ++row) {
            const CString name = page->Box(row, CParamPage::kName).GetText();
            if (name.empty()) continue;
            CParam param;
            param.m_strName = name;
            param.m_nMin = static_cast<short>(ny::ReadDecimal(page->Box(row, CParamPage::kMin).GetText()));
            param.m_nMax = static_cast<short>(ny::ReadDecimal(page->Box(row, CParamPage::kMax).GetText()));
            param.m_nDefault = static_cast<short>(ny::ReadDecimal(page->Box(row, CParamPage::kDefault).GetText()));
            m_vecParams.push_back(param);
        }
}

void CFormulaDialog::SetAllParam(const std::vector<CParam*>& params) {
    for (size_t i = 0; i < params.size() && i < 8; ++i) {
        const CParamPage& page = *m_pPages[i / 4];
        const int row = static_cast<int>(i % 4);
        page.Box(row, CParamPage::kName).SetText(params[i]->m_strName);
        page.Box(row, CParamPage::kMin).SetText(ny::DecimalText(params[i]->m_nMin));
        page.Box(row, CParamPage::kMax).SetText(ny::DecimalText(params[i]->m_nMax));
        page.Box(row, CParamPage::kDefault).SetText(ny::DecimalText(params[i]->m_nDefault));
    }
}

void CFormulaDialog::ShowResult(const SYNTestResult& result) {
    if (m_nInfoMode != kInfoTestResult) SetButtonStyle(kInfoTestResult);
    m_pInfo->SetText(GetTestString(result, m_strName));
}

void CFormulaDialog::ShowResult(int code) {
    SYNTestResult result;
    result.nResult = code;
    ShowResult(result);
}

int CFormulaDialog::CheckValues(bool checkName, short mainType) {
    ReadValues();
    if (m_strName.empty()) return NY_TEST_NO_NAME;
    if (checkName && g_MyGetIndicator(m_strName, mainType) != nullptr) return NY_TEST_NAME_TAKEN;
    GetAllParam();
    return TestParam(m_vecParams);
}

bool CFormulaDialog::PassTest(SYNTestResult* result) {
    *result = m_pEdit->GetTestResult(m_vecParams);
    if (result->nResult == NY_TEST_OK) return true;
    ShowResult(*result);
    return false;
}

void CFormulaDialog::OnTestFormual() {
    bool checkName = false;
    short mainType = static_cast<short>(m_nNewMainType);
    if (m_nTarget == 1 && m_pIndicator != nullptr) {
        mainType = m_pIndicator->m_MainType;
        checkName = m_pIndicator->m_SysIndex == 0 && m_pNameBox->GetText() != m_pIndicator->m_strName;
    }
    if (const int code = CheckValues(checkName, mainType); code != NY_TEST_OK) {
        ShowResult(code);
        return;
    }
    ShowResult(m_pEdit->GetTestResult(m_vecParams));
}

void CFormulaDialog::StoreInto(CIndicator& formula, const SYNTestResult& result, bool withAxes) {
    formula.m_strSource = result.strFormula;
    formula.m_strName = m_strName;
    formula.m_strTitle = m_strTitle;
    formula.m_cDrawPos = static_cast<char>(m_pDrawList->GetCount() == 0 ? -1 : m_pDrawList->GetCurSel());
    const bool protect = m_pPasswordCheck->IsChecked();
    formula.m_cHasPassword = protect ? 1 : 0;
    formula.m_strPassword = protect ? m_strPassword : CString();
    formula.DeleteExpression();
    ny::AppendTestedStatements(result, formula);
    if (withAxes) {
        formula.DeleteAxeValue();
        formula.m_strAxes = m_strAxes;
        size_t from = 0;
        while (from <= m_strAxes.size()) {
            const size_t to = std::min(m_strAxes.find(';', from), m_strAxes.size());
            const CString piece = m_strAxes.substr(from, to - from);
            // A piece of blanks only (as behind a closing ";") draws no line.
            if (piece.find_first_not_of(" \t") != CString::npos) {
                auto* axe = new CAxeValue;
                axe->m_nValue = static_cast<short>(ny::ReadDecimal(piece));
                formula.m_arAxes.push_back(axe);
            }
            from = to + 1;
        }
    }
    formula.DeleteParam();
    for (const CParam& p : m_vecParams) {
        auto* param = new CParam;
        param->m_strName = p.m_strName;
        param->m_nMax = p.m_nMax;
        param->m_nMin = p.m_nMin;
        param->m_nDefault = p.m_nDefault;
        formula.m_arParams.push_back(param);
    }
    if (m_nInfoMode == kInfoUsage) m_strUsage = m_pInfo->GetText();
    formula.m_strUsage = m_strUsage;
}

void CFormulaDialog::OnOK() {
    if (m_pEdit->GetText().size() > kMaxSource) {
        Message("公式源码过长,请精简，本源码支持最多大约150行指标源码!");
        return;
    }
    const bool change = m_nTarget == 1 && m_pIndicator != nullptr;
    if (change && m_pIndicator->m_SysIndex != 0) {
        Message("系统公式不能更改，只能修改自定义公式!");
        return;
    }
    const short mainType = change ? m_pIndicator->m_MainType : static_cast<short>(m_nNewMainType);
    const bool checkName = !change || m_pNameBox->GetText() != m_pIndicator->m_strName;
    if (const int code = CheckValues(checkName, mainType); code != NY_TEST_OK) {
        ShowResult(code);
        return;
    }
    SYNTestResult result;
    if (!PassTest(&result)) return;
    if (change) {
        if (mainType == 0) m_pIndicator->m_SubType = static_cast<short>(m_pGroupList->GetCurSel());
        StoreInto(*m_pIndicator, result, mainType == 0);
        g_MyMakeIndicatorPY(m_pIndicator);
    } else {
        auto formula = std::make_unique<CIndicator>();
        formula->m_MainType = mainType;
        formula->m_SubType = static_cast<short>(m_nNewSubType);
        formula->m_SysIndex = 0;
        StoreInto(*formula, result, mainType == 0);
        g_MyAddIndicator(formula.release());
    }
    CloseEditor();
    EndDialog(ny::kDialogOk);
}

void CFormulaDialog::OnBnClickedCancel() {
    CloseEditor();
    EndDialog(ny::kDialogOk);
}

void CFormulaDialog::CloseEditor() { m_pEdit.reset(); }
