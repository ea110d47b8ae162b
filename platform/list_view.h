#pragma once
// A list of rows with columns of GBK text; each row may carry a data pointer that the list
// does not own. Rows and columns count from 0; an index outside the list reads as empty and is
// otherwise ignored. Named integer properties let a caller keep small state with the list (a
// sort column, a direction). Handlers run after the user's action.

#include <functional>
#include <string>

#include "platform/control.h"

namespace ny {

class ListView : public Control {
public:
    virtual void InsertColumn(int column, const std::string& gbk, int width) = 0;
    virtual int GetColumnCount() const = 0;
    virtual std::string GetColumnText(int column) const = 0;
    virtual void DeleteAllItems() = 0;
    // Inserts a row at `row` (at the end when beyond it) with its first column; returns its index.
    virtual int InsertItem(int row, const std::string& gbk, void* data = nullptr) = 0;
    virtual void DeleteItem(int row) = 0;
    virtual void SetItemText(int row, int column, const std::string& gbk) = 0;
    virtual std::string GetItemText(int row, int column) const = 0;
    virtual void* GetItemData(int row) const = 0;
    virtual int GetItemCount() const = 0;
    // The first selected row, or -1.
    virtual int GetSelectedRow() const = 0;
    virtual void SelectRow(int row) = 0;
    // Reorders the rows; `less` compares two rows by index in the current order.
    virtual void SortItems(const std::function<bool(int rowA, int rowB)>& less) = 0;
    virtual void SetProperty(const std::string& name, int value) = 0;
    virtual int GetProperty(const std::string& name) const = 0;

    std::function<void()> onSelChange;
    std::function<void()> onDblClick;
    std::function<void(int column)> onColumnClick;
};

}  // namespace ny
