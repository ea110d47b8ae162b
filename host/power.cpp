#include "host/power.h"

#include <cmath>
#include <cstring>

#include "host/files.h"
#include "host/stockdb.h"

float CPowerData::Adjust(float price) const {
    float p = price;
    if (m_fProfit > 0) p = p - m_fProfit / 10;
    if (m_fGive > 0) p = p / (m_fGive / 10 + 1);
    if (m_fPei > 0 && m_fPeiPrice > 0) {
        const float s = m_fPei / 10;
        const float paid = m_fPeiPrice / 10 * s;
        const float sum = paid + p;
        p = sum / (s + 1);
    }
    return p;
}

BOOL g_MyValueIsZero(float value, float tolerance) { return std::fabs(value) <= std::fabs(tolerance); }

namespace {

// The stock named by the number that the ex-rights loader receives.
const CStock* PowerStock(long id) {
    if (id >= 1000000) return g_MyGetStock(id);
    const CStock* shanghai = g_MyGetStock(id);
    if (shanghai != nullptr && !shanghai->IsIndex()) return shanghai;
    const CStock* shenzhen = g_MyGetStock(1000000 + id);
    return shenzhen != nullptr ? shenzhen : shanghai;
}

}  // namespace

int g_MyLoadPowerById(std::vector<CPowerData>& records, long id) {
    const CStock* stock = PowerStock(id);
    if (stock == nullptr) return 0;
    const std::vector<CPowerData> stored = ny::ReadPowerFile(stock->GetPowerFilePath());
    records.insert(records.end(), stored.rbegin(), stored.rend());
    return static_cast<int>(stored.size());
}

namespace ny {

std::vector<CPowerData> ReadPowerFile(const std::string& path) {
    std::string bytes;
    size_t count = 0;
    std::vector<CPowerData> records;
    if (!ReadRecordFile(path, sizeof(CPowerData), &bytes, &count)) return records;
    records.resize(count);
    if (count > 0) std::memcpy(records.data(), bytes.data(), count * sizeof(CPowerData));
    return records;
}

std::string FindPowerDamage(const std::vector<CPowerData>& records, bool newestFirst) {
    for (size_t i = 0; i < records.size(); ++i) {
        const CPowerData& r = records[i];
        const std::string at = "record " + std::to_string(newestFirst ? records.size() - i : i + 1) + ": ";
        if (!IsCalendarDay(r.m_lDate)) return at + "impossible date " + std::to_string(r.m_lDate);
        for (float value : {r.m_fGive, r.m_fPei, r.m_fPeiPrice, r.m_fProfit, r.m_fTotalCapital, r.m_fCapital})
            if (!std::isfinite(value) || value < 0) return at + "a ratio, price or share count is not a number or negative";
    }
    return {};
}

std::string EncodePower(const std::vector<CPowerData>& records) {
    std::string bytes(records.size() * sizeof(CPowerData), '\0');
    if (!records.empty()) std::memcpy(bytes.data(), records.data(), bytes.size());
    return bytes;
}

float ScaleForEvent(float factor, const CPowerData& record, float closeBefore) {
    const float adjusted = record.Adjust(closeBefore);
    if (closeBefore <= 0 || g_MyValueIsZero(adjusted - closeBefore, 0.0001f)) return factor;
    return factor * adjusted / closeBefore;
}

}  // namespace ny
