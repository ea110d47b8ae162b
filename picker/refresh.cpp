#include "picker/refresh.h"

#include "picker/cond_stocks.h"

namespace ny {
namespace {
RefreshRecord& Record() {
    static RefreshRecord record;
    return record;
}
bool& Holding() {
    static bool hold = false;
    return hold;
}
}  // namespace

void HoldQuoteAnswers(bool hold) { Holding() = hold; }

const RefreshRecord& RecordedRefreshes() { return Record(); }

void ClearRefreshes() { Record() = RefreshRecord(); }

void RunRefreshDialog(RefreshMode mode, const std::vector<int>& stocks) {
    if (mode == RefreshMode::Minute) {
        ++Record().minuteDialogs;
        Record().minuteStocks = stocks;
    } else {
        ++Record().quoteDialogs;
    }
}

}  // namespace ny

void CCondStocks::AddRTData() {
    ++ny::Record().quoteRequests;
    // The quotes are what the stock objects hold: they have "arrived".
    if (!ny::Holding()) m_hRTEvent->Set();
}
