// The editor's key, character, mouse and focus events.

#include <algorithm>
#include <cmath>

#include "editor/color_edit_wnd.h"
#include "editor/edit_text.h"

void ColorEditWnd::NotifyParent(unsigned code) {
    if (m_platform.window != nullptr) m_platform.window->NotifyParent(code, m_nControlId);
}

void ColorEditWnd::ShowTranslation() {
    if (m_pDialog != nullptr) m_pDialog->ShowTranslation(GetTranslate());
}

void ColorEditWnd::AfterTextChange() {
    UpdateTips();
    ShowTranslation();
}

// A position that a scripted event or an accessor left outside the text goes back inside it.
// The line just past the last stays allowed at column 0: the empty line that a pasted trailing
// line break opens, where typing starts a new line.
static void KeepInText(const ColorEditWnd& editor, int& x, int& y) {
    if (y > editor.GetTextSize() || (y == editor.GetTextSize() && x > 0)) y = editor.GetTextSize() - 1;
    y = std::max(y, 0);
    const CString line = editor.GetTextLine(y);
    x = std::clamp(x, 0, static_cast<int>(line.size()));
    if (!IsCharStart(line.data(), static_cast<int>(line.size()), x)) --x;
}

void ColorEditWnd::OnKeyDown(unsigned key, ny::Modifiers modifiers) {
    m_bShiftDown = modifiers.shift;
    KeepInText(*this, m_nCursorX, m_nCursorY);
    KeepInText(*this, m_nAnchorX, m_nAnchorY);
    switch (key) {
        case ny::kKeyBack:
            if (Selected()) {
                RemoveSelected();
            } else {
                const bool wide = m_nCursorX > 1 && !IsCharStartAt(m_nCursorY, m_nCursorX - 1);
                DeletePrevChar(0);
                if (wide) DeletePrevChar(0);
            }
            break;
        case ny::kKeyReturn:
            if (Selected()) RemoveSelected();
            DoEnter();
            break;
        case ny::kKeyDelete:
            if (Selected()) RemoveSelected();
            else DeleteNextChar();
            break;
        case ny::kKeyEscape:
            HiddRefTip();
            break;
        case ny::kKeyLeft: case ny::kKeyRight: case ny::kKeyUp: case ny::kKeyDown:
        case ny::kKeyHome: case ny::kKeyEnd: case ny::kKeyPageUp: case ny::kKeyPageDown:
            if (m_platform.caret != nullptr) m_platform.caret->Hide();
            UpdateAnchor(true);
            MoveCursorByKey(key, modifiers.control);
            ScrollToCursor();
            UpdateAnchor(true);
            DrawCursor(true);
            if (m_platform.caret != nullptr && m_bCaretShown) m_platform.caret->Show();
            if (key == ny::kKeyUp || key == ny::kKeyDown) HandRefTipMsg(key);
            break;
        case 'C': if (modifiers.control) OnCopy(); break;
        case 'X': if (modifiers.control) OnCut(); break;
        case 'V': if (modifiers.control) OnPaste(); break;
        case 'A': if (modifiers.control) OnSelectall(); break;
        default: break;
    }
}

void ColorEditWnd::MoveCursorByKey(unsigned key, bool control) {
    const int last = GetTextSize() - 1;
    const int length = static_cast<int>(GetTextLine(m_nCursorY).size());
    switch (key) {
        case ny::kKeyLeft:
            if (control && m_nCursorX > 0) {
                MoveWordLeft();
            } else if (!control && m_nCursorX > 0) {
                m_nCursorX = FitColumn(m_nCursorY, m_nCursorX - 1);
            } else if (m_nCursorY > 0) {
                m_nCursorY = std::min(m_nCursorY - 1, last);
                m_nCursorX = static_cast<int>(GetTextLine(m_nCursorY).size());
            }
            break;
        case ny::kKeyRight:
            if (control && m_nCursorX < length) {
                MoveWordRight();
            } else if (!control && m_nCursorX < length) {
                m_nCursorX += ny::CharLengthAt(GetTextLine(m_nCursorY), m_nCursorX);
            } else if (m_nCursorY < last) {
                ++m_nCursorY;
                m_nCursorX = 0;
            }
            break;
        case ny::kKeyUp: if (m_nCursorY > 0) MoveLines(-1); break;
        case ny::kKeyDown: if (m_nCursorY < last) MoveLines(1); break;
        case ny::kKeyHome:
            m_nCursorX = 0;
            if (control) m_nCursorY = 0;
            break;
        case ny::kKeyEnd:
            if (control) m_nCursorY = last;
            m_nCursorX = static_cast<int>(GetTextLine(m_nCursorY).size());
            break;
        case ny::kKeyPageUp:
        case ny::kKeyPageDown: {
            const int page = std::max(VisibleLines(false), 0);
            MoveLines(key == ny::kKeyPageUp ? -page : page);
            ScrollToLine(m_nCursorY);
            break;
        }
        default: break;
    }
}

