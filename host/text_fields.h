#pragma once
// Small readers of the editable text files (stock list, quotes, CSV bars, formula sources).

#include <string>
#include <vector>

namespace ny {

// A line of a text file with its number from 1.
struct NumberedLine {
    int number;
    std::string text;
};

// The lines of a text, each trimmed; blank lines and comment lines ("#") are left out and a
// byte-order mark is skipped.
std::vector<NumberedLine> SplitTextLines(std::string text);

// The text without blanks, tabs and carriage returns at either end.
std::string Trim(const std::string& text);

// The comma-separated fields of a line, each trimmed; a trailing comma gives a last empty field.
std::vector<std::string> SplitFields(const std::string& line);

// A whole field as a float: false if it is empty, has anything behind the number, or is out of
// the float's range.
bool ParseFloat(const std::string& text, float* value);

// The text with ASCII letters in upper case; other bytes, GBK included, stay as they are.
// Parameter names are kept this way because statements reach the evaluator upper-cased.
std::string UpperAscii(std::string text);

}  // namespace ny
