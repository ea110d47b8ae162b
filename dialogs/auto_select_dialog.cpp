#include "dialogs/auto_select_dialog.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <string>

#include "dialogs/formula_tree.h"
#include "dialogs/host_dialogs.h"
#include "dialogs/stock_rules.h"
#include "host/bar_csv.h"
#include "host/clock.h"
#include "host/comm_data.h"
#include "host/files.h"
#include "host/global.h"
#include "host/group.h"
#include "host/ini.h"
#include "host/stockdb.h"
#include "model/library.h"
#include "model/period.h"
#include "picker/pick_request.h"

const char* const MSG_NO_PARAMS = "该指标不需要参数设置";
const char* const MSG_CONDITION_IN_LIST = "该指标已在列表中";
const char* const MSG_SAVE_EMPTY_LIST = "选股条件列表中无条件,请先加入条件";
const char* const MSG_DOWNLOAD_DAY_DATA = "本地日线数据可能不全,本功能需要完整的日线数据,\r\n是否下载?";
const char* const MSG_DOWNLOAD_DATA = "本地数据可能不全,本功能需要完整的数据,\r\n是否下载?";
const char* const MSG_PICK_SUMMARY = "选中数量: %d,总数: %d\r\n选中比例: %0.2f%%";
const char* const MSG_RULE_FILE_DAMAGED = "方案文件不完整,未引入条件: ";
const char* const MSG_RULE_FILE_NOT_SAVED = "方案文件无法保存: ";

namespace {

const char* const kResultCategory = "自定义";
const char* const kDefaultBlock = "智能选股";
const char* const kSystemBlocks = "系统版块";
const char* const kFavourites = "自选";
const char* const kCategories[] = {"行业", "地区", "概念"};
const struct {
    const char* label;
    unsigned kind;
} kMarkets[] = {{"上海A股", NY_KIND_SH_A}, {"深圳A股", NY_KIND_SZ_A}, {"沪深A股", NY_KIND_SH_A | NY_KIND_SZ_A}};
// The period shown at a row of the period list (the rows follow the periods' list order).
const ny::PeriodRow& PeriodAtRow(int row) {
    for (const ny::PeriodRow& period : ny::kPeriods)
        if (period.listIndex == row) return period;
    return *ny::FindPeriod(NY_PERIOD_DAY);
}

constexpr int kBoxWidth = 50, kSpinWidth = 15, kLineHeight = 20, kParamX = 240, kParamY = 18;
constexpr int kDefaultBeginDate = 20070101;

// A date key of config_main.ini: the first eight characters of its value (the default when the
// key is missing), as YYYYMMDD; false for an empty or malformed value.
bool IniDate(const char* section, const char* key, const char* fallback, int* date) {
    std::string value;
    if (!ny::ReadIniValue(g_MyExePath + "config_main.ini", section, key, &value)) value = fallback;
    value = value.substr(0, 15).substr(0, 8);
    return value.size() == 8 && ny::ParseDateText(value, date);
}

// Whole days from `from` to `to`, both YYYYMMDD.
long Lag(int from, int to) { return ny::DayNumber(to) - ny::DayNumber(from); }

CString ConditionRowText(const CIndicator& formula) {
    CString text = formula.m_strName;
    if (formula.m_arParams.empty()) return text;
    text += "(";
    for (size_t i = 0; i < formula.m_arParams.size(); ++i)
        text += (i ? "," : "") + ny::DecimalText(formula.m_arParams[i]->m_nDefault);
    return text + ")";
}

}  // namespace

CAutoSelectDialog::~CAutoSelectDialog() { m_CondStocks.Stop(); }

