#pragma once
// What every dialog of the module shares: the window-system services it was made with, its
// window while it runs, and the modal run. A dialog is constructed with the services, given its
// state, run with DoModal, and read afterwards. Everything runs on the user-interface thread;
// failures are messages to the user, never exceptions.

#include <memory>

#include "host/types.h"
#include "platform/modal_dialog.h"

class CNyDialog {
public:
    CNyDialog(ny::DialogServices& ui, const char* kind) : m_ui(ui), m_kind(kind) {}
    virtual ~CNyDialog() = default;
    CNyDialog(const CNyDialog&) = delete;
    CNyDialog& operator=(const CNyDialog&) = delete;

    // Makes the window, runs OnInitDialog in it and waits until the dialog ends; kDialogOk or
    // kDialogCancel.
    int DoModal();

    ny::DialogServices& m_ui;

protected:
    virtual void OnInitDialog() = 0;
    void EndDialog(int result) { m_pWnd->EndDialog(result); }
    ny::MessageAnswer Message(const CString& text, ny::MessageButtons buttons = ny::MessageButtons::Ok,
                              ny::MessageIcon icon = ny::MessageIcon::None);
    // Adds an OK and a Cancel button that call the given handlers.
    void AddOkCancel(int okId, int cancelId, std::function<void()> onOk, std::function<void()> onCancel);

    const char* m_kind;
    std::unique_ptr<ny::DialogWindow> m_pWnd;  // from DoModal on
};

namespace ny {
// A decimal number as a box holds it: optional blanks and "-", then digits; anything else ends
// it, and an empty box is 0.
int ReadDecimal(const CString& text);
// The number as decimal text.
CString DecimalText(int value);
// True for a name that can be a file's title: not empty, no folder part, none of \ / : * ? " < > |.
bool IsPlainFileName(const CString& name);
extern const char* const MSG_BAD_FILE_NAME;  // the refusal of a name that IsPlainFileName refuses

// Routes the library's and the engine's own message boxes (g_MyMessageBox) to the dialog's
// services while it lives.
class MessageRoute {
public:
    explicit MessageRoute(MessageBoxes& boxes);
    ~MessageRoute();
    MessageRoute(const MessageRoute&) = delete;
    MessageRoute& operator=(const MessageRoute&) = delete;
};
}  // namespace ny
