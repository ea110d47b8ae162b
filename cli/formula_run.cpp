// Choosing, loading and evaluating a formula over a stock, for calc and chart.

#include "cli/formula_run.h"

#include "cli/commands.h"
#include "cli/compile.h"
#include "cli/context.h"
#include "cli/formula_input.h"
#include "cli/progress.h"
#include "cli/stocks.h"
#include "engine/evaluate.h"
#include "host/stockdb.h"
#include "picker/pick_request.h"

namespace nyind {

constexpr size_t kMaxBars = 32767;  // bar counts of an evaluation are 16-bit

int PrepareFormula(const FormulaChoice& choice, CIndicator* formula) {
    if (!choice.formula.empty()) {
        CIndicator* found = nullptr;
        if (int status = FindLibraryFormula(choice.formula, choice.kind, &found); status != kExitOk) return status;
        *formula = *found;
        return ApplyParamValues(choice.params, formula);
    }
    FormulaInput input{choice.source, choice.name, choice.params};
    if (int status = LoadFormulaInput(input, formula); status != kExitOk) return status;
    CString message;
    if (CompileFormula(*formula, &message).nResult != NY_TEST_OK) return FailGbk(kExitRefused, message);
    return kExitOk;
}

int LoadStockSeries(const std::string& code, const std::string& period, bool power, CStock** stock,
                    std::vector<CHisDay>* bars) {
    if (int status = FindStock(code, stock); status != kExitOk) return status;
    const short number = PeriodNumber(period);
    RefreshStock(number, (*stock)->GetID());
    if (!ny::LoadStockBars((*stock)->GetID(), number, power, bars) || bars->empty())
        return Fail(kExitRefused, "no " + period + " bars for " + ny::FormatStockCode((*stock)->GetID()));
    if (bars->size() > kMaxBars) bars->erase(bars->begin(), bars->end() - kMaxBars);
    return kExitOk;
}

void EvaluateOver(CIndicator& formula, std::vector<CHisDay>& bars, int stockId, short period) {
    formula.m_nPeriod = period;
    ny::EvaluateOver(formula, stockId, bars.data(), static_cast<short>(bars.size()));
}

}  // namespace nyind
