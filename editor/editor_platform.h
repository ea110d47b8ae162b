#pragma once
// What the script editor needs from its surroundings: the window-system services it draws and
// reads events through, the formula dialog that shows the translation.
// All of them belong to the caller and outlive the editor; any may be null, and the
// editor then does without (no window: no painting, no scrolling; no dialog: no translation).

#include "host/types.h"
#include "platform/caret.h"
#include "platform/clipboard.h"
#include "platform/list_box.h"
#include "platform/popup_menu.h"
#include "platform/tip_window.h"
#include "platform/window.h"

namespace ny {

struct EditorPlatform {
    Window* window = nullptr;
    Caret* caret = nullptr;
    Clipboard* clipboard = nullptr;
    PopupMenu* menu = nullptr;
    ListBox* refList = nullptr;  // the list of a referenced indicator's lines
    TipWindow* tip = nullptr;    // the function tip
};

// The formula dialog as the editor sees it.
class EditorOwner {
public:
    virtual ~EditorOwner() = default;
    // Switches the dialog's information box to the translation and shows `sentence` there.
    virtual void ShowTranslation(const CString& sentence) = 0;
};

}  // namespace ny
