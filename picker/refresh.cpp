// The data refresh: the quote request of a pick, the refresh dialog in its two modes, and the way
// replies reach them (CCondStocks::ProcData, through the chart view's picker slot).

#include "picker/refresh.h"

#include <algorithm>
#include <cstring>

#include "host/clock.h"
#include "host/comm_data.h"
#include "host/files.h"
#include "host/global.h"
#include "host/quote_wire.h"
#include "host/stockdb.h"
#include "model/period.h"
#include "picker/cond_stocks.h"

const char* const MSG_REFRESH_TITLE = "刷新数据";
const char* const MSG_REFRESH_LABEL = "正在刷新当天分时图数据";
const char* const MSG_REFRESH_CANCEL = "取消";

std::function<void(CCondStocksRequestDataDlg& dialog)> CCondStocksRequestDataDlg::s_fnWatcher;

namespace ny {
namespace {

constexpr int kModalPumpMs = 50;

RefreshRecord& Record() {
    static RefreshRecord record;
    return record;
}
bool& Holding() {
    static bool hold = false;
    return hold;
}

// The exchange object of the refresh: the host's record, nothing added.
class CCondStocksCommData : public CCommData {};

// Sending: the object of the id is made on first use and reused from then on.
void SendRequest(CClientSocket& socket, int id, short command, const std::string& request) {
    CCommData* data = socket.GetCommDataByID(id);
    if (data == nullptr) {
        data = new CCondStocksCommData;
        data->m_nID = id;
        socket.AddCommData(data);
    }
    data->m_nCmd = command;
    data->m_nFlag = 1;
    const size_t length = std::min<size_t>(request.size(), CCommData::kSendCapacity);
    std::copy(request.begin(), request.begin() + static_cast<long>(length), data->m_pSend);
    data->m_nSendLen = static_cast<short>(length);
    socket.Add2SendQueue(id);
}

// Taking back: command and flag 0, sent, if the object exists.
void TakeBack(CClientSocket& socket, int id) {
    CCommData* data = socket.GetCommDataByID(id);
    if (data == nullptr) return;
    data->m_nCmd = 0;
    data->m_nFlag = 0;
    data->m_nSendLen = 0;
    socket.Add2SendQueue(id);
}

// Stores a new quote page in the stock objects; with storeLast also the repeated last field.
// False when there was nothing new or the page is dropped (too short for what it announces, or
// another field count). Unknown stocks are skipped.
bool StoreQuotePage(CCommData* data, bool storeLast, QuotePage* page) {
    if (data == nullptr || data->m_cNewData == 0) return false;
    data->m_cNewData = 0;
    const std::vector<short>& codes = QuoteFieldCodes();
    const int fields = static_cast<int>(codes.size());
    if (!ReadQuotePage(data->m_pRecv, data->m_nRecvLen, page) || page->fields != fields) return false;
    char* at = data->m_pRecv + (page->records - data->m_pRecv);
    for (int i = 0; i < page->count; ++i, at += 4 * fields) {
        int id = 0;
        at += g_MyBuf2Int(&id, at, 4);
        CStock* stock = g_MyGetStock(id);
        if (stock == nullptr) continue;
        for (int f = 0; f < fields - (storeLast ? 0 : 1); ++f) {
            float value = 0;
            std::memcpy(&value, at + 4 * f, 4);
            stock->SetValue(QuoteValueCode(codes[f]), value);
        }
    }
    return true;
}

// The failure text with the server's name.
CString FailureText(const CString& message, const CClientSocket& socket) {
    return message + " " + socket.ServerName();
}

}  // namespace

const RefreshRecord& RecordedRefreshes() { return Record(); }
void ClearRefreshes() { Record() = RefreshRecord(); }
void HoldQuoteAnswers(bool hold) { Holding() = hold; }

void RefreshTodayData(short period, int stockId) {
    CCondStocks engine;
    engine.AddTodayData(period, stockId);
}

}  // namespace ny

// ---- The refresh dialog ----

