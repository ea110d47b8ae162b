#pragma once
// A surface to paint on: an off-screen picture that a window shows in one step when Present is
// called, so that a half-painted picture is never seen. Text is GBK and drawn in the surface's
// fixed-width font, in which a byte takes one cell and a double-byte character two.
//
// Ownership: the window that hands out a surface owns it; a painter uses it for one paint.
// Thread: the window's thread only. Drawing outside the surface is clipped, never an error.

#include <string_view>

#include "platform/geometry.h"

namespace ny {

struct FontMetrics {
    int averageCharWidth = 0;
    int height = 0;
};

class PaintSurface {
public:
    virtual ~PaintSurface() = default;

    virtual Size GetSize() const = 0;
    virtual FontMetrics GetFontMetrics() const = 0;
    virtual void FillRect(const Rect& rect, Colour colour) = 0;
    // A filled rounded rectangle with the given corner diameter, framed in the same colour.
    virtual void FillRoundRect(const Rect& rect, int corner, Colour colour) = 0;
    virtual void SetTextColour(Colour colour) = 0;
    // Draws text with its top-left corner at `at`, with a transparent background.
    virtual void DrawText(Point at, std::string_view gbk) = 0;
    // The width in pixels that DrawText of this text takes.
    virtual int TextWidth(std::string_view gbk) const = 0;
    // Shows the finished picture on the window at once.
    virtual void Present() = 0;
};

}  // namespace ny
