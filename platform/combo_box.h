#pragma once
// A drop-down list of GBK rows with at most one selected row. GetCurSel answers -1 when no row
// is selected; SetCurSel with an index outside the list selects none. onSelChange runs after
// the user chose a row.

#include <functional>
#include <string>

#include "platform/control.h"

namespace ny {

class ComboBox : public Control {
public:
    virtual void ResetContent() = 0;
    virtual void AddString(const std::string& gbk) = 0;
    virtual int GetCount() const = 0;
    virtual std::string GetText(int row) const = 0;
    virtual int GetCurSel() const = 0;
    virtual void SetCurSel(int row) = 0;

    std::function<void()> onSelChange;
};

}  // namespace ny
