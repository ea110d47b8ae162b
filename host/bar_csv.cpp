#include "host/bar_csv.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <map>
#include <sstream>

#include "host/clock.h"
#include "host/text_fields.h"

namespace ny {
namespace {

enum Column { kDate, kOpen, kHigh, kLow, kClose, kVolume, kAmount, kColumnCount };
constexpr const char* kColumnNames[kColumnCount] = {"date", "open", "high", "low", "close", "volume", "amount"};

// The last YYYYMMDD date whose minute stamp YYMMDDHHMM fits 32 signed bits.
constexpr int kLastMinuteDate = 20211231;

std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}


bool AllDigits(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

// A real calendar day: the weekday function knows none for an impossible date.
bool ParseDateText(const std::string& text, int* date) {
    std::string digits;
    if (text.size() == 10 && text[4] == '-' && text[7] == '-')
        digits = text.substr(0, 4) + text.substr(5, 2) + text.substr(8, 2);
    else
        digits = text;
    if (digits.size() != 8 || !AllDigits(digits)) return false;
    *date = std::atoi(digits.c_str());
    return *date >= 19000101 && WeekDay(*date) != 0;
}

namespace {

bool ReadTime(const std::string& text, int* hhmm) {
    if (text.size() != 5 || text[2] != ':' || !AllDigits(text.substr(0, 2)) || !AllDigits(text.substr(3, 2)))
        return false;
    const int hours = std::atoi(text.substr(0, 2).c_str());
    const int minutes = std::atoi(text.substr(3, 2).c_str());
    *hhmm = hours * 100 + minutes;
    return hours < 24 && minutes < 60;
}

bool ReadNumber(const std::string& text, float* value) {
    if (text.empty()) return false;
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size() || !std::isfinite(number) || std::fabs(number) > 3e38) return false;
    *value = static_cast<float>(number);
    return true;
}

class CsvReader {
public:
    BarCsv Read(const std::string& input) {
        std::string text = input;
        if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) text.erase(0, 3);
        std::istringstream in(text);
        std::string line;
        int number = 0;
        bool haveHeader = false;
        while (std::getline(in, line)) {
            ++number;
            const std::string trimmed = Trim(line);
            if (trimmed.empty() || trimmed[0] == '#') continue;
            if (!haveHeader) {
                if (!ReadHeader(trimmed, number)) return m_out;
                haveHeader = true;
                continue;
            }
            ReadRow(trimmed, number);
        }
        if (!haveHeader) Problem(number, "no header line (date,open,high,low,close,volume[,amount])");
        return m_out;
    }

private:
    void Problem(int line, const std::string& message) { m_out.problems.push_back({line, message}); }

    bool ReadHeader(const std::string& line, int number) {
        std::fill(std::begin(m_index), std::end(m_index), -1);
        const std::vector<std::string> names = SplitFields(line);
        m_fieldCount = names.size();
        for (size_t i = 0; i < names.size(); ++i) {
            const std::string name = Lower(names[i]);
            const auto* known = std::find_if(std::begin(kColumnNames), std::end(kColumnNames),
                                             [&](const char* c) { return name == c; });
            if (known == std::end(kColumnNames)) {
                Problem(number, "header: unknown column \"" + names[i] + "\"");
                return false;
            }
            int& slot = m_index[known - std::begin(kColumnNames)];
            if (slot >= 0) {
                Problem(number, "header: column \"" + name + "\" given twice");
                return false;
            }
            slot = static_cast<int>(i);
        }
        for (int c = kDate; c < kAmount; ++c) {
            if (m_index[c] < 0) {
                Problem(number, std::string("header: no column \"") + kColumnNames[c] + "\"");
                return false;
            }
        }
        return true;
    }

    bool ReadStamp(const std::string& text, int number, int* stamp, bool* minute) {
        const size_t gap = text.find_first_of(" T");
        int date = 0;
        if (!ParseDateText(text.substr(0, gap), &date)) {
            Problem(number, "bad date \"" + text + "\" (YYYYMMDD or YYYY-MM-DD)");
            return false;
        }
        *minute = gap != std::string::npos;
        if (!*minute) {
            *stamp = date;
            return true;
        }
        int hhmm = 0;
        if (!ReadTime(Trim(text.substr(gap + 1)), &hhmm)) {
            Problem(number, "bad time in \"" + text + "\" (HH:MM behind the date)");
            return false;
        }
        if (date < 20000101 || date > kLastMinuteDate) {
            Problem(number, "minute bars can only be dated 2000-01-01 to 2021-12-31");
            return false;
        }
        *stamp = (date - 20000000) * 10000 + hhmm;
        return true;
    }

    void ReadRow(const std::string& line, int number) {
        const std::vector<std::string> fields = SplitFields(line);
        if (fields.size() != m_fieldCount) {
            Problem(number, "expected " + std::to_string(m_fieldCount) + " fields, found " +
                                std::to_string(fields.size()));
            return;
        }
        CHisDay bar;
        bool minute = false;
        if (!ReadStamp(fields[m_index[kDate]], number, &bar.m_lTime, &minute)) return;
        float values[kColumnCount] = {};
        for (int c = kOpen; c < kColumnCount; ++c) {
            if (m_index[c] < 0) continue;
            if (!ReadNumber(fields[m_index[c]], &values[c])) {
                Problem(number, std::string("bad ") + kColumnNames[c] + " \"" + fields[m_index[c]] + "\"");
                return;
            }
        }
        bar.m_fOpen = values[kOpen];
        bar.m_fHigh = values[kHigh];
        bar.m_fLow = values[kLow];
        bar.m_fClose = values[kClose];
        bar.m_fVolume = values[kVolume];
        bar.m_fAmount = values[kAmount];
        if (!Consistent(bar, number) || !InOrder(bar, minute, number)) return;
        m_out.bars.push_back(bar);
    }

    bool Consistent(const CHisDay& bar, int number) {
        if (bar.m_fLow <= 0) {
            Problem(number, "prices must be above 0");
            return false;
        }
        if (bar.m_fHigh < bar.m_fLow || bar.m_fOpen < bar.m_fLow || bar.m_fOpen > bar.m_fHigh ||
            bar.m_fClose < bar.m_fLow || bar.m_fClose > bar.m_fHigh) {
            Problem(number, "open and close must lie between low and high");
            return false;
        }
        if (bar.m_fVolume < 0 || bar.m_fAmount < 0) {
            Problem(number, "volume and amount may not be negative");
            return false;
        }
        return true;
    }

    bool InOrder(const CHisDay& bar, bool minute, int number) {
        if (m_out.bars.empty()) {
            m_out.minute = minute;
            return true;
        }
        if (minute != m_out.minute) {
            Problem(number, "day and minute rows mixed in one file");
            return false;
        }
        if (bar.m_lTime <= m_out.bars.back().m_lTime) {
            Problem(number, "not later than the row before");
            return false;
        }
        return true;
    }

    int m_index[kColumnCount] = {};
    size_t m_fieldCount = 0;
    BarCsv m_out;
};

}  // namespace

BarCsv ParseBarCsv(const std::string& text) { return CsvReader().Read(text); }

std::vector<CHisDay> MergeBars(const std::vector<CHisDay>& stored, const std::vector<CHisDay>& added) {
    std::map<int, CHisDay> byTime;
    for (const CHisDay& bar : stored) byTime[bar.m_lTime] = bar;
    for (const CHisDay& bar : added) byTime[bar.m_lTime] = bar;
    std::vector<CHisDay> merged;
    merged.reserve(byTime.size());
    for (const auto& [time, bar] : byTime) merged.push_back(bar);
    return merged;
}

}  // namespace ny
