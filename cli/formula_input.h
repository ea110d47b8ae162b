#pragma once
// A formula given on the command line: formula text, or a readable formula file (*.fml), with
// parameter values.

#include <string>
#include <vector>

#include "model/indicator.h"

namespace nyind {

struct FormulaInput {
    std::string path;                 // a file, or "-" for standard input
    std::string name;                 // --name; default: the file's stem, "FORMULA" for stdin
    std::vector<std::string> params;  // --param NAME=VALUE
};

// The longest formula text or readable formula file read: room for every field of a formula
// record (a source of 10,240 bytes, usage, template, parameters) written out as text.
constexpr size_t kMaxFormulaFileBytes = 64 * 1024;

// Fills a fresh `formula` from the input: a *.fml file gives the whole definition, other text
// is the source, with one parameter per --param (its value as default, any value allowed).
// Returns an exit status.
int LoadFormulaInput(const FormulaInput& input, CIndicator* formula);

// Sets the defaults of the formula's own parameters from NAME=VALUE texts. A name the formula
// doesn't have, or a value outside the parameter's range, is a usage error. Returns an exit status.
int ApplyParamValues(const std::vector<std::string>& values, CIndicator* formula);

// Splits "NAME=VALUE" into a GBK name and a 16-bit value. False (with a message) if malformed.
bool SplitParam(const std::string& text, CString* name, short* value);

}  // namespace nyind
