#pragma once
// Small file helpers of the host layer: whole-file reads, record files of fixed-size records,
// atomic writes, and the list of problems found while reading the installation's files.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/hisday.h"

namespace ny {

// The folder of the running program, with a trailing '/'; empty if it can't be read.
std::string ProgramDirectory();

// Reads the whole file into bytes. False if it can't be opened or read, if it is not a regular
// file (a folder, a FIFO or a device is refused without waiting on it or reading it), or if it
// is longer than maxBytes; `error`, if given, then says which.
bool ReadWholeFile(const std::string& path, std::string* bytes, std::string* error = nullptr,
                   size_t maxBytes = SIZE_MAX);

// The careful writer of every file the system owns. Writes bytes to a new temporary file beside
// path (a unique name, created exclusively, never through a symlink), flushes it to the disk,
// renames it over path and flushes the folder, so that a crash mid-write leaves either the old
// file or the new one and a failure leaves the old one. Creates missing folders. A generator
// writing thousands of files may skip the flushes (flushToDisk false). False on any failure, with
// a sentence naming the file and the cause in `error` if given. The system calls go through
// FileSystem() (platform/file_system.h), which tests replace to inject faults.
bool WriteFileAtomic(const std::string& path, const std::string& bytes, std::string* error = nullptr,
                     bool flushToDisk = true);

// Reads a file of fixed-size records: whole records only. A length that is not a multiple of the
// record size is noted as a problem and the trailing bytes are ignored. False if the file can't
// be read.
bool ReadRecordFile(const std::string& path, size_t recordSize, std::string* bytes, size_t* count);

// What a reader made of a market file of records.
enum class MarketFileState {
    Missing,  // there is no such file: no records
    Whole,    // every record was read and is sound
    Damaged,  // present, but unreadable, not a regular file, cut short, or with impossible records
};

// A date YYYYMMDD from 1900 on that names a day of the calendar.
bool IsCalendarDay(int date);

// The first impossible bar, as "record N: what" (N from 1), or empty if all are sound: a date that
// is no calendar day (minute bars: a YYMMDDHHMM stamp with no such day or time of day), an open,
// high, low or close that is not a number or negative, a high below the low, or a volume or
// amount that is not a number or negative. Not strict, only values that are not numbers and a
// high below the low count: the picker's pipeline has its own rules for bars without a proper
// date or price.
std::string FindBarDamage(const CHisDay* bars, size_t count, bool minute, bool strict = true);

// Reads a file of 40-byte CHisDay records. A damaged file is reported as a problem of the
// installation with its path and the record, and the same text goes to `damage` if given; `bars`
// then holds the whole records read.
MarketFileState ReadBars(const std::string& path, bool minute, std::vector<CHisDay>* bars,
                         std::string* damage = nullptr);

// The bars of a file of 40-byte CHisDay records, as ReadBars reads them; empty if the file is
// missing or holds no whole record.
std::vector<CHisDay> ReadBarFile(const std::string& path);
// The 40-byte little-endian form of bars, as stored in bar files.
std::string EncodeBars(const std::vector<CHisDay>& bars);

// Problems found in the installation's files since it was opened (malformed lines, truncated
// record files, unknown ids), one plain-text line each: "path: line N: what".
const std::vector<std::string>& InstallationProblems();
void ReportProblem(const std::string& text);
void ClearProblems();

// Little-endian 32-bit fields in record buffers.
int LoadInt(const char* at);
float LoadFloat(const char* at);
void StoreInt(std::string* out, int value);
void StoreFloat(std::string* out, float value);

}  // namespace ny
