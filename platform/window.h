#pragma once
// The window services of a control that paints itself: client size, repaint requests, focus,
// mouse capture, scroll bars, screen coordinates, the off-screen surface of a paint, and the
// command message to the parent. The control holds a reference; the window outlives it.
// A window on a real display reports its events to the control it is attached to (SetClient) and
// may lend it the services of a text control (caret, clipboard, menu, list, tip); a window
// without them answers null. Everything runs on the window's thread.

#include "platform/caret.h"
#include "platform/clipboard.h"
#include "platform/geometry.h"
#include "platform/input_events.h"
#include "platform/list_box.h"
#include "platform/paint_surface.h"
#include "platform/popup_menu.h"
#include "platform/tip_window.h"

namespace ny {

enum class ScrollBarKind { Vertical, Horizontal };

// What a scroll-bar event asks for: a step back or forward by a line (or column) or a page, a
// thumb being dragged or let go at a position, or a jump to either end.
enum class ScrollCode { LineBack, LineForward, PageBack, PageForward, ThumbTrack, ThumbPosition, Start, End };

struct ScrollBarState {
    int min = 0;
    int max = 0;
    int page = 0;
    int pos = 0;
    bool operator==(const ScrollBarState&) const = default;
};

// What a window reports to the control that paints itself in it.
class WindowClient : public InputTarget {
public:
    virtual void OnPaint() = 0;
    // The window was first shown: the control takes its cell size from the font.
    virtual void OnFirstShow() = 0;
    virtual void OnSize() = 0;
    virtual void OnSetFocus() = 0;
    virtual void OnKillFocus() = 0;
    // A scroll-bar event; thumb is the position of a thumb event.
    virtual void OnScroll(ScrollBarKind bar, ScrollCode code, int thumb) = 0;
    // A key pressed, or an entry double-clicked, in the window's list (GetListBox).
    virtual void OnListKey(unsigned key, Modifiers modifiers) = 0;
    virtual void OnListDoubleClick() = 0;
};

class Window {
public:
    virtual ~Window() = default;

    virtual Rect GetClientRect() const = 0;
    // The cell size of the control's fixed-width font.
    virtual FontMetrics GetFontMetrics() const = 0;
    // Asks for a repaint of a client rectangle, or of everything.
    virtual void Invalidate(const Rect& rect) = 0;
    virtual void InvalidateAll() = 0;
    // Paints what was asked for now instead of at the next idle moment.
    virtual void UpdateNow() = 0;
    virtual void SetFocus() = 0;
    virtual bool HasFocus() const = 0;
    virtual void SetCapture() = 0;
    virtual void ReleaseCapture() = 0;
    virtual Point ClientToScreen(Point client) const = 0;
    virtual void SetScrollBar(ScrollBarKind bar, const ScrollBarState& state) = 0;
    // Moves the picture shown by dx, dy pixels; what comes free is left for a repaint.
    virtual void ShiftPicture(int dx, int dy) = 0;
    // The off-screen surface of one paint, the size of the client area, in the control's font.
    virtual PaintSurface& BeginPaint() = 0;
    // Sends the parent a command message: code in the high word, control id in the low word.
    virtual void NotifyParent(unsigned code, int controlId) = 0;

    // Attaches the control that receives the window's events; null detaches it.
    virtual void SetClient(WindowClient* client) = 0;
    // The services of a text control in this window, owned by the window; null where it has none.
    virtual Caret* GetCaret() { return nullptr; }
    virtual Clipboard* GetClipboard() { return nullptr; }
    virtual PopupMenu* GetPopupMenu() { return nullptr; }
    virtual ListBox* GetListBox() { return nullptr; }
    virtual TipWindow* GetTipWindow() { return nullptr; }
};

}  // namespace ny
