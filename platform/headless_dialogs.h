#pragma once
// Headless dialogs: controls that keep their state in fields, user actions that tests call
// (Type, Click, Choose ...), and a factory that runs each modal dialog against the next step of
// a script. Message boxes and file dialogs answer from queues and record what they were asked.
// Nothing here knows any dialog of the module. Not thread-safe, like the interfaces.

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/headless.h"
#include "platform/modal_dialog.h"

namespace ny {

// The state every headless control keeps.
template <class Interface>
class HeadlessControl : public Interface {
public:
    void Place(const Rect& rect) override { m_rect = rect; }
    Rect GetRect() const override { return m_rect; }
    void Show(bool show) override { m_bVisible = show; }
    bool IsVisible() const override { return m_bVisible; }
    void Enable(bool enable) override { m_bEnabled = enable; }
    bool IsEnabled() const override { return m_bEnabled; }

    Rect m_rect;
    bool m_bVisible = true;
    bool m_bEnabled = true;
};

class HeadlessLabel : public HeadlessControl<Control> {
public:
    explicit HeadlessLabel(std::string text) : m_text(std::move(text)) {}
    std::string m_text;
};

class HeadlessTextBox : public HeadlessControl<TextBox> {
public:
    HeadlessTextBox(std::string label, TextStyle style) : m_label(std::move(label)), m_style(style) {}
    void SetText(const std::string& gbk) override { m_text = gbk; }
    std::string GetText() const override { return m_text; }
    void SetReadOnly(bool readOnly) override { m_bReadOnly = readOnly; }
    bool IsReadOnly() const override { return m_bReadOnly; }
    void SetFocus() override { m_bFocus = true; }
    // The user replaces the text by typing `gbk`; false if the box takes no input.
    bool Type(const std::string& gbk);

    std::string m_label;
    TextStyle m_style;
    std::string m_text;
    bool m_bReadOnly = false;
    bool m_bFocus = false;
};

class HeadlessButton : public HeadlessControl<PushButton> {
public:
    explicit HeadlessButton(std::string label) : m_label(std::move(label)) {}
    void SetPressed(bool pressed) override { m_bPressed = pressed; }
    bool IsPressed() const override { return m_bPressed; }
    bool Click();

    std::string m_label;
    bool m_bPressed = false;
};

class HeadlessCheckBox : public HeadlessControl<CheckBox> {
public:
    explicit HeadlessCheckBox(std::string label) : m_label(std::move(label)) {}
    void SetChecked(bool checked) override { m_bChecked = checked; }
    bool IsChecked() const override { return m_bChecked; }
    bool Click();

    std::string m_label;
    bool m_bChecked = false;
};

class HeadlessComboBox : public HeadlessControl<ComboBox> {
public:
    void ResetContent() override { m_rows.clear(); m_nSel = -1; }
    void AddString(const std::string& gbk) override { m_rows.push_back(gbk); }
    int GetCount() const override { return static_cast<int>(m_rows.size()); }
    std::string GetText(int row) const override;
    int GetCurSel() const override { return m_nSel; }
    void SetCurSel(int row) override { m_nSel = row >= 0 && row < GetCount() ? row : -1; }
    bool Choose(int row);

    std::vector<std::string> m_rows;
    int m_nSel = -1;
};

class HeadlessTabControl : public HeadlessControl<TabControl> {
public:
    void InsertItem(int index, const std::string& gbk) override;
    int GetItemCount() const override { return static_cast<int>(m_tabs.size()); }
    std::string GetItemText(int index) const override;
    int GetCurSel() const override { return m_nSel; }
    void SetCurSel(int index) override { if (index >= 0 && index < GetItemCount()) m_nSel = index; }
    bool Choose(int index);

    std::vector<std::string> m_tabs;
    int m_nSel = -1;
};

class HeadlessTree : public HeadlessControl<TreeControl> {
public:
    struct Item {
        std::string text;
        int image = 0;
        TreeItem parent = kNoItem;
        void* data = nullptr;
        bool expanded = false;
        bool checked = false;
    };

