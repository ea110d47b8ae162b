#pragma once
// What the fuzz targets share: one temporary installation per process with a small market, the
// catalog, and a way to turn the fuzzer's bytes into files and texts.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "editor/color_edit_wnd.h"
#include "host/hisday.h"

namespace fuzz {

// The stock of the temporary installation whose files the targets replace.
constexpr int kStockId = 600001;

// Opens the temporary installation (once per process) and fills the function catalog. Returns
// the installation directory, with a trailing '/'.
const std::string& Installation();

// The editor whose syntax test the targets use, with the lexer module opened (one per process).
ColorEditWnd& Editor();

// Writes bytes to a file, making its folders; plain and fast, as fuzzing writes thousands.
void WriteFile(const std::string& path, const uint8_t* data, size_t size);
void WriteFile(const std::string& path, const std::string& bytes);

// The fuzzer's bytes as a text of at most `limit` bytes, ending at the first zero byte.
std::string Text(const uint8_t* data, size_t size, size_t limit);

// A fixed series of day bars for the evaluator, in time order and with sound prices.
const std::vector<CHisDay>& FixedBars();

}  // namespace fuzz
