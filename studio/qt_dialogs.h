#pragma once
// The dialog interfaces of platform/ on Qt 6 Widgets: a dialog window whose controls the dialog
// logic adds one by one, laid out as they come (fields in a grid of four cells, lists and trees
// side by side, text areas and painted windows across, buttons in a column at the right), message
// boxes and file dialogs. A control the logic places itself moves onto the dialog's painted strip
// at the place given. GUI thread only; the dialog owns its controls.

#include <QDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <memory>
#include <vector>

#include "platform/modal_dialog.h"
#include "studio/qt_window.h"

namespace ny::studio {

class PaintedStrip;

class QtDialog : public QDialog, public DialogWindow {
public:
    explicit QtDialog(QWidget* parent);
    ~QtDialog() override;

    void SetCaption(const std::string& gbk) override { setWindowTitle(FromGbk(gbk)); }
    std::string GetCaption() const override { return ToGbk(windowTitle()); }
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
    void SetPainter(std::function<void(PaintSurface&)> painter) override;
    void Redraw() override;
    Timer& GetTimer() override { return m_timer; }
    int RunModal(std::function<void()> onInit) override;
    void EndDialog(int result) override { done(result); }

    // The control of an id, or null: for tests that act as the user.
    Control* Find(int id) const;
    // Where a control that the logic places itself goes: the painted strip.
    QWidget& Strip();

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    enum class Slot { Field, Across, SideBySide };
    template <class T>
    T& Keep(int id, std::unique_ptr<T> control);
    // Puts a field (and a label before it, unless the label just added names it) into the grid;
    // the label that names it, or null.
    QLabel* AddField(QWidget* widget, const std::string& label, int cells);
    void AddBody(QWidget* widget, Slot slot, int stretch);

    QVBoxLayout* m_pBody;
    QVBoxLayout* m_pButtons;
    QGridLayout* m_pGrid = nullptr;
    QHBoxLayout* m_pSideBySide = nullptr;
    int m_nCell = 0;
    QLabel* m_pLastLabel = nullptr;
    PaintedStrip* m_pStrip = nullptr;
    QtTimer m_timer;
    std::vector<std::pair<int, std::unique_ptr<Control>>> m_controls;
    std::vector<std::unique_ptr<PaintedWindow>> m_children;
};

class QtDialogFactory : public DialogFactory {
public:
    explicit QtDialogFactory(QWidget* parent) : m_pParent(parent) {}
    std::unique_ptr<DialogWindow> CreateDialog(const std::string& kind) override;

private:
    QWidget* m_pParent;
};

class QtMessageBoxes : public MessageBoxes {
public:
    explicit QtMessageBoxes(QWidget* parent) : m_pParent(parent) {}
    MessageAnswer Show(const std::string& text, MessageButtons buttons, MessageIcon icon, const std::string& caption) override;

private:
    QWidget* m_pParent;
};

class QtFileDialogs : public FileDialogs {
public:
    explicit QtFileDialogs(QWidget* parent) : m_pParent(parent) {}
    bool AskOpen(const FileDialogRequest& request, std::string* path) override;
    bool AskSave(const FileDialogRequest& request, std::string* path) override;

private:
    QWidget* m_pParent;
};

// The three services on Qt, with windows over `parent`.
struct QtDialogServices {
    explicit QtDialogServices(QWidget* parent) : dialogs(parent), messages(parent), files(parent) {}
    QtDialogFactory dialogs;
    QtMessageBoxes messages;
    QtFileDialogs files;
    DialogServices Services() { return {&dialogs, &messages, &files}; }
};

}  // namespace ny::studio
