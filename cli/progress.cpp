#include "cli/progress.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "cli/context.h"
#include "picker/refresh.h"

namespace nyind {
namespace {
std::atomic<bool> g_interrupted{false};
struct sigaction g_previous {};
extern "C" void OnInterrupt(int) { g_interrupted = true; }
}  // namespace

InterruptWatch::InterruptWatch() {
    g_interrupted = false;
    struct sigaction action {};
    action.sa_handler = OnInterrupt;
    sigaction(SIGINT, &action, &g_previous);
}

InterruptWatch::~InterruptWatch() { sigaction(SIGINT, &g_previous, nullptr); }

const std::atomic<bool>& InterruptWatch::Interrupted() { return g_interrupted; }

bool RefreshStock(short period, int stockId) {
    const bool terminal = isatty(STDERR_FILENO) != 0;
    {
        InterruptWatch interrupt;
        RefreshProgress progress(terminal, InterruptWatch::Interrupted());
        ny::RefreshTodayData(period, stockId);
    }
    if (terminal) ClearProgress();
    const std::vector<CString> messages = TakeMessages();
    for (const CString& message : messages) FailGbk(kExitOk, message);
    return messages.empty();
}

void DrawProgress(const std::string& label, int done, int total) {
    const int width = 40;
    const int filled = total > 0 ? std::min(width, done * width / total) : 0;
    std::fprintf(stderr, "\r%s[%s%s] %d/%d", label.c_str(), std::string(filled, '#').c_str(),
                 std::string(width - filled, ' ').c_str(), done, total);
    std::fflush(stderr);
}

void ClearProgress() { std::fputs("\r\033[K", stderr); }

RefreshProgress::RefreshProgress(bool terminal, const std::atomic<bool>& interrupted) {
    CCondStocksRequestDataDlg::s_fnWatcher = [terminal, &interrupted](CCondStocksRequestDataDlg& dialog) {
        if (interrupted) dialog.OnCancel();
        if (terminal) DrawProgress("refreshing ", dialog.m_nProgressPos, dialog.m_nProgressTotal);
    };
}

RefreshProgress::~RefreshProgress() { CCondStocksRequestDataDlg::s_fnWatcher = nullptr; }

}  // namespace nyind
