#pragma once
// A push button. A button may be shown pressed, as the buttons of a group of views are, to say
// which view is on. onClick runs when the user clicks an enabled button.

#include <functional>

#include "platform/control.h"

namespace ny {

class PushButton : public Control {
public:
    virtual void SetPressed(bool pressed) = 0;
    virtual bool IsPressed() const = 0;

    std::function<void()> onClick;
};

}  // namespace ny
