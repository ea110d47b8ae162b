#pragma once
// The host's stock database: the stock objects of the installation and the unit rules of
// their volumes.

#include <vector>

#include "model/types.h"

// Kind bits of CStock::m_dwKind.
constexpr unsigned NY_KIND_SH_A = 0x0002;
constexpr unsigned NY_KIND_SZ_A = 0x2000;
constexpr unsigned NY_KIND_INDEX = 0x0001;
constexpr unsigned NY_KIND_BOND = 0x0004;
constexpr unsigned NY_KIND_HAND_UNIT = 0x0008;

class CStock {
public:
    int m_lStockID = 0;  // market x 1,000,000 + code
    unsigned m_dwKind = 0;

    BOOL IsHandUnit() const { return (m_dwKind & NY_KIND_HAND_UNIT) != 0; }
    BOOL IsZQ() const { return (m_dwKind & NY_KIND_BOND) != 0; }
    BOOL IsIndex() const { return (m_dwKind & NY_KIND_INDEX) != 0; }

    // The same tests by id; an unknown id is none of them.
    static BOOL IsHandUnit(long id);
    static BOOL IsZQ(long id);
};

// All stocks of the installation, owned.
extern std::vector<CStock*> g_MyStocksArray;

// The stock of an id, or null.
CStock* g_MyGetStock(long id);
