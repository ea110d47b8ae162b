// Load test of nyquoted, run by hand: N clients on 127.0.0.1 each ask for all quotes again and
// again for a bounded time, check every reply whole (pages contiguous up to the total, 14 fields,
// lengths as announced, the same stocks each time) and report replies per second and latency
// percentiles.
//
//   bench_quote_load PORT [CLIENTS=50] [SECONDS=10]

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include <asio.hpp>

#include "host/quote_wire.h"
#include "host/transport.h"

namespace {

using Clock = std::chrono::steady_clock;

// One whole quote reply; false if any page is wrong. `ids` gets the stocks in reply order.
bool AskAllQuotes(asio::ip::tcp::socket& socket, int id, std::vector<int>* ids) {
    ny::Frame request;
    request.command = ny::kCommandQuotes;
    request.id = id;
    const std::string payload = ny::EncodeQuoteRequest();
    request.payload.assign(payload.begin(), payload.end());
    asio::write(socket, asio::buffer(ny::EncodeFrame(request)));
    ids->clear();
    for (;;) {
        char header[ny::kFrameHeaderSize];
        asio::read(socket, asio::buffer(header));
        ny::Frame frame;
        uint32_t length = 0;
        if (ny::DecodeFrameHeader(header, 1u << 24, &frame, &length) != ny::HeaderCheck::Ok) return false;
        frame.payload.resize(length);
        asio::read(socket, asio::buffer(frame.payload));
        ny::QuotePage page;
        if (frame.id != id || frame.command != ny::kCommandQuotes ||
            !ny::ReadQuotePage(frame.payload.data(), static_cast<int>(length), &page) || page.fields != 14 ||
            page.position != static_cast<int>(ids->size()) ||
            length != static_cast<uint32_t>(ny::kQuoteHeaderSize + page.count * 60))
            return false;
        for (int i = 0; i < page.count; ++i) {
            int stock = 0;
            std::memcpy(&stock, page.records + i * 60, 4);
            ids->push_back(stock);
        }
        if ((frame.flags & ny::kFrameMore) == 0) return page.position + page.count == page.total;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_quote_load PORT [CLIENTS=50] [SECONDS=10]\n");
        return 2;
    }
    const unsigned short port = static_cast<unsigned short>(std::atoi(argv[1]));
    const int clients = argc > 2 ? std::clamp(std::atoi(argv[2]), 1, 500) : 50;
    const int seconds = argc > 3 ? std::clamp(std::atoi(argv[3]), 1, 60) : 10;
    const auto end = Clock::now() + std::chrono::seconds(seconds);
    std::mutex lock;
    std::vector<double> latencies;  // ms
    std::vector<int> reference;
    std::atomic<long> bad{0};
    std::vector<std::thread> threads;
    for (int c = 0; c < clients; ++c) {
        threads.emplace_back([&, c] {
            asio::io_context io;
            asio::ip::tcp::socket socket(io);
            asio::error_code error;
            socket.connect({asio::ip::make_address("127.0.0.1"), port}, error);
            if (error) {
                ++bad;
                return;
            }
            std::vector<double> mine;
            std::vector<int> ids;
            try {
                for (int n = 1; Clock::now() < end; ++n) {
                    const auto start = Clock::now();
                    const bool whole = AskAllQuotes(socket, c * 1000000 + n, &ids);
                    mine.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
                    std::lock_guard<std::mutex> guard(lock);
                    if (reference.empty()) reference = ids;
                    if (!whole || ids != reference) ++bad;
                }
            } catch (const std::exception&) {
                ++bad;
            }
            std::lock_guard<std::mutex> guard(lock);
            latencies.insert(latencies.end(), mine.begin(), mine.end());
        });
    }
    for (std::thread& t : threads) t.join();
    std::sort(latencies.begin(), latencies.end());
    auto at = [&](double q) { return latencies.empty() ? 0 : latencies[static_cast<size_t>(q * (latencies.size() - 1))]; };
    std::printf("clients %d, %d s, %zu stocks a reply: %zu replies, %.0f replies/s, %ld wrong or torn\n", clients,
                seconds, reference.size(), latencies.size(), latencies.size() / static_cast<double>(seconds), bad.load());
    std::printf("latency ms: p50 %.2f  p90 %.2f  p99 %.2f  max %.2f\n", at(0.5), at(0.9), at(0.99), at(1.0));
    return bad == 0 ? 0 : 1;
}