void CAutoSelectDialog::OnInitDialog() {
    m_strBlock = kDefaultBlock;
    m_pWnd->SetCaption("智能选股");
    m_pConditionTree = &m_pWnd->AddTree(IDC_CONDITION_TREE);
    m_pConditionTree->onSelChange = [this] { OnSelchangedSelconditionTree(); };
    m_pScopeTree = &m_pWnd->AddTree(IDC_SCOPE_TREE, true);
    m_pScopeTree->onCheckClick = [this](ny::TreeItem item, bool was) { OnClickSelscopeTree(item, was); };
    m_pConditionList = &m_pWnd->AddListView(IDC_CONDITION_LIST);
    m_pConditionList->InsertColumn(0, "编号", 40);
    m_pConditionList->InsertColumn(1, "条件列表", 200);
    m_pExpression = &m_pWnd->AddTextBox(IDC_EXPRESSION, "条件表达式");
    m_pExpression->SetReadOnly(true);
    m_pStatus = &m_pWnd->AddTextBox(IDC_STATUS, "", ny::TextStyle::MultiLine);
    m_pStatus->SetReadOnly(true);
    m_pProgress = &m_pWnd->AddProgressBar(IDC_PROGRESS);
    const struct {
        int id;
        const char* label;
        int checked;
        void (CAutoSelectDialog::*handler)();
    } checks[] = {{IDC_FUQUAN, "精确复权", m_nPower, &CAutoSelectDialog::OnFuquan},
                  {IDC_VARPERIOD, "使用涨跌不定周期", m_nVarPeriod, &CAutoSelectDialog::OnVarperio},
                  {IDC_HISDATE, "历史阶段选股", m_nHisDate, &CAutoSelectDialog::OnHisdate}};
    for (const auto& c : checks) {
        ny::CheckBox& box = m_pWnd->AddCheckBox(c.id, c.label);
        box.SetChecked(c.checked != 0);
        box.onClick = [this, h = c.handler] { (this->*h)(); };
    }
    const struct {
        int id;
        const char* label;
        void (CAutoSelectDialog::*handler)();
    } buttons[] = {{IDC_ADDCONDITION, "加入条件", &CAutoSelectDialog::OnAddcondition},
                   {IDC_DELCONDITION, "删除条件", &CAutoSelectDialog::OnDelcondition},
                   {IDC_AND, "与", &CAutoSelectDialog::OnAndButton},
                   {IDC_OR, "或", &CAutoSelectDialog::OnOrButton},
                   {IDC_EXCUSEL, "执行选股", &CAutoSelectDialog::OnExcuselStock},
                   {IDC_ADDMODULE, "选股入板块", &CAutoSelectDialog::OnAddModule},
                   {IDC_SAVERULE, "保存方案", &CAutoSelectDialog::OnSaverule},
                   {IDC_LOADRULE, "引入方案", &CAutoSelectDialog::OnLoadrule},
                   {IDC_CLOSE, "关闭", &CAutoSelectDialog::OnClose}};
    for (const auto& b : buttons) m_pWnd->AddButton(b.id, b.label).onClick = [this, h = b.handler] { (this->*h)(); };
    m_pWnd->onClose = [this] { OnClose(); };
    m_pWnd->SetPainter([this](ny::PaintSurface& surface) { OnPaint(surface); });
    CreateParamEdit();
    FillSelConditon();
    FillSelScope();

    m_pBeginDate = &m_pWnd->AddDatePicker(IDC_BEGIN_DATE, "起始日期");
    m_pEndDate = &m_pWnd->AddDatePicker(IDC_END_DATE, "终止日期");
    m_pEndDate->SetDate(CClockModule::m_SystemDate);
    int begin = kDefaultBeginDate;
    if (!IniDate("DayItem", "BeginTime", "20120101", &begin)) begin = kDefaultBeginDate;
    m_pBeginDate->SetDate(begin);
    m_pBeginDate->Enable(false);
    m_pEndDate->Enable(false);
    m_pPeriod = &m_pWnd->AddComboBox(IDC_PERIOD, "周期");
    for (int row = 0; row < static_cast<int>(std::size(ny::kPeriods)); ++row)
        m_pPeriod->AddString(PeriodAtRow(row).label);
    m_pPeriod->SetCurSel(ny::FindPeriod(NY_PERIOD_DAY)->listIndex);
    m_Status.m_nRunning = 0;
}

void CAutoSelectDialog::CreateParamEdit() {
    for (int i = 0; i < kMaxParamBoxes; ++i) {
        m_arEdits[i] = &m_pWnd->AddTextBox(IDC_PARAM_EDIT + i, "");
        m_arSpins[i] = &m_pWnd->AddSpinBox(IDC_PARAM_SPIN + i);
        m_arSpins[i]->SetBuddy(m_arEdits[i]);
    }
    HideAllControl();
}

void CAutoSelectDialog::HideAllControl() {
    for (int i = 0; i < kMaxParamBoxes; ++i) {
        m_arEdits[i]->Show(false);
        m_arSpins[i]->Show(false);
    }
}

