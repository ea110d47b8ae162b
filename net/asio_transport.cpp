#include "net/asio_transport.h"

#include <algorithm>
#include <deque>
#include <map>
#include <thread>

#include <asio.hpp>

namespace ny {
namespace {

using Clock = std::chrono::steady_clock;
using asio::ip::tcp;

constexpr std::chrono::milliseconds kFirstBackoff{100};
constexpr std::chrono::milliseconds kMaxBackoff{2000};
constexpr std::chrono::milliseconds kPollSlice{20};

class AsioTransport : public Transport {
public:
    AsioTransport(std::string host, unsigned short port, const TransportOptions& options)
        : m_host(std::move(host)), m_port(port), m_options(options) {}

    bool Send(Frame frame) override {
        if (frame.command == kCommandTakeBack)
            m_waiting.erase(frame.id);
        else
            m_waiting[frame.id] = Clock::now() + std::chrono::milliseconds(m_options.exchangeTimeoutMs);
        m_outbox.push_back({frame.id, EncodeFrame(frame)});
        if (m_state == State::Connected)
            StartWrite();
        else if (m_state == State::Idle)
            ConnectWhenAllowed();
        return true;
    }

    void Poll(int timeoutMs, std::vector<TransportEvent>* events) override {
        m_events = events;
        const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
        for (;;) {
            FailExpired();
            const auto now = Clock::now();
            if (!events->empty() || now >= deadline) break;
            const auto slice = std::min<Clock::duration>(deadline - now, kPollSlice);
            m_io.restart();
            // With nothing under way the context returns at once: wait out the slice instead.
            if (m_io.run_one_for(slice) == 0 && m_io.stopped()) std::this_thread::sleep_for(slice);
        }
        m_events = nullptr;
    }

    std::string Name() const override { return m_host + ":" + std::to_string(m_port); }

private:
    enum class State { Idle, Connecting, Connected };
    struct Outgoing {
        int id;
        std::vector<char> bytes;
    };

    void ConnectWhenAllowed() {
        const auto now = Clock::now();
        if (now >= m_nextAttempt) {
            Connect();
            return;
        }
        m_state = State::Connecting;
        m_retry.expires_at(m_nextAttempt);
        m_retry.async_wait([this](const asio::error_code& error) {
            if (!error) Connect();
        });
    }

    void Connect() {
        m_state = State::Connecting;
        asio::error_code error;
        const auto endpoints = tcp::resolver(m_io).resolve(m_host, std::to_string(m_port), error);
        if (error) {
            ConnectFailed();
            return;
        }
        const unsigned generation = ++m_generation;
        asio::async_connect(m_socket, endpoints, [this, generation](const asio::error_code& failure, const tcp::endpoint&) {
            if (generation != m_generation) return;
            if (failure) {
                ConnectFailed();
                return;
            }
            m_state = State::Connected;
            m_everConnected = true;
            m_backoff = kFirstBackoff;
            m_socket.set_option(tcp::no_delay(true));
            StartRead();
            StartWrite();
        });
    }

    // Tries again after the back-off while requests still wait; they fail when their time is up.
    void ConnectFailed() {
        asio::error_code ignored;
        m_socket.close(ignored);
        ++m_generation;
        m_state = State::Idle;
        m_everConnected = false;
        m_nextAttempt = Clock::now() + m_backoff;
        m_backoff = std::min(m_backoff * 2, kMaxBackoff);
        if (!m_waiting.empty()) ConnectWhenAllowed();
    }

    void StartWrite() {
        if (m_writing || m_outbox.empty() || m_state != State::Connected) return;
        m_writing = true;
        asio::async_write(m_socket, asio::buffer(m_outbox.front().bytes),
                          [this, generation = m_generation](const asio::error_code& error, size_t) {
            if (generation != m_generation) return;
            m_writing = false;
            if (error) {
                Break(MSG_SERVER_CLOSED);
                return;
            }
            m_outbox.pop_front();
            StartWrite();
        });
    }

