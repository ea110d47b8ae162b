#pragma once
// Small readers of the editable text files (stock list, quotes, CSV bars, formula sources).

#include <string>
#include <vector>

namespace ny {

// The text without blanks, tabs and carriage returns at either end.
std::string Trim(const std::string& text);

// The comma-separated fields of a line, each trimmed; a trailing comma gives a last empty field.
std::vector<std::string> SplitFields(const std::string& line);

// The text with ASCII letters in upper case; other bytes, GBK included, stay as they are.
// Parameter names are kept this way because statements reach the evaluator upper-cased.
std::string UpperAscii(std::string text);

}  // namespace ny
