// nyquoted: a quote server of our own for the data refresh. Serves an installation's stocks over
// the framed link of host/transport.h: all quotes in pages (2118) and a stock's 1-minute bars of
// the day (2115), live from the stored files or replayed through the trading day.

#include <cstdio>
#include <iostream>

#include <CLI/CLI.hpp>

#include "host/installation.h"
#include "host/stockdb.h"
#include "server/quote_book.h"
#include "server/quote_server.h"

namespace {

// "HH:MM" or "HH:MM:SS" to HHMMSS; -1 for anything else.
int ParseTime(const std::string& text) {
    int hours = 0, minutes = 0, seconds = 0;
    char end = 0;
    const int read = std::sscanf(text.c_str(), "%d:%d:%d%c", &hours, &minutes, &seconds, &end);
    if ((read != 2 && read != 3) || hours < 0 || hours > 23 || minutes < 0 || minutes > 59 || seconds < 0 ||
        seconds > 59)
        return -1;
    return hours * 10000 + minutes * 100 + seconds;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"nyquoted - quote server for the data refresh of an installation"};
    std::string home, start = "09:30";
    nyquoted::ServerOptions server;
    nyquoted::ReplayOptions replay;
    app.add_option("--home", home, "Installation directory whose stocks are served")->required();
    app.add_option("--bind", server.bind, "Address to listen on (default 127.0.0.1)");
    app.add_option("--port", server.port, "Port to listen on; 0 picks a free one (default 7709)");
    app.add_option("--page", server.pageSize, "Stocks per page of the quote reply (default 500)")
        ->check(CLI::Range(1, 10000));
    app.add_option("--max-clients", server.maxClients, "Connections served at once (default 256)")
        ->check(CLI::Range(1, 10000));
    app.add_flag("--replay", replay.enabled, "Replay the trading day of the stored 1-minute bars");
    app.add_option("--start", start, "Replay: time of day to start from, HH:MM (default 09:30)");
    app.add_option("--speed", replay.speed, "Replay: replayed seconds per second, 0 stands still (default 60)")
        ->check(CLI::Range(0.0, 1e6));
    CLI11_PARSE(app, argc, argv);

    replay.startTime = ParseTime(start);
    if (replay.startTime < 0) {
        std::cerr << "nyquoted: --start " << start << ": write HH:MM\n";
        return 2;
    }
    if (!ny::OpenInstallation(home)) {
        std::cerr << "nyquoted: " << home << ": no stock list (data/stocks.csv)\n";
        return 1;
    }
    nyquoted::QuoteBook book(replay);
    nyquoted::QuoteServer quoteServer(book, server);
    std::string error;
    if (!quoteServer.Open(&error)) {
        std::cerr << "nyquoted: " << error << "\n";
        return 1;
    }
    // The first line tells scripts and tests where to connect.
    std::cout << "nyquoted: serving " << book.Ids().size() << " stocks on " << server.bind << ":"
              << quoteServer.Port() << std::endl;
    if (replay.enabled)
        std::cout << "nyquoted: replaying from " << start << " at " << replay.speed << " s per second" << std::endl;
    quoteServer.Run();
    std::cout << "nyquoted: stopped" << std::endl;
    ny::CloseInstallation();
    return 0;
}
