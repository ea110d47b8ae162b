#pragma once
// The framing of the server link and the interface of the transport under CClientSocket.
//
// Every message, in both directions, is one frame: a 14-byte header, then the payload.
//   offset 0  2 bytes  magic "NY"
//   offset 2  2 bytes  command (2115, 2118; 0 takes a request back; 0xFFFF an error reply)
//   offset 4  2 bytes  flags (kFrameMore: further frames of the same exchange follow)
//   offset 6  4 bytes  exchange id
//   offset 10 4 bytes  payload length
// Numbers little-endian. A reader refuses a header with another magic or a length above its
// limit; the stream can't be trusted after that and the connection is closed.
//
// A transport is used from one thread only, the one that calls Send and Poll. (Times are plain
// milliseconds: the full <chrono> can't be compiled with the GBK execution character set.)

#include <cstdint>
#include <string>
#include <vector>

#include "host/types.h"

namespace ny {

constexpr size_t kFrameHeaderSize = 14;
constexpr unsigned short kFrameMore = 1;
constexpr unsigned short kCommandTakeBack = 0;
constexpr unsigned short kCommandError = 0xFFFF;

struct Frame {
    unsigned short command = 0;
    unsigned short flags = 0;
    int id = 0;
    std::vector<char> payload;
};

// Header and payload of a frame, ready to send.
std::vector<char> EncodeFrame(const Frame& frame);

enum class HeaderCheck { Ok, BadMagic, TooLong };
// Reads a header into `frame` (command, flags, id) and `length`; the payload is not touched.
HeaderCheck DecodeFrameHeader(const char* header, uint32_t maxPayload, Frame* frame, uint32_t* length);

// What a transport hands back from Poll.
struct TransportEvent {
    enum class Kind { Reply, Failure };
    Kind kind = Kind::Reply;
    Frame frame;      // Reply: the frame; Failure: only frame.id is set
    CString message;  // Failure: what went wrong, GBK
};

class Transport {
public:
    virtual ~Transport() = default;
    // Queues a request. A frame with command kTakeBack also ends the wait for that id's replies.
    // False if the frame can't be queued at all.
    virtual bool Send(Frame frame) = 0;
    // Works for at most `timeoutMs` milliseconds and appends what arrived or failed; returns early
    // once there is something.
    virtual void Poll(int timeoutMs, std::vector<TransportEvent>* events) = 0;
    // "HOST:PORT".
    virtual std::string Name() const = 0;
};

// Messages of the link, GBK.
extern const char* const MSG_SERVER_UNREACHABLE;  // "无法连接行情服务器"
extern const char* const MSG_SERVER_NO_ANSWER;    // "行情服务器没有应答"
extern const char* const MSG_SERVER_BROKEN;       // "行情服务器的数据有误，连接已断开"
extern const char* const MSG_SERVER_CLOSED;       // "行情服务器断开了连接"

}  // namespace ny
