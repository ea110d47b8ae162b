// The bar loader's pipeline: a stock's stored bars, today's data on top, the map of stored
// bars to bars of the wanted period, the merge (with or without ex-rights adjustment) and the
// optional regrouping into runs up and down. All of it works on the loader's reusable buffers.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "host/clock.h"
#include "host/files.h"
#include "host/stockdb.h"
#include "model/indicator.h"
#include "model/period.h"
#include "picker/bar_loader.h"

static_assert(std::endian::native == std::endian::little, "bar files are read straight into CHisDay records");

namespace {

// Counts are 16-bit: a buffer holds at most 32767 records. The newest 30,000 stored bars and
// 2,000 records of the day's 1-minute file are read at most, which leaves room for today's bar
// and the buffers' slack of 100.
constexpr short kMaxStoredBars = 30000;
constexpr short kMaxMinuteRecords = 2000;
constexpr short kBufferSlack = 100;

// The row of the loader's period; a number with no row reads as the day period.
const ny::PeriodRow& PeriodOf(short number) {
    const ny::PeriodRow* row = ny::FindPeriod(number);
    return row != nullptr ? *row : ny::kPeriods[0];
}

// A stored bar file, opened with sharing allowed. Files are read straight into the record
// buffers; the file's size is asked for only when the buffer turns out to be too small.
class BarFile {
public:
    explicit BarFile(const CString& path) : m_fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~BarFile() {
        if (m_fd >= 0) ::close(m_fd);
    }
    BarFile(const BarFile&) = delete;
    BarFile& operator=(const BarFile&) = delete;

    bool IsOpen() const { return m_fd >= 0; }

    // Reads from the start into a buffer of `capacity` records; the number of whole records read,
    // or -1 if the buffer was filled and the file may hold more.
    short ReadFront(CHisDay* into, short capacity) {
        if (into == nullptr || capacity < 1) return -1;
        const size_t room = static_cast<size_t>(capacity) * sizeof(CHisDay);
        const size_t got = ReadAt(into, room, 0);
        return got == room ? -1 : static_cast<short>(got / sizeof(CHisDay));
    }

    // Whole records in the file, at most `limit`: the newest ones are the ones kept.
    short Count(short limit) {
        struct stat info {};
        if (::fstat(m_fd, &info) != 0 || info.st_size < 0) return 0;
        const long long records = info.st_size / static_cast<long long>(sizeof(CHisDay));
        m_skip = std::max(0LL, records - limit);
        return static_cast<short>(records - m_skip);
    }

    // Reads the records counted by Count; the number of whole records read.
    short Read(CHisDay* into, short count) {
        const size_t wanted = static_cast<size_t>(count) * sizeof(CHisDay);
        return static_cast<short>(ReadAt(into, wanted, m_skip * static_cast<long long>(sizeof(CHisDay))) /
                                  sizeof(CHisDay));
    }

private:
    size_t ReadAt(void* into, size_t wanted, long long offset) {
        char* out = static_cast<char*>(into);
        size_t got = 0;
        while (got < wanted) {
            const ssize_t n = ::pread(m_fd, out + got, wanted - got,
                                      static_cast<off_t>(offset + static_cast<long long>(got)));
            if (n <= 0) break;
            got += static_cast<size_t>(n);
        }
        return got;
    }

    int m_fd;
    long long m_skip = 0;
};

}  // namespace

CBarLoader::~CBarLoader() { Free(); }

bool CBarLoader::Load(int stockId, short period, int power, int varPeriod) {
    m_lStockID = stockId;
    m_nPeriod = period;
    m_nPower = power;
    m_nVarPeriod = varPeriod;
    m_bDamaged = false;
    LoadPower();
    if (m_bDamaged)
        m_nHisCount = m_nDrawCount = 0;
    else
        RequestData();
    return m_pDrawData != nullptr && m_nDrawCount > 0;
}

