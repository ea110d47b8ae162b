// The editor's model: positions, selection, and the operations that change the text.

#include <algorithm>

#include "editor/color_edit_wnd.h"
#include "editor/edit_text.h"

namespace {

// A position ordered by line, then by column.
bool Before(int x1, int y1, int x2, int y2) { return y1 < y2 || (y1 == y2 && x1 < x2); }

// The bytes of line left of x, and from x on, with x cut to the line.
CString LeftOf(const CString& line, int x) { return line.substr(0, static_cast<size_t>(std::clamp<int>(x, 0, static_cast<int>(line.size())))); }
CString RightOf(const CString& line, int x) { return line.substr(static_cast<size_t>(std::clamp<int>(x, 0, static_cast<int>(line.size())))); }

}  // namespace

bool ColorEditWnd::IsCharStartAt(int line, int x) const {
    if (line < 0 || line >= GetTextSize()) return true;
    const CString& text = m_Text.LineRef(line);
    return IsCharStart(text.data(), static_cast<int>(text.size()), x);
}

int ColorEditWnd::FitColumn(int y, int x) const {
    x = std::clamp(x, 0, static_cast<int>(GetTextLine(y).size()));
    return IsCharStartAt(y, x) ? x : x - 1;
}

void ColorEditWnd::ClipPosition(int& x, int& y) const {
    y = std::clamp(y, 0, GetTextSize() - 1);
    x = std::clamp(x, 0, static_cast<int>(GetTextLine(y).size()));
}

void ColorEditWnd::ClipCursorPosition() { ClipPosition(m_nCursorX, m_nCursorY); }

void ColorEditWnd::ClipAnchorPosition() { ClipPosition(m_nAnchorX, m_nAnchorY); }

void ColorEditWnd::SetSelection(int anchorX, int anchorY, int cursorX, int cursorY) {
    m_nAnchorX = anchorX;
    m_nAnchorY = anchorY;
    m_nCursorX = cursorX;
    m_nCursorY = cursorY;
    ClipAnchorPosition();
    ClipCursorPosition();
    Selected();
    RepaintAll();
}

void ColorEditWnd::SetCursorPos(ny::Point pos) {
    _SetCursorPos(pos);
    ClipCursorPosition();
    Selected();
    RepaintAll();
}

void ColorEditWnd::SetAnchorPos(ny::Point pos) {
    _SetAnchorPos(pos);
    ClipAnchorPosition();
    Selected();
    RepaintAll();
}

void ColorEditWnd::UpdateAnchor(bool keepIfShift) {
    if (!keepIfShift || !m_bShiftDown) _SetAnchorPos(CursorPos());
    if (keepIfShift) RepaintLines(std::min(m_nAnchorY, m_nCursorY), std::max(m_nAnchorY, m_nCursorY));
    Selected();
}

bool ColorEditWnd::Selected() {
    const bool selection = m_nAnchorX != m_nCursorX || m_nAnchorY != m_nCursorY;
    if (selection != m_bHasSelection) {
        m_bHasSelection = selection;
        if (selection) {
            RepaintLines(std::min(m_nAnchorY, m_nCursorY), std::max(m_nAnchorY, m_nCursorY));
        } else {
            RepaintAll();
        }
    }
    return selection;
}

bool ColorEditWnd::IsSelected(int x, int y) const {
    if (m_nAnchorX == m_nCursorX && m_nAnchorY == m_nCursorY) return false;
    const bool anchorFirst = Before(m_nAnchorX, m_nAnchorY, m_nCursorX, m_nCursorY);
    const ny::Point start = anchorFirst ? AnchorPos() : CursorPos();
    const ny::Point end = anchorFirst ? CursorPos() : AnchorPos();
    if (y < start.y || y > end.y) return false;
    if (y > start.y && y < end.y) return true;
    if (start.y == end.y) return x >= start.x && x < end.x;
    return y == start.y ? x >= start.x : x < end.x;
}

CString ColorEditWnd::MakeTab(int column) const {
    CString tab(1, ' ');
    for (int n = column + 1; m_nTabWidth > 0 && n % m_nTabWidth != 0; ++n) tab += ' ';
    return tab;
}

void ColorEditWnd::InsertTab() { InsertString(MakeTab(m_nCursorX), true); }

void ColorEditWnd::InsertChar(int ch, bool repaint) { InsertString(CString(1, static_cast<char>(ch)), repaint); }

