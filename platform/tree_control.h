#pragma once
// A tree of items, each with a GBK text, an image number and a data pointer that the tree does
// not own. Items are named by handles; kNoItem (0) is no item, and as a parent the top level.
// Handles of deleted items are never handed out again. With check boxes, each item carries a
// checked state. Handlers run after the user's action: onSelChange (selection moved), onDblClick,
// onCheckClick (the user clicked an item's check box; `wasChecked` is its state before).

#include <functional>
#include <string>
#include <vector>

#include "platform/control.h"

namespace ny {

using TreeItem = int;
constexpr TreeItem kNoItem = 0;

class TreeControl : public Control {
public:
    // Appends an item under `parent` and returns its handle.
    virtual TreeItem InsertItem(const std::string& gbk, int image, TreeItem parent, void* data = nullptr) = 0;
    virtual void DeleteItem(TreeItem item) = 0;
    virtual void DeleteAllItems() = 0;
    // Children of an item (or the top-level items for kNoItem), in order.
    virtual std::vector<TreeItem> GetChildren(TreeItem parent) const = 0;
    virtual TreeItem GetParentItem(TreeItem item) const = 0;
    virtual std::string GetItemText(TreeItem item) const = 0;
    virtual int GetItemImage(TreeItem item) const = 0;
    virtual void* GetItemData(TreeItem item) const = 0;
    virtual TreeItem GetSelectedItem() const = 0;
    virtual void SelectItem(TreeItem item) = 0;
    virtual void Expand(TreeItem item) = 0;
    virtual bool IsExpanded(TreeItem item) const = 0;
    // Scrolls so that the item is the first one in view.
    virtual void SelectSetFirstVisible(TreeItem item) = 0;
    virtual void SetCheck(TreeItem item, bool checked) = 0;
    virtual bool GetCheck(TreeItem item) const = 0;

    std::function<void()> onSelChange;
    std::function<void()> onDblClick;
    std::function<void(TreeItem item, bool wasChecked)> onCheckClick;
};

}  // namespace ny
