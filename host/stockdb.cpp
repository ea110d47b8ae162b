#include "host/stockdb.h"

std::vector<CStock*> g_MyStocksArray;

CStock* g_MyGetStock(long id) {
    for (CStock* stock : g_MyStocksArray)
        if (stock->m_lStockID == id) return stock;
    return nullptr;
}

BOOL CStock::IsHandUnit(long id) {
    const CStock* stock = g_MyGetStock(id);
    return stock != nullptr && stock->IsHandUnit();
}

BOOL CStock::IsZQ(long id) {
    const CStock* stock = g_MyGetStock(id);
    return stock != nullptr && stock->IsZQ();
}
