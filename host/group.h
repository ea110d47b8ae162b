#pragma once
// The host's blocks of stocks by category ("行业", "地区", "概念", "自选", "自定义" ...), and the
// helpers that build pinyin initials of names.
//
// A block is the file <blocks folder>/<category>/<name>.blk: an 84-byte header followed by the
// 32-bit ids of its stocks in order.

#include <vector>

#include "host/strategy.h"
#include "host/types.h"

class CStock;

class CGroup {
public:
    CString m_strCategory;
    CString m_strName;
    short m_nSortColumn = -1;  // a CStock::GetValue code to sort by; -1 keeps the stored order
    char m_cSortOrder = 1;     // 1 rising, -1 falling
    std::vector<int> m_arStockIDs;  // filled by init(): the known stocks of the block
    CStrategyData m_Strategy;       // a decision block's table: init() names its file, Load() reads it

    // Reads the block of m_strCategory and m_strName: a missing block is empty. Ids that are not
    // stocks of the installation are left out. Sorted when a sort column is set. For a decision
    // block, points m_Strategy at the block's table.
    void init();
    // Position of a stock in m_arStockIDs, from 0; -1 if it is not there.
    int ID2Pos(long id) const;

    // Names of the blocks of a category, in GBK byte order.
    static void GetGroup(const CString& category, std::vector<CString>& names);
    // The known stocks of a block, in its order.
    static void GetStock(const CString& category, const CString& name, std::vector<CStock*>& stocks);
    // Stores a block with these ids, replacing a block of the same name. FALSE if the file
    // can't be written.
    static BOOL CreateGroup(const CString& category, const CString& name, const std::vector<int>& ids);
    // Path of a block's file.
    static CString GetGroupFilePath(const CString& category, const CString& name);
    // The ids stored in a block's file, unknown ones included; empty if it is missing or damaged.
    static std::vector<int> ReadGroupFile(const CString& category, const CString& name);

    // Adds a letter to the end of every string; makes a first string if the list is empty.
    static void AppendPy(std::vector<CString>& codes, char letter);
    // Called right behind AppendPy for the same character with its other reading: adds, for
    // every string, a copy that ends in this letter instead.
    static void DoublePy(std::vector<CString>& codes, char letter);
};
