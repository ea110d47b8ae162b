#pragma once
// nyquoted's network side: accepts clients on a TCP port and answers the framed requests of the
// server link (host/transport.h) from a QuoteBook, on one thread. Many clients are served at
// once; each has its own queue of replies. A client that sends bytes that are not frames, or a
// request longer than kMaxRequestPayload, gets an error frame and is disconnected; a well-formed
// request that can't be answered (unknown command, malformed payload) gets an error frame and
// the connection stays. The others are not affected.

#include <memory>
#include <string>

#include "server/quote_book.h"

namespace nyquoted {

struct ServerOptions {
    std::string bind = "127.0.0.1";
    unsigned short port = 7709;  // 0: any free port
    int pageSize = 500;          // stocks per page of the quote reply
    int maxClients = 256;        // further connections are closed at once
};

constexpr uint32_t kMaxRequestPayload = 4096;

class QuoteServer {
public:
    QuoteServer(QuoteBook& book, const ServerOptions& options);
    ~QuoteServer();

    // Opens the port; false with a message if it can't be opened.
    bool Open(std::string* error);
    // The port actually listened on.
    unsigned short Port() const;
    // Serves until SIGINT or SIGTERM arrives, then closes every connection and returns.
    void Run();

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace nyquoted
