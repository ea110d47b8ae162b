#pragma once
// The readable form of one formula: a UTF-8 text file that people write and keep under version
// control, from which the binary formula sets are built. It carries the whole definition of a
// formula except its statements, which the syntax test derives from the source.
//
//   # a comment line
//   name:     MACD
//   kind:     技术指标                  (技术指标, 条件选股, 交易系统, 五彩K线)
//   group:    趋向指标                  (a group of the kind; kinds 2 and 3 have none; without
//                                        it: 自定指标 or 自定选股, the user's own group)
//   title:    平滑异同移动平均线
//   draw:     副图                      (副图 or 主图叠加; technical indicators only)
//   param:    SHORT 2 200 12            (name, smallest, largest, default; at most 8)
//   axes:     0                         (axis lines separated by ";"; technical indicators only)
//   [template]                          (parameter template of a condition, "Param" marks)
//   [usage]
//   [source]
//   [sentences]                         (what the source says in words, as `nyind lib show`
//                                        writes it; derived, so ignored when read)
//
// Header lines come first; each "[section]" line starts a block of free text that runs to the
// next section line or the end of the file. Blocks lose their leading and trailing blank lines
// and keep their lines joined by CR LF, as the formula dialog stores its texts.

#include <string>

#include "model/indicator.h"

namespace ny {

struct FormulaSourceError {
    int line = 0;         // 1-based line of the problem, 0 for the file as a whole
    CString message;      // GBK, as all text inside the system
};

// Fills the definition of `formula` (a fresh object: no parameters, axes or statements yet) from
// a readable source. Text fields are converted to GBK. False, with the first problem in `error`,
// for a malformed file; `formula` may then be partly filled.
bool ParseFormulaSource(const std::string& utf8, CIndicator* formula, FormulaSourceError* error);

// The readable form of a formula's definition, UTF-8; ParseFormulaSource reads it back.
std::string FormatFormulaSource(const CIndicator& formula);

// The label of a kind (m_MainType, "技术指标" ...) and of a group (m_SubType, "趋向指标" ...), or
// an empty string for a number that has none.
CString KindLabel(short mainType);
CString GroupLabel(short subType);
// The label of a formula's group, or an empty string where its kind has no groups (trade systems
// and candle rules) or the number is not a group of its kind.
CString GroupLabelOf(const CIndicator& formula);

// Number of "Param" marks in a parameter template.
int CountParamMarks(const CString& tmpl);

}  // namespace ny