void CBarLoader::KeepLast(short count) {
    if (m_nDrawCount <= count) return;
    std::memmove(m_pDrawData, m_pDrawData + (m_nDrawCount - count), sizeof(CHisDay) * count);
    m_nDrawCount = count;
}

bool CBarLoader::KeepDateRange(int beginDate, int endDate) {
    // The range is compared with the date of each bar, which for minute bars is part of the stamp.
    auto firstOnOrAfter = [this](int date) {
        for (short b = 0; b < m_nDrawCount; ++b)
            if (DayOfBar(m_pDrawData[b].m_lTime) >= date) return b;
        return static_cast<short>(-1);
    };
    const short from = firstOnOrAfter(beginDate);
    const short to = firstOnOrAfter(endDate);
    if (from < 0 || to < 0 || from == to) return false;
    const short count = static_cast<short>(to - from + 1);
    std::memmove(m_pDrawData, m_pDrawData + from, sizeof(CHisDay) * count);
    m_nDrawCount = count;
    return true;
}

// ---- Buffers ----

void CBarLoader::AllocMem() {
    const short size = static_cast<short>(m_nHisCount + kBufferSlack);
    Free();
    m_pHisData = new CHisDay[size];
    m_pDrawData = new CHisDay[size];
    m_pTempData = new CHisDay[size];
    m_pDrawNo = new CondStocksDRAWNO[size];
    m_pResult = new float[size]();
    m_nBufSize = size;
}

void CBarLoader::ReAlloc() {
    const short size = static_cast<short>(m_nHisCount + kBufferSlack);
    CHisDay* his = new CHisDay[size];
    if (m_pHisData != nullptr) std::memcpy(his, m_pHisData, sizeof(CHisDay) * std::min(m_nBufSize, size));
    Free();
    m_pHisData = his;
    m_pDrawData = new CHisDay[size];
    m_pTempData = new CHisDay[size];
    m_pDrawNo = new CondStocksDRAWNO[size];
    m_pResult = new float[size]();
    m_nBufSize = size;
}

void CBarLoader::Free() {
    delete[] m_pHisData;
    delete[] m_pDrawData;
    delete[] m_pTempData;
    delete[] m_pDrawNo;
    delete[] m_pResult;
    m_pHisData = m_pDrawData = m_pTempData = nullptr;
    m_pDrawNo = nullptr;
    m_pResult = nullptr;
    m_nBufSize = 0;
}

// ---- Loading ----

BOOL CBarLoader::RequestData() {
    m_nHisCount = 0;
    m_nDrawCount = 0;
    // A stock without a stored day file gets no bar of today either, whatever earlier stocks
    // left in the buffers; minute-based periods may live on the day's 1-minute file alone.
    if (LoadHisData() || (ny::IsMinutePeriod(m_nPeriod) && !m_bDamaged)) LoadRTData();
    CalcDrawDays();
    ChangeDataType();
    if (m_nVarPeriod != 0) CalcVarPeriod();
    return TRUE;
}

BOOL CBarLoader::LoadHisData() {
    const CStock* stock = g_MyGetStock(m_lStockID);
    if (stock == nullptr) return FALSE;
    const ny::BarFileKind kind = PeriodOf(m_nPeriod).file;
    const CString path = kind == ny::BarFileKind::Minute1   ? stock->GetMinuteFilePath()
                         : kind == ny::BarFileKind::Minute5 ? stock->GetMin5FilePath()
                                                            : stock->GetDayFilePath();
    BarFile file(path);
    if (!file.IsOpen()) return FALSE;
    m_nHisCount = file.ReadFront(m_pHisData, m_nBufSize);
    if (m_nHisCount < 0) {
        // The buffers are too small (or not there yet): grow them to the file.
        m_nHisCount = file.Count(kMaxStoredBars);
        if (m_nHisCount >= m_nBufSize) AllocMem();
        m_nHisCount = file.Read(m_pHisData, m_nHisCount);
    }
    return RefuseDamagedBars(path);
}

