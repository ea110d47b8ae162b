#pragma once
// The text caret of a window with the focus: one blinking bar. Create makes it hidden; Destroy
// removes it. Owned by the window; called on the window's thread.

#include "platform/geometry.h"

namespace ny {

class Caret {
public:
    virtual ~Caret() = default;

    virtual void Create(Size size) = 0;
    virtual void Destroy() = 0;
    virtual void Show() = 0;
    virtual void Hide() = 0;
    virtual void SetPos(Point clientPos) = 0;
    virtual bool Exists() const = 0;
};

}  // namespace ny
