#pragma once
// A small list of GBK entries in a frame of its own, with at most one selected entry. Placed
// in the client coordinates of the control that owns it; the owner creates it hidden and
// keeps it for its life. Called on the user-interface thread. Indexes outside the list are
// ignored; Selected answers -1 when nothing is selected.

#include <string>

#include "platform/geometry.h"

namespace ny {

class ListBox {
public:
    virtual ~ListBox() = default;

    virtual void Place(const Rect& clientRect) = 0;
    virtual void Show() = 0;
    virtual void Hide() = 0;
    virtual bool IsVisible() const = 0;
    virtual void SetFocus() = 0;
    virtual void Clear() = 0;
    virtual void Insert(int index, const std::string& gbk) = 0;
    virtual int Count() const = 0;
    virtual std::string Text(int index) const = 0;
    virtual int Selected() const = 0;
    virtual void Select(int index) = 0;
    virtual void ClearSelection() = 0;
};

}  // namespace ny
