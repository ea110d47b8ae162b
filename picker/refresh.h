#pragma once
// Stand-in for the data refresh from the server. There is no server link in this build: a quote
// request is answered at once with the quotes that the stock objects already hold (the worker's
// event is signalled at once), and the refresh dialog ends at once as if every stock's data had
// arrived. The requests are recorded, so that callers and tests see what would have been fetched.

#include <vector>

namespace ny {

enum class RefreshMode { Minute = 0, Quotes = 2 };

struct RefreshRecord {
    int quoteRequests = 0;          // quote requests sent without a dialog
    int quoteDialogs = 0;           // refresh dialogs run in quote mode
    int minuteDialogs = 0;          // refresh dialogs run in 1-minute mode
    std::vector<int> minuteStocks;  // stocks of the latest 1-minute refresh
};

// What was requested since the last ClearRefreshes. Read and written on the calling thread of
// Play only.
const RefreshRecord& RecordedRefreshes();
void ClearRefreshes();

// With `hold` the stand-in server keeps its answer to quote requests: the worker's event stays
// clear until someone signals it, as when the real answer is still on its way. Off by default.
void HoldQuoteAnswers(bool hold);

// Runs the modal refresh dialog for these stocks (1-minute mode) or for all quotes.
void RunRefreshDialog(RefreshMode mode, const std::vector<int>& stocks);

}  // namespace ny