    explicit HeadlessTree(bool checkBoxes) : m_bCheckBoxes(checkBoxes) {}
    TreeItem InsertItem(const std::string& gbk, int image, TreeItem parent, void* data) override;
    void DeleteItem(TreeItem item) override;
    void DeleteAllItems() override;
    std::vector<TreeItem> GetChildren(TreeItem parent) const override;
    TreeItem GetParentItem(TreeItem item) const override;
    std::string GetItemText(TreeItem item) const override;
    int GetItemImage(TreeItem item) const override;
    void* GetItemData(TreeItem item) const override;
    TreeItem GetSelectedItem() const override { return m_selected; }
    void SelectItem(TreeItem item) override { m_selected = m_items.count(item) ? item : kNoItem; }
    void Expand(TreeItem item) override;
    bool IsExpanded(TreeItem item) const override;
    void SelectSetFirstVisible(TreeItem item) override { m_firstVisible = item; }
    void SetCheck(TreeItem item, bool checked) override;
    bool GetCheck(TreeItem item) const override;

    // The item reached from the top by the texts of `path`, or kNoItem.
    TreeItem Find(const std::vector<std::string>& path) const;
    bool Choose(TreeItem item);
    bool DoubleClick(TreeItem item);
    bool ClickCheck(TreeItem item);

    bool m_bCheckBoxes;
    std::map<TreeItem, Item> m_items;
    std::vector<TreeItem> m_order;  // insertion order, which is the order of siblings
    TreeItem m_selected = kNoItem;
    TreeItem m_firstVisible = kNoItem;
    TreeItem m_nextHandle = 1;
};

class HeadlessListView : public HeadlessControl<ListView> {
public:
    struct Row {
        std::vector<std::string> cells;
        void* data = nullptr;
    };

    void InsertColumn(int column, const std::string& gbk, int width) override;
    int GetColumnCount() const override { return static_cast<int>(m_columns.size()); }
    std::string GetColumnText(int column) const override;
    void DeleteAllItems() override { m_rows.clear(); m_nSel = -1; }
    int InsertItem(int row, const std::string& gbk, void* data) override;
    void DeleteItem(int row) override;
    void SetItemText(int row, int column, const std::string& gbk) override;
    std::string GetItemText(int row, int column) const override;
    void* GetItemData(int row) const override;
    int GetItemCount() const override { return static_cast<int>(m_rows.size()); }
    int GetSelectedRow() const override { return m_nSel; }
    void SelectRow(int row) override { m_nSel = row >= 0 && row < GetItemCount() ? row : -1; }
    void SortItems(const std::function<bool(int, int)>& less) override;
    void SetProperty(const std::string& name, int value) override { m_properties[name] = value; }
    int GetProperty(const std::string& name) const override;

    bool Choose(int row);
    bool DoubleClick(int row);
    bool ClickColumn(int column);
    // The row whose first cell is `text`, or -1.
    int FindRow(const std::string& text) const;

    std::vector<std::string> m_columns;
    std::vector<Row> m_rows;
    int m_nSel = -1;
    std::map<std::string, int> m_properties;
};

class HeadlessSpinBox : public HeadlessControl<SpinBox> {
public:
    void SetBuddy(TextBox* buddy) override { m_pBuddy = buddy; }
    void SetRange(int lower, int upper) override { m_nLower = lower; m_nUpper = upper; }
    int GetLower() const override { return m_nLower; }
    int GetUpper() const override { return m_nUpper; }
    // The user clicks an arrow: the buddy's number moves by `delta`, within the range.
    bool Step(int delta);

    TextBox* m_pBuddy = nullptr;
    int m_nLower = 0;
    int m_nUpper = 100;
};

class HeadlessDatePicker : public HeadlessControl<DatePicker> {
public:
    void SetDate(int yyyymmdd) override { m_nDate = yyyymmdd; }
    int GetDate() const override { return m_nDate; }
    bool Pick(int yyyymmdd);

    int m_nDate = 0;
};

class HeadlessProgressBar : public HeadlessControl<ProgressBar> {
public:
    void SetRange(int lower, int upper) override { m_nLower = lower; m_nUpper = upper; }
    void SetPos(int pos) override { m_nPos = pos; }
    int GetPos() const override { return m_nPos; }

    int m_nLower = 0, m_nUpper = 100, m_nPos = 0;
};

class HeadlessDialogFactory;

class HeadlessDialog : public DialogWindow {
public:
    HeadlessDialog(HeadlessDialogFactory& factory, std::string kind) : m_factory(factory), m_kind(std::move(kind)) {}