CCondStocksRequestDataDlg::CCondStocksRequestDataDlg(ny::RefreshMode mode, const std::vector<int>& stocks)
    : m_nMinuteCommID(g_MyGetControlID()),
      m_nRTCommID(g_MyGetControlID()),
      m_pChildView(g_MyChildView),
      m_arStocks(stocks),
      m_nMode(static_cast<int>(mode)),
      m_strLabel(MSG_REFRESH_LABEL),
      m_strButton(MSG_REFRESH_CANCEL),
      m_strTitle(MSG_REFRESH_TITLE) {}

CCondStocksRequestDataDlg::~CCondStocksRequestDataDlg() {
    RemoveData_1Minute();
    RemoveData_RT();
}

int CCondStocksRequestDataDlg::DoModal() {
    CClientSocket& socket = m_pChildView->m_ClientSocket;
    // Offline there is nothing to fetch: the data stay as stored.
    if (!socket.IsOnline()) return IDOK;
    m_bOpen = true;
    OnInitDialog();
    while (m_bOpen) {
        socket.Pump(ny::kModalPumpMs);
        if (m_bOpen && s_fnWatcher) s_fnWatcher(*this);
    }
    return m_nResult;
}

BOOL CCondStocksRequestDataDlg::OnInitDialog() {
    RequestData();
    return TRUE;
}

void CCondStocksRequestDataDlg::OnCancel() { EndDialog(IDCANCEL); }

void CCondStocksRequestDataDlg::EndDialog(int result) {
    m_bOpen = false;
    m_nResult = result;
}

void CCondStocksRequestDataDlg::RequestData() {
    if (m_nMode == static_cast<int>(ny::RefreshMode::Quotes)) {
        RequestData_RT();
        return;
    }
    if (m_nIndex >= static_cast<int>(m_arStocks.size())) {
        EndDialog(IDOK);
        return;
    }
    m_lCurStock = m_arStocks[m_nIndex];
    RequestData_1Minute(m_lCurStock);
    ++m_nIndex;
    SetProgress(static_cast<short>(m_nIndex), static_cast<short>(m_arStocks.size()));
}

void CCondStocksRequestDataDlg::RequestData_1Minute(int stockId) {
    ny::SendRequest(m_pChildView->m_ClientSocket, m_nMinuteCommID, ny::kCommandMinute, ny::EncodeMinuteRequest(stockId));
}

void CCondStocksRequestDataDlg::RequestData_RT() {
    ny::SendRequest(m_pChildView->m_ClientSocket, m_nRTCommID, ny::kCommandQuotes, ny::EncodeQuoteRequest());
}

void CCondStocksRequestDataDlg::RemoveData_1Minute() { ny::TakeBack(m_pChildView->m_ClientSocket, m_nMinuteCommID); }

void CCondStocksRequestDataDlg::RemoveData_RT() { ny::TakeBack(m_pChildView->m_ClientSocket, m_nRTCommID); }

void CCondStocksRequestDataDlg::Data_1Minute() {
    CCommData* data = m_pChildView->m_ClientSocket.GetCommDataByID(m_nMinuteCommID);
    if (data == nullptr || data->m_cNewData == 0) return;
    data->m_cNewData = 0;
    int stockId = 0;
    std::vector<CHisDay> bars;
    // A reply for another stock, "nothing to deliver" or a count outside 1 to 241 writes nothing.
    if (ny::ReadMinuteStock(data->m_pRecv, data->m_nRecvLen, &stockId) && stockId == m_lCurStock &&
        ny::ReadMinuteBars(data->m_pRecv, data->m_nRecvLen, &bars)) {
        // The file is replaced whole or not at all; one that can't be written is left out.
        if (const CStock* stock = g_MyGetStock(stockId); stock != nullptr)
            ny::WriteFileAtomic(stock->GetMinuteFilePath(), ny::EncodeBars(bars));
    }
    RequestData();
}

void CCondStocksRequestDataDlg::Data_RT() {
    ny::QuotePage page;
    if (!ny::StoreQuotePage(m_pChildView->m_ClientSocket.GetCommDataByID(m_nRTCommID), true, &page)) return;
    m_nIndex = page.position + page.count;
    SetProgress(static_cast<short>(m_nIndex), static_cast<short>(page.total));
    if (m_nIndex >= page.total) EndDialog(IDOK);
}

