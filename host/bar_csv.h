#pragma once
// Bars in CSV text, the form in which people bring their own data: a header line naming the
// columns date, open, high, low, close, volume and, optionally, amount (in any order, any case),
// then one bar a line, oldest first. Dates are YYYYMMDD or YYYY-MM-DD; a minute bar has its
// time, HH:MM, behind the date ("2021-06-30 14:55"), and is stamped YYMMDDHHMM like the minute
// files. Blank lines and lines starting with "#" are skipped.

#include <string>
#include <vector>

#include "host/hisday.h"

namespace ny {

struct BarCsvProblem {
    int line = 0;         // 1-based line of the file
    std::string message;  // plain ASCII text
};

struct BarCsv {
    std::vector<CHisDay> bars;
    bool minute = false;  // the rows carry times; m_lTime is YYMMDDHHMM
    std::vector<BarCsvProblem> problems;
};

// The longest CSV file of bars read: far more rows than the 32,767 bars of an evaluation.
constexpr size_t kMaxBarCsvBytes = 64 * 1024 * 1024;

// Reads all rows. A row that can't be a bar (wrong number of fields, a date or number that
// doesn't read, a day that doesn't exist, prices that contradict each other, a negative volume,
// a time out of order with the row before, day and minute rows mixed, a minute date beyond what
// a YYMMDDHHMM stamp holds) is left out and listed in `problems` with its line. A file without a
// proper header gives one problem and no bars.
BarCsv ParseBarCsv(const std::string& text);

// A calendar date written YYYYMMDD or YYYY-MM-DD, as YYYYMMDD. False for anything else or a day
// that doesn't exist.
bool ParseDateText(const std::string& text, int* date);

// Merges bars into stored ones by their stamp: a new bar replaces the stored bar of the same
// stamp, the others are kept; the result is in order of time.
std::vector<CHisDay> MergeBars(const std::vector<CHisDay>& stored, const std::vector<CHisDay>& added);

}  // namespace ny