void ColorEditWnd::InsertString(const CString& text, bool) {
    if (text.empty()) return;
    if (m_nCursorY < GetTextSize()) {
        const CString line = GetTextLine(m_nCursorY);
        const CString left = LeftOf(line, m_nCursorX);
        SetTextLine(left + text + RightOf(line, m_nCursorX), m_nCursorY, TRUE, TRUE);
        m_nCursorX = static_cast<int>(left.size() + text.size());
        ScrollToCursor();
    } else {
        m_nCursorY = GetTextSize();
        InsertTextLine(text, m_nCursorY, 1, TRUE);
        m_nCursorX = static_cast<int>(text.size());
    }
    UpdateAnchor(false);
    ny::Rect rect = GetLineRect(m_nCursorY);
    rect.top -= 4;
    rect.bottom += 4;
    Repaint(rect);
}

void ColorEditWnd::DoEnter() {
    if (m_nCursorY >= GetTextSize()) InsertTextLine(CString(), m_nCursorY = GetTextSize(), 1, TRUE);
    const CString line = GetTextLine(m_nCursorY);
    SetTextLine(LeftOf(line, m_nCursorX), m_nCursorY, TRUE, FALSE);
    InsertTextLine(RightOf(line, m_nCursorX), m_nCursorY + 1, 1, TRUE);
    m_nCursorX = 0;
    ++m_nCursorY;
    ScrollToCursor();
    RepaintLines(m_nCursorY - 1, GetTextSize());
    UpdateAnchor(false);
}

void ColorEditWnd::DeletePrevChar(int) {
    if (m_nCursorX <= 0 && m_nCursorY <= 0) return;
    if (m_nCursorX > 0 && m_nCursorY < GetTextSize()) {
        CString line = GetTextLine(m_nCursorY);
        m_nCursorX = std::min(m_nCursorX, static_cast<int>(line.size()));
        line.erase(static_cast<size_t>(m_nCursorX - 1), 1);
        SetTextLine(line, m_nCursorY, TRUE, TRUE);
        --m_nCursorX;
    } else {
        const int upper = std::min(m_nCursorY, GetTextSize()) - 1;
        const CString previous = GetTextLine(upper);
        SetTextLine(previous + GetTextLine(upper + 1), upper, TRUE, FALSE);
        RemoveTextLine(upper + 1, TRUE, TRUE);
        m_nCursorY = upper;
        m_nCursorX = static_cast<int>(previous.size());
    }
    UpdateAnchor(false);
    RepaintAll();
}

void ColorEditWnd::DeleteNextChar() {
    if (m_nCursorY >= GetTextSize()) return;
    CString line = GetTextLine(m_nCursorY);
    if (m_nCursorX >= static_cast<int>(line.size())) {
        if (m_nCursorY + 1 >= GetTextSize()) return;
        SetTextLine(line + GetTextLine(m_nCursorY + 1), m_nCursorY, TRUE, FALSE);
        RemoveTextLine(m_nCursorY + 1, TRUE, TRUE);
    } else {
        const int x = std::max(m_nCursorX, 0);
        line.erase(static_cast<size_t>(x), static_cast<size_t>(ny::CharLengthAt(line, x)));
        SetTextLine(line, m_nCursorY, TRUE, TRUE);
    }
    UpdateAnchor(false);
    RepaintAll();
}

void ColorEditWnd::RemoveSelected() {
    if (!Selected()) return;
    if (m_nAnchorY > m_nCursorY) {
        std::swap(m_nAnchorX, m_nCursorX);
        std::swap(m_nAnchorY, m_nCursorY);
    }
    const int upper = m_nAnchorY;
    const CString upperLine = GetTextLine(upper);
    const int length = static_cast<int>(upperLine.size());
    int startX = std::clamp(m_nAnchorX, 0, length);
    if (m_nAnchorY == m_nCursorY) {
        const int endX = std::clamp(m_nCursorX, 0, length);
        CString line = upperLine;
        line.erase(static_cast<size_t>(std::min(startX, endX)), static_cast<size_t>(std::abs(endX - startX)));
        startX = std::min(startX, endX);
        if (upper < GetTextSize()) SetTextLine(line, upper, TRUE, TRUE);
    } else {
        for (int i = upper + 1; i < m_nCursorY; ++i) RemoveTextLine(upper + 1, TRUE, FALSE);
        const CString joined = LeftOf(upperLine, startX) + RightOf(GetTextLine(upper + 1), m_nCursorX);
        if (upper < GetTextSize()) SetTextLine(joined, upper, TRUE, FALSE);
        RemoveTextLine(upper + 1, TRUE, TRUE);
    }
    m_nCursorX = m_nAnchorX = startX;
    m_nCursorY = m_nAnchorY = upper;
    Selected();
    RepaintAll();
}

