// The headless window system: records and scripted answers.

#include "platform/headless.h"

namespace ny {

void HeadlessSurface::FillRect(const Rect& rect, Colour colour) {
    m_operations.push_back({Operation::Kind::Fill, rect, colour, {}});
}

void HeadlessSurface::FillRoundRect(const Rect& rect, int, Colour colour) {
    m_operations.push_back({Operation::Kind::RoundFill, rect, colour, {}});
}

void HeadlessSurface::DrawText(Point at, std::string_view gbk) {
    const Rect cells{at.x, at.y, at.x + TextWidth(gbk), at.y + kLineHeight};
    m_operations.push_back({Operation::Kind::Text, cells, m_textColour, std::string(gbk)});
}

PaintSurface& HeadlessWindow::BeginPaint() {
    if (m_pPaintTarget != nullptr) return *m_pPaintTarget;
    m_surface.Resize(m_client);
    m_surface.Clear();
    return m_surface;
}

void HeadlessWindow::NotifyParent(unsigned code, int controlId) {
    m_notifications.push_back(code << 16 | (static_cast<unsigned>(controlId) & 0xFFFF));
}

bool HeadlessClipboard::GetText(std::string& out) const {
    if (!HasText()) return false;
    out = m_text;
    return true;
}

void HeadlessClipboard::SetText(const std::string& gbk) {
    if (!m_bAvailable) return;
    m_text = gbk;
    m_bHasText = true;
}

bool HeadlessTimer::Fire(int id) {
    const auto found = m_callbacks.find(id);
    if (found == m_callbacks.end()) return false;
    found->second();
    return true;
}

void HeadlessListBox::Insert(int index, const std::string& gbk) {
    if (index < 0 || index > Count()) return;
    m_entries.insert(m_entries.begin() + index, gbk);
}

std::string HeadlessListBox::Text(int index) const {
    return index >= 0 && index < Count() ? m_entries[static_cast<size_t>(index)] : std::string();
}

void HeadlessListBox::Select(int index) {
    if (index >= 0 && index < Count()) m_nSelected = index;
}

Size HeadlessTipWindow::MeasureLine(std::string_view gbk) const {
    return {static_cast<int>(gbk.size()) * HeadlessSurface::kCellWidth, HeadlessSurface::kLineHeight};
}

void HeadlessTipWindow::SetShape(Point topLeft, Size size, int corner) {
    m_topLeft = topLeft;
    m_size = size;
    m_nCorner = corner;
}

void HeadlessTipWindow::ShowNoActivate(std::function<void(PaintSurface&)> painter) {
    m_bVisible = true;
    m_surface.Resize(m_size);
    m_surface.Clear();
    if (painter) painter(m_surface);
}

unsigned HeadlessPopupMenu::Track(const std::vector<MenuItem>& items, Point screen) {
    m_lastItems = items;
    m_lastPoint = screen;
    if (m_answers.empty()) return 0;
    const unsigned answer = m_answers.front();
    m_answers.erase(m_answers.begin());
    return answer;
}

}  // namespace ny
