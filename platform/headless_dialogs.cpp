#include "platform/headless_dialogs.h"

#include <algorithm>
#include <numeric>

namespace ny {

namespace {

template <class Rows>
std::string At(const Rows& rows, int index) {
    return index >= 0 && index < static_cast<int>(rows.size()) ? rows[index] : std::string();
}

void Run(const std::function<void()>& handler) {
    if (handler) handler();
}

}  // namespace

bool HeadlessTextBox::Type(const std::string& gbk) {
    if (!m_bEnabled || !m_bVisible || m_bReadOnly) return false;
    m_text.clear();
    for (char c : gbk)
        if (!charFilter || charFilter(c)) m_text += c;
    Run(onChange);
    return true;
}

bool HeadlessButton::Click() {
    if (!m_bEnabled || !m_bVisible) return false;
    Run(onClick);
    return true;
}

bool HeadlessCheckBox::Click() {
    if (!m_bEnabled || !m_bVisible) return false;
    m_bChecked = !m_bChecked;
    Run(onClick);
    return true;
}

std::string HeadlessComboBox::GetText(int row) const { return At(m_rows, row); }

bool HeadlessComboBox::Choose(int row) {
    if (!m_bEnabled || !m_bVisible || row < 0 || row >= GetCount()) return false;
    m_nSel = row;
    Run(onSelChange);
    return true;
}

void HeadlessTabControl::InsertItem(int index, const std::string& gbk) {
    index = std::clamp(index, 0, GetItemCount());
    m_tabs.insert(m_tabs.begin() + index, gbk);
    if (m_nSel < 0) m_nSel = 0;
}

std::string HeadlessTabControl::GetItemText(int index) const { return At(m_tabs, index); }

bool HeadlessTabControl::Choose(int index) {
    if (!m_bEnabled || index < 0 || index >= GetItemCount()) return false;
    m_nSel = index;
    Run(onSelChange);
    return true;
}

TreeItem HeadlessTree::InsertItem(const std::string& gbk, int image, TreeItem parent, void* data) {
    const TreeItem item = m_nextHandle++;
    m_items[item] = Item{gbk, image, m_items.count(parent) ? parent : kNoItem, data};
    m_order.push_back(item);
    return item;
}

void HeadlessTree::DeleteItem(TreeItem item) {
    if (!m_items.count(item)) return;
    for (TreeItem child : GetChildren(item)) DeleteItem(child);
    m_items.erase(item);
    m_order.erase(std::remove(m_order.begin(), m_order.end(), item), m_order.end());
    if (m_selected == item) m_selected = kNoItem;
}

void HeadlessTree::DeleteAllItems() {
    m_items.clear();
    m_order.clear();
    m_selected = m_firstVisible = kNoItem;
}

std::vector<TreeItem> HeadlessTree::GetChildren(TreeItem parent) const {
    std::vector<TreeItem> children;
    for (TreeItem item : m_order)
        if (m_items.at(item).parent == parent) children.push_back(item);
    return children;
}

TreeItem HeadlessTree::GetParentItem(TreeItem item) const {
    auto found = m_items.find(item);
    return found == m_items.end() ? kNoItem : found->second.parent;
}

std::string HeadlessTree::GetItemText(TreeItem item) const {
    auto found = m_items.find(item);
    return found == m_items.end() ? std::string() : found->second.text;
}

int HeadlessTree::GetItemImage(TreeItem item) const {
    auto found = m_items.find(item);
    return found == m_items.end() ? -1 : found->second.image;
}

void* HeadlessTree::GetItemData(TreeItem item) const {
    auto found = m_items.find(item);
    return found == m_items.end() ? nullptr : found->second.data;
}

void HeadlessTree::Expand(TreeItem item) {
    if (m_items.count(item)) m_items[item].expanded = true;
}

bool HeadlessTree::IsExpanded(TreeItem item) const {
    auto found = m_items.find(item);
    return found != m_items.end() && found->second.expanded;
}

void HeadlessTree::SetCheck(TreeItem item, bool checked) {
    if (m_items.count(item)) m_items[item].checked = checked;
}

bool HeadlessTree::GetCheck(TreeItem item) const {
    auto found = m_items.find(item);
    return found != m_items.end() && found->second.checked;
}

TreeItem HeadlessTree::Find(const std::vector<std::string>& path) const {
    TreeItem at = kNoItem;
    for (const std::string& text : path) {
        const std::vector<TreeItem> children = GetChildren(at);
        auto next = std::find_if(children.begin(), children.end(),
                                 [&](TreeItem child) { return m_items.at(child).text == text; });
        if (next == children.end()) return kNoItem;
        at = *next;
    }
    return at;
}

bool HeadlessTree::Choose(TreeItem item) {
    if (!m_bEnabled) return false;
    SelectItem(item);
    Run(onSelChange);
    return true;
}

bool HeadlessTree::DoubleClick(TreeItem item) {
    if (!Choose(item)) return false;
    Run(onDblClick);
    return true;
}

bool HeadlessTree::ClickCheck(TreeItem item) {
    if (!m_bEnabled || !m_bCheckBoxes || !m_items.count(item)) return false;
    const bool was = m_items[item].checked;
    m_items[item].checked = !was;
    if (onCheckClick) onCheckClick(item, was);
    return true;
}

void HeadlessListView::InsertColumn(int column, const std::string& gbk, int) {
    column = std::clamp(column, 0, GetColumnCount());
    m_columns.insert(m_columns.begin() + column, gbk);
}

std::string HeadlessListView::GetColumnText(int column) const { return At(m_columns, column); }

int HeadlessListView::InsertItem(int row, const std::string& gbk, void* data) {
    row = std::clamp(row, 0, GetItemCount());
    m_rows.insert(m_rows.begin() + row, Row{{gbk}, data});
    return row;
}

void HeadlessListView::DeleteItem(int row) {
    if (row < 0 || row >= GetItemCount()) return;
    m_rows.erase(m_rows.begin() + row);
    if (m_nSel == row) m_nSel = -1;
    else if (m_nSel > row) --m_nSel;
}

void HeadlessListView::SetItemText(int row, int column, const std::string& gbk) {
    if (row < 0 || row >= GetItemCount() || column < 0) return;
    std::vector<std::string>& cells = m_rows[row].cells;
    if (static_cast<int>(cells.size()) <= column) cells.resize(column + 1);
    cells[column] = gbk;
}

std::string HeadlessListView::GetItemText(int row, int column) const {
    return row >= 0 && row < GetItemCount() ? At(m_rows[row].cells, column) : std::string();
}

void* HeadlessListView::GetItemData(int row) const {
    return row >= 0 && row < GetItemCount() ? m_rows[row].data : nullptr;
}

void HeadlessListView::SortItems(const std::function<bool(int, int)>& less) {
    std::vector<int> order(m_rows.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), less);
    std::vector<Row> sorted;
    for (int row : order) sorted.push_back(m_rows[row]);
    m_rows = std::move(sorted);
    m_nSel = -1;
}

