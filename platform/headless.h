#pragma once
// Headless implementations of the window-system interfaces: they record what was drawn, shown
// and asked for, and answer from fields a test sets, so that every control runs without a
// display. Not thread-safe, like the interfaces they stand in for.

#include <map>
#include <string>
#include <vector>

#include "platform/caret.h"
#include "platform/clipboard.h"
#include "platform/list_box.h"
#include "platform/paint_surface.h"
#include "platform/popup_menu.h"
#include "platform/timer.h"
#include "platform/tip_window.h"
#include "platform/window.h"

namespace ny {

// A surface of a fixed-width font in which every byte takes kCellWidth pixels. Each call is
// recorded as one operation.
class HeadlessSurface : public PaintSurface {
public:
    static constexpr int kCellWidth = 8;
    static constexpr int kLineHeight = 16;

    struct Operation {
        enum class Kind { Fill, RoundFill, Text } kind;
        Rect rect;          // the filled rectangle, or the text's cells
        Colour colour;      // fill colour, or the text colour in force
        std::string text;   // GBK
    };

    explicit HeadlessSurface(Size size = {}) : m_size(size) {}

    Size GetSize() const override { return m_size; }
    FontMetrics GetFontMetrics() const override { return {kCellWidth, kLineHeight}; }
    void FillRect(const Rect& rect, Colour colour) override;
    void FillRoundRect(const Rect& rect, int corner, Colour colour) override;
    void SetTextColour(Colour colour) override { m_textColour = colour; }
    void DrawText(Point at, std::string_view gbk) override;
    int TextWidth(std::string_view gbk) const override { return static_cast<int>(gbk.size()) * kCellWidth; }
    void Present() override { ++m_nPresented; }

    void Resize(Size size) { m_size = size; }
    void Clear() { m_operations.clear(); }

    std::vector<Operation> m_operations;
    int m_nPresented = 0;

private:
    Size m_size;
    Colour m_textColour = 0;
};

class HeadlessWindow : public Window {
public:
    explicit HeadlessWindow(Size client, Point screenOrigin = {}) : m_client(client), m_screenOrigin(screenOrigin) {}

    Rect GetClientRect() const override { return {0, 0, m_client.width, m_client.height}; }
    FontMetrics GetFontMetrics() const override { return PaintTarget().GetFontMetrics(); }
    void Invalidate(const Rect& rect) override { m_invalidated.push_back(rect); }
    void InvalidateAll() override { m_invalidated.push_back(GetClientRect()); }
    void UpdateNow() override { ++m_nUpdates; }
    void SetFocus() override { m_bFocus = true; }
    bool HasFocus() const override { return m_bFocus; }
    void SetCapture() override { m_bCapture = true; }
    void ReleaseCapture() override { m_bCapture = false; }
    Point ClientToScreen(Point p) const override { return {p.x + m_screenOrigin.x, p.y + m_screenOrigin.y}; }
    void SetScrollBar(ScrollBarKind bar, const ScrollBarState& state) override { m_scrollBars[bar] = state; }
    void ShiftPicture(int dx, int dy) override { m_shifts.push_back({dx, dy}); }
    PaintSurface& BeginPaint() override;
    void NotifyParent(unsigned code, int controlId) override;
    void SetClient(WindowClient* client) override { m_pClient = client; }

    Size m_client;
    Point m_screenOrigin;
    bool m_bFocus = false;
    bool m_bCapture = false;
    int m_nUpdates = 0;
    std::vector<Rect> m_invalidated;
    std::map<ScrollBarKind, ScrollBarState> m_scrollBars;
    std::vector<Point> m_shifts;
    // Each notification as the parent receives it: code << 16 | control id.
    std::vector<unsigned> m_notifications;
    WindowClient* m_pClient = nullptr;
    HeadlessSurface m_surface;
    // When set, paints go to this surface (an image, say) instead of m_surface.
    PaintSurface* m_pPaintTarget = nullptr;

private:
    const PaintSurface& PaintTarget() const {
        if (m_pPaintTarget != nullptr) return *m_pPaintTarget;
        return m_surface;
    }
};

class HeadlessCaret : public Caret {
public:
    void Create(Size size) override { m_bExists = true; m_bShown = false; m_size = size; }
    void Destroy() override { m_bExists = false; m_bShown = false; }
    void Show() override { m_bShown = m_bExists; }
    void Hide() override { m_bShown = false; }
    void SetPos(Point p) override { m_pos = p; }
    bool Exists() const override { return m_bExists; }

    bool m_bExists = false;
    bool m_bShown = false;
    Size m_size;
    Point m_pos;
};

class HeadlessClipboard : public Clipboard {
public:
    bool HasText() const override { return m_bAvailable && m_bHasText; }
    bool GetText(std::string& out) const override;
    void SetText(const std::string& gbk) override;

    // False stands for a clipboard that another program holds open.
    bool m_bAvailable = true;
    bool m_bHasText = false;
    std::string m_text;
};

class HeadlessTimer : public Timer {
public:
    void Start(int id, int, std::function<void()> callback) override { m_callbacks[id] = std::move(callback); }
    void Stop(int id) override { m_callbacks.erase(id); }
    // Runs the timer's callback once, as if its time had come; false if it does not run.
    bool Fire(int id);

    std::map<int, std::function<void()>> m_callbacks;
};

class HeadlessListBox : public ListBox {
public:
    void Place(const Rect& rect) override { m_rect = rect; }
    void Show() override { m_bVisible = true; }
    void Hide() override { m_bVisible = false; }
    bool IsVisible() const override { return m_bVisible; }
    void SetFocus() override { ++m_nFocusCalls; }
    void Clear() override { m_entries.clear(); m_nSelected = -1; }
    void Insert(int index, const std::string& gbk) override;
    int Count() const override { return static_cast<int>(m_entries.size()); }
    std::string Text(int index) const override;
    int Selected() const override { return m_nSelected; }
    void Select(int index) override;
    void ClearSelection() override { m_nSelected = -1; }

    Rect m_rect;
    bool m_bVisible = false;
    int m_nFocusCalls = 0;
    int m_nSelected = -1;
    std::vector<std::string> m_entries;
};

// A tip window whose interface font is the headless cell font.
class HeadlessTipWindow : public TipWindow {
public:
    Size MeasureLine(std::string_view gbk) const override;
    void SetShape(Point topLeft, Size size, int corner) override;
    void ShowNoActivate(std::function<void(PaintSurface&)> painter) override;
    void Hide() override { m_bVisible = false; }
    bool IsVisible() const override { return m_bVisible; }

    Point m_topLeft;
    Size m_size;
    int m_nCorner = 0;
    bool m_bVisible = false;
    // What the window showed when it was last painted.
    HeadlessSurface m_surface;
};

// Answers each Track with the next command of the script (0 when it runs out).
class HeadlessPopupMenu : public PopupMenu {
public:
    unsigned Track(const std::vector<MenuItem>& items, Point screen) override;

    std::vector<unsigned> m_answers;
    std::vector<MenuItem> m_lastItems;
    Point m_lastPoint;
};

}  // namespace ny