void ColorEditWnd::ReplaceSelText(const char* text) { _ReplaceSelText(text); }

void ColorEditWnd::_ReplaceSelText(const char* text) { ReplaceSelBytes(text == nullptr ? "" : text); }

// The bytes are walked with a column from the cursor: the first line break splits the cursor's
// line and keeps its right part as the tail, each later one inserts a line; NUL bytes are
// dropped, tabs become blanks.
void ColorEditWnd::ReplaceSelBytes(std::string_view bytes) {
    if (Selected()) RemoveSelected();
    m_nCursorY = std::clamp(m_nCursorY, 0, GetTextSize());
    int column = m_nCursorX = std::clamp(m_nCursorX, 0, static_cast<int>(GetTextLine(m_nCursorY).size()));
    CString piece, tail;
    bool brokeLine = false;
    for (const char byte : ny::NormaliseLineEnds(bytes)) {
        if (byte == '\0') continue;
        if (byte == '\t') {
            const CString tab = MakeTab(column);
            piece += tab;
            column += static_cast<int>(tab.size());
        } else if (byte == '\n') {
            if (!brokeLine && m_nCursorY < GetTextSize()) {
                const CString line = GetTextLine(m_nCursorY);
                tail = RightOf(line, m_nCursorX);
                SetTextLine(LeftOf(line, m_nCursorX) + piece, m_nCursorY, TRUE, FALSE);
            } else {
                InsertTextLine(piece, m_nCursorY, 0, FALSE);
            }
            brokeLine = true;
            piece.clear();
            column = m_nCursorX = 0;
            ++m_nCursorY;
        } else {
            piece += byte;
            ++column;
        }
    }
    if (brokeLine && !(piece + tail).empty()) {
        InsertTextLine(piece + tail, m_nCursorY, 0, FALSE);
        m_nCursorX = static_cast<int>(piece.size() + tail.size());
    } else if (!brokeLine && !piece.empty()) {
        if (m_nCursorY < GetTextSize()) {
            const CString line = GetTextLine(m_nCursorY);
            SetTextLine(LeftOf(line, m_nCursorX) + piece + RightOf(line, m_nCursorX), m_nCursorY, TRUE, FALSE);
        } else {
            InsertTextLine(piece, m_nCursorY, 0, FALSE);
        }
        m_nCursorX += static_cast<int>(piece.size());
    }
    _SetAnchorPos(CursorPos());
    m_Text.FullUpdate();
    UpdateScrollSizes();
    Selected();
    RepaintAll();
}

void ColorEditWnd::SetLine(const char* text, int index) {
    if (index < 0 || index >= GetTextSize()) return;
    SetTextLine(text == nullptr ? "" : text, index, TRUE, TRUE);
    RepaintAll();
}

void ColorEditWnd::Recolorize() {
    m_Text.FullUpdate();
    RepaintAll();
}

// ---- Clipboard. ----

void ColorEditWnd::DoCopy() {
    if (m_platform.clipboard == nullptr || !Selected()) return;
    const bool anchorFirst = Before(m_nAnchorX, m_nAnchorY, m_nCursorX, m_nCursorY);
    const ny::Point start = anchorFirst ? AnchorPos() : CursorPos();
    const ny::Point end = anchorFirst ? CursorPos() : AnchorPos();
    CString copied;
    if (start.y == end.y) {
        copied = RightOf(LeftOf(GetTextLine(start.y), end.x), start.x);
    } else {
        copied = RightOf(GetTextLine(start.y), start.x);
        for (int y = start.y + 1; y < end.y; ++y) copied += "\r\n" + GetTextLine(y);
        copied += "\r\n" + LeftOf(GetTextLine(end.y), end.x);
    }
    m_platform.clipboard->SetText(copied);
}

void ColorEditWnd::DoCut() {
    DoCopy();
    RemoveSelected();
}

void ColorEditWnd::DoPaste() {
    CString text;
    if (m_platform.clipboard == nullptr || !m_platform.clipboard->GetText(text)) return;
    ReplaceSelBytes(text);
    ScrollToCursor();
}

void ColorEditWnd::OnCopy() { DoCopy(); }

void ColorEditWnd::OnCut() {
    DoCut();
    AfterTextChange();
}

void ColorEditWnd::OnPaste() {
    DoPaste();
    AfterTextChange();
}

void ColorEditWnd::OnSelectall() {
    _SetAnchorPos({0, 0});
    m_nCursorY = GetTextSize() - 1;
    m_nCursorX = static_cast<int>(GetTextLine(m_nCursorY).size());
    ScrollToCursor();
    Selected();
    RepaintAll();
}