int HeadlessListView::GetProperty(const std::string& name) const {
    auto found = m_properties.find(name);
    return found == m_properties.end() ? 0 : found->second;
}

bool HeadlessListView::Choose(int row) {
    if (!m_bEnabled || row < 0 || row >= GetItemCount()) return false;
    m_nSel = row;
    Run(onSelChange);
    return true;
}

bool HeadlessListView::DoubleClick(int row) {
    if (!Choose(row)) return false;
    Run(onDblClick);
    return true;
}

bool HeadlessListView::ClickColumn(int column) {
    if (!m_bEnabled || column < 0 || column >= GetColumnCount()) return false;
    if (onColumnClick) onColumnClick(column);
    return true;
}

int HeadlessListView::FindRow(const std::string& text) const {
    for (int row = 0; row < GetItemCount(); ++row)
        if (GetItemText(row, 0) == text) return row;
    return -1;
}

bool HeadlessSpinBox::Step(int delta) {
    if (!m_bEnabled || !m_bVisible || m_pBuddy == nullptr) return false;
    const int value = std::clamp(std::atoi(m_pBuddy->GetText().c_str()) + delta, m_nLower, m_nUpper);
    m_pBuddy->SetText(std::to_string(value));
    return true;
}

bool HeadlessDatePicker::Pick(int yyyymmdd) {
    if (!m_bEnabled || !m_bVisible) return false;
    m_nDate = yyyymmdd;
    return true;
}

template <class T, class... Args>
T& HeadlessDialog::Make(int id, Args&&... args) {
    auto control = std::make_unique<T>(std::forward<Args>(args)...);
    T& made = *control;
    m_controls[id] = std::move(control);
    return made;
}

