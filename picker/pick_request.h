#pragma once
// A condition pick as a plain request, for callers without the picking dialog (the command-line
// tool): which conditions, how they combine, over which stocks, on which bars. The pick itself
// runs through CCondStocks on its worker thread, exactly as the dialog's pick does.

#include <functional>
#include <vector>

#include "host/hisday.h"
#include "host/types.h"

namespace ny {

// One condition: a formula of the library's condition kind by name (GBK), and parameter values
// in the order of the formula's parameters. Missing values keep the formula's own.
struct PickCondition {
    CString name;
    std::vector<short> params;
};

enum class PickScope { AllA, ShanghaiA, ShenzhenA, Block, Codes };

struct PickRequest {
    std::vector<PickCondition> conditions;
    bool andMode = true;             // all conditions must hold; false: any of them
    PickScope scope = PickScope::AllA;
    CString blockCategory;           // PickScope::Block: "行业", "地区", "概念", "自选", "自定义"
    CString blockName;
    std::vector<int> stockIds;       // PickScope::Codes
    short period = 1;                // 1 day ... 5 year, 6 one minute ... 10 sixty minutes
    bool adjustPower = false;        // adjust the bars for ex-rights events
    int fromDate = 0;                // history mode when both dates are set (YYYYMMDD)
    int toDate = 0;
    int workers = 0;                 // threads of the pick; 0: one per core
};

// A picked stock and, per condition, the last value of its verdict statement (NaN if that
// condition did not compute for the stock).
struct PickHit {
    int stockId = 0;
    std::vector<float> lastValues;
};

struct PickOutcome {
    bool ok = false;        // false: the request was refused; `message` says why (GBK)
    CString message;
    int examined = 0;       // stocks looked at
    int total = 0;          // stocks in the scope
    int damaged = 0;        // stocks left out because their bar file is damaged
    bool stopped = false;   // ended early by the stop request
    std::vector<PickHit> hits;
};

// Runs a pick and waits for it. `progress` is called on the calling thread, about every 100 ms,
// with the stocks done and the total; `stopRequested` is polled as often, and a true answer ends
// the pick promptly with the hits found so far. When the pick ran to its end the picked ids are
// stored as the block "智能选股" of the category "自定义" (a stopped pick leaves the block alone);
// if the block can't be written the outcome is still ok and `message` says so.
// Refusals (`ok` false, `message` one of the texts below): no condition, a condition that is not
// in the library or has more values than parameters, a period outside 1 to 10, reversed dates,
// an empty scope, and a minute-based pick during trading hours.
PickOutcome RunPick(const PickRequest& request,
                    const std::function<void(int done, int total)>& progress,
                    const std::function<bool()>& stopRequested);

// The number of cores: the workers of a pick unless the request names them.
int DefaultPickWorkers();

// The bars of a stock of the installation in a period, optionally adjusted for ex-rights
// events, through the same pipeline as a pick. False if the stock has no data.
bool LoadStockBars(int stockId, short period, bool adjustPower, std::vector<CHisDay>* bars);

extern const char* const MSG_PICK_NO_CONDITION;       // "请加入选股条件"
extern const char* const MSG_PICK_NO_STOCKS;          // "请选择选股票范围"
extern const char* const MSG_PICK_DATES_REVERSED;     // "起始日期应在终止日期之前"
extern const char* const MSG_PICK_UNKNOWN_CONDITION;  // followed by the name
extern const char* const MSG_PICK_TOO_MANY_PARAMS;    // followed by the name
extern const char* const MSG_PICK_BAD_PERIOD;
extern const char* const MSG_PICK_BLOCK_NOT_SAVED;

}  // namespace ny
