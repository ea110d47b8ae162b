#pragma once
// Small file helpers of the host layer: whole-file reads, record files of fixed-size records,
// atomic writes, and the list of problems found while reading the installation's files.

#include <cstddef>
#include <string>
#include <vector>

#include "model/hisday.h"

namespace ny {

// Reads the whole file into bytes. False if it can't be opened or read.
bool ReadWholeFile(const std::string& path, std::string* bytes);

// Writes bytes to a temporary file beside path and renames it over path, so that a crash
// mid-write leaves either the old file or the new one. Creates missing folders. With flushToDisk
// the bytes reach the disk before the rename (what a user's file needs; a generator writing
// thousands of files may skip it). False on failure.
bool WriteFileAtomic(const std::string& path, const std::string& bytes, bool flushToDisk = true);

// Reads a file of fixed-size records: whole records only. A length that is not a multiple of the
// record size is noted as a problem and the trailing bytes are ignored. False if the file can't
// be read.
bool ReadRecordFile(const std::string& path, size_t recordSize, std::string* bytes, size_t* count);

// The bars of a file of 40-byte CHisDay records; empty if the file is missing or holds no whole
// record.
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
