#pragma once
// Helpers of the server-link tests: nyquoted started on a free loopback port, a scripted server
// that answers with whatever bytes a test gives, and a pump that waits for a condition. All on
// 127.0.0.1, every wait bounded.

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <asio.hpp>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "host/comm_data.h"
#include "host/transport.h"
#include "net/asio_transport.h"

extern char** environ;

namespace servertest {

// Pumps the chart view's socket until `done` holds or `ms` pass; whether it holds.
inline bool PumpUntil(const std::function<bool()>& done, int ms = 3000) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (!done()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        g_MyChildView->m_ClientSocket.Pump(20);
    }
    return true;
}

// Links the chart view's socket to 127.0.0.1:port, or takes it offline with port 0.
inline void Connect(unsigned short port, int timeoutMs = 2000) {
    ny::TransportOptions options;
    options.exchangeTimeoutMs = timeoutMs;
    g_MyChildView->m_ClientSocket.SetTransport(port == 0 ? nullptr : ny::MakeAsioTransport("127.0.0.1", port, options));
}

// nyquoted over an installation, on a free port; stopped by SIGTERM when the object ends.
class QuoteDaemon {
public:
    explicit QuoteDaemon(const std::vector<std::string>& arguments) {
        std::vector<std::string> args{NY_BINARY_DIR "/server/nyquoted", "--port", "0"};
        args.insert(args.end(), arguments.begin(), arguments.end());
        std::vector<char*> argv;
        for (std::string& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        int fds[2];
        if (pipe(fds) != 0) return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, fds[0]);
        if (posix_spawn(&m_pid, argv[0], &actions, nullptr, argv.data(), environ) != 0) m_pid = -1;
        posix_spawn_file_actions_destroy(&actions);
        close(fds[1]);
        m_out = fdopen(fds[0], "r");
        char line[256] = {};
        // "nyquoted: serving N stocks on 127.0.0.1:PORT"
        if (m_pid > 0 && m_out != nullptr && std::fgets(line, sizeof line, m_out) != nullptr) {
            const std::string text(line);
            m_port = static_cast<unsigned short>(std::stoi(text.substr(text.rfind(':') + 1)));
        }
    }
    ~QuoteDaemon() {
        if (m_pid > 0) {
            kill(m_pid, SIGTERM);
            int status = 0;
            for (int i = 0; i < 500 && waitpid(m_pid, &status, WNOHANG) == 0; ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            if (waitpid(m_pid, &status, WNOHANG) == 0) {
                kill(m_pid, SIGKILL);
                waitpid(m_pid, &status, 0);
            }
        }
        if (m_out != nullptr) fclose(m_out);
    }
    unsigned short Port() const { return m_port; }
    // Whether the process is still running.
    bool Alive() const { return m_pid > 0 && kill(m_pid, 0) == 0; }

private:
    pid_t m_pid = -1;
    FILE* m_out = nullptr;
    unsigned short m_port = 0;
};

// A server on a free loopback port that answers each request frame with the bytes its script
// returns (frames, garbage or nothing); it runs on its own thread until the object ends.
class ScriptedServer {
public:
    using Script = std::function<std::string(const ny::Frame& request)>;

    explicit ScriptedServer(Script script) : m_script(std::move(script)) {
        m_acceptor.open(asio::ip::tcp::v4());
        m_acceptor.bind({asio::ip::make_address("127.0.0.1"), 0});
        m_acceptor.listen();
        Accept();
        m_thread = std::thread([this] { m_io.run(); });
    }
    ~ScriptedServer() {
        m_io.stop();
        m_thread.join();
    }
    unsigned short Port() const { return m_acceptor.local_endpoint().port(); }

    // A frame as bytes.
    static std::string Frame(unsigned short command, int id, const std::string& payload, unsigned short flags = 0) {
        ny::Frame frame;
        frame.command = command;
        frame.flags = flags;
        frame.id = id;
        frame.payload.assign(payload.begin(), payload.end());
        const std::vector<char> bytes = ny::EncodeFrame(frame);
        return std::string(bytes.begin(), bytes.end());
    }

private:
    struct Connection {
        explicit Connection(asio::ip::tcp::socket s) : socket(std::move(s)) {}
        asio::ip::tcp::socket socket;
        char header[ny::kFrameHeaderSize];
        ny::Frame request;
        std::string reply;
    };

    void Accept() {
        m_acceptor.async_accept([this](const asio::error_code& error, asio::ip::tcp::socket socket) {
            if (error) return;
            Read(std::make_shared<Connection>(std::move(socket)));
            Accept();
        });
    }
    void Read(std::shared_ptr<Connection> c) {
        asio::async_read(c->socket, asio::buffer(c->header), [this, c](const asio::error_code& error, size_t) {
            uint32_t length = 0;
            if (error || ny::DecodeFrameHeader(c->header, 4096, &c->request, &length) != ny::HeaderCheck::Ok) return;
            c->request.payload.resize(length);
            asio::async_read(c->socket, asio::buffer(c->request.payload), [this, c](const asio::error_code& failure, size_t) {
                if (failure) return;
                c->reply = m_script(c->request);
                asio::async_write(c->socket, asio::buffer(c->reply), [this, c](const asio::error_code&, size_t) { Read(c); });
            });
        });
    }

    Script m_script;
    asio::io_context m_io;
    asio::ip::tcp::acceptor m_acceptor{m_io};
    std::thread m_thread;
};

}  // namespace servertest
