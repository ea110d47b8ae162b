#pragma once
// The function tip of the script editor: a pale yellow borderless window with rounded corners
// that shows a function's description and usage below the caret, without taking the focus.
// Owned by the editor; draws through the platform's tip window, which the editor's caller owns.
// Editor thread only.

#include "platform/geometry.h"
#include "platform/paint_surface.h"
#include "platform/tip_window.h"

class ColorEditWnd;

// What the editor relays to the tip of the events it sees.
enum class TipRelayedEvent { MouseMoveOverOwner, MouseMoveElsewhere, ButtonPress, Other };

class CToolTipEx {
public:
    static constexpr int kTextBytes = 1024;  // m_szText, with its terminator
    static constexpr int kMarginLeft = 15;
    static constexpr int kMarginTop = 10;
    static constexpr int kMarginRight = 15;
    static constexpr int kMarginBottom = 13;

    // Attaches the tip to its owner and the platform's window, hidden. A null window makes
    // every call a no-op.
    void Create(ColorEditWnd* owner, ny::TipWindow* window);
    // Copies text (cut to 1,023 bytes, never inside a double-byte character) and shows it.
    void AddFunTip(const char* text, ny::Point screenPoint);
    // Sizes the window to the text, places it at (x - 4, y + 16) and shows it.
    void Show(ny::Point screenPoint);
    void Hide();
    bool IsVisible() const;
    // Mouse movement over another window, or any button press, hides the tip.
    void RelayEvent(TipRelayedEvent event);
    // Paints the rounded body and the text.
    void Paint(ny::PaintSurface& surface) const;

    ny::Colour m_crBack = 0xB8FFFF;
    ny::Colour m_crText = 0x000000;  // the system's colour for information text
    char m_szText[kTextBytes] = {};
    ny::Rect m_rcText;
    ColorEditWnd* m_pOwner = nullptr;

private:
    ny::TipWindow* m_pWindow = nullptr;
};
