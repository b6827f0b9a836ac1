// The contract of net/Tcp.h, lines 1 to 5: events, order, closing, destroying, listening.
#include <chrono>

#include "base/RuntimeError.h"
#include "tests/contract/TcpRig.h"

namespace {

using State = net::TcpSocket::State;

TEST_F(TcpContract, NoEventIsRaisedFromInsideACall) {
    Pair pair;
    toAccept.push_back(&pair.server);
    pair.client.socket->Connect("127.0.0.1", listener.Port());
    EXPECT_EQ(pair.client.events, "");
    EXPECT_EQ(pair.client.socket->GetState(), State::Connecting);
    ASSERT_TRUE(Wait([&] { return toAccept.empty() && pair.client.events == "C"; }));
    EXPECT_EQ(pair.client.socket->GetState(), State::Connected);

    pair.client.socket->Send("bytes");
    pair.client.socket->Close();
    pair.server.socket->HoldReading(true);
    pair.server.socket->HoldReading(false);
    EXPECT_EQ(pair.server.events, "");
    EXPECT_TRUE(Wait([&] { return pair.server.events == "dE"; }));
    EXPECT_EQ(pair.client.events, "C");
}

TEST_F(TcpContract, AllBytesComeBeforeClosedAndClosedComesOnce) {
    const auto pair = Connect();
    const auto sent = Pattern(3'000'000);
    pair->client.socket->Send(sent);
    pair->client.socket->Close();
    EXPECT_EQ(pair->client.socket->GetState(), State::Closed);
    ASSERT_TRUE(Wait([&] { return pair->server.events.ends_with('E'); }));
    LetPass();
    EXPECT_EQ(pair->server.events, "dE");
    EXPECT_TRUE(pair->server.received == sent);
    EXPECT_LE(pair->server.largestArrival, net::kTurnBytes);
    EXPECT_EQ(pair->server.socket->GetState(), State::Connected);
}

TEST_F(TcpContract, HeldBytesAndTheEndComeWithTheResumedReadingInOneArrival) {
    const auto pair = Connect();
    pair->server.socket->HoldReading(true);
    for (int piece = 0; piece < 10; ++piece) pair->client.socket->Send(std::string(100, 'x'));
    pair->client.socket->Close();
    LetPass();
    EXPECT_EQ(pair->server.events, "");
    pair->server.socket->HoldReading(false);
    ASSERT_TRUE(Wait([&] { return pair->server.events == "dE"; }));
    EXPECT_EQ(pair->server.received.size(), 1000u);
    EXPECT_EQ(pair->server.largestArrival, 1000u);
}

TEST_F(TcpContract, SendQueuesWhatTheSystemDoesNotTakeAndLosesNothing) {
    const auto pair = Connect();
    pair->server.socket->HoldReading(true);
    std::string sent;
    for (std::uint32_t part = 0; part < 40; ++part) {
        const auto bytes = Pattern(200'000 + part, part);
        pair->client.socket->Send(bytes);
        sent += bytes;
    }
    EXPECT_GT(pair->client.socket->QueuedBytes(), 0u);
    pair->server.socket->HoldReading(false);
    ASSERT_TRUE(Wait([&] { return pair->server.received.size() == sent.size(); }));
    EXPECT_TRUE(pair->server.received == sent);
    EXPECT_EQ(pair->client.socket->QueuedBytes(), 0u);
}

TEST_F(TcpContract, ClosedAndDestroyedSocketsFlushTheirQueuesAndItIsToldWhenAllIsOut) {
    EXPECT_TRUE(net::FlushClosedSockets(0));
    const auto closed = Connect();
    const auto destroyed = Connect();
    const auto sent = Pattern(8'000'000);
    for (auto* pair : {&*closed, &*destroyed}) {
        pair->server.socket->HoldReading(true);
        pair->client.socket->Send(sent);
    }
    closed->client.socket->Close();
    destroyed->client.socket.reset();
    EXPECT_FALSE(net::FlushClosedSockets(30));
    for (auto* pair : {&*closed, &*destroyed}) pair->server.socket->HoldReading(false);
    EXPECT_TRUE(net::FlushClosedSockets(kBoundMs));
    ASSERT_TRUE(Wait([&] { return closed->server.events == "dE" && destroyed->server.events == "dE"; }));
    EXPECT_TRUE(closed->server.received == sent);
    EXPECT_TRUE(destroyed->server.received == sent);
}

TEST_F(TcpContract, AQueueThatCannotBeFlushedInTimeEndsInAReset) {
    if (!CanAbort()) GTEST_SKIP() << "no resets are sent here";
    const auto pair = Connect();
    pair->server.socket->HoldReading(true);
    pair->client.socket->Send(Pattern(15'000'000));
    pair->client.socket->Close();
    EXPECT_FALSE(net::FlushClosedSockets(net::kFlushLimitMs + 5'000));
    pair->server.socket->HoldReading(false);
    EXPECT_TRUE(Wait([&] { return pair->server.events.ends_with('F'); }));
    EXPECT_EQ(pair->server.events.find('E'), std::string::npos);
    EXPECT_TRUE(net::FlushClosedSockets(0));
}

TEST_F(TcpContract, ClosingWithUnreadBytesDoesNotLoseWhatWasSent) {
    const auto pair = Connect();
    pair->client.socket->HoldReading(true);
    pair->server.socket->Send("unread");
    pair->client.socket->Send("last words");
    LetPass();
    pair->client.socket->Close();
    pair->server.socket->Send("too late");
    ASSERT_TRUE(Wait([&] { return pair->server.events == "dE"; }));
    EXPECT_EQ(pair->server.received, "last words");
}

// The peer's end and the end of the patience with it, found in one turn, end the connection once.
TEST_F(TcpContract, APeersEndThatComesTogetherWithTheTimeLimitIsHarmless) {
    // By a clock that nobody winds: the loop stands still meanwhile.
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kLongerThanTheLimit(2'100);
    Recorder server;
    const auto peer = ConnectRaw(server);
    server.socket->Close();
    LetPass();
    bool isOver = false;
    net::Timer timer;
    auto tick = [&] {
        peer->EndDirection();
        const auto start = Clock::now();
        while (Clock::now() - start < kLongerThanTheLimit) {
        }
        isOver = true;
    };
    timer.Tick.Bind(tick);
    timer.StartOnce(0);
    EXPECT_TRUE(Wait([&] { return isOver; }));
    LetPass();
    EXPECT_EQ(Connect()->server.events, "");
}

TEST_F(TcpContract, HalfClosedPeerStillGetsWhatIsSent) {
    Recorder server;
    const auto peer = ConnectRaw(server);
    peer->Send("question");
    peer->EndDirection();
    ASSERT_TRUE(Wait([&] { return server.events == "dE"; }));
    server.socket->Send("answer");
    ASSERT_TRUE(Wait([&] { return server.socket->QueuedBytes() == 0; }));
    EXPECT_EQ(peer->Receive(6), "answer");
}

TEST_F(TcpContract, AResetFailsBehindTheBytesThatCameBeforeItOnceTheyMayBeRead) {
    if (!CanAbort()) GTEST_SKIP() << "no resets are sent here";
    for (const bool isHeld : {false, true}) {
        SCOPED_TRACE(isHeld ? "held" : "reading");
        Recorder server;
        const auto peer = ConnectRaw(server);
        server.socket->HoldReading(isHeld);
        peer->Send("half a fra");
        peer->Abort();
        if (isHeld) {
            LetPass();
            EXPECT_EQ(server.events, "");
            server.socket->HoldReading(false);
        }
        ASSERT_TRUE(Wait([&] { return server.events.ends_with('F'); }));
        EXPECT_EQ(server.received, "half a fra");
        EXPECT_EQ(server.events.find('E'), std::string::npos);
        EXPECT_NE(server.failure, 0);
        EXPECT_EQ(server.socket->GetState(), State::Closed);
        server.socket->Send("dropped");
        LetPass();
        EXPECT_EQ(server.events.back(), 'F');
    }
}

TEST_F(TcpContract, SendingIntoABrokenConnectionFailsLaterAndOnce) {
    Recorder server;
    const auto peer = ConnectRaw(server);
    peer->Abort();
    for (int part = 0; part < 3; ++part) server.socket->Send(std::string(1000, 'x'));
    EXPECT_EQ(server.events, "");
    ASSERT_TRUE(Wait([&] { return server.events == "F"; }));
    LetPass();
    EXPECT_EQ(server.events, "F");
}

TEST_F(TcpContract, ConnectingToAnUnknownNameAClosedPortOrAnotherAddressFailsLater) {
    net::TcpListener closed;
    closed.Listen(0);
    const auto closedPort = closed.Port();
    closed.Close();
    const struct {
        const char* host;
        std::uint16_t port;
    } nowhere[] = {
        {"127.0.0.1", closedPort},
        {"no-such-host.invalid", 5190},
        {"127.0.0.2", listener.Port()},  // of this machine too, but nobody listens there
    };
    for (const auto& [host, port] : nowhere) {
        Recorder client;
        client.socket->Connect(host, port);
        EXPECT_EQ(client.events, "") << host;
        ASSERT_TRUE(Wait([&] { return client.events == "F"; })) << host;
        EXPECT_NE(client.failure, 0) << host;
        EXPECT_EQ(client.socket->GetState(), State::Closed) << host;
    }
    EXPECT_EQ(requests, 0);
}

TEST_F(TcpContract, NamesAreResolvedAndSocketsMayGoMeanwhile) {
    for (int attempt = 0; attempt < 20; ++attempt) {
        Recorder client;
        client.socket->Connect("localhost", listener.Port());
        if (attempt % 2 == 0) client.socket->Close();
    }
    LetPass();
    EXPECT_EQ(requests, 0);
    Pair pair;
    toAccept.push_back(&pair.server);
    pair.client.socket->Connect("localhost", listener.Port());
    EXPECT_EQ(pair.client.socket->GetState(), State::Connecting);
    ASSERT_TRUE(Wait([&] { return pair.client.events == "C"; }));
}

TEST_F(TcpContract, NoEventComesAfterClose) {
    const auto pair = Connect();
    pair->server.onData = [&](std::span<char>) { pair->server.socket->Close(); };
    pair->client.socket->Send(Pattern(1'000'000));
    ASSERT_TRUE(Wait([&] { return pair->client.events == "CE" || pair->client.events == "CF"; }));
    LetPass();
    EXPECT_EQ(pair->server.events, "d");
    pair->server.socket->Close();  // idempotent
}

TEST_F(TcpContract, AHandlerMayDestroyItsOwnSocket) {
    const auto isDestroyedBy = [&](Recorder& recorder, const std::function<void()>& happens) {
        recorder.onData = [&](std::span<char>) { recorder.socket.reset(); };
        recorder.onOther = [&] { recorder.socket.reset(); };
        happens();
        EXPECT_TRUE(Wait([&] { return recorder.socket == nullptr; })) << recorder.events;
    };
    const auto data = Connect(), closed = Connect();
    isDestroyedBy(data->server, [&] { data->client.socket->Send("x"); });
    isDestroyedBy(closed->server, [&] { closed->client.socket->Close(); });
    Recorder failed, connected;
    const auto peer = ConnectRaw(failed);
    if (CanAbort()) isDestroyedBy(failed, [&] { peer->Abort(); });
    isDestroyedBy(connected, [&] { connected.socket->Connect("127.0.0.1", listener.Port()); });
}

TEST_F(TcpContract, AHandlerMayDestroyAnotherSocketWhoseEventsWait) {
    const auto one = Connect();
    const auto other = Connect();
    int arrivals = 0;
    one->server.onData = [&](std::span<char>) {
        ++arrivals;
        other->server.socket.reset();
    };
    other->server.onData = [&](std::span<char>) {
        ++arrivals;
        one->server.socket.reset();
    };
    one->client.socket->Send("x");
    other->client.socket->Send("x");
    ASSERT_TRUE(Wait([&] { return arrivals > 0; }));
    LetPass();
    EXPECT_EQ(arrivals, 1);
}

TEST_F(TcpContract, ASocketConnectsAgainAfterItWasClosed) {
    const auto pair = Connect();
    Recorder second;
    toAccept.push_back(&second);
    pair->client.socket->Connect("127.0.0.1", listener.Port());
    ASSERT_TRUE(Wait([&] { return pair->client.events == "CC" && pair->server.events == "E"; }));
    pair->client.socket->Send("again");
    EXPECT_TRUE(Wait([&] { return second.received == "again"; }));
}

TEST_F(TcpContract, ListeningAgainKeepsTheBacklog) {
    Recorder servers[3];
    for (auto& server : servers) toAccept.push_back(&server);
    RawPeer first(listener.Port()), second(listener.Port()), third(listener.Port());
    first.Send("1");
    listener.Listen(listener.Port());
    EXPECT_TRUE(Wait([&] { return requests == 3 && servers[0].received == "1"; }));
}

TEST_F(TcpContract, ATakenPortIsRefused) {
    net::TcpListener second;
    EXPECT_THROW(second.Listen(listener.Port()), RuntimeError);
    EXPECT_EQ(second.Port(), 0);
    const auto port = listener.Port();
    listener.Close();
    EXPECT_EQ(listener.Port(), 0);
    second.Listen(port);
    EXPECT_EQ(second.Port(), port);
}

TEST_F(TcpContract, ARequestThatNobodyAcceptsIsClosed) {
    Recorder client;
    client.socket->Connect("127.0.0.1", listener.Port());
    ASSERT_TRUE(Wait([&] { return client.events.size() == 2; }));
    EXPECT_EQ(requests, 1);
    EXPECT_THROW(client.socket->Accept(1), RuntimeError);
}

}  // namespace