// Values that are not numbers, or a high below the low, would evaluate without a word:
// the stock gets no bars instead, and the file is reported. Bars without a proper date keep the
// pipeline's own treatment.
BOOL CBarLoader::RefuseDamagedBars(const CString& path) {
    const std::string damage = ny::FindBarDamage(m_pHisData, static_cast<size_t>(std::max<short>(m_nHisCount, 0)),
                                                 ny::IsMinutePeriod(m_nPeriod), false);
    if (damage.empty()) return TRUE;
    ny::ReportProblem(path + ": " + damage);
    m_bDamaged = true;
    m_nHisCount = 0;
    return FALSE;
}

BOOL CBarLoader::LoadRTData() {
    if (!ny::IsMinutePeriod(m_nPeriod))
        LoadRTData_Day();
    else
        LoadRTData_Minute();
    return TRUE;
}

void CBarLoader::LoadRTData_Day() {
    const CStock* stock = g_MyGetStock(m_lStockID);
    if (stock == nullptr || m_pDrawData == nullptr) return;
    // A stock without a latest price has no quote today: nothing to add.
    const float last = stock->GetValue(NY_QUOTE_LAST);
    if (last == 0) return;
    int at = m_nHisCount - 1;
    if (m_nHisCount < 1 || m_pHisData[at].m_lTime != g_MyCurTradeDate) {
        at = m_nHisCount++;
        if (m_nHisCount >= m_nBufSize) ReAlloc();
        m_pHisData[at] = CHisDay{};
    }
    CHisDay& today = m_pHisData[at];
    today.m_lTime = g_MyCurTradeDate;
    today.m_fOpen = stock->GetValue(NY_QUOTE_OPEN);
    today.m_fHigh = stock->GetValue(NY_QUOTE_HIGH);
    today.m_fLow = stock->GetValue(NY_QUOTE_LOW);
    today.m_fClose = last;
    today.m_fVolume = stock->GetValue(NY_QUOTE_VOLUME);
    today.m_fAmount = stock->GetValue(NY_QUOTE_AMOUNT);
    if (today.m_fOpen == 0) today.m_fOpen = last;
    if (today.m_fHigh == 0) today.m_fHigh = last;
    if (today.m_fLow == 0) today.m_fLow = last;
}

void CBarLoader::LoadRTData_Minute() {
    const CStock* stock = g_MyGetStock(m_lStockID);
    if (stock == nullptr) return;
    BarFile file(stock->GetMinuteFilePath());
    if (!file.IsOpen()) return;
    short count = file.Count(kMaxMinuteRecords);
    if (count < 1) return;
    m_arMinute.resize(static_cast<size_t>(count) + 5);
    count = file.Read(m_arMinute.data(), count);
    if (count < 1) return;
    const bool fold = PeriodOf(m_nPeriod).file == ny::BarFileKind::Minute5;
    if (m_nHisCount < 1) {
        if (fold) ChangeToMinute5(m_arMinute.data(), count);
        m_nHisCount = count;
        if (m_nHisCount >= m_nBufSize) AllocMem();
        std::memcpy(m_pHisData, m_arMinute.data(), sizeof(CHisDay) * count);
        return;
    }
    // Stored bars that reach the day's first minute already hold the day.
    if (m_pHisData[m_nHisCount - 1].m_lTime >= m_arMinute[0].m_lTime) return;
    if (fold) ChangeToMinute5(m_arMinute.data(), count);
    const short at = m_nHisCount;
    m_nHisCount = static_cast<short>(m_nHisCount + count);
    if (m_nHisCount >= m_nBufSize) ReAlloc();
    std::memcpy(m_pHisData + at, m_arMinute.data(), sizeof(CHisDay) * count);
}

