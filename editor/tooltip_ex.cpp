// The function tip window.

#include "editor/tooltip_ex.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "editor/color_edit_wnd.h"

namespace {

// The lines of a tip, cut at LF, without the CR in front of it.
std::vector<std::string_view> TipLines(std::string_view text) {
    std::vector<std::string_view> lines;
    for (size_t start = 0;;) {
        const size_t lf = text.find('\n', start);
        std::string_view line = text.substr(start, lf == std::string_view::npos ? std::string_view::npos : lf - start);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        lines.push_back(line);
        if (lf == std::string_view::npos) return lines;
        start = lf + 1;
    }
}

// Gap between two lines of the tip, in pixels.
constexpr int kLineGap = 2;

}  // namespace

void CToolTipEx::Create(ColorEditWnd* owner, ny::TipWindow* window) {
    m_pOwner = owner;
    m_pWindow = window;
    Hide();
}

void CToolTipEx::AddFunTip(const char* text, ny::Point screenPoint) {
    const std::string_view source = text == nullptr ? std::string_view() : std::string_view(text);
    int length = static_cast<int>(std::min<size_t>(source.size(), kTextBytes - 1));
    if (!IsCharStart(source.data(), static_cast<int>(source.size()), length)) --length;
    std::memcpy(m_szText, source.data(), static_cast<size_t>(length));
    m_szText[length] = '\0';
    Show(screenPoint);
}

void CToolTipEx::Show(ny::Point screenPoint) {
    if (m_pWindow == nullptr) return;
    int width = 0;
    int height = 0;
    const std::vector<std::string_view> lines = TipLines(m_szText);
    for (const std::string_view line : lines) {
        const ny::Size size = m_pWindow->MeasureLine(line);
        width = std::max(width, size.width);
        height += size.height;
    }
    width += kMarginLeft + kMarginRight;
    height += kMarginTop + kMarginBottom + kLineGap * static_cast<int>(lines.size() - 1);
    m_rcText = {0, 0, width, height};
    m_pWindow->SetShape({screenPoint.x - 4, screenPoint.y + 16}, {width, height}, 13);
    m_pWindow->ShowNoActivate([this](ny::PaintSurface& surface) { Paint(surface); });
}

void CToolTipEx::Hide() {
    if (IsVisible()) m_pWindow->Hide();
}

bool CToolTipEx::IsVisible() const { return m_pWindow != nullptr && m_pWindow->IsVisible(); }

void CToolTipEx::RelayEvent(TipRelayedEvent event) {
    if (event == TipRelayedEvent::MouseMoveElsewhere || event == TipRelayedEvent::ButtonPress) Hide();
}

void CToolTipEx::Paint(ny::PaintSurface& surface) const {
    surface.FillRoundRect(m_rcText, 14, m_crBack);
    surface.SetTextColour(m_crText);
    int y = m_rcText.top + kMarginTop;
    for (const std::string_view line : TipLines(m_szText)) {
        surface.DrawText({m_rcText.left + kMarginLeft, y}, line);
        y += m_pWindow->MeasureLine(line).height + kLineGap;
    }
}
