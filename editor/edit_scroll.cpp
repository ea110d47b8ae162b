// The editor's view: what is visible, scrolling, scroll bars and repaint requests.

#include <algorithm>

#include "editor/color_edit_wnd.h"

int ColorEditWnd::VisibleColumns() const {
    if (m_platform.window == nullptr) return -1;
    return m_platform.window->GetClientRect().Width() / std::max(m_nCharWidth, 1) - 1;
}

int ColorEditWnd::VisibleLines(bool whole) const {
    if (m_platform.window == nullptr) return 0;
    const int lines = m_platform.window->GetClientRect().Height() / std::max(m_nLineHeight, 1);
    return whole ? lines : std::min(lines, GetTextSize());
}

int ColorEditWnd::LastVisibleLine() const {
    if (m_platform.window == nullptr) return -1;
    return std::min(m_nFirstLine + VisibleLines(false), GetTextSize());
}

ny::Rect ColorEditWnd::GetLineRect(int first, int last) const {
    const int width = m_platform.window != nullptr ? m_platform.window->GetClientRect().Width() : 0;
    return {0, (first - m_nFirstLine) * m_nLineHeight, width, (last - m_nFirstLine + 1) * m_nLineHeight};
}

void ColorEditWnd::Repaint(const ny::Rect& rect) {
    if (m_platform.window != nullptr) m_platform.window->Invalidate(rect);
}

void ColorEditWnd::RepaintAll() {
    if (m_platform.window != nullptr) m_platform.window->InvalidateAll();
}

void ColorEditWnd::RepaintLines(int first, int last) { Repaint(GetLineRect(first, last)); }

void ColorEditWnd::ShiftDisplay(int dx, int dy) {
    if (m_platform.window != nullptr) m_platform.window->ShiftPicture(dx, dy);
}

void ColorEditWnd::SetFirstLine(int line) {
    m_nFirstLine = line;
    UpdateScrollSizes();
}

void ColorEditWnd::SetFirstCol(int col) {
    m_nFirstCol = col;
    UpdateScrollSizes();
}

void ColorEditWnd::UpdateScrollSizes() {
    if (m_platform.window == nullptr) return;
    const int lines = VisibleLines(false);
    const int count = GetTextSize();
    m_platform.window->SetScrollBar(ny::ScrollBarKind::Vertical,
                                    {0, count > VisibleLines(true) ? count - 1 : 0, lines, m_nFirstLine});
    if (!m_bHorizontalBar) return;
    const int columns = VisibleColumns();
    const int longest = m_Text.m_nMaxLineLen;
    m_platform.window->SetScrollBar(ny::ScrollBarKind::Horizontal,
                                    {0, longest > columns ? longest - 1 : 0, columns, m_nFirstCol});
}

void ColorEditWnd::OnSize() {
    UpdateScrollSizes();
    RepaintAll();
}

void ColorEditWnd::ScrollToLine(int line) {
    SetFirstLine(std::clamp(line, 0, GetTextSize() - 1));
    RepaintAll();
}

void ColorEditWnd::SoftScrollToLine(int line) {
    if (line < m_nFirstLine || line >= LastVisibleLine()) ScrollToLine(line);
}

bool ColorEditWnd::IsAllSeperator() const {
    for (int line = m_nFirstLine; line < LastVisibleLine(); ++line)
        if (!IsCharStartAt(line, m_nFirstCol)) return false;
    return true;
}

void ColorEditWnd::ScrollToCursor() {
    if (m_platform.window == nullptr) return;
    const int firstLine = m_nFirstLine;
    const int firstCol = m_nFirstCol;
    const int last = LastVisibleLine();
    if (m_nCursorY > last - 1 && VisibleLines(false) < GetTextSize() - 1) {
        m_nFirstLine += m_nCursorY - (last - 1);
    } else if (m_nCursorY < m_nFirstLine) {
        m_nFirstLine = m_nCursorY;
    }
    const int columns = VisibleColumns();
    if (m_nCursorX > m_nFirstCol + columns) {
        m_nFirstCol = m_nCursorX - columns;
        if (!IsAllSeperator()) ++m_nFirstCol;
    } else if (m_nCursorX < m_nFirstCol) {
        m_nFirstCol = std::max(m_nCursorX - columns / 4, 0);
        if (!IsAllSeperator()) m_nFirstCol = std::max(m_nFirstCol - 1, 0);
    } else if (m_nFirstCol > 0 && m_nFirstLine == 0) {
        m_nFirstCol = 0;
    }
    if (firstLine == m_nFirstLine && firstCol == m_nFirstCol) return;
    UpdateScrollSizes();
    RepaintAll();
}

