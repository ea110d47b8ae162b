#pragma once
// A row of tabs. The pages are the caller's controls, which it shows and hides itself in
// onSelChange, run after the user chose a tab. GetCurSel is -1 without tabs.

#include <functional>
#include <string>

#include "platform/control.h"

namespace ny {

class TabControl : public Control {
public:
    virtual void InsertItem(int index, const std::string& gbk) = 0;
    virtual int GetItemCount() const = 0;
    virtual std::string GetItemText(int index) const = 0;
    virtual int GetCurSel() const = 0;
    virtual void SetCurSel(int index) = 0;

    std::function<void()> onSelChange;
};

}  // namespace ny
