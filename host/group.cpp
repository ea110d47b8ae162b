#include "host/group.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "host/encoding.h"
#include "host/files.h"
#include "host/global.h"
#include "host/stockdb.h"

namespace {

constexpr size_t kHeaderSize = 84;
constexpr size_t kNameSize = 64;
constexpr char kMagic[4] = {'N', 'Y', 'B', 'K'};
constexpr int kVersion = 1;
const char kExtension[] = ".blk";

// Header: magic, version, id count, the block's name in GBK (zero-padded), eight zero bytes.
std::string EncodeBlock(const CString& name, const std::vector<int>& ids) {
    std::string bytes(kMagic, sizeof(kMagic));
    ny::StoreInt(&bytes, kVersion);
    ny::StoreInt(&bytes, static_cast<int>(ids.size()));
    std::string field = name.substr(0, kNameSize - 1);
    field.resize(kNameSize, '\0');
    bytes += field;
    bytes.resize(kHeaderSize, '\0');
    for (int id : ids) ny::StoreInt(&bytes, id);
    return bytes;
}

}  // namespace

CString CGroup::GetGroupFilePath(const CString& category, const CString& name) {
    return g_MyGetFilePath(NY_FILE_BLOCKS) + ny::GbkToUtf8(category) + "/" + ny::GbkToUtf8(name) + kExtension;
}

std::vector<int> CGroup::ReadGroupFile(const CString& category, const CString& name) {
    std::vector<int> ids;
    const std::string path = GetGroupFilePath(category, name);
    std::string bytes;
    if (!ny::ReadWholeFile(path, &bytes)) return ids;
    if (bytes.size() < kHeaderSize || std::memcmp(bytes.data(), kMagic, sizeof(kMagic)) != 0) {
        ny::ReportProblem(path + ": not a block file, ignored");
        return ids;
    }
    const size_t body = bytes.size() - kHeaderSize;
    size_t count = body / 4;
    const int declared = ny::LoadInt(bytes.data() + 8);
    if (body % 4 != 0 || declared < 0 || static_cast<size_t>(declared) != count) {
        ny::ReportProblem(path + ": header says " + std::to_string(declared) + " ids, file holds " +
                          std::to_string(count) + (body % 4 != 0 ? " and trailing bytes" : ""));
        if (declared >= 0) count = std::min(count, static_cast<size_t>(declared));
    }
    ids.reserve(count);
    for (size_t i = 0; i < count; ++i) ids.push_back(ny::LoadInt(bytes.data() + kHeaderSize + 4 * i));
    return ids;
}

void CGroup::init() {
    m_arStockIDs.clear();
    m_Strategy.m_strPath = m_strCategory == NY_GROUP_STRATEGY ? CStrategyData::GetStrategyFilePath(m_strName) : CString();
    for (int id : ReadGroupFile(m_strCategory, m_strName))
        if (g_MyGetStock(id) != nullptr) m_arStockIDs.push_back(id);
    if (m_nSortColumn < 0) return;
    const short column = m_nSortColumn;
    const bool rising = m_cSortOrder != -1;
    std::stable_sort(m_arStockIDs.begin(), m_arStockIDs.end(), [column, rising](int a, int b) {
        const float va = g_MyGetStock(a)->GetValue(column);
        const float vb = g_MyGetStock(b)->GetValue(column);
        return rising ? va < vb : vb < va;
    });
}

int CGroup::ID2Pos(long id) const {
    auto found = std::find(m_arStockIDs.begin(), m_arStockIDs.end(), id);
    return found == m_arStockIDs.end() ? -1 : static_cast<int>(found - m_arStockIDs.begin());
}

void CGroup::GetGroup(const CString& category, std::vector<CString>& names) {
    namespace fs = std::filesystem;
    names.clear();
    std::error_code error;
    const fs::path folder = g_MyGetFilePath(NY_FILE_BLOCKS) + ny::GbkToUtf8(category);
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        if (!it->is_regular_file(error) || it->path().extension() != kExtension) continue;
        names.push_back(ny::Utf8ToGbk(it->path().stem().string()));
    }
    std::sort(names.begin(), names.end());
}

void CGroup::GetStock(const CString& category, const CString& name, std::vector<CStock*>& stocks) {
    stocks.clear();
    for (int id : ReadGroupFile(category, name))
        if (CStock* stock = g_MyGetStock(id)) stocks.push_back(stock);
}

BOOL CGroup::CreateGroup(const CString& category, const CString& name, const std::vector<int>& ids) {
    // A name is one file name: no folder separators, no hidden or relative names.
    if (name.empty() || name[0] == '.' || name.find('/') != CString::npos) return FALSE;
    return ny::WriteFileAtomic(GetGroupFilePath(category, name), EncodeBlock(name, ids)) ? TRUE : FALSE;
}

void CGroup::AppendPy(std::vector<CString>& codes, char letter) {
    if (codes.empty()) codes.emplace_back();
    for (CString& code : codes) code.push_back(letter);
}

void CGroup::DoublePy(std::vector<CString>& codes, char letter) {
    // With a third reading the list already holds a copy per reading; each prefix gets the new
    // letter once.
    const size_t count = codes.size();
    for (size_t i = 0; i < count; ++i) {
        if (codes[i].empty()) continue;
        CString copy = codes[i];
        copy.back() = letter;
        if (std::find(codes.begin(), codes.end(), copy) == codes.end()) codes.push_back(copy);
    }
}