void CBarLoader::ChangeToMinute5(CHisDay* bars, short& count) {
    const CStock* stock = g_MyGetStock(m_lStockID);
    if (stock == nullptr || count < 1) return;
    m_arFold.assign(bars, bars + count);
    std::fill(bars, bars + count, CHisDay{});
    short out = 0;
    bars[0] = m_arFold[0];
    for (short i = 1; i < count; ++i) {
        const CHisDay& minute = m_arFold[i];
        CHisDay& current = bars[out];
        if (CStock::Time2Time(minute.m_lTime, 0, stock->m_cMarket) !=
            CStock::Time2Time(current.m_lTime, 0, stock->m_cMarket)) {
            bars[++out] = minute;
            bars[out].m_fPreClose = bars[out - 1].m_fClose;
            continue;
        }
        current.m_lTime = minute.m_lTime;
        current.m_fClose = minute.m_fClose;
        current.m_fVolume += minute.m_fVolume;
        current.m_fAmount += minute.m_fAmount;
        current.m_fHigh = std::max(current.m_fHigh, minute.m_fHigh);
        current.m_fLow = std::min(current.m_fLow, minute.m_fLow);
    }
    count = static_cast<short>(out + 1);
}

// ---- Period map ----

namespace {

// The day number of a YYYYMMDD date whose year, month and day are in range; false otherwise.
bool DayOfDate(int date, long* day) {
    const int year = date / 10000, month = date / 100 % 100, dayOfMonth = date % 100;
    if (year < 1 || month < 1 || month > 12 || dayOfMonth < 1 || dayOfMonth > 31) return false;
    *day = ny::DayNumber(date);
    return true;
}

// 1 = Sunday ... 7 = Saturday of a day number (day 0, 1970-01-01, was a Thursday).
int WeekDayOf(long day) {
    const long index = ((day + 4) % 7 + 7) % 7;
    return static_cast<int>(index) + 1;
}

}  // namespace

BOOL CBarLoader::IsSamePeriod(int earlier, int later) {
    const ny::PeriodRow& period = PeriodOf(m_nPeriod);
    switch (period.grouping) {
        case ny::BarGrouping::Week: {
            // Weekday numbers run from Sunday (1) to Saturday (7): a later bar of the same week has
            // a higher number and lies less than seven days on.
            long earlierDay = 0, laterDay = 0;
            if (!DayOfDate(earlier, &earlierDay) || !DayOfDate(later, &laterDay)) return FALSE;
            return WeekDayOf(laterDay) > WeekDayOf(earlierDay) && laterDay - earlierDay < 7;
        }
        case ny::BarGrouping::Month:
            return earlier / 100 == later / 100;
        case ny::BarGrouping::Quarter:
            return earlier / 10000 == later / 10000 &&
                   (earlier / 100 % 100 - 1) / 3 == (later / 100 % 100 - 1) / 3;
        case ny::BarGrouping::Year:
            return earlier / 10000 == later / 10000;
        case ny::BarGrouping::SameTime:
            return earlier == later;
        case ny::BarGrouping::OneToOne:
        case ny::BarGrouping::MinuteSlots: {
            // Stored 5-minute bars compare by the slot that stamps them; day bars by their date.
            if (period.slotKind < 0) return earlier == later;
            const CStock* stock = g_MyGetStock(m_lStockID);
            if (stock == nullptr) return FALSE;
            return CStock::Time2Time(earlier, period.slotKind, stock->m_cMarket) ==
                   CStock::Time2Time(later, period.slotKind, stock->m_cMarket);
        }
    }
    return FALSE;
}

void CBarLoader::CalcDrawDays() {
    short n = 0;
    if (m_pDrawNo != nullptr) {
        const bool oneToOne = PeriodOf(m_nPeriod).grouping == ny::BarGrouping::OneToOne;
        for (short i = 0; i < m_nHisCount; ++i) {
            if (oneToOne || i == 0 || !IsSamePeriod(m_pHisData[i - 1].m_lTime, m_pHisData[i].m_lTime))
                m_pDrawNo[n++].m_nFirst = i;
            m_pDrawNo[n - 1].m_nLast = i;
        }
    }
    m_nDrawCount = n;
}