Control& HeadlessDialog::AddLabel(int id, const std::string& gbk) { return Make<HeadlessLabel>(id, gbk); }
TextBox& HeadlessDialog::AddTextBox(int id, const std::string& label, TextStyle style) {
    return Make<HeadlessTextBox>(id, label, style);
}
PushButton& HeadlessDialog::AddButton(int id, const std::string& label) { return Make<HeadlessButton>(id, label); }
CheckBox& HeadlessDialog::AddCheckBox(int id, const std::string& label) { return Make<HeadlessCheckBox>(id, label); }
ComboBox& HeadlessDialog::AddComboBox(int id, const std::string&) { return Make<HeadlessComboBox>(id); }
TabControl& HeadlessDialog::AddTabControl(int id) { return Make<HeadlessTabControl>(id); }
TreeControl& HeadlessDialog::AddTree(int id, bool checkBoxes) { return Make<HeadlessTree>(id, checkBoxes); }
ListView& HeadlessDialog::AddListView(int id) { return Make<HeadlessListView>(id); }
SpinBox& HeadlessDialog::AddSpinBox(int id) { return Make<HeadlessSpinBox>(id); }
DatePicker& HeadlessDialog::AddDatePicker(int id, const std::string&) { return Make<HeadlessDatePicker>(id); }
ProgressBar& HeadlessDialog::AddProgressBar(int id) { return Make<HeadlessProgressBar>(id); }

Window& HeadlessDialog::AddChildWindow(int id, const Rect& rect) {
    auto window = std::make_unique<HeadlessWindow>(Size{rect.right - rect.left, rect.bottom - rect.top});
    HeadlessWindow& made = *window;
    m_children[id] = std::move(window);
    return made;
}

int HeadlessDialog::RunModal(std::function<void()> onInit) {
    m_factory.m_opened.push_back(m_kind);
    m_bEnded = false;
    m_nResult = kDialogCancel;
    if (onInit) onInit();
    if (std::optional<HeadlessDialogFactory::Step> step = m_factory.TakeStep(m_kind)) step->act(*this);
    m_bEnded = true;
    return m_nResult;
}

void HeadlessDialog::EndDialog(int result) {
    if (m_bEnded) return;
    m_nResult = result;
    m_bEnded = true;
}

const HeadlessSurface& HeadlessDialog::Paint() {
    m_surface.Clear();
    if (m_painter) m_painter(m_surface);
    return m_surface;
}

void HeadlessDialog::Close() {
    if (onClose) onClose();
    else EndDialog(kDialogCancel);
}

std::unique_ptr<DialogWindow> HeadlessDialogFactory::CreateDialog(const std::string& kind) {
    return std::make_unique<HeadlessDialog>(*this, kind);
}

void HeadlessDialogFactory::Expect(std::string kind, std::function<void(HeadlessDialog&)> act) {
    m_script.push_back({std::move(kind), std::move(act)});
}

std::optional<HeadlessDialogFactory::Step> HeadlessDialogFactory::TakeStep(const std::string& kind) {
    if (m_script.empty() || m_script.front().kind != kind) return std::nullopt;
    Step step = std::move(m_script.front());
    m_script.pop_front();
    return step;
}

MessageAnswer HeadlessMessageBoxes::Show(const std::string& text, MessageButtons buttons, MessageIcon icon,
                                         const std::string&) {
    m_shown.push_back({text, buttons, icon});
    if (!m_answers.empty()) {
        const MessageAnswer answer = m_answers.front();
        m_answers.pop_front();
        return answer;
    }
    return buttons == MessageButtons::YesNo ? MessageAnswer::Yes : MessageAnswer::Ok;
}

bool HeadlessFileDialogs::Answer(const FileDialogRequest& request, std::string* path) {
    m_requests.push_back(request);
    if (m_answers.empty()) return false;
    std::optional<std::string> answer = std::move(m_answers.front());
    m_answers.pop_front();
    if (!answer) return false;
    *path = *answer;
    return true;
}

bool HeadlessFileDialogs::AskOpen(const FileDialogRequest& request, std::string* path) { return Answer(request, path); }
bool HeadlessFileDialogs::AskSave(const FileDialogRequest& request, std::string* path) { return Answer(request, path); }

}  // namespace ny
