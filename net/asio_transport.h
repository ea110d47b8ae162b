#pragma once
// The transport under CClientSocket: one TCP connection to the quote server, over standalone
// Asio, driven entirely by the thread that calls Send and Poll (the user-interface thread), so
// that replies are handed over on that thread.
//
// - Connects on the first request, and again after a loss, with a back-off between attempts that
//   doubles from 100 ms to 2 s and starts again after a good connection.
// - Every request waits for its replies under a time-out that each arriving frame of the exchange
//   renews; a frame without kFrameMore ends the wait. A request that could not be sent or was not
//   answered in time fails with a message; so do all waiting requests when the connection breaks
//   or the server sends bytes that are not frames.
// - A request taken back (command 0) is sent and ends the wait for its id.

#include <memory>

#include "host/transport.h"

namespace ny {

struct TransportOptions {
    int exchangeTimeoutMs = 3000;
    uint32_t maxReplyPayload = 8u << 20;  // a longer frame breaks the connection
};

// "HOST:PORT" to host and port; false for anything else.
bool ParseServerAddress(const std::string& text, std::string* host, unsigned short* port);

// A transport to host:port.
std::unique_ptr<Transport> MakeAsioTransport(const std::string& host, unsigned short port,
                                             const TransportOptions& options = TransportOptions());

}  // namespace ny