void CAutoSelectDialog::FillSelConditon() {
    m_pConditionTree->DeleteAllItems();
    const ny::TreeItem mine = m_pConditionTree->InsertItem("我的指标", ny::kImageRoot, ny::kNoItem);
    const ny::TreeItem system = m_pConditionTree->InsertItem("系统指标", ny::kImageRoot, ny::kNoItem);
    std::map<short, ny::TreeItem> groups[] = {ny::AddGroupNodes(*m_pConditionTree, mine, ny::kConditionGroups),
                                              ny::AddGroupNodes(*m_pConditionTree, system, ny::kConditionGroups)};
    for (CIndicator* f : g_MyIndicatorArray) {
        if (f->m_IsEditable == 0 || f->m_MainType != NY_KIND_CONDITION) continue;
        const auto& byGroup = groups[f->m_SysIndex != 0 ? 1 : 0];
        const auto group = byGroup.find(f->m_SubType);
        if (group == byGroup.end()) continue;
        m_pConditionTree->InsertItem(f->m_strName + " " + f->m_strTitle, ny::FormulaImageOf(*f), group->second, f);
    }
}

void CAutoSelectDialog::FillSelScope() {
    m_pScopeTree->DeleteAllItems();
    const ny::TreeItem markets = m_pScopeTree->InsertItem(kSystemBlocks, ny::kImageRoot, ny::kNoItem);
    for (const auto& market : kMarkets) m_pScopeTree->InsertItem(market.label, ny::kImageGroup, markets);
    for (const char* category : kCategories) {
        const ny::TreeItem root = m_pScopeTree->InsertItem(category, ny::kImageRoot, ny::kNoItem);
        std::vector<CString> names;
        CGroup::GetGroup(category, names);
        for (const CString& name : names) m_pScopeTree->InsertItem(name, ny::kImageGroup, root);
    }
    m_pScopeTree->InsertItem(kFavourites, ny::kImageRoot, ny::kNoItem);
}

void CAutoSelectDialog::TravelTree(ny::TreeItem item, bool wasChecked) {
    for (ny::TreeItem child : m_pScopeTree->GetChildren(item)) {
        m_pScopeTree->SetCheck(child, !wasChecked);
        TravelTree(child, wasChecked);
    }
}

void CAutoSelectDialog::AddStocksOfGroup(const CString& category, const CString& name) {
    std::vector<CStock*> stocks;
    CGroup::GetStock(category, name, stocks);
    for (const CStock* stock : stocks) m_setStocks.insert(stock->GetID());
}

void CAutoSelectDialog::GetAllStocks() {
    m_setStocks.clear();
    auto byKind = [this](unsigned bits) {
        for (const CStock* stock : g_MyStocksArray)
            if (stock->m_dwKind & bits) m_setStocks.insert(stock->GetID());
    };
    for (ny::TreeItem root : m_pScopeTree->GetChildren(ny::kNoItem)) {
        const CString label = m_pScopeTree->GetItemText(root);
        const bool ticked = m_pScopeTree->GetCheck(root);
        const std::vector<ny::TreeItem> children = m_pScopeTree->GetChildren(root);
        if (label == kSystemBlocks) {
            if (ticked) byKind(NY_KIND_SH_A | NY_KIND_SZ_A);
            for (size_t i = 0; !ticked && i < children.size() && i < std::size(kMarkets); ++i)
                if (m_pScopeTree->GetCheck(children[i])) byKind(kMarkets[i].kind);
        } else if (label == kFavourites) {
            if (ticked) AddStocksOfGroup(kFavourites, kFavourites);
        } else if (ticked) {
            std::vector<CString> names;
            CGroup::GetGroup(label, names);
            for (const CString& name : names) AddStocksOfGroup(label, name);
        } else {
            for (ny::TreeItem child : children)
                if (m_pScopeTree->GetCheck(child)) AddStocksOfGroup(label, m_pScopeTree->GetItemText(child));
        }
    }
    m_arStocks.assign(m_setStocks.begin(), m_setStocks.end());
}

void CAutoSelectDialog::OnSelchangedSelconditionTree() {
    if (CIndicator* formula = ny::FormulaOf(*m_pConditionTree, m_pConditionTree->GetSelectedItem())) {
        m_pCurCondition = formula;
        // The boxes take the formula's values now, not at each paint, so that a repaint never
        // undoes what the user typed.
        for (size_t i = 0; i < formula->m_arParams.size() && i < kMaxParamBoxes; ++i) {
            const CParam& param = *formula->m_arParams[i];
            m_arEdits[i]->SetText(ny::DecimalText(param.m_nDefault));
            m_arSpins[i]->SetRange(param.m_nMin, param.m_nMax);
        }
    }
    HideAllControl();
    m_pWnd->Redraw();
}

