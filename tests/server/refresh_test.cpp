// The data refresh end to end over a real socket: nyquoted (and a scripted server for the
// replies nyquoted never sends) on loopback, the client socket, the picker's quote request and
// the refresh dialog in both modes.

#include <cstdio>
#include <filesystem>

#include "host/clock.h"
#include "host/global.h"
#include "host/quote_wire.h"
#include "host/stockdb.h"
#include "picker/refresh.h"
#include "tests/picker/picker_fixture.h"
#include "tests/server/server_fixture.h"

namespace {

using pickertest::Market;
using servertest::PumpUntil;
using servertest::ScriptedServer;

constexpr int kA = 600001, kB = 600002, kClientOnly = 600003, kServerOnly = 600009, kNoBars = 1000004;

std::vector<CHisDay> Minutes(int count) {
    std::vector<CHisDay> bars;
    for (int i = 0; i < count; ++i) bars.push_back(pickertest::Bar(2103310930 + i, 10.0f + i * 0.01f));
    return bars;
}

size_t StoredMinutes(int id) { return ny::ReadBarFile(g_MyGetStock(id)->GetMinuteFilePath()).size(); }

// The server's installation: four stocks in pages of two; A has 241 bars of today, B 242.
struct ServerMarket {
    ServerMarket() : market("SH600001,甲,J,A\nSH600002,乙,Y,A\nSH600009,丙,B,A\nSZ000004,丁,D,A\n") {
        market.Write("data/quotes.csv",
                     "date=20210331\ncode,open,high,low,last,volume,amount,volratio,pe\n"
                     "SH600001,10,11,9,10.5,1000,10500,1.5,12\nSH600002,20,21,19,20.5,2000,41000,0.5,22\n"
                     "SH600009,30,31,29,30.5,3000,91500,2.5,32\nSZ000004,40,41,39,40.5,4000,162000,3.5,42\n");
        market.Day("data/sh/min1/600001.mn1", Minutes(241));
        market.Day("data/sh/min1/600002.mn1", Minutes(242));
    }
    Market market;
};

// Every test's client: its own installation with three stocks whose 1-minute files hold 5 old
// bars, its socket linked to a server, and an engine in the chart view's picker slot.
class RefreshTest : public ::testing::Test {
protected:
    RefreshTest() : m_client("SH600001,甲,J,A\nSH600002,乙,Y,A\nSH600003,戊,W,A\n") {
        for (const char* code : {"600001", "600002", "600003"})
            m_client.Day(std::string("data/sh/min1/") + code + ".mn1", Minutes(5));
    }
    void SetUp() override {
        ASSERT_TRUE(m_client.Open());
        ny::ClearMessages();
        engine = std::make_unique<CCondStocks>();
        engine->m_hRTEvent->Reset();
    }
    void TearDown() override {
        engine.reset();
        servertest::Connect(0);
        CCondStocksRequestDataDlg::s_fnWatcher = nullptr;
    }
    // Runs a refresh dialog over the engine's slot and returns its result.
    int RunDialog(ny::RefreshMode mode, const std::vector<int>& stocks) {
        CCondStocksRequestDataDlg dialog(mode, stocks);
        engine->m_pRequestDlg = &dialog;
        const int result = dialog.DoModal();
        engine->m_pRequestDlg = nullptr;
        m_lastProgress = {dialog.m_nProgressPos, dialog.m_nProgressTotal};
        m_lastMinuteId = dialog.m_nMinuteCommID;
        return result;
    }

