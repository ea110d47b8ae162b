#pragma once
// Stocks named on the command line.

#include <string>

class CStock;

namespace nyind {

// The stock of "SH600001" / "SZ000001", of a bare six-digit code when only one market has it, or
// of a numeric stock id (1000001). Returns an exit status; a stock that is not in the list is
// refused, an ambiguous code is a usage error.
int FindStock(const std::string& text, CStock** stock);

}  // namespace nyind
