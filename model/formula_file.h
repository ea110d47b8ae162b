#pragma once
// Layout of the formula files (.dat): a 12-byte header followed by formula records.
//   header: 16-bit reserved (0 in the library's files, 1 in an exported file), 16-bit record
//           count, 8 bytes of magic "myok" and four zeros, of which readers compare 4 bytes;
//   record: CIndicator::Save / Load, in the short or the long form, which the reader must know.

#include "host/types.h"
#include "model/binstream.h"

namespace ny {

constexpr int FORMULA_HEADER_BYTES = 12;
constexpr int SHORT_SOURCE_BYTES = 2048;   // source field of the short form
constexpr int LONG_SOURCE_BYTES = 10240;   // source field of the long form
// The fixed head of a formula record, up to and including its statement count.
constexpr int FormulaHeadBytes(int sourceField) { return 1961 + sourceField; }
// Bytes of a formula without statements, parameters and axis lines: the head and two counts.
constexpr int EmptyFormulaBytes(int sourceField) { return FormulaHeadBytes(sourceField) + 4; }
constexpr int STATEMENT_RECORD_BYTES = 552;
constexpr int PARAM_RECORD_BYTES = 58;
constexpr int AXE_RECORD_BYTES = 2;

struct FormulaFileHeader {
    short reserved = 0;
    short count = 0;
    bool magicOk = false;
};

void WriteFormulaHeader(CBinStream& stream, short reserved, short count);
// A short read leaves the missing fields zero, so a file shorter than a header has a bad magic.
FormulaFileHeader ReadFormulaHeader(CBinStream& stream);

// The longest start of text that fits a field of `width` bytes with its terminating zero,
// without cutting a double-byte character in two. Text stops at an embedded zero.
size_t FieldTextLength(const CString& text, size_t width);

}  // namespace ny
