#pragma once
// A check box with a label. onClick runs after the user flipped it (not after SetChecked).

#include <functional>

#include "platform/control.h"

namespace ny {

class CheckBox : public Control {
public:
    virtual void SetChecked(bool checked) = 0;
    virtual bool IsChecked() const = 0;

    std::function<void()> onClick;
};

}  // namespace ny
