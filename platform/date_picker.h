#pragma once
// A date picker. Dates are YYYYMMDD numbers; the picker holds only valid dates.

#include "platform/control.h"

namespace ny {

class DatePicker : public Control {
public:
    virtual void SetDate(int yyyymmdd) = 0;
    virtual int GetDate() const = 0;
};

}  // namespace ny
