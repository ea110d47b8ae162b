#pragma once
// Ex-rights records: dividends, bonus shares and rights issues of a stock.

#include <string>
#include <vector>

#include "host/types.h"

// One ex-rights event, a 40-byte file record of ten little-endian 32-bit fields in this order.
class CPowerData {
public:
    int m_lStockID = 0;         // the stock of the record
    int m_lDate = 0;            // date of the event, YYYYMMDD
    float m_fGive = 0;          // bonus shares per ten shares
    float m_fPei = 0;           // rights shares per ten shares
    float m_fPeiPrice = 0;      // rights price x 10
    float m_fProfit = 0;        // cash dividend per ten shares
    float m_fTotalCapital = 0;  // total shares from this event on, in 10,000 shares
    float m_fCapital = 0;       // circulating shares from this event on, in 10,000 shares
    int m_lReserved1 = 0;
    int m_lReserved2 = 0;

    // The price after the event: dividend first, then bonus shares, then rights, each step
    // rounded to a 32-bit float.
    float Adjust(float price) const;
};

static_assert(sizeof(CPowerData) == 40, "CPowerData is a 40-byte file record");

// Appends the ex-rights records of a stock, newest first; returns how many were appended. An id
// of 1,000,000 or more is a full stock id. A smaller number is a code: the Shanghai stock of that
// code if there is one that is not an index, otherwise the Shenzhen stock of that code.
int g_MyLoadPowerById(std::vector<CPowerData>& records, long id);

// Non-zero if value is zero within the tolerance.
BOOL g_MyValueIsZero(float value, float tolerance);

namespace ny {
// The price factor of the bars before an ex-rights event, given the factor of the bars after it:
// multiplied by the adjusted over the stored close of the day before the event. Left alone when
// that close can't be scaled (0 or below) or the event doesn't change it (within 0.0001).
float ScaleForEvent(float factor, const CPowerData& record, float closeBefore);
// The records of an ex-rights file as stored, oldest first.
std::vector<CPowerData> ReadPowerFile(const std::string& path);
// The first impossible record, as "record N: what" (N from 1 in the file's order, oldest first;
// `newestFirst` says the records are held the other way round, as the picker holds them), or empty if all
// are sound: a date that is no calendar day, or a ratio, price or share count that is not a number
// or negative. Adjusting prices with such a record would turn every earlier bar into nonsense.
std::string FindPowerDamage(const std::vector<CPowerData>& records, bool newestFirst = false);
// The stored form of records.
std::string EncodePower(const std::vector<CPowerData>& records);
}  // namespace ny
