#include "server/quote_server.h"

#include <csignal>
#include <deque>
#include <set>

#include <asio.hpp>

#include "host/quote_wire.h"
#include "host/transport.h"

namespace nyquoted {
namespace {

using asio::ip::tcp;

constexpr size_t kMaxQueuedBytes = 32u << 20;  // a client that reads slower than this is dropped
const char* const kErrorMalformed = "malformed request";
const char* const kErrorUnknown = "unknown command";

class Session : public std::enable_shared_from_this<Session> {
public:
    Session(tcp::socket socket, QuoteBook& book, const ServerOptions& options, std::set<Session*>& sessions)
        : m_socket(std::move(socket)), m_book(book), m_options(options), m_sessions(sessions) {
        m_sessions.insert(this);
    }
    ~Session() { m_sessions.erase(this); }

    void Start() { ReadHeader(); }
    void Close() {
        asio::error_code ignored;
        m_socket.close(ignored);
    }

private:
    struct Outgoing {
        int id;
        std::vector<char> bytes;
    };

    void ReadHeader() {
        asio::async_read(m_socket, asio::buffer(m_header),
                         [self = shared_from_this()](const asio::error_code& error, size_t) {
                             if (!error) self->OnHeader();
                         });
    }

    void OnHeader() {
        uint32_t length = 0;
        switch (ny::DecodeFrameHeader(m_header, kMaxRequestPayload, &m_request, &length)) {
            case ny::HeaderCheck::BadMagic:
            case ny::HeaderCheck::TooLong:
                // The stream can't be followed any further: say so and hang up.
                Reply(m_request.id, ny::kCommandError, 0, kErrorMalformed);
                m_closing = true;
                return;
            case ny::HeaderCheck::Ok: break;
        }
        m_request.payload.resize(length);
        asio::async_read(m_socket, asio::buffer(m_request.payload),
                         [self = shared_from_this()](const asio::error_code& error, size_t) {
                             if (error) return;
                             self->Answer();
                             self->ReadHeader();
                         });
    }

    void Answer() {
        switch (m_request.command) {
            case ny::kCommandTakeBack: DropQueued(m_request.id); return;
            case ny::kCommandQuotes: AnswerQuotes(); return;
            case ny::kCommandMinute: AnswerMinutes(); return;
            default: Reply(m_request.id, ny::kCommandError, 0, kErrorUnknown);
        }
    }

    void AnswerQuotes() {
        std::vector<short> codes;
        if (!ny::DecodeQuoteRequest(m_request.payload, &codes)) {
            Reply(m_request.id, ny::kCommandError, 0, kErrorMalformed);
            return;
        }
        const int minute = m_book.ReplayMinute();
        const std::vector<int>& ids = m_book.Ids();
        const int total = static_cast<int>(ids.size());
        const int pageSize = std::max(1, m_options.pageSize);
        int position = 0;
        do {
            const int count = std::min(pageSize, total - position);
            std::vector<int> pageIds(ids.begin() + position, ids.begin() + position + count);
            std::vector<float> values;
            for (int i = 0; i < count; ++i) m_book.Values(static_cast<size_t>(position + i), minute, codes, &values);
            const bool last = position + count >= total;
            Reply(m_request.id, ny::kCommandQuotes, last ? 0 : ny::kFrameMore,
                  ny::EncodeQuotePage(total, position, pageIds, static_cast<int>(codes.size()), values));
            position += count;
        } while (position < total);
    }

    void AnswerMinutes() {
        int stockId = 0;
        if (!ny::DecodeMinuteRequest(m_request.payload, &stockId)) {
            Reply(m_request.id, ny::kCommandError, 0, kErrorMalformed);
            return;
        }
        Reply(m_request.id, ny::kCommandMinute, 0,
              ny::EncodeMinuteReply(stockId, m_book.Minutes(stockId, m_book.ReplayMinute())));
    }