    Market m_client;
    std::unique_ptr<CCondStocks> engine;
    std::pair<short, short> m_lastProgress;
    int m_lastMinuteId = 0;
};

class NyquotedTest : public RefreshTest {
protected:
    static void SetUpTestSuite() {
        s_server = new ServerMarket;
        s_daemon = new servertest::QuoteDaemon({"--home", s_server->market.Path(), "--page", "2"});
    }
    static void TearDownTestSuite() {
        delete s_daemon;
        delete s_server;
    }
    void SetUp() override {
        ASSERT_NE(s_daemon->Port(), 0);
        RefreshTest::SetUp();
        servertest::Connect(s_daemon->Port());
    }
    static inline ServerMarket* s_server = nullptr;
    static inline servertest::QuoteDaemon* s_daemon = nullptr;
};

TEST_F(NyquotedTest, QuoteRequestStoresKnownStocksAndSignalsOnTheLastPage) {
    engine->AddRTData();
    ASSERT_TRUE(PumpUntil([&] { return engine->m_hRTEvent->IsSet(); }));
    struct Row { int id; short code; float value; } rows[] = {
        {kA, NY_QUOTE_OPEN, 10}, {kA, NY_QUOTE_LAST, 10.5f}, {kA, NY_QUOTE_VOLUME, 1000},
        {kA, NY_QUOTE_VOLUME_RATIO, 1.5f}, {kA, NY_QUOTE_PE, 12}, {kB, NY_QUOTE_AMOUNT, 41000},
        {kB, NY_QUOTE_HIGH, 21}, {kClientOnly, NY_QUOTE_LAST, 0},
    };
    for (const Row& row : rows) EXPECT_EQ(g_MyGetStock(row.id)->GetValue(row.code), row.value) << row.id << " " << row.code;
    EXPECT_TRUE(ny::RecordedMessages().empty());
}

TEST_F(NyquotedTest, QuoteDialogEndsWhenThePagesReachTheTotal) {
    EXPECT_EQ(RunDialog(ny::RefreshMode::Quotes, {}), CCondStocksRequestDataDlg::IDOK);
    EXPECT_EQ(m_lastProgress, std::make_pair(short(4), short(4)));
    EXPECT_EQ(g_MyGetStock(kB)->GetValue(NY_QUOTE_LAST), 20.5f);
}

TEST_F(NyquotedTest, MinuteDialogStores241RefusesOthersAndGoesOn) {
    EXPECT_EQ(RunDialog(ny::RefreshMode::Minute, {kB, kA, kClientOnly, kNoBars}), CCondStocksRequestDataDlg::IDOK);
    EXPECT_EQ(m_lastProgress, std::make_pair(short(4), short(4)));
    struct Row { int id; size_t bars; } rows[] = {{kA, 241}, {kB, 5}, {kClientOnly, 5}};
    for (const Row& row : rows) EXPECT_EQ(StoredMinutes(row.id), row.bars) << row.id;
    EXPECT_EQ(RunDialog(ny::RefreshMode::Minute, {}), CCondStocksRequestDataDlg::IDOK);
}

// Records what the socket sends, and passes it on.
class RecordingTransport : public ny::Transport {
public:
    RecordingTransport(std::unique_ptr<ny::Transport> inner, std::vector<std::pair<int, int>>* sent)
        : m_inner(std::move(inner)), m_sent(sent) {}
    bool Send(ny::Frame frame) override {
        m_sent->push_back({frame.command, frame.id});
        return m_inner->Send(std::move(frame));
    }
    void Poll(int ms, std::vector<ny::TransportEvent>* events) override { m_inner->Poll(ms, events); }
    std::string Name() const override { return m_inner->Name(); }

private:
    std::unique_ptr<ny::Transport> m_inner;
    std::vector<std::pair<int, int>>* m_sent;
};

TEST_F(NyquotedTest, CancelMidwayDropsLaterRepliesAndTakesTheRequestsBackInOrder) {
    std::vector<std::pair<int, int>> sent;
    g_MyChildView->m_ClientSocket.SetTransport(
        std::make_unique<RecordingTransport>(ny::MakeAsioTransport("127.0.0.1", s_daemon->Port()), &sent));
    CCondStocksRequestDataDlg::s_fnWatcher = [](CCondStocksRequestDataDlg& dialog) {
        if (dialog.m_nIndex == 2) dialog.OnCancel();
    };
    EXPECT_EQ(RunDialog(ny::RefreshMode::Minute, {kB, kA, kClientOnly}), CCondStocksRequestDataDlg::IDCANCEL);
    g_MyChildView->m_ClientSocket.Pump(300);
    EXPECT_EQ(StoredMinutes(kA), 5u);
    ASSERT_GE(sent.size(), 3u);
    EXPECT_EQ(sent.back(), std::make_pair(0, m_lastMinuteId));  // the quote object was never made
    EXPECT_EQ(sent[sent.size() - 2].first, ny::kCommandMinute);
}

TEST_F(NyquotedTest, ServerSurvivesMalformedAndOversizedRequests) {
    const std::string bad[] = {
        std::string(20, 'x'),                                         // no frame at all
        ScriptedServer::Frame(ny::kCommandQuotes, 7, "") .substr(0, 10) + std::string("\xff\xff\xff\x7f", 4),  // 2 GB
        ScriptedServer::Frame(4321, 8, "abc"),                        // unknown command
        ScriptedServer::Frame(ny::kCommandQuotes, 9, "\x01\x02"),     // malformed request
    };
    for (const std::string& bytes : bad) {
        asio::io_context io;
        asio::ip::tcp::socket socket(io);
        socket.connect({asio::ip::make_address("127.0.0.1"), s_daemon->Port()});
        asio::write(socket, asio::buffer(bytes));
        char reply[ny::kFrameHeaderSize];
        asio::error_code error;
        asio::read(socket, asio::buffer(reply), error);
        ny::Frame frame;
        uint32_t length = 0;
        ASSERT_FALSE(error);
        ASSERT_EQ(ny::DecodeFrameHeader(reply, 4096, &frame, &length), ny::HeaderCheck::Ok);
        EXPECT_EQ(frame.command, ny::kCommandError);
    }
    EXPECT_TRUE(s_daemon->Alive());
    engine->AddRTData();
    EXPECT_TRUE(PumpUntil([&] { return engine->m_hRTEvent->IsSet(); }));
}

// ---- Replies nyquoted never sends, from a scripted server ----

std::string QuotePage(int total, int position, int count, int fields) {
    std::vector<int> ids(static_cast<size_t>(count), kA);
    return ny::EncodeQuotePage(total, position, ids, fields, std::vector<float>(ids.size() * fields, 77));
}

TEST_F(RefreshTest, BrokenQuoteRepliesLeaveTheEventClearAndTheQuotesAlone) {
    struct Row {
        const char* name;
        ScriptedServer::Script script;
        bool stored;          // the page's values reach the stock
        const char* message;  // shown, or null
    } rows[] = {
        {"last page one short", [](const ny::Frame& r) { return ScriptedServer::Frame(r.command, r.id, QuotePage(2, 0, 1, 14)); }, true, nullptr},
        {"13 fields", [](const ny::Frame& r) { return ScriptedServer::Frame(r.command, r.id, QuotePage(1, 0, 1, 13)); }, false, nullptr},
        {"announces more than it holds", [](const ny::Frame& r) { return ScriptedServer::Frame(r.command, r.id, QuotePage(1, 0, 1, 14).substr(0, 20)); }, false, nullptr},
        {"garbage", [](const ny::Frame&) { return std::string(40, '\x5a'); }, false, ny::MSG_SERVER_BROKEN},
        {"stalled", [](const ny::Frame&) { return std::string(); }, false, ny::MSG_SERVER_NO_ANSWER},
    };
    for (const Row& row : rows) {
        ScriptedServer server(row.script);
        servertest::Connect(server.Port(), 400);
        ny::ClearMessages();
        g_MyGetStock(kA)->SetValue(NY_QUOTE_LAST, 1);
        engine->m_hRTEvent->Reset();
        engine->AddRTData();
        g_MyChildView->m_ClientSocket.Pump(600);
        PumpUntil([] { return !ny::RecordedMessages().empty(); }, 600);
        EXPECT_FALSE(engine->m_hRTEvent->IsSet()) << row.name;
        EXPECT_EQ(g_MyGetStock(kA)->GetValue(NY_QUOTE_LAST), row.stored ? 77 : 1) << row.name;
        if (row.message != nullptr) {
            ASSERT_EQ(ny::RecordedMessages().size(), 1u) << row.name;
            EXPECT_EQ(ny::RecordedMessages()[0].rfind(row.message, 0), 0u) << row.name;
        } else {
            EXPECT_TRUE(ny::RecordedMessages().empty()) << row.name;
        }
        servertest::Connect(0);
    }
}

TEST_F(RefreshTest, MinuteReplyForAnotherStockWritesNothingAndMovesOn) {
    ScriptedServer server([](const ny::Frame& r) {
        return ScriptedServer::Frame(r.command, r.id, ny::EncodeMinuteReply(kB, Minutes(10)));
    });
    servertest::Connect(server.Port());
    EXPECT_EQ(RunDialog(ny::RefreshMode::Minute, {kA}), CCondStocksRequestDataDlg::IDOK);
    EXPECT_EQ(StoredMinutes(kA), 5u);
    EXPECT_EQ(StoredMinutes(kB), 5u);
}

TEST_F(RefreshTest, MinuteDialogClosesWithAMessageWhenTheServerIsNotThere) {
    servertest::Connect(1, 500);  // nothing listens on port 1
    EXPECT_EQ(RunDialog(ny::RefreshMode::Minute, {kA, kB}), CCondStocksRequestDataDlg::IDCANCEL);
    ASSERT_EQ(ny::RecordedMessages().size(), 1u);
    EXPECT_EQ(ny::RecordedMessages()[0], std::string(ny::MSG_SERVER_UNREACHABLE) + " 127.0.0.1:1");
    EXPECT_EQ(StoredMinutes(kA), 5u);
}

TEST_F(RefreshTest, OfflineSocketRefreshesNothing) {
    EXPECT_EQ(RunDialog(ny::RefreshMode::Minute, {kA}), CCondStocksRequestDataDlg::IDOK);
    engine->AddRTData();
    EXPECT_TRUE(engine->m_hRTEvent->IsSet());
    EXPECT_EQ(StoredMinutes(kA), 5u);
}

// ---- A pick during a replayed day ----

// A day pick on an installation, with the socket as it is; the picked ids.
std::vector<int> PickToday(const std::string& home) {
    EXPECT_TRUE(ny::OpenInstallation(home));
    CClockModule::SetClock(20210331, 103000);
    CCondStocks::m_lLastUpdateDate = 0;
    auto formula = pickertest::MakeFormula({{"X", "CLOSE>REF(CLOSE,1)"}});
    std::vector<CIndicator*> conditions{formula.get()};
    std::vector<int> stocks;
    for (const CStock* stock : g_MyStocksArray)
        if (!stock->IsIndex()) stocks.push_back(stock->m_lStockID);
    CCondStocks engine;
    EXPECT_TRUE(engine.Play(conditions, 1, stocks, NY_PERIOD_DAY, 0, 0, 0, 0, 0));
    CondStocksSTATUS status;
    EXPECT_TRUE(PumpUntil([&] { return engine.QueryStatus(&status) && status.m_nRunning == 0; }, 20000));
    EXPECT_EQ(status.m_nDone, static_cast<short>(stocks.size()));
    return status.m_arResult;
}

// The quotes file of the day at 10:30 from each stock's 1-minute bars, worked out here.
std::string QuotesAt1030() {
    std::string text = "date=20210331\ncode,open,high,low,last,volume,amount\n";
    for (const CStock* stock : g_MyStocksArray) {
        float open = 0, high = 0, low = 0, last = 0, volume = 0, amount = 0;
        for (const CHisDay& bar : ny::ReadBarFile(stock->GetMinuteFilePath())) {
            if (bar.m_lTime % 10000 > 1030) break;
            if (open == 0) open = high = low = bar.m_fOpen;
            high = std::max(high, bar.m_fHigh);
            low = std::min(low, bar.m_fLow);
            last = bar.m_fClose;
            volume += bar.m_fVolume;
            amount += bar.m_fAmount;
        }
        char line[256];
        std::snprintf(line, sizeof line, "%s,%.9g,%.9g,%.9g,%.9g,%.9g,%.9g\n", ny::FormatStockCode(stock->m_lStockID).c_str(),
                      open, high, low, last, volume, amount);
        text += line;
    }
    return text;
}

TEST(ReplayTest, PickDuringAReplayedDayEqualsAPickOverTheSamePricesInFiles) {
    TempInstallation served, live, stored;
    ny::SampleMarketOptions options;
    options.stockCount = 16;
    options.firstDate = 20190102;
    options.lastDate = 20210331;
    std::string error;
    ASSERT_TRUE(ny::MakeSampleMarket(served.Path(), options, &error)) << error;
    for (const TempInstallation* copy : {&live, &stored})
        std::filesystem::copy(served.Path(), copy->Path(), std::filesystem::copy_options::recursive |
                                                              std::filesystem::copy_options::overwrite_existing);
    servertest::QuoteDaemon daemon({"--home", served.Path(), "--replay", "--start", "10:30", "--speed", "0"});
    ASSERT_NE(daemon.Port(), 0);

    servertest::Connect(daemon.Port());
    const std::vector<int> replayed = PickToday(live.Path());
    servertest::Connect(0);

    ASSERT_TRUE(ny::OpenInstallation(stored.Path()));
    stored.Write("data/quotes.csv", QuotesAt1030());
    const std::vector<int> fromFiles = PickToday(stored.Path());

    EXPECT_EQ(replayed, fromFiles);
    EXPECT_GT(fromFiles.size(), 0u);
    EXPECT_LT(fromFiles.size(), g_MyStocksArray.size() - 2);
    CClockModule::UseSystemClock();
}

}  // namespace
