#pragma once
// The host's quote table as far as the module needs it: the block of stocks it shows. A block
// that is not one of the system's (a block of "自定义" or of a category) is shown by
// OnSelNonSystemGroup, which reads the block as it is stored at that moment.

#include <vector>

#include "host/types.h"

class CQuoteTableView {
public:
    // Shows the block of `category` and `name`: its known stocks in the stored order. A missing
    // block shows as empty.
    void OnSelNonSystemGroup(const CString& category, const CString& name);

    CString m_strCategory;
    CString m_strName;
    std::vector<int> m_arStockIDs;  // the stocks in view
};