void CAutoSelectDialog::OnPaint(ny::PaintSurface& surface) {
    if (m_pCurCondition != nullptr) DrawParam(surface);
    surface.Present();
}

void CAutoSelectDialog::DrawParam(ny::PaintSurface& surface) {
    const CString& tmpl = m_pCurCondition->m_strExtra;
    if (tmpl.empty()) {
        surface.DrawText({kParamX, kParamY}, MSG_NO_PARAMS);
        return;
    }
    int param = 0, y = kParamY;
    for (size_t start = 0;; y += kLineHeight) {
        const size_t end = tmpl.find("\r\n", start);
        DrawLineParam(surface, tmpl.substr(start, end - start), y, param);
        if (end == CString::npos) break;
        start = end + 2;
    }
}

void CAutoSelectDialog::DrawLineParam(ny::PaintSurface& surface, const CString& line, int y, int& param) {
    static const CString kMark = "Param";
    constexpr size_t kMarkBytes = 7;  // "Param" and the two characters behind it, which are not read
    int x = kParamX;
    size_t pos = 0;
    for (size_t mark; (mark = line.find(kMark, pos)) != CString::npos; pos = std::min(line.size(), mark + kMarkBytes)) {
        const CString text = line.substr(pos, mark - pos);
        surface.DrawText({x, y}, text);
        x += surface.TextWidth(text);
        if (param < kMaxParamBoxes && param < static_cast<int>(m_pCurCondition->m_arParams.size())) {
            m_arEdits[param]->Place({x, y, x + kBoxWidth - kSpinWidth, y + kLineHeight});
            m_arSpins[param]->Place({x + kBoxWidth - kSpinWidth, y, x + kBoxWidth, y + kLineHeight});
            m_arEdits[param]->Show(true);
            m_arSpins[param]->Show(true);
            x += kBoxWidth;
        }
        ++param;
    }
    surface.DrawText({x, y}, line.substr(pos));
}

void CAutoSelectDialog::OnAddcondition() {
    if (m_pCurCondition == nullptr) return;
    if (m_nClearList) {
        m_pConditionList->DeleteAllItems();
        m_arConditions.clear();
        m_nClearList = 0;
    }
    if (std::find(m_arConditions.begin(), m_arConditions.end(), m_pCurCondition) != m_arConditions.end()) {
        Message(MSG_CONDITION_IN_LIST);
        return;
    }
    for (size_t i = 0; i < m_pCurCondition->m_arParams.size() && i < kMaxParamBoxes; ++i) {
        CParam& param = *m_pCurCondition->m_arParams[i];
        const int typed = ny::ReadDecimal(m_arEdits[i]->GetText());
        const int value = std::clamp<int>(typed, param.m_nMin, param.m_nMax);
        param.m_nDefault = static_cast<short>(value);
        if (value != typed) m_arEdits[i]->SetText(ny::DecimalText(value));
    }
    AddConditionRow(m_pCurCondition);
    ShowExpression();
}

void CAutoSelectDialog::AddConditionRow(CIndicator* formula) {
    const int row = m_pConditionList->GetItemCount();
    m_pConditionList->InsertItem(row, ny::DecimalText(row + 1), formula);
    m_pConditionList->SetItemText(row, 1, ConditionRowText(*formula));
    m_arConditions.push_back(formula);
}

void CAutoSelectDialog::RebuildConditionRows() {
    const std::vector<CIndicator*> conditions = std::move(m_arConditions);
    m_arConditions.clear();
    m_pConditionList->DeleteAllItems();
    for (CIndicator* formula : conditions) AddConditionRow(formula);
}

void CAutoSelectDialog::OnDelcondition() {
    const int row = m_pConditionList->GetSelectedRow();
    if (row < 0 || row >= static_cast<int>(m_arConditions.size())) return;
    m_arConditions.erase(m_arConditions.begin() + row);
    RebuildConditionRows();
    ShowExpression();
}

void CAutoSelectDialog::OnAndButton() {
    m_cLogic = 1;
    ShowExpression();
}

void CAutoSelectDialog::OnOrButton() {
    m_cLogic = 2;
    ShowExpression();
}

void CAutoSelectDialog::ShowExpression() {
    const int rows = m_pConditionList->GetItemCount();
    CString text = "{1}";
    for (int row = 2; rows >= 2 && row <= rows; ++row) text += (m_cLogic == 2 ? " OR {" : " AND {") + ny::DecimalText(row) + "}";
    m_pExpression->SetText(text);
}

