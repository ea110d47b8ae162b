#pragma once
// A borderless popup of free shape that shows help beside the caret without taking the focus.
// The owner measures text in the system's interface font, gives the window its size, corner
// and place, and paints it through Paint when the window asks. Created hidden by its owner and
// kept for the owner's life; user-interface thread only.

#include <functional>
#include <string_view>

#include "platform/geometry.h"
#include "platform/paint_surface.h"

namespace ny {

class TipWindow {
public:
    virtual ~TipWindow() = default;

    // Width and height of one line of text in the interface font.
    virtual Size MeasureLine(std::string_view gbk) const = 0;
    // Gives the window a rounded-rectangle shape of this size at this screen point.
    virtual void SetShape(Point screenTopLeft, Size size, int corner) = 0;
    // Shows the window without taking the focus; it is painted through the painter.
    virtual void ShowNoActivate(std::function<void(PaintSurface&)> painter) = 0;
    virtual void Hide() = 0;
    virtual bool IsVisible() const = 0;
};

}  // namespace ny