// Moves the cursor by lines within the text; the column is cut to the new line and kept off
// the second byte of a double-byte character.
void ColorEditWnd::MoveLines(int delta) {
    m_nCursorY = std::clamp(m_nCursorY + delta, 0, GetTextSize() - 1);
    m_nCursorX = FitColumn(m_nCursorY, m_nCursorX);
}

// Steps left over white space, then over a run of letters and digits; a lone other byte is
// passed by itself. The walk is by bytes; it ends on a character start.
void ColorEditWnd::MoveWordLeft() {
    const CString line = GetTextLine(m_nCursorY);
    bool seen = false;
    int pos = m_nCursorX;
    while (true) {
        if (--pos < 0) {
            pos = 0;
            break;
        }
        if (!ny::IsSpaceByte(line[static_cast<size_t>(pos)])) seen = true;
        if (!ny::IsAlnumByte(line[static_cast<size_t>(pos)]) && seen) {
            if (pos != m_nCursorX - 1) ++pos;
            break;
        }
    }
    m_nCursorX = FitColumn(m_nCursorY, pos);
}

void ColorEditWnd::MoveWordRight() {
    const CString line = GetTextLine(m_nCursorY);
    const int length = static_cast<int>(line.size());
    bool seen = false;
    int pos = m_nCursorX;
    for (; pos < length; ++pos) {
        if (!ny::IsSpaceByte(line[static_cast<size_t>(pos)])) seen = true;
        if (!ny::IsAlnumByte(line[static_cast<size_t>(pos)]) && seen) {
            if (pos == m_nCursorX) ++pos;
            break;
        }
    }
    m_nCursorX = IsCharStartAt(m_nCursorY, pos) ? pos : pos + 1;
}

void ColorEditWnd::OnChar(unsigned char byte, ny::Modifiers modifiers) {
    m_bShiftDown = modifiers.shift;
    KeepInText(*this, m_nCursorX, m_nCursorY);
    KeepInText(*this, m_nAnchorX, m_nAnchorY);
    if (byte >= 0x81 && byte <= 0xFE) {
        if (!m_bDbcsPending) {
            m_cDbcsBuf[0] = static_cast<char>(byte);
            m_bDbcsPending = m_nDbcsState = 1;
            return;
        }
        if (Selected()) RemoveSelected();
        m_cDbcsBuf[1] = static_cast<char>(byte);
        m_cDbcsBuf[2] = 0;
        m_bDbcsPending = m_nDbcsState = 0;
        InsertString(CString(m_cDbcsBuf, 2), true);
    } else {
        if (modifiers.control) return;
        switch (byte) {
            case ny::kKeyTab:
                if (Selected()) RemoveSelected();
                InsertTab();
                break;
            case ny::kKeyReturn:
                if (Selected()) RemoveSelected();
                DoEnter();
                break;
            case ny::kKeyBack: ScrollToCursor(); break;
            case ny::kKeyEscape: break;
            default:
                if (byte == 0) break;
                if (Selected()) RemoveSelected();
                InsertChar(byte, true);
                break;
        }
    }
    AfterTextChange();
}

// ---- Mouse. ----

ny::Point ColorEditWnd::CellAt(ny::Point at, bool charStartCorrection) const {
    const int line = std::clamp(at.y / std::max(m_nLineHeight, 1) + m_nFirstLine, 0, GetTextSize() - 1);
    int column = (at.x + m_nCharWidth / 2) / std::max(m_nCharWidth, 1) + m_nFirstCol;
    if (charStartCorrection && !IsCharStartAt(line, column)) --column;
    return {std::clamp(column, 0, static_cast<int>(GetTextLine(line).size())), line};
}

void ColorEditWnd::OnMouse(ny::MouseAction action, ny::Point at, ny::Modifiers modifiers, int wheelNotches) {
    m_bShiftDown = modifiers.shift;
    switch (action) {
        case ny::MouseAction::Press: OnLButtonDown(at); break;
        case ny::MouseAction::Move: if (m_bMouseDown) OnMouseDrag(at); break;
        case ny::MouseAction::Release:
            m_bMouseDown = false;
            if (m_platform.window != nullptr) m_platform.window->ReleaseCapture();
            break;
        case ny::MouseAction::DoubleClick: OnDoubleClick(at); break;
        case ny::MouseAction::Wheel: OnWheel(wheelNotches, modifiers); break;
        case ny::MouseAction::ContextMenu: OnContextMenu(at); break;
    }
    if (action == ny::MouseAction::Press || action == ny::MouseAction::ContextMenu)
        m_Tip.RelayEvent(TipRelayedEvent::ButtonPress);
}