void CAutoSelectDialog::OnHisdate() {
    m_nHisDate = !m_nHisDate;
    m_pBeginDate->Enable(m_nHisDate != 0);
    m_pEndDate->Enable(m_nHisDate != 0);
}

void CAutoSelectDialog::OnExcuselStock() { StartPick(false); }

void CAutoSelectDialog::OnAddModule() { StartPick(true); }

void CAutoSelectDialog::StartPick(bool toModule) {
    if (m_Status.m_nRunning == 1) return;
    if (toModule) {
        CAppendStockToGroupDlg blocks(m_ui);
        if (blocks.DoModal() != ny::kDialogOk) return;
        m_strBlock = blocks.m_strGroupName;
    }
    if (m_arConditions.empty()) {
        Message(ny::MSG_PICK_NO_CONDITION);
        return;
    }
    GetAllStocks();
    if (m_arStocks.empty()) {
        Message(ny::MSG_PICK_NO_STOCKS);
        return;
    }
    if (!m_nHisDate)
        m_lBeginDate = m_lEndDate = 0;
    else if (!TakeHistoryDates())
        return;
    m_pStatus->SetText("");
    if (!toModule) m_strBlock = kDefaultBlock;
    m_nPeriod = PeriodAtRow(m_pPeriod->GetCurSel()).number;
    CheckLocalData(toModule);
    m_pProgress->SetRange(0, static_cast<int>(m_arStocks.size()));
    m_pProgress->SetPos(0);
    ny::MessageRoute route(*m_ui.messages);
    if (!m_CondStocks.Play(m_arConditions, m_cLogic, m_arStocks, m_nPeriod, m_nPower, m_nVarPeriod, m_lBeginDate,
                           m_lEndDate, 0))
        return;
    // The dialog's copy says "running" from now on, so that a click before the first tick
    // starts nothing and changes no block name.
    m_CondStocks.QueryStatus(&m_Status);
    m_pWnd->GetTimer().Start(kTimerId, kTimerMs, [this] { OnTimer(); });
}

bool CAutoSelectDialog::TakeHistoryDates() {
    const int today = CClockModule::m_SystemDate;
    int begin = m_pBeginDate->GetDate(), end = m_pEndDate->GetDate();
    if (end < begin) {
        Message(ny::MSG_PICK_DATES_REVERSED);
        return false;
    }
    for (auto [date, picker] : {std::pair{&begin, m_pBeginDate}, std::pair{&end, m_pEndDate}}) {
        if (*date <= today) continue;
        *date = today;
        picker->SetDate(today);
    }
    m_lBeginDate = begin;
    m_lEndDate = end;
    return true;
}

void CAutoSelectDialog::CheckLocalData(bool toModule) {
    const int today = CClockModule::m_SystemDate;
    const bool minute = ny::IsMinutePeriod(m_nPeriod);
    const char* section = minute ? "Min5Item" : "DayItem";
    int end = 0, begin = 0;
    bool prompt = false;
    if (!m_nHisDate) {
        prompt = !IniDate(section, "EndTime", toModule ? "" : "20070101", &end) || Lag(end, today) >= 2;
    } else {
        if (!toModule && m_lBeginDate == today && m_lEndDate == today) return;
        const char* fallback = toModule || minute ? "" : "20070101";
        prompt = !IniDate(section, "EndTime", fallback, &end) || Lag(end, m_lEndDate) >= 2 ||
                 !IniDate("DayItem", "BeginTime", fallback, &begin) || m_lBeginDate < begin;
    }
    if (!prompt) return;
    const char* text = toModule && minute && !m_nHisDate ? MSG_DOWNLOAD_DATA : MSG_DOWNLOAD_DAY_DATA;
    if (Message(text, ny::MessageButtons::YesNo, ny::MessageIcon::Question) != ny::MessageAnswer::Yes) return;
    CAfterDownDataDialog download(m_ui);
    download.m_arStocks = m_arStocks;
    download.DoModal();
}

void CAutoSelectDialog::OnTimer() {
    m_CondStocks.QueryStatus(&m_Status);
    NotfifySelOver(0, 0);
}

