#pragma once
// The data refresh from the server: the refresh dialog CCondStocksRequestDataDlg ("刷新数据"), and
// the recording of what was asked for. The CCondStocks side (AddRTData, RemoveData, ProcData,
// Data_RT, AddTodayData) is declared with the engine and defined in refresh.cpp.
//
// All of it runs on the user-interface thread. The dialog is modal: DoModal sends the first
// request and then pumps the chart view's client socket until the dialog ends, by its own
// progress, by "取消" (OnCancel), or when one of its exchanges fails (the message is shown through
// g_MyMessageBox, and the dialog closes as a user would close it). With the socket offline (no
// server configured) nothing can be fetched: the dialog ends at once, and a quote request is
// answered at once with the quotes that the stock objects already hold.

#include <functional>
#include <vector>

#include "host/types.h"

class CChildView;
class CCommData;

namespace ny {

enum class RefreshMode { Minute = 0, Quotes = 2 };

struct RefreshRecord {
    int quoteRequests = 0;          // quote requests sent without a dialog
    int quoteDialogs = 0;           // refresh dialogs run in quote mode
    int minuteDialogs = 0;          // refresh dialogs run in 1-minute mode
    std::vector<int> minuteStocks;  // stocks of the latest 1-minute refresh
};

// What was requested since the last ClearRefreshes. Read and written on the user-interface thread.
const RefreshRecord& RecordedRefreshes();
void ClearRefreshes();

// With `hold`, an offline quote request is not answered: the worker's event stays clear until
// someone signals it, as when the answer is still on its way. Off by default.
void HoldQuoteAnswers(bool hold);

// Brings a stock's data of a period up to date for a single-stock use (CCondStocks::AddTodayData
// of a short-lived engine).
void RefreshTodayData(short period, int stockId);

}  // namespace ny

class CCondStocksRequestDataDlg {
public:
    enum : int { IDOK = 1, IDCANCEL = 2 };

    // A dialog for these stocks (1-minute mode, m_nMode 0) or for all quotes (mode 2).
    CCondStocksRequestDataDlg(ny::RefreshMode mode, const std::vector<int>& stocks);
    // Takes the requests back: RemoveData_1Minute, then RemoveData_RT.
    ~CCondStocksRequestDataDlg();
    CCondStocksRequestDataDlg(const CCondStocksRequestDataDlg&) = delete;
    CCondStocksRequestDataDlg& operator=(const CCondStocksRequestDataDlg&) = delete;

    // Runs the dialog until it ends; IDOK when everything arrived, IDCANCEL otherwise.
    int DoModal();
    BOOL OnInitDialog();
    // The button "取消" and the close box.
    void OnCancel();
    bool IsOpen() const { return m_bOpen; }

    void RequestData();
    void RequestData_1Minute(int stockId);
    void RequestData_RT();
    void RemoveData_1Minute();
    void RemoveData_RT();
    // Arrivals, through CCondStocks::ProcData.
    void Data_1Minute();
    void Data_RT();
    // An exchange of the socket failed.
    void OnFailure(int id, const CString& message);

    void SetProgress(short position, short total);

    int m_nMinuteCommID;
    int m_nRTCommID;
    CChildView* m_pChildView;
    int m_nIndex = 0;     // next stock of the list; in quote mode the stocks received
    int m_lCurStock = 0;  // the stock whose bars are awaited
    std::vector<int> m_arStocks;
    int m_nMode;

    // What the dialog shows.
    CString m_strLabel;     // "正在刷新当天分时图数据"
    CString m_strButton;    // "取消"
    CString m_strTitle;     // "刷新数据"
    short m_nProgressPos = 0;
    short m_nProgressTotal = 0;

    // Called on every round of the modal loop and after every change of the progress, with the
    // open dialog; the headless stand-in for the user, who may press "取消" (OnCancel). Empty by
    // default.
    static std::function<void(CCondStocksRequestDataDlg& dialog)> s_fnWatcher;

private:
    void EndDialog(int result);
    CCommData* Send(int id, short command, const std::string& request);
    void Remove(int id);

    bool m_bOpen = false;
    int m_nResult = IDCANCEL;
};

// Texts of the dialog.
extern const char* const MSG_REFRESH_TITLE;   // "刷新数据"
extern const char* const MSG_REFRESH_LABEL;   // "正在刷新当天分时图数据"
extern const char* const MSG_REFRESH_CANCEL;  // "取消"
