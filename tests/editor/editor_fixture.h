#pragma once
// An editor in a headless window of 50 columns by 10 lines (cells of 8 by 16 pixels), with
// its caret, clipboard, menu, reference list and tip.

#include <string>
#include <vector>

#include "editor/color_edit_wnd.h"
#include "platform/headless.h"

namespace nytest {

struct HeadlessEditor : ny::EditorOwner {
    ny::HeadlessWindow window{{400, 160}, {1000, 500}};
    ny::HeadlessCaret caret;
    ny::HeadlessClipboard clipboard;
    ny::HeadlessPopupMenu menu;
    ny::HeadlessListBox refList;
    ny::HeadlessTipWindow tip;
    std::vector<CString> translations;
    ColorEditWnd editor{ny::EditorPlatform{&window, &caret, &clipboard, &menu, &refList, &tip}, this, 1001, 4, 9,
                        "Fixedsys", true};

    HeadlessEditor() {
        editor.OnFirstShow();
        window.SetFocus();
    }
    void ShowTranslation(const CString& sentence) override { translations.push_back(sentence); }

    // Types each byte of GBK text as a character event.
    void Type(const std::string& text) {
        for (const char byte : text) editor.OnChar(static_cast<unsigned char>(byte), {});
    }
    std::vector<CString> Lines() const { return editor.m_Text.m_arLines; }
};

}  // namespace nytest
