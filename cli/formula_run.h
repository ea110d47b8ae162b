#pragma once
// The steps that every command evaluating a formula over a stock shares: the formula from the
// library or from a source, the stock's bars in a period, and the evaluation over all of them.
// Each returns an exit status and has reported its failure when that is not kExitOk.

#include <string>
#include <vector>

#include "host/hisday.h"
#include "model/indicator.h"

class CStock;

namespace nyind {

struct FormulaChoice {
    std::string formula, kind;  // a library formula by name and optional kind, or
    std::string source, name;   // a formula text or file and its name in messages
    std::vector<std::string> params;
};

// A copy of the chosen formula, compiled and with its parameter values applied.
int PrepareFormula(const FormulaChoice& choice, CIndicator* formula);

// The bars of a stock of the installation (code as the user typed it) in a named period, made
// current from the server first, at most 32767 of the newest.
int LoadStockSeries(const std::string& code, const std::string& period, bool power, CStock** stock,
                    std::vector<CHisDay>* bars);

// Evaluates the formula over all bars, which stay the caller's.
void EvaluateOver(CIndicator& formula, std::vector<CHisDay>& bars, int stockId, short period);

}  // namespace nyind