    void Reply(int id, unsigned short command, unsigned short flags, const std::string& payload) {
        ny::Frame frame;
        frame.command = command;
        frame.flags = flags;
        frame.id = id;
        frame.payload.assign(payload.begin(), payload.end());
        m_queued += ny::kFrameHeaderSize + payload.size();
        m_outbox.push_back({id, ny::EncodeFrame(frame)});
        if (m_queued > kMaxQueuedBytes) {
            Close();
            return;
        }
        Write();
    }

    // A request taken back: its replies not yet on their way are not sent.
    void DropQueued(int id) {
        for (auto it = m_outbox.begin() + (m_writing ? 1 : 0); it != m_outbox.end();) {
            if (it->id != id) {
                ++it;
                continue;
            }
            m_queued -= it->bytes.size();
            it = m_outbox.erase(it);
        }
    }

    void Write() {
        if (m_writing || m_outbox.empty()) return;
        m_writing = true;
        asio::async_write(m_socket, asio::buffer(m_outbox.front().bytes),
                          [self = shared_from_this()](const asio::error_code& error, size_t) {
                              self->m_writing = false;
                              if (error) return;
                              self->m_queued -= self->m_outbox.front().bytes.size();
                              self->m_outbox.pop_front();
                              if (self->m_outbox.empty() && self->m_closing) {
                                  self->Close();
                                  return;
                              }
                              self->Write();
                          });
    }

    tcp::socket m_socket;
    QuoteBook& m_book;
    const ServerOptions& m_options;
    std::set<Session*>& m_sessions;
    char m_header[ny::kFrameHeaderSize] = {};
    ny::Frame m_request;
    std::deque<Outgoing> m_outbox;
    size_t m_queued = 0;
    bool m_writing = false;
    bool m_closing = false;
};

}  // namespace

struct QuoteServer::Impl {
    Impl(QuoteBook& book, const ServerOptions& options) : book(book), options(options) {}

    void Accept() {
        acceptor.async_accept([this](const asio::error_code& error, tcp::socket socket) {
            if (error) return;  // closed on stop
            if (static_cast<int>(sessions.size()) < options.maxClients) {
                socket.set_option(tcp::no_delay(true));
                std::make_shared<Session>(std::move(socket), book, options, sessions)->Start();
            }
            Accept();
        });
    }

    void Stop() {
        asio::error_code ignored;
        acceptor.close(ignored);
        for (Session* session : std::set<Session*>(sessions)) session->Close();
    }

    QuoteBook& book;
    ServerOptions options;
    asio::io_context io;
    tcp::acceptor acceptor{io};
    asio::signal_set signals{io, SIGINT, SIGTERM};
    std::set<Session*> sessions;
};

QuoteServer::QuoteServer(QuoteBook& book, const ServerOptions& options)
    : m_impl(std::make_unique<Impl>(book, options)) {}

QuoteServer::~QuoteServer() = default;

bool QuoteServer::Open(std::string* error) {
    asio::error_code failure;
    const auto address = asio::ip::make_address(m_impl->options.bind, failure);
    if (failure) {
        *error = "not an address: " + m_impl->options.bind;
        return false;
    }
    const tcp::endpoint endpoint(address, m_impl->options.port);
    tcp::acceptor& acceptor = m_impl->acceptor;
    acceptor.open(endpoint.protocol(), failure);
    if (!failure) acceptor.set_option(tcp::acceptor::reuse_address(true), failure);
    if (!failure) acceptor.bind(endpoint, failure);
    if (!failure) acceptor.listen(asio::socket_base::max_listen_connections, failure);
    if (failure) {
        *error = m_impl->options.bind + ":" + std::to_string(m_impl->options.port) + ": " + failure.message();
        return false;
    }
    return true;
}

unsigned short QuoteServer::Port() const {
    asio::error_code ignored;
    return m_impl->acceptor.local_endpoint(ignored).port();
}

void QuoteServer::Run() {
    m_impl->signals.async_wait([this](const asio::error_code& error, int) {
        if (!error) m_impl->Stop();
    });
    m_impl->Accept();
    // Ends when the acceptor and every session are closed and nothing is left to do.
    m_impl->io.run();
}

}  // namespace nyquoted
