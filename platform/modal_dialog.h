#pragma once
// A dialog window and the way it runs modally. The dialog's logic makes its controls through
// the Add... calls, each with an id of the dialog's own and a label (GBK) that a real window
// shows beside or on the control; the window owns them. RunModal calls `onInit` once the window
// exists (the place of OnInitDialog), then runs until EndDialog, and returns the result given
// there. A window closed otherwise ends with kDialogCancel. Everything runs on the
// user-interface thread; a dialog opened from a handler of another nests inside it.
//
// DialogServices bundles what the dialogs of the module need from the window system; the
// caller owns the services and keeps them for the life of every dialog made with them.

#include <functional>
#include <memory>
#include <string>

#include "platform/check_box.h"
#include "platform/combo_box.h"
#include "platform/date_picker.h"
#include "platform/file_dialog.h"
#include "platform/list_view.h"
#include "platform/message_box.h"
#include "platform/paint_surface.h"
#include "platform/progress_bar.h"
#include "platform/push_button.h"
#include "platform/spin_box.h"
#include "platform/tab_control.h"
#include "platform/text_box.h"
#include "platform/timer.h"
#include "platform/tree_control.h"
#include "platform/window.h"

namespace ny {

constexpr int kDialogOk = 1;
constexpr int kDialogCancel = 2;

class DialogWindow {
public:
    virtual ~DialogWindow() = default;

    virtual void SetCaption(const std::string& gbk) = 0;
    virtual std::string GetCaption() const = 0;

    virtual Control& AddLabel(int id, const std::string& gbk) = 0;
    virtual TextBox& AddTextBox(int id, const std::string& label, TextStyle style = TextStyle::SingleLine) = 0;
    virtual PushButton& AddButton(int id, const std::string& label) = 0;
    virtual CheckBox& AddCheckBox(int id, const std::string& label) = 0;
    virtual ComboBox& AddComboBox(int id, const std::string& label) = 0;
    virtual TabControl& AddTabControl(int id) = 0;
    virtual TreeControl& AddTree(int id, bool checkBoxes = false) = 0;
    virtual ListView& AddListView(int id) = 0;
    virtual SpinBox& AddSpinBox(int id) = 0;
    virtual DatePicker& AddDatePicker(int id, const std::string& label) = 0;
    virtual ProgressBar& AddProgressBar(int id) = 0;
    // A child window that paints itself (the script editor's place).
    virtual Window& AddChildWindow(int id, const Rect& rect) = 0;

    // The dialog's own painting: `painter` draws on the dialog's surface at each repaint.
    virtual void SetPainter(std::function<void(PaintSurface&)> painter) = 0;
    virtual void Redraw() = 0;
    virtual Timer& GetTimer() = 0;
    // Where a close of the window (its close box) goes instead of ending with kDialogCancel.
    std::function<void()> onClose;

    virtual int RunModal(std::function<void()> onInit) = 0;
    virtual void EndDialog(int result) = 0;
};

class DialogFactory {
public:
    virtual ~DialogFactory() = default;
    // A new, empty dialog window. `kind` names the dialog class ("CFormulaDialog"), for a
    // front end that lays dialogs out by kind.
    virtual std::unique_ptr<DialogWindow> CreateDialog(const std::string& kind) = 0;
};

struct DialogServices {
    DialogFactory* dialogs = nullptr;
    MessageBoxes* messages = nullptr;
    FileDialogs* files = nullptr;
};

}  // namespace ny
