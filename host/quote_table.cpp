#include "host/quote_table.h"

#include "host/group.h"

void CQuoteTableView::OnSelNonSystemGroup(const CString& category, const CString& name) {
    CGroup group;
    group.m_strCategory = category;
    group.m_strName = name;
    group.init();
    m_strCategory = category;
    m_strName = name;
    m_arStockIDs = group.m_arStockIDs;
}