    void StartRead() {
        const unsigned generation = m_generation;
        asio::async_read(m_socket, asio::buffer(m_header), [this, generation](const asio::error_code& error, size_t) {
            if (generation != m_generation) return;
            if (error) {
                Break(MSG_SERVER_CLOSED);
                return;
            }
            uint32_t length = 0;
            if (DecodeFrameHeader(m_header, m_options.maxReplyPayload, &m_incoming, &length) != HeaderCheck::Ok) {
                Break(MSG_SERVER_BROKEN);
                return;
            }
            m_incoming.payload.resize(length);
            asio::async_read(m_socket, asio::buffer(m_incoming.payload),
                             [this, generation](const asio::error_code& failure, size_t) {
                if (generation != m_generation) return;
                if (failure) {
                    Break(MSG_SERVER_CLOSED);
                    return;
                }
                Deliver();
                StartRead();
            });
        });
    }

    void Deliver() {
        const auto waiting = m_waiting.find(m_incoming.id);
        if (waiting != m_waiting.end()) {
            if ((m_incoming.flags & kFrameMore) != 0 && m_incoming.command != kCommandError)
                waiting->second = Clock::now() + std::chrono::milliseconds(m_options.exchangeTimeoutMs);
            else
                m_waiting.erase(waiting);
        }
        TransportEvent event;
        event.frame = std::move(m_incoming);
        m_incoming = Frame();
        Report(std::move(event));
    }

    // The connection can't be used any more: every waiting request fails, nothing queued is sent.
    void Break(const char* message) {
        asio::error_code ignored;
        m_socket.close(ignored);
        ++m_generation;
        m_state = State::Idle;
        m_writing = false;
        m_outbox.clear();
        m_nextAttempt = Clock::now() + m_backoff;
        for (const auto& [id, deadline] : m_waiting) Fail(id, message);
        m_waiting.clear();
    }

    void FailExpired() {
        const auto now = Clock::now();
        for (auto it = m_waiting.begin(); it != m_waiting.end();) {
            if (it->second > now) {
                ++it;
                continue;
            }
            Fail(it->first, m_state == State::Connected || m_everConnected ? MSG_SERVER_NO_ANSWER : MSG_SERVER_UNREACHABLE);
            DropQueued(it->first);
            it = m_waiting.erase(it);
        }
        if (m_waiting.empty() && m_state == State::Connecting && !m_everConnected) {
            asio::error_code ignored;
            m_retry.cancel();
            m_socket.close(ignored);
            ++m_generation;
            m_outbox.clear();
            m_state = State::Idle;
        }
    }

    // Forgets the queued frames of an exchange, except one that is being written.
    void DropQueued(int id) {
        const auto first = m_outbox.begin() + (m_writing ? 1 : 0);
        m_outbox.erase(std::remove_if(first, m_outbox.end(), [id](const Outgoing& out) { return out.id == id; }),
                       m_outbox.end());
    }

    void Fail(int id, const char* message) {
        TransportEvent event;
        event.kind = TransportEvent::Kind::Failure;
        event.frame.id = id;
        event.message = message;
        Report(std::move(event));
    }

    void Report(TransportEvent event) {
        if (m_events != nullptr) m_events->push_back(std::move(event));
    }

    asio::io_context m_io;
    tcp::socket m_socket{m_io};
    asio::steady_timer m_retry{m_io};
    std::string m_host;
    unsigned short m_port;
    TransportOptions m_options;
    State m_state = State::Idle;
    bool m_everConnected = false;
    bool m_writing = false;
    unsigned m_generation = 0;  // of the connection; handlers of an older one do nothing
    std::deque<Outgoing> m_outbox;
    std::map<int, Clock::time_point> m_waiting;  // exchange id -> deadline of its next frame
    std::chrono::milliseconds m_backoff = kFirstBackoff;
    Clock::time_point m_nextAttempt{};
    char m_header[kFrameHeaderSize] = {};
    Frame m_incoming;
    std::vector<TransportEvent>* m_events = nullptr;
};

}  // namespace

bool ParseServerAddress(const std::string& text, std::string* host, unsigned short* port) {
    const size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon == 0 || colon + 1 >= text.size()) return false;
    const std::string digits = text.substr(colon + 1);
    if (digits.size() > 5 || !std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return false;
    const long number = std::stol(digits);
    if (number < 1 || number > 65535) return false;
    *host = text.substr(0, colon);
    *port = static_cast<unsigned short>(number);
    return true;
}

std::unique_ptr<Transport> MakeAsioTransport(const std::string& host, unsigned short port,
                                             const TransportOptions& options) {
    return std::make_unique<AsioTransport>(host, port, options);
}

}  // namespace ny
