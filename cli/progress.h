#pragma once
// Progress on the terminal: the bar of a pick, and the refresh dialog of the server link shown as
// such a bar, with Ctrl-C as its button "取消".

#include <atomic>
#include <string>

namespace nyind {

// Draws "label [####    ] done/total" over the current line of stderr.
void DrawProgress(const std::string& label, int done, int total);
// Clears that line.
void ClearProgress();

// While alive, Ctrl-C sets Interrupted() instead of ending the process.
class InterruptWatch {
public:
    InterruptWatch();
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;
    static const std::atomic<bool>& Interrupted();
};

// Brings a stock's data of a period up to date from the quote server by the clock rules of a
// single-stock refresh, with its progress on a terminal and Ctrl-C as "取消"; what went wrong is
// reported on stderr and the stored data stay. False if something went wrong.
bool RefreshStock(short period, int stockId);

// While alive, every refresh dialog draws its progress (on a terminal) and is cancelled once
// `interrupted` turns true.
class RefreshProgress {
public:
    RefreshProgress(bool terminal, const std::atomic<bool>& interrupted);
    ~RefreshProgress();
    RefreshProgress(const RefreshProgress&) = delete;
    RefreshProgress& operator=(const RefreshProgress&) = delete;
};

}  // namespace nyind