void ColorEditWnd::OnLButtonDown(ny::Point at) {
    m_bMouseDown = true;
    m_nDownX = at.x;
    m_nDownY = at.y;
    if (m_platform.window != nullptr) {
        m_platform.window->SetFocus();
        m_platform.window->SetCapture();
    }
    _SetCursorPos(CellAt(at, true));
    if (m_bShiftDown) {
        RepaintAll();
    } else {
        _SetAnchorPos(CursorPos());
    }
    Selected();
    DrawCursor(true);
}

// A drag counts a cell to the cursor once the mouse has passed into it, towards where it went.
void ColorEditWnd::OnMouseDrag(ny::Point at) {
    const int width = std::max(m_nCharWidth, 1);
    const int line = std::clamp(at.y / std::max(m_nLineHeight, 1) + m_nFirstLine, 0, GetTextSize() - 1);
    int column;
    if (at.x <= m_nDownX) {
        column = static_cast<int>(std::ceil(static_cast<double>(at.x) / width)) - 1 + m_nFirstCol;
        if (!IsCharStartAt(line, column)) --column;
    } else {
        column = static_cast<int>(std::floor(static_cast<double>(at.x) / width)) + m_nFirstCol;
        if (!IsCharStartAt(line, column)) ++column;
    }
    column = std::clamp(column, 0, static_cast<int>(GetTextLine(line).size()));
    if (column == m_nCursorX && line == m_nCursorY) return;
    _SetCursorPos({column, line});
    Selected();
    RepaintAll();
    DrawCursor(true);
}

// Marks the run of letters, digits and double-byte characters around the cell; on any other
// byte it marks that byte, with the cursor behind it.
void ColorEditWnd::OnDoubleClick(ny::Point at) {
    m_bMouseDown = false;
    if (m_platform.window != nullptr) m_platform.window->SetFocus();
    const ny::Point cell = CellAt(at, false);
    const CString line = GetTextLine(cell.y);
    const int length = static_cast<int>(line.size());
    const auto isWord = [&line](int x) {
        const char c = line[static_cast<size_t>(x)];
        return ny::IsAlnumByte(c) || (static_cast<unsigned char>(c) >= 0x81 && static_cast<unsigned char>(c) <= 0xFE);
    };
    int start = cell.x;
    int end = cell.x;
    if (cell.x < length) {
        while (start > 0 && isWord(start)) --start;
        if (!isWord(start)) ++start;
        while (end < length && isWord(end)) ++end;
    }
    _SetCursorPos({start, cell.y});
    _SetAnchorPos({end, cell.y});
    Selected();
    RepaintAll();
    DrawCursor(true);
}

void ColorEditWnd::OnWheel(int notches, ny::Modifiers modifiers) {
    if (modifiers.control || modifiers.shift) return;
    const int step = std::min(-notches * 5, 5);
    const int bottom = std::max(GetTextSize() - VisibleLines(false), 0);
    SetFirstLine(std::min(std::max(m_nFirstLine + step, 0), bottom));
    RepaintAll();
}

void ColorEditWnd::OnContextMenu(ny::Point at) {
    if (m_platform.window == nullptr || m_platform.menu == nullptr) return;
    m_platform.window->SetFocus();
    const bool selection = Selected();
    const bool canPaste = m_platform.clipboard != nullptr && m_platform.clipboard->HasText();
    const std::vector<ny::MenuItem> items = {
        {"剪切", NY_EDIT_CMD_CUT, selection},
        {"复制", NY_EDIT_CMD_COPY, selection},
        {"粘贴", NY_EDIT_CMD_PASTE, canPaste},
        {"", 0, true},
        {"全选", NY_EDIT_CMD_SELECTALL, true},
    };
    switch (m_platform.menu->Track(items, m_platform.window->ClientToScreen(at))) {
        case NY_EDIT_CMD_CUT: if (selection) OnCut(); break;
        case NY_EDIT_CMD_COPY: if (selection) OnCopy(); break;
        case NY_EDIT_CMD_PASTE: if (canPaste) OnPaste(); break;
        case NY_EDIT_CMD_SELECTALL: OnSelectall(); break;
        default: break;
    }
}

// ---- Focus. ----

void ColorEditWnd::OnSetFocus() {
    DrawCursor(true);
    NotifyParent(NY_EDIT_NOTIFY_SETFOCUS);
}

void ColorEditWnd::OnKillFocus() {
    if (m_platform.window != nullptr) m_platform.window->ReleaseCapture();
    m_bMouseDown = false;
    if (m_platform.caret != nullptr && m_platform.caret->Exists()) {
        m_platform.caret->Hide();
        m_platform.caret->Destroy();
    }
    m_bCaretShown = false;
    NotifyParent(NY_EDIT_NOTIFY_KILLFOCUS);
}
