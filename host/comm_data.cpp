#include "host/comm_data.h"

#include <atomic>
#include <cstring>
#include <thread>

namespace ny {

const char* const MSG_SERVER_UNREACHABLE = "无法连接行情服务器";
const char* const MSG_SERVER_NO_ANSWER = "行情服务器没有应答";
const char* const MSG_SERVER_BROKEN = "行情服务器的数据有误，连接已断开";
const char* const MSG_SERVER_CLOSED = "行情服务器断开了连接";

namespace {
constexpr uint16_t kFrameMagic = 'N' | ('Y' << 8);

void PutLittle(char* at, uint32_t value, int size) {
    for (int i = 0; i < size; ++i) at[i] = static_cast<char>((value >> (8 * i)) & 0xFF);
}
uint32_t GetLittle(const char* at, int size) {
    uint32_t value = 0;
    for (int i = 0; i < size; ++i) value |= static_cast<uint32_t>(static_cast<unsigned char>(at[i])) << (8 * i);
    return value;
}
}  // namespace

std::vector<char> EncodeFrame(const Frame& frame) {
    std::vector<char> bytes(kFrameHeaderSize + frame.payload.size());
    PutLittle(&bytes[0], kFrameMagic, 2);
    PutLittle(&bytes[2], frame.command, 2);
    PutLittle(&bytes[4], frame.flags, 2);
    PutLittle(&bytes[6], static_cast<uint32_t>(frame.id), 4);
    PutLittle(&bytes[10], static_cast<uint32_t>(frame.payload.size()), 4);
    std::copy(frame.payload.begin(), frame.payload.end(), bytes.begin() + kFrameHeaderSize);
    return bytes;
}

HeaderCheck DecodeFrameHeader(const char* header, uint32_t maxPayload, Frame* frame, uint32_t* length) {
    if (GetLittle(header, 2) != kFrameMagic) return HeaderCheck::BadMagic;
    frame->command = static_cast<unsigned short>(GetLittle(header + 2, 2));
    frame->flags = static_cast<unsigned short>(GetLittle(header + 4, 2));
    frame->id = static_cast<int>(GetLittle(header + 6, 4));
    *length = GetLittle(header + 10, 4);
    return *length > maxPayload ? HeaderCheck::TooLong : HeaderCheck::Ok;
}

}  // namespace ny

// ---- CCommData ----

CCommData::CCommData() : m_arSend(kSendCapacity) { m_pSend = m_arSend.data(); }

void CCommData::Receive(const std::vector<char>& payload) {
    m_arRecv = payload;
    // One spare byte, so that m_pRecv is never null, even for an empty reply.
    m_arRecv.push_back(0);
    m_pRecv = m_arRecv.data();
    m_nRecvLen = static_cast<int>(payload.size());
    m_cNewData = 1;
}

// ---- CClientSocket ----

CCommData* CClientSocket::GetCommDataByID(int id) {
    const auto found = m_mapData.find(id);
    return found == m_mapData.end() ? nullptr : found->second.get();
}

void CClientSocket::AddCommData(CCommData* data) {
    if (data != nullptr) m_mapData[data->m_nID].reset(data);
}

BOOL CClientSocket::Add2SendQueue(int id) {
    const CCommData* data = GetCommDataByID(id);
    if (data == nullptr || m_pTransport == nullptr) return FALSE;
    ny::Frame frame;
    frame.command = static_cast<unsigned short>(data->m_nCmd);
    frame.id = id;
    const int length = std::max<int>(0, std::min<int>(data->m_nSendLen, CCommData::kSendCapacity));
    frame.payload.assign(data->m_pSend, data->m_pSend + length);
    return m_pTransport->Send(std::move(frame)) ? TRUE : FALSE;
}

void CClientSocket::SetTransport(std::unique_ptr<ny::Transport> transport) { m_pTransport = std::move(transport); }

std::string CClientSocket::ServerName() const { return m_pTransport ? m_pTransport->Name() : std::string(); }

void CClientSocket::Pump(int timeoutMs) {
    if (m_pTransport == nullptr) {
        std::this_thread::sleep_for(std::chrono::milliseconds(timeoutMs));
        return;
    }
    std::vector<ny::TransportEvent> events;
    m_pTransport->Poll(timeoutMs, &events);
    for (const ny::TransportEvent& event : events) Dispatch(event);
}

void CClientSocket::Dispatch(const ny::TransportEvent& event) {
    CCommData* data = GetCommDataByID(event.frame.id);
    // A request taken back (command 0) no longer wants anything: late replies are dropped.
    if (data == nullptr || data->m_nCmd == 0) return;
    if (event.kind == ny::TransportEvent::Kind::Failure) {
        if (m_fnFailure) m_fnFailure(event.frame.id, event.message);
        return;
    }
    if (event.frame.command == ny::kCommandError) {
        if (m_fnFailure) m_fnFailure(event.frame.id, ny::MSG_SERVER_BROKEN);
        return;
    }
    data->Receive(event.frame.payload);
    if (m_fnData) m_fnData(event.frame.id);
}

// ---- CChildView and the globals ----

CChildView::CChildView() {
    m_ClientSocket.m_fnData = [this](int) {
        if (m_fnProcData) m_fnProcData();
    };
    m_ClientSocket.m_fnFailure = [this](int id, const CString& message) {
        if (m_fnProcFailure) m_fnProcFailure(id, message);
    };
}

namespace {
CChildView g_view;
}  // namespace

CChildView* g_MyChildView = &g_view;

int g_MyGetControlID() {
    static std::atomic<int> next{1000};
    return next++;
}

int g_MyInt2Buf(char* buffer, void* value, int size) {
    if (size != 2 && size != 4) return 0;
    uint32_t number = 0;
    if (size == 2) {
        uint16_t half = 0;
        std::memcpy(&half, value, 2);
        number = half;
    } else {
        std::memcpy(&number, value, 4);
    }
    ny::PutLittle(buffer, number, size);
    return size;
}

int g_MyBuf2Int(void* value, char* buffer, int size) {
    if (size != 2 && size != 4) return 0;
    const uint32_t number = ny::GetLittle(buffer, size);
    if (size == 2) {
        const uint16_t half = static_cast<uint16_t>(number);
        std::memcpy(value, &half, 2);
    } else {
        std::memcpy(value, &number, 4);
    }
    return size;
}