// ---- Merge ----

int CBarLoader::DayOfBar(int time) const {
    return ny::IsMinutePeriod(m_nPeriod) ? CStock::Min5Time2Day(time) : time;
}

void CBarLoader::ChangeDataType() {
    const CStock* stock = g_MyGetStock(m_lStockID);
    if (m_nDrawCount < 1 || stock == nullptr || m_pDrawData == nullptr || m_pHisData == nullptr ||
        m_pDrawNo == nullptr)
        return;
    std::fill(m_pDrawData, m_pDrawData + m_nDrawCount, CHisDay{});
    const int firstRaw = m_pDrawNo[0].m_nFirst;
    if (m_nPower == 1)
        MergeAdjusted(firstRaw, m_pDrawNo[m_nDrawCount - 1].m_nLast, stock->m_cMarket);
    else
        MergeAsStored(firstRaw, stock->m_cMarket);
    // A price that came out as 0 shows the close before it.
    for (short p = 1; p < m_nDrawCount; ++p) {
        CHisDay& bar = m_pDrawData[p];
        const float before = m_pDrawData[p - 1].m_fClose;
        for (float* price : {&bar.m_fOpen, &bar.m_fHigh, &bar.m_fLow, &bar.m_fClose})
            if (*price == 0) *price = before;
    }
}

// Walks from the newest stored bar to the oldest; prices before each ex-rights event are scaled
// by the factor of all events after them, so the newest bars stay as stored.
void CBarLoader::MergeAdjusted(int firstRaw, int lastRaw, char market) {
    float factor = 1.0f;
    CPowerData record;
    int index = GetStartCQ(DayOfBar(m_pHisData[lastRaw].m_lTime), record);
    for (int p = m_nDrawCount - 1; p >= 0; --p) {
        CHisDay& out = m_pDrawData[p];
        const int first = m_pDrawNo[p].m_nFirst, last = m_pDrawNo[p].m_nLast;
        for (int r = last; r >= first; --r) {
            const CHisDay& stored = m_pHisData[r];
            if (r == last) {
                out.m_lTime = stored.m_lTime;
                out.m_fOpen = stored.m_fOpen * factor;
                out.m_fHigh = stored.m_fHigh * factor;
                out.m_fLow = stored.m_fLow * factor;
                out.m_fClose = stored.m_fClose * factor;
                out.m_fVolume = stored.m_fVolume;
                out.m_fAmount = stored.m_fAmount;
                out.m_fCapital = index >= 0 ? record.m_fCapital : 0;
                out.m_lAdvDec = stored.m_lAdvDec;
            } else {
                if (r == first && PeriodOf(m_nPeriod).slotKind >= 0)
                    out.m_lTime = CStock::Time2Time(stored.m_lTime, PeriodOf(m_nPeriod).slotKind, market);
                out.m_fHigh = std::max(out.m_fHigh, stored.m_fHigh * factor);
                out.m_fLow = std::min(out.m_fLow, stored.m_fLow * factor);
                out.m_fOpen = stored.m_fOpen * factor;
                out.m_fVolume += stored.m_fVolume;
                out.m_fAmount += stored.m_fAmount;
                if (out.m_fCapital == 0 && index >= 0) out.m_fCapital = record.m_fCapital;
            }
            if (index >= 0 && r > firstRaw) ApplyEvents(r, index, record, factor);
            if (p > 0) out.m_fPreClose = m_pHisData[r - 1].m_fClose * factor;
        }
        if (p == 0) out.m_fPreClose = m_pHisData[firstRaw].m_fOpen;
    }
}

