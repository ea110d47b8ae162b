#pragma once
// What every control of a dialog offers: a place in the dialog, shown or hidden, enabled or
// not. Controls belong to the dialog window that made them and live as long as it does. All
// calls and all handlers run on the user-interface thread.

#include "platform/geometry.h"

namespace ny {

class Control {
public:
    virtual ~Control() = default;

    virtual void Place(const Rect& rect) = 0;
    virtual Rect GetRect() const = 0;
    virtual void Show(bool show) = 0;
    virtual bool IsVisible() const = 0;
    virtual void Enable(bool enable) = 0;
    virtual bool IsEnabled() const = 0;
};

}  // namespace ny