void ColorEditWnd::OnScroll(ny::ScrollBarKind bar, ny::ScrollCode code, int thumb) {
    if (m_platform.window == nullptr) return;
    if (m_platform.caret != nullptr) m_platform.caret->Hide();
    if (bar == ny::ScrollBarKind::Vertical) {
        ScrollVertical(code, thumb);
    } else {
        ScrollHorizontal(code, thumb);
    }
    m_platform.window->UpdateNow();
    UpdateScrollSizes();
    DrawCursor(true);
    if (m_platform.caret != nullptr && m_bCaretShown) m_platform.caret->Show();
}

void ColorEditWnd::ScrollVertical(ny::ScrollCode code, int thumb) {
    const int page = VisibleLines(false) * 3 / 4;
    const int bottom = GetTextSize() - VisibleLines(false);
    switch (code) {
        case ny::ScrollCode::LineBack:
            if (m_nFirstLine <= 0) return;
            --m_nFirstLine;
            ShiftDisplay(0, m_nLineHeight);
            RepaintLines(m_nFirstLine, m_nFirstLine);
            return;
        case ny::ScrollCode::LineForward: {
            if (m_nFirstLine >= bottom) return;
            ++m_nFirstLine;
            ShiftDisplay(0, -m_nLineHeight);
            const int last = m_nFirstLine + VisibleLines(true) - 1;
            RepaintLines(last - 1, last);
            return;
        }
        case ny::ScrollCode::PageBack: m_nFirstLine = std::max(m_nFirstLine - page, 0); break;
        case ny::ScrollCode::PageForward: m_nFirstLine += page; break;
        case ny::ScrollCode::ThumbTrack:
        case ny::ScrollCode::ThumbPosition: {
            if (thumb == m_nFirstLine) return;
            const int target = std::clamp(thumb, 0, GetTextSize());
            const int moved = m_nFirstLine - target;
            m_nFirstLine = target;
            ShiftDisplay(0, moved * m_nLineHeight);
            const int lines = VisibleLines(true);
            if (moved > 0) RepaintLines(target, target + std::min(moved, lines) - 1);
            else RepaintLines(target + lines + moved, target + lines);
            return;
        }
        case ny::ScrollCode::Start: m_nFirstLine = 0; break;
        case ny::ScrollCode::End: m_nFirstLine = std::max(bottom, 0); break;
    }
    RepaintAll();
}

void ColorEditWnd::ScrollHorizontal(ny::ScrollCode code, int thumb) {
    const int right = m_Text.m_nMaxLineLen - VisibleColumns();
    const int page = m_platform.window->GetClientRect().Width() / std::max(m_nCharWidth, 1) * 3 / 4;
    switch (code) {
        case ny::ScrollCode::LineBack:
            if (m_nFirstCol <= 0) return;
            --m_nFirstCol;
            if (!IsAllSeperator()) m_nFirstCol = std::max(m_nFirstCol - 1, 0);
            ShiftDisplay(m_nCharWidth, 0);
            break;
        case ny::ScrollCode::LineForward:
            if (m_nFirstCol >= right) return;
            ++m_nFirstCol;
            if (!IsAllSeperator()) m_nFirstCol = std::min(m_nFirstCol + 1, right);
            ShiftDisplay(-m_nCharWidth, 0);
            break;
        case ny::ScrollCode::PageBack: m_nFirstCol = std::max(m_nFirstCol - page, 0); break;
        case ny::ScrollCode::PageForward: m_nFirstCol += page; break;
        case ny::ScrollCode::ThumbTrack:
        case ny::ScrollCode::ThumbPosition: {
            if (thumb == m_nFirstCol) return;
            const int target = std::clamp(thumb, 0, std::max(right, 0));
            const int direction = target > m_nFirstCol ? 1 : -1;
            ShiftDisplay((m_nFirstCol - target) * m_nCharWidth, 0);
            m_nFirstCol = target;
            if (!IsAllSeperator()) m_nFirstCol = std::clamp(m_nFirstCol + direction, 0, std::max(right, 0));
            break;
        }
        case ny::ScrollCode::Start: m_nFirstCol = 0; break;
        case ny::ScrollCode::End: break;
    }
    RepaintAll();
}