// Walks forwards with prices as stored; the capital follows the ex-rights record in force.
void CBarLoader::MergeAsStored(int firstRaw, char market) {
    CPowerData record;
    int index = GetStartCQ(DayOfBar(m_pHisData[firstRaw].m_lTime), record);
    float capital = index >= 0 ? record.m_fCapital : 0;
    for (int p = 0; p < m_nDrawCount; ++p) {
        CHisDay& out = m_pDrawData[p];
        const int first = m_pDrawNo[p].m_nFirst, last = m_pDrawNo[p].m_nLast;
        for (int r = first; r <= last; ++r) {
            const CHisDay& stored = m_pHisData[r];
            if (index >= 0) {
                if (r > firstRaw) {
                    // Every newer record dated up to this bar's day comes into force.
                    const int day = DayOfBar(stored.m_lTime);
                    CPowerData newer;
                    for (int next = GetNextCQ(index, newer, 1); next >= 0 && newer.m_lDate <= day;
                         next = GetNextCQ(index, newer, 1)) {
                        index = next;
                        record = newer;
                    }
                }
                capital = record.m_fCapital;
            }
            if (r == first) {
                out = stored;
                if (PeriodOf(m_nPeriod).slotKind >= 0)
                    out.m_lTime = CStock::Time2Time(stored.m_lTime, PeriodOf(m_nPeriod).slotKind, market);
                out.m_fCapital = capital;
            } else {
                if (PeriodOf(m_nPeriod).slotKind < 0) out.m_lTime = stored.m_lTime;
                out.m_fHigh = std::max(out.m_fHigh, stored.m_fHigh);
                out.m_fLow = std::min(out.m_fLow, stored.m_fLow);
                out.m_fClose = stored.m_fClose;
                out.m_fVolume += stored.m_fVolume;
                out.m_fAmount += stored.m_fAmount;
            }
        }
        out.m_fPreClose = p > 0 ? m_pDrawData[p - 1].m_fClose : out.m_fOpen;
    }
}

// ---- Runs up and down ----

void CBarLoader::CalcVarPeriod() {
    if (m_pDrawData == nullptr || m_pTempData == nullptr || m_nDrawCount <= 0) return;
    std::copy(m_pDrawData, m_pDrawData + m_nDrawCount, m_pTempData);
    std::fill(m_pDrawData, m_pDrawData + m_nBufSize, CHisDay{});
    m_pDrawData[0] = m_pTempData[0];
    const bool up = m_pTempData[0].m_fOpen <= m_pTempData[0].m_fClose;
    short group = 0;
    for (short i = 1; i < m_nDrawCount; ++i) {
        const CHisDay& bar = m_pTempData[i];
        const float before = m_pTempData[i - 1].m_fClose;
        const bool joins = up ? bar.m_fClose >= before : bar.m_fClose < before;
        CHisDay& run = m_pDrawData[joins ? group : ++group];
        if (!joins) {
            run.m_lTime = bar.m_lTime;
            run.m_fOpen = bar.m_fOpen;
            run.m_fHigh = bar.m_fHigh;
            run.m_fLow = bar.m_fLow;
            run.m_fClose = bar.m_fClose;
            run.m_fVolume = bar.m_fVolume;
            run.m_fAmount = bar.m_fAmount;
            continue;
        }
        run.m_lTime = bar.m_lTime;
        if ((up && bar.m_fOpen < run.m_fOpen) || (!up && bar.m_fOpen > run.m_fOpen))
            run.m_fOpen = bar.m_fOpen;
        run.m_fHigh = std::max(run.m_fHigh, bar.m_fHigh);
        run.m_fLow = std::min(run.m_fLow, bar.m_fLow);
        run.m_fVolume += bar.m_fVolume;
        run.m_fAmount += bar.m_fAmount;
        // A run closes where its latest bar closes, as its time is that bar's.
        run.m_fClose = bar.m_fClose;
    }
    m_nDrawCount = static_cast<short>(group + 1);
}
