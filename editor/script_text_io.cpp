// The editor's text wrappers and the text as a whole: loading, unloading, joining.

#include <cctype>

#include "editor/color_edit_wnd.h"
#include "editor/edit_text.h"

void ColorEditWnd::InsertTextLine(const CString& line, int index, int updateMax, BOOL) {
    m_Text._InsertLine(line, index, updateMax);
    if (updateMax != 0) UpdateScrollSizes();
}

void ColorEditWnd::SetTextLine(const CString& line, int index, BOOL, BOOL updateScroll) {
    m_Text._SetLine(line, index);
    if (updateScroll) UpdateScrollSizes();
}

void ColorEditWnd::RemoveTextLine(int index, BOOL, BOOL updateScroll) {
    if (index < 0 || index >= GetTextSize()) return;
    m_Text._RemoveLine(index);
    if (updateScroll) UpdateScrollSizes();
}

void ColorEditWnd::RemoveAllText() {
    m_Text._RemoveAll();
    UpdateScrollSizes();
    NotifyParent(NY_EDIT_NOTIFY_CLEARED);
}

CString ColorEditWnd::GetTextLine(int index) const {
    return index >= 0 && index < GetTextSize() ? m_Text._GetLine(index) : CString();
}

void ColorEditWnd::Reset() {
    RemoveAllText();
    m_nCursorX = m_nCursorY = m_nAnchorX = m_nAnchorY = 0;
    m_nFirstCol = m_nFirstLine = 0;
    m_bHasSelection = false;
    m_bMouseDown = false;
}

void ColorEditWnd::SetText(const CString& text) {
    Reset();
    ReplaceSelText(text.c_str());
}

// Walks the text with a column counter; each line break inserts the line built so far in front
// of the line that Reset left, so the loaded text ends in an empty line. Bytes of double-byte
// characters are kept; other bytes that are not printable are dropped.
void ColorEditWnd::LoadText(const char* text) {
    Reset();
    CString current;
    int column = 0;
    bool endedOnBreak = false;
    for (const char byte : ny::NormaliseLineEnds(text == nullptr ? "" : text)) {
        const unsigned char c = static_cast<unsigned char>(byte);
        if (c == '\n') {
            InsertTextLine(current, m_nCursorY, 0, FALSE);
            current.clear();
            column = m_nCursorX = 0;
            ++m_nCursorY;
            endedOnBreak = true;
        } else if (c == '\t') {
            const CString tab = MakeTab(column);
            current += tab;
            column += static_cast<int>(tab.size());
            endedOnBreak = false;
        } else if (std::isprint(c) || c >= 0x80) {
            current += byte;
            ++column;
            endedOnBreak = false;
        }
    }
    if (!endedOnBreak) InsertTextLine(current, m_nCursorY, 0, FALSE);
    m_nCursorX = m_nCursorY = m_nAnchorX = m_nAnchorY = 0;
    m_nFirstCol = m_nFirstLine = 0;
    m_bMouseDown = false;
    m_bHasSelection = false;
    m_Text.FullUpdate();
    UpdateScrollSizes();
    RepaintAll();
}

void ColorEditWnd::UnloadText(CString& out) const {
    out.clear();
    const bool manyLines = GetTextSize() > 1;
    for (const CString& line : m_Text.m_arLines) {
        out += line;
        if (manyLines) out += '\n';
    }
}

CString ColorEditWnd::GetText() const {
    CString text;
    for (size_t i = 0; i < m_Text.m_arLines.size(); ++i) {
        if (i > 0) text += " \r\n";
        text += m_Text.m_arLines[i];
    }
    return text;
}