void CCondStocksRequestDataDlg::OnFailure(int id, const CString& message) {
    if (!m_bOpen || (id != m_nMinuteCommID && id != m_nRTCommID)) return;
    g_MyMessageBox(ny::FailureText(message, m_pChildView->m_ClientSocket), m_strTitle);
    EndDialog(IDCANCEL);
}

void CCondStocksRequestDataDlg::SetProgress(short position, short total) {
    m_nProgressTotal = total;
    m_nProgressPos = position;
    if (m_bOpen && s_fnWatcher) s_fnWatcher(*this);
}

// ---- The engine's side ----

CCommData* CCondStocks::QuoteData() { return m_pChildView->m_ClientSocket.GetCommDataByID(m_nCommID); }

void CCondStocks::AddRTData() {
    ++ny::Record().quoteRequests;
    CClientSocket& socket = m_pChildView->m_ClientSocket;
    if (!socket.IsOnline()) {
        // No server: the quotes are what the stock objects hold, and they have "arrived".
        if (!ny::Holding()) m_hRTEvent->Set();
        return;
    }
    ny::SendRequest(socket, m_nCommID, ny::kCommandQuotes, ny::EncodeQuoteRequest());
}

void CCondStocks::RemoveData() { ny::TakeBack(m_pChildView->m_ClientSocket, m_nCommID); }

void CCondStocks::ProcData(void*) {
    Data_RT();
    if (m_pRequestDlg != nullptr) {
        m_pRequestDlg->Data_1Minute();
        m_pRequestDlg->Data_RT();
    }
}

void CCondStocks::Data_RT() {
    ny::QuotePage page;
    if (!ny::StoreQuotePage(QuoteData(), false, &page)) return;
    if (page.position + page.count >= page.total) m_hRTEvent->Set();
}

void CCondStocks::ProcFailure(int id, const CString& message) {
    if (m_pRequestDlg != nullptr) m_pRequestDlg->OnFailure(id, message);
    // The worker goes on after its wait; the pick runs on the stored data.
    if (id == m_nCommID) g_MyMessageBox(ny::FailureText(message, m_pChildView->m_ClientSocket));
}

void CCondStocks::AddTodayData(short period, int stockId) {
    const int date = CClockModule::m_SystemDate;
    const int time = CClockModule::m_SystemTime;
    if (ny::IsMinutePeriod(period)) {
        if (!MarketClosed(date, time) || MinuteDataCurrent(date, time)) return;
        RunRequestDialog(ny::RefreshMode::Minute, {stockId});
        m_lLastUpdateMinuteDate = date;
        m_lLastUpdateMinuteTime = time;
        return;
    }
    if (QuotesFresh(date, time) || (m_lLastUpdateDate >= date && m_lLastUpdateTime >= 150000)) return;
    RunRequestDialog(ny::RefreshMode::Quotes, {});
    m_lLastUpdateDate = date;
    m_lLastUpdateTime = time;
}

void CCondStocks::RunRequestDialog(ny::RefreshMode mode, const std::vector<int>& stocks) {
    if (mode == ny::RefreshMode::Minute) {
        ++ny::Record().minuteDialogs;
        ny::Record().minuteStocks = stocks;
    } else {
        ++ny::Record().quoteDialogs;
    }
    CCondStocksRequestDataDlg dialog(mode, stocks);
    m_pRequestDlg = &dialog;
    dialog.DoModal();
    m_pRequestDlg = nullptr;
}

// ---- The chart view's picker slot ----

namespace {
void FillSlot(CChildView* view, CCondStocks* engine) {
    view->m_pCondStocks = engine;
    view->m_fnProcData = nullptr;
    view->m_fnProcFailure = nullptr;
    if (engine == nullptr) return;
    view->m_fnProcData = [engine] { engine->ProcData(nullptr); };
    view->m_fnProcFailure = [engine](int id, const CString& message) { engine->ProcFailure(id, message); };
}
}  // namespace

void CCondStocks::AttachToView() {
    if (m_pChildView == nullptr) return;
    m_pPreviousInSlot = m_pChildView->m_pCondStocks;
    FillSlot(m_pChildView, this);
}

void CCondStocks::DetachFromView() {
    if (m_pChildView != nullptr && m_pChildView->m_pCondStocks == this) FillSlot(m_pChildView, m_pPreviousInSlot);
}