long CAutoSelectDialog::NotfifySelOver(unsigned long, long) {
    m_pProgress->SetPos(m_Status.m_nDone);
    if (m_Status.m_nRunning != 0) return 0;
    m_arResult = m_Status.m_arResult;
    const double ratio = m_Status.m_nTotal > 0 ? static_cast<double>(m_Status.m_nPicked) / m_Status.m_nTotal : 0;
    char text[128];
    std::snprintf(text, sizeof text, MSG_PICK_SUMMARY, m_Status.m_nPicked, m_Status.m_nTotal, ratio * 100);
    m_pStatus->SetText(text);
    CGroup::CreateGroup(kResultCategory, m_strBlock, m_arResult);
    if (g_MyChildView != nullptr) {
        g_MyChildView->SwitchToQuoteTable();
        g_MyChildView->m_QuoteTable.OnSelNonSystemGroup(kResultCategory, m_strBlock);
    }
    m_pWnd->GetTimer().Stop(kTimerId);
    m_nClearList = 1;
    return 0;
}

void CAutoSelectDialog::OnClose() {
    m_CondStocks.Stop();
    m_pWnd->GetTimer().Stop(kTimerId);
    EndDialog(ny::kDialogCancel);
}

void CAutoSelectDialog::OnSaverule() {
    if (m_arConditions.empty()) {
        Message(MSG_SAVE_EMPTY_LIST);
        return;
    }
    ny::StockRule rule;
    rule.logic = m_cLogic;
    CSaveSelConditonDialog save(m_ui);
    for (const CIndicator* formula : m_arConditions) {
        save.m_strFileName += (rule.names.empty() ? "" : "_") + formula->m_strName;
        rule.names.push_back(formula->m_strName);
    }
    if (save.DoModal() != ny::kDialogOk) return;
    const CString path = ny::StockRulePath(save.m_strFileName);
    if (!ny::WriteStockRuleFile(path, rule)) Message(MSG_RULE_FILE_NOT_SAVED + save.m_strFileName);
}

void CAutoSelectDialog::OnLoadrule() {
    CSelStockFileDialog files(m_ui);
    if (files.DoModal() != ny::kDialogOk || files.m_strFileName.empty()) return;
    std::string bytes;
    if (!ny::ReadWholeFile(ny::StockRulePath(files.m_strFileName), &bytes)) return;
    ny::StockRule rule;
    if (!ny::DecodeStockRule(bytes, &rule)) {
        Message(MSG_RULE_FILE_DAMAGED + files.m_strFileName);
        return;
    }
    for (const CString& name : rule.names)
        if (CIndicator* formula = g_MyGetIndicator(name, NY_KIND_CONDITION)) AddConditionRow(formula);
    if (rule.logic == 2)
        OnOrButton();
    else
        OnAndButton();
}

void CSaveSelConditonDialog::OnInitDialog() {
    m_pWnd->SetCaption("保存方案");
    m_pName = &m_pWnd->AddTextBox(IDC_NAME, "请输入存盘文件名(不带后缀)");
    m_pName->SetText(m_strFileName);
    AddOkCancel(
        IDC_OK, IDC_CANCEL,
        [this] {
            if (!ny::IsPlainFileName(m_pName->GetText())) {
                Message(ny::MSG_BAD_FILE_NAME);
                return;
            }
            m_strFileName = m_pName->GetText();
            EndDialog(ny::kDialogOk);
        },
        [this] { EndDialog(ny::kDialogCancel); });
}

void CSelStockFileDialog::OnInitDialog() {
    m_pWnd->SetCaption("引入方案");
    m_pFiles = &m_pWnd->AddListView(IDC_FILES);
    m_pFiles->InsertColumn(0, "方案", 200);
    std::vector<CString> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(g_MyExePath + "data/autostock/", error))
        if (!entry.is_directory(error)) names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    for (const CString& name : names) m_pFiles->InsertItem(m_pFiles->GetItemCount(), name);
    m_pWnd->AddButton(IDC_DELFILE, "删除文件").onClick = [this] { OnDelfile(); };
    AddOkCancel(IDC_OK, IDC_CANCEL, [this] { OnOK(); }, [this] { EndDialog(ny::kDialogCancel); });
}

void CSelStockFileDialog::OnDelfile() {
    const int row = m_pFiles->GetSelectedRow();
    if (row < 0) return;
    std::error_code error;
    std::filesystem::remove(std::string(ny::StockRulePath(m_pFiles->GetItemText(row, 0))), error);
    m_pFiles->DeleteItem(row);
}

void CSelStockFileDialog::OnOK() {
    const int row = m_pFiles->GetSelectedRow();
    m_strFileName = row < 0 ? CString() : CString(m_pFiles->GetItemText(row, 0));
    EndDialog(ny::kDialogOk);
}
