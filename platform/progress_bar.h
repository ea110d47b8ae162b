#pragma once
// A progress bar over a range of whole numbers.

#include "platform/control.h"

namespace ny {

class ProgressBar : public Control {
public:
    virtual void SetRange(int lower, int upper) = 0;
    virtual void SetPos(int pos) = 0;
    virtual int GetPos() const = 0;
};

}  // namespace ny
