#pragma once
// The host's link to the quote server: one CCommData per exchange, the CClientSocket that sends
// requests and hands replies back, and the chart view (CChildView) through which the picker reaches
// both. Everything here runs on the user-interface thread: requests are sent from it, and replies
// are delivered on it while that thread pumps the socket (CClientSocket::Pump), which a modal
// dialog or a command's wait loop does.
//
// The socket owns its CCommData objects (AddCommData takes them over). The bytes underneath go
// through a ny::Transport (host/transport.h); without one the socket is offline: requests are
// refused and nothing arrives.

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/quote_table.h"
#include "host/transport.h"
#include "host/types.h"

// One exchange with the server.
class CCommData {
public:
    CCommData();
    virtual ~CCommData() = default;
    CCommData(const CCommData&) = delete;
    CCommData& operator=(const CCommData&) = delete;

    int m_nID = 0;          // from g_MyGetControlID
    short m_nCmd = 0;       // the command; 0 takes the request back
    int m_nFlag = 0;        // 1 while the exchange is wanted; 0 with the command on removal
    char m_cNewData = 0;    // set by the socket when a reply arrived; the reader clears it
    char* m_pRecv = nullptr;  // the latest reply
    char* m_pSend = nullptr;  // the request is written here (kSendCapacity bytes)
    short m_nSendLen = 0;     // length of the request
    int m_nRecvLen = 0;       // length of the latest reply: readers never go past it

    static constexpr int kSendCapacity = 256;

    // Stores a reply as the latest one and marks it new.
    void Receive(const std::vector<char>& payload);

private:
    std::vector<char> m_arSend;
    std::vector<char> m_arRecv;
};

class CClientSocket {
public:
    CClientSocket() = default;
    CClientSocket(const CClientSocket&) = delete;
    CClientSocket& operator=(const CClientSocket&) = delete;

    // The object of an id, or null.
    CCommData* GetCommDataByID(int id);
    // Registers a new object and takes it over. An object of the same id is replaced.
    void AddCommData(CCommData* data);
    // Sends the object's request (m_nCmd, m_pSend, m_nSendLen). False if the object is unknown or
    // the socket is offline; a failure on the way is reported later through the failure handler.
    BOOL Add2SendQueue(int id);

    // The transport underneath; null makes the socket offline. Pending exchanges are forgotten.
    void SetTransport(std::unique_ptr<ny::Transport> transport);
    bool IsOnline() const { return m_pTransport != nullptr; }
    // "HOST:PORT" of the transport, empty when offline.
    std::string ServerName() const;

    // Runs the socket for at most `timeoutMs` milliseconds: replies that arrive are stored in their objects and
    // handed to the data handler; failed exchanges go to the failure handler. Returns early once
    // something was delivered. Without a transport it only waits.
    void Pump(int timeoutMs);

    // Called for every reply stored in a live object (m_nCmd not 0).
    std::function<void(int id)> m_fnData;
    // Called when an exchange failed (no connection, time-out, broken reply); the text is GBK.
    std::function<void(int id, const CString& message)> m_fnFailure;

private:
    void Dispatch(const ny::TransportEvent& event);

    std::map<int, std::unique_ptr<CCommData>> m_mapData;
    std::unique_ptr<ny::Transport> m_pTransport;
};

class CCondStocks;

// The host's chart view as far as the module needs it: the client socket and the picker slot,
// through which replies reach CCondStocks::ProcData.
class CChildView {
public:
    CChildView();

    CClientSocket m_ClientSocket;
    // The quote table of the view, and whether the view shows it instead of the chart.
    CQuoteTableView m_QuoteTable;
    bool m_bShowQuoteTable = false;
    void SwitchToQuoteTable() { m_bShowQuoteTable = true; }
    // The picker that incoming data are handed to, and the calls that hand over a reply and a
    // failed exchange.
    CCondStocks* m_pCondStocks = nullptr;
    std::function<void()> m_fnProcData;
    std::function<void(int id, const CString& message)> m_fnProcFailure;
};

// The chart view of the process.
extern CChildView* g_MyChildView;

// A new id for a control or an exchange, unique in the process.
int g_MyGetControlID();

// Numbers on the wire: `size` (2 or 4) bytes, little-endian. Both return the bytes moved, 0 for
// another size.
int g_MyInt2Buf(char* buffer, void* value, int size);
int g_MyBuf2Int(void* value, char* buffer, int size);
