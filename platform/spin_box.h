#pragma once
// The up-down arrows beside a number box (its buddy). A step moves the buddy's number by one
// within the range and writes it back as decimal text.

#include "platform/control.h"

namespace ny {

class TextBox;

class SpinBox : public Control {
public:
    virtual void SetBuddy(TextBox* buddy) = 0;
    virtual void SetRange(int lower, int upper) = 0;
    virtual int GetLower() const = 0;
    virtual int GetUpper() const = 0;
};

}  // namespace ny
