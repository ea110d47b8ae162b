// The editor's painting: each visible line through the lexer's paint entry, token after token in
// the colour of its class, over cells that show the selection; off screen, shown in one step.

#include <algorithm>

#include "catalog/function_manager.h"
#include "check/gbk_text.h"
#include "editor/color_edit_wnd.h"

namespace {

constexpr unsigned long kCommentColour = 0xC8C8C8;

// The off-screen surface of one paint: what is drawn on it is shown when it goes out of scope.
class CMYMemDC {
public:
    explicit CMYMemDC(ny::Window& window) : m_surface(window.BeginPaint()), m_rect(window.GetClientRect()) {}
    ~CMYMemDC() { m_surface.Present(); }
    CMYMemDC(const CMYMemDC&) = delete;
    CMYMemDC& operator=(const CMYMemDC&) = delete;

    ny::PaintSurface& Surface() { return m_surface; }
    const ny::Rect& Rect() const { return m_rect; }

private:
    ny::PaintSurface& m_surface;
    ny::Rect m_rect;
};

}  // namespace

void ColorEditWnd::OnPaint() {
    if (m_platform.window == nullptr) return;
    CMYMemDC memDC(*m_platform.window);
    ny::PaintSurface& surface = memDC.Surface();
    m_bInComment = 0;
    surface.FillRect(memDC.Rect(), m_crBackground);
    int y = 0;
    for (int line = m_nFirstLine; line <= LastVisibleLine() && line < GetTextSize(); ++line) {
        CString text = ny::UpperGbk(m_Text.LineRef(line));
        if (m_nFirstCol > 0) {
            const int start = IsCharStartAt(line, m_nFirstCol) ? m_nFirstCol : m_nFirstCol + 1;
            text = start < static_cast<int>(text.size()) ? text.substr(static_cast<size_t>(start)) : CString();
        }
        DrawSingleLineColorText(surface, text, GetLineRect(line), line, y);
        y += m_nLineHeight;
    }
    DrawCursor(true);
}

void ColorEditWnd::DrawSingleLineColorText(ny::PaintSurface& surface, const CString& line, ny::Rect rect,
                                           int lineIndex, int y) {
    if (m_pfnPaintLexical == nullptr) return;
    // The first column shown: one more than m_nFirstCol when that column splits a character, so
    // that the selection lies under the bytes it covers.
    const int firstColumn = m_nFirstCol > 0 && !IsCharStartAt(lineIndex, m_nFirstCol) ? m_nFirstCol + 1 : m_nFirstCol;
    for (int i = 0; i < static_cast<int>(line.size()); ++i) {
        const ny::Rect cell{i * m_nCharWidth, y, (i + 1) * m_nCharWidth, y + m_nLineHeight};
        surface.FillRect(cell, IsSelected(i + firstColumn, lineIndex) ? m_crSelection : m_crBackground);
    }
    CString text = line;
    if (m_bInComment) {
        const size_t close = text.find('}');
        if (close == CString::npos) {
            DrawColorText(surface, rect, text, kCommentColour, lineIndex, y);
            return;
        }
        DrawColorText(surface, rect, text.substr(0, close + 1), kCommentColour, lineIndex, y);
        text = text.substr(close + 1);
        m_bInComment = 0;
    }
    CMyLexicalAnaly sink;
    m_pfnPaintLexical(text.c_str(), &sink, 1);
    for (int i = 0; i < sink.GetTokenCount(); ++i) {
        const LEX_TOKEN token = sink.GetToken(static_cast<unsigned>(i));
        const size_t pos = static_cast<size_t>(token.nPos);
        if (token.nPos < 0 || token.nLen <= 0 || pos >= text.size()) continue;
        const CString piece = text.substr(pos, static_cast<size_t>(token.nLen));
        unsigned long colour = static_cast<unsigned long>(m_crText);
        switch (token.nType) {
            case NY_TOKEN_WORD:
            case NY_TOKEN_CALL: {
                if (IsKeyWord(piece)) colour = static_cast<unsigned long>(GetColor(2));
                else if (IsFunName(piece)) colour = static_cast<unsigned long>(GetColor(3));
                char kind = 0;
                CString indicator, lineName;
                if (IsIndicatorName(piece.c_str(), kind, indicator, lineName) != nullptr)
                    colour = static_cast<unsigned long>(GetColor(3));
                break;
            }
            case NY_TOKEN_NUMBER: colour = static_cast<unsigned long>(GetColor(1)); break;
            case NY_TOKEN_COMMENT:
                colour = kCommentColour;
                m_bInComment = piece.find('}') == CString::npos;
                break;
            default: m_bInComment = 0; break;
        }
        DrawColorText(surface, rect, piece, colour, lineIndex, y);
    }
}

void ColorEditWnd::DrawColorText(ny::PaintSurface& surface, ny::Rect& rect, const CString& text,
                                 unsigned long colour, int, int y) {
    const int width = surface.TextWidth(text);
    surface.SetTextColour(colour);
    surface.DrawText({rect.left, y}, text);
    rect.left += width;
    rect.right += width;
}

void ColorEditWnd::DrawCursor(bool show) {
    if (m_platform.window == nullptr || m_platform.caret == nullptr || !m_platform.window->HasFocus()) return;
    ny::Caret& caret = *m_platform.caret;
    if (!show && caret.Exists()) {
        caret.Hide();
        caret.Destroy();
    } else if (show && !caret.Exists()) {
        caret.Create({2, m_nLineHeight});
        caret.Show();
    }
    caret.SetPos({(m_nCursorX - m_nFirstCol) * m_nCharWidth - 1, (m_nCursorY - m_nFirstLine) * m_nLineHeight});
    m_bCaretShown = show;
}