    void SetCaption(const std::string& gbk) override { m_caption = gbk; }
    std::string GetCaption() const override { return m_caption; }
    Control& AddLabel(int id, const std::string& gbk) override;
    TextBox& AddTextBox(int id, const std::string& label, TextStyle style) override;
    PushButton& AddButton(int id, const std::string& label) override;
    CheckBox& AddCheckBox(int id, const std::string& label) override;
    ComboBox& AddComboBox(int id, const std::string& label) override;
    TabControl& AddTabControl(int id) override;
    TreeControl& AddTree(int id, bool checkBoxes) override;
    ListView& AddListView(int id) override;
    SpinBox& AddSpinBox(int id) override;
    DatePicker& AddDatePicker(int id, const std::string& label) override;
    ProgressBar& AddProgressBar(int id) override;
    Window& AddChildWindow(int id, const Rect& rect) override;
    void SetPainter(std::function<void(PaintSurface&)> painter) override { m_painter = std::move(painter); }
    void Redraw() override { ++m_nRedraws; }
    Timer& GetTimer() override { return m_timer; }
    int RunModal(std::function<void()> onInit) override;
    void EndDialog(int result) override;

    // The control of an id as its headless class; throws std::out_of_range for a wrong id or
    // class, which fails the test that asked.
    template <class T>
    T& Get(int id) const {
        auto found = m_controls.find(id);
        T* control = found == m_controls.end() ? nullptr : dynamic_cast<T*>(found->second.get());
        if (control == nullptr) throw std::out_of_range("no such control: " + std::to_string(id));
        return *control;
    }
    // Runs the painter on a fresh surface of the dialog's size and returns what was drawn.
    const HeadlessSurface& Paint();
    // The user closes the window by its close box.
    void Close();

    HeadlessDialogFactory& m_factory;
    std::string m_kind;
    std::string m_caption;
    std::map<int, std::unique_ptr<Control>> m_controls;
    std::map<int, std::unique_ptr<HeadlessWindow>> m_children;
    std::function<void(PaintSurface&)> m_painter;
    HeadlessSurface m_surface{Size{640, 480}};
    HeadlessTimer m_timer;
    int m_nRedraws = 0;
    bool m_bEnded = false;
    int m_nResult = kDialogCancel;

private:
    template <class T, class... Args>
    T& Make(int id, Args&&... args);
};

// Runs each modal dialog against a step of the script: when a dialog of the kind that the
// first step names opens, the step is taken from the queue and acts on it. A dialog whose kind
// the first step doesn't name, or that the step leaves open, ends with kDialogCancel.
class HeadlessDialogFactory : public DialogFactory {
public:
    struct Step {
        std::string kind;
        std::function<void(HeadlessDialog&)> act;
    };

    std::unique_ptr<DialogWindow> CreateDialog(const std::string& kind) override;
    void Expect(std::string kind, std::function<void(HeadlessDialog&)> act);
    // Called by a dialog when it runs; the step for it, if the script has one.
    std::optional<Step> TakeStep(const std::string& kind);

    std::deque<Step> m_script;
    std::vector<std::string> m_opened;  // kinds of the dialogs run, in order
};

class HeadlessMessageBoxes : public MessageBoxes {
public:
    struct Shown {
        std::string text;
        MessageButtons buttons;
        MessageIcon icon;
    };

    // Records the message and answers with the next scripted answer, or with the first button.
    MessageAnswer Show(const std::string& text, MessageButtons buttons, MessageIcon icon,
                       const std::string& caption) override;

    std::deque<MessageAnswer> m_answers;
    std::vector<Shown> m_shown;
};

class HeadlessFileDialogs : public FileDialogs {
public:
    // Each answer is a path, or nullopt for a cancelled dialog; an empty queue cancels.
    bool AskOpen(const FileDialogRequest& request, std::string* path) override;
    bool AskSave(const FileDialogRequest& request, std::string* path) override;

    std::deque<std::optional<std::string>> m_answers;
    std::vector<FileDialogRequest> m_requests;

private:
    bool Answer(const FileDialogRequest& request, std::string* path);
};

// The three headless services together, as the dialogs take them.
struct HeadlessDialogServices {
    HeadlessDialogFactory dialogs;
    HeadlessMessageBoxes messages;
    HeadlessFileDialogs files;

    DialogServices Services() { return {&dialogs, &messages, &files}; }
};

}  // namespace ny
