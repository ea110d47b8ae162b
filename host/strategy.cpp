#include "host/strategy.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "host/encoding.h"
#include "host/files.h"
#include "host/global.h"

const char* const NY_GROUP_STRATEGY = "决策";

namespace {

constexpr char kMagic[4] = {'N', 'Y', 'S', 'T'};
constexpr int kVersion = 1;
constexpr size_t kHeaderSize = 16;
constexpr size_t kTextSize = 32;
constexpr size_t kColumnSize = kTextSize + 4;
constexpr int kMostColumns = 64;

void StoreText(std::string* out, const CString& text) {
    std::string field = text.substr(0, kTextSize - 1);
    field.resize(kTextSize, '\0');
    *out += field;
}

// A zero-padded text field; a field without its zero ends at the field's end.
CString LoadText(const char* at) { return CString(at, strnlen(at, kTextSize)); }

bool IsNumeric(int type) { return type == NY_STRATEGY_WHOLE || type == NY_STRATEGY_DECIMAL; }

}  // namespace

CString CStrategyData::GetStrategyFilePath(const CString& name) {
    return g_MyGetFilePath(NY_FILE_BLOCKS) + ny::GbkToUtf8(NY_GROUP_STRATEGY) + "/" + ny::GbkToUtf8(name) + ".stg";
}

std::string CStrategyData::Encode(const std::vector<Column>& columns, const std::vector<Row>& rows) {
    std::string bytes(kMagic, sizeof(kMagic));
    ny::StoreInt(&bytes, kVersion);
    ny::StoreInt(&bytes, static_cast<int>(columns.size()));
    ny::StoreInt(&bytes, static_cast<int>(rows.size()));
    for (const Column& column : columns) {
        StoreText(&bytes, column.m_strName);
        ny::StoreInt(&bytes, column.m_nType);
    }
    for (const Row& row : rows) {
        ny::StoreInt(&bytes, row.m_lStockID);
        for (size_t c = 0; c < columns.size(); ++c)
            StoreText(&bytes, c < row.m_arCells.size() ? row.m_arCells[c] : CString());
    }
    return bytes;
}

BOOL CStrategyData::Save(const CString& path, const std::vector<Column>& columns, const std::vector<Row>& rows) {
    return ny::WriteFileAtomic(path, Encode(columns, rows)) ? TRUE : FALSE;
}

BOOL CStrategyData::Load() {
    m_arColumns.clear();
    m_arRows.clear();
    std::string bytes;
    if (!ny::ReadWholeFile(m_strPath, &bytes)) return FALSE;
    const int columns = bytes.size() >= kHeaderSize ? ny::LoadInt(bytes.data() + 8) : -1;
    const int declared = bytes.size() >= kHeaderSize ? ny::LoadInt(bytes.data() + 12) : -1;
    if (bytes.size() < kHeaderSize || std::memcmp(bytes.data(), kMagic, sizeof(kMagic)) != 0 || columns < 1 ||
        columns > kMostColumns || declared < 0 || bytes.size() < kHeaderSize + columns * kColumnSize) {
        ny::ReportProblem(m_strPath + ": not a strategy table, ignored");
        return FALSE;
    }
    const char* at = bytes.data() + kHeaderSize;
    for (int c = 0; c < columns; ++c, at += kColumnSize)
        m_arColumns.push_back({LoadText(at), ny::LoadInt(at + kTextSize)});
    const size_t rowSize = 4 + columns * kTextSize;
    const size_t body = bytes.size() - kHeaderSize - columns * kColumnSize;
    size_t count = body / rowSize;
    if (body % rowSize != 0 || count != static_cast<size_t>(declared)) {
        ny::ReportProblem(m_strPath + ": header says " + std::to_string(declared) + " rows, file holds " +
                          std::to_string(count) + (body % rowSize != 0 ? " and a broken one" : ""));
        count = std::min(count, static_cast<size_t>(declared));
    }
    for (size_t r = 0; r < count; ++r, at += rowSize) {
        Row row;
        row.m_lStockID = ny::LoadInt(at);
        for (int c = 0; c < columns; ++c) row.m_arCells.push_back(LoadText(at + 4 + c * kTextSize));
        m_arRows.push_back(std::move(row));
    }
    return TRUE;
}

int CStrategyData::GetPos(long id) const {
    for (size_t r = 0; r < m_arRows.size(); ++r)
        if (m_arRows[r].m_lStockID == id) return static_cast<int>(r);
    return -1;
}

CString CStrategyData::GetColName(int col) const {
    return col >= 0 && col < GetColSize() ? m_arColumns[col].m_strName : CString();
}

int CStrategyData::GetColType(int col) const {
    return col >= 0 && col < GetColSize() ? m_arColumns[col].m_nType : NY_STRATEGY_TEXT;
}

CString CStrategyData::GetCellData(long id, short column) const {
    const int pos = GetPos(id);
    const int col = NY_STRATEGY_COLUMN_BASE - column;
    if (pos < 0 || col < 0 || col >= GetColSize()) return CString();
    return m_arRows[pos].m_arCells[col];
}

void CStrategyData::Sort(int column, char order) {
    const int col = NY_STRATEGY_COLUMN_BASE - column;
    if (col < 0 || col >= GetColSize()) return;
    const bool numeric = IsNumeric(m_arColumns[col].m_nType);
    const bool rising = order != 0;
    std::stable_sort(m_arRows.begin(), m_arRows.end(), [&](const Row& a, const Row& b) {
        const CString& x = rising ? a.m_arCells[col] : b.m_arCells[col];
        const CString& y = rising ? b.m_arCells[col] : a.m_arCells[col];
        return numeric ? std::atof(x.c_str()) < std::atof(y.c_str()) : x < y;
    });
}
