#pragma once
// A context menu opened at a screen point. Track returns the command of the chosen item, or 0
// when the user closed the menu. Called on the user-interface thread; blocks until closed.

#include <string>
#include <vector>

#include "platform/geometry.h"

namespace ny {

struct MenuItem {
    std::string text;  // GBK; empty for a separator
    unsigned command = 0;
    bool enabled = true;
};

class PopupMenu {
public:
    virtual ~PopupMenu() = default;
    virtual unsigned Track(const std::vector<MenuItem>& items, Point screen) = 0;
};

}  // namespace ny
