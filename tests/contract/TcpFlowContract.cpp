// The contract of net/Tcp.h, lines 6 and 7, and what relaying needs: parts of the read buffer, back-pressure,
// fairness.
#include <stdexcept>

#include "tests/contract/TcpRig.h"

namespace {

class TcpFlowContract : public TcpContract {
 protected:
    static std::string_view View(std::span<char> bytes) { return {bytes.data(), bytes.size()}; }

    // What comes from one client is sent to another.
    std::unique_ptr<Pair> in = Connect(), out = Connect();
};

TEST_F(TcpFlowContract, PartsOfTheReadBufferArriveInOrderAndAsTheyWereAtSend) {
    in->server.onData = [&](std::span<char> bytes) {
        for (auto& byte : bytes) ++byte;
        const auto all = View(bytes);
        auto& socket = *out->server.socket;
        socket.Send(all.substr(0, 2));
        socket.Send(all.substr(2, 2));
        std::string other = "[own]";
        socket.Send(other);
        other.assign("xxxxx");
        socket.Send(all.substr(6));
        socket.Send(all.substr(0, 1));
    };
    in->client.socket->Send("abcdefgh");
    ASSERT_TRUE(Wait([&] { return out->client.received.size() >= 12; }));
    EXPECT_EQ(out->client.received, "bcde[own]hib");
}

TEST_F(TcpFlowContract, OneHandlerMaySendToSeveralSockets) {
    const auto other = Connect();
    in->server.onData = [&](std::span<char> bytes) {
        for (std::size_t index = 0; index < bytes.size(); ++index)
            (index % 2 == 0 ? out : other)->server.socket->Send(View(bytes).substr(index, 1));
        in->server.socket->Send("taken");
    };
    in->client.socket->Send("a1b2c3");
    ASSERT_TRUE(Wait([&] {
        return out->client.received == "abc" && other->client.received == "123" &&
               in->client.received == "taken";
    }));
}

TEST_F(TcpFlowContract, WhatAHandlerSendsBeforeItClosesIsDelivered) {
    in->server.onData = [&](std::span<char> bytes) {
        out->server.socket->Send(View(bytes));
        out->server.socket.reset();
        in->server.socket.reset();
    };
    in->client.socket->Send("farewell");
    ASSERT_TRUE(Wait([&] { return out->client.events == "CdE" && in->client.events == "CE"; }));
    EXPECT_EQ(out->client.received, "farewell");
}

TEST_F(TcpFlowContract, AFailingHandlerLosesNeitherItsBytesNorTheConnection) {
    in->server.onData = [&](std::span<char> bytes) {
        out->server.socket->Send(View(bytes));
        throw std::runtime_error("a handler that fails");
    };
    in->client.socket->Send("1");
    ASSERT_TRUE(Wait([&] { return out->client.received == "1"; }));
    in->client.socket->Send("2");
    EXPECT_TRUE(Wait([&] { return out->client.received == "12"; }));
}

TEST_F(TcpFlowContract, AStuckReceiverCostsABoundedQueueAndSlowsNobody) {
    const auto bystander = Connect();
    auto& toSink = *out->server.socket;
    std::size_t largestQueue = 0;
    in->server.socket->ReadFor(toSink);
    in->server.onData = [&](std::span<char> bytes) {
        toSink.Send(View(bytes));
        largestQueue = std::max(largestQueue, toSink.QueuedBytes());
    };
    out->client.socket->HoldReading(true);

    const auto sent = Pattern(15'000'000);
    in->client.socket->Send(sent);
    ASSERT_TRUE(Wait([&] { return toSink.QueuedBytes() >= net::kQueueLimit; }));
    for (int ping = 0; ping < 20; ++ping) {
        const auto size = static_cast<std::size_t>(ping) + 1;
        bystander->client.socket->Send("p");
        ASSERT_TRUE(Wait([&] { return bystander->server.received.size() == size; }));
    }
    EXPECT_LE(largestQueue, net::kQueueLimit);

    out->client.socket->HoldReading(false);
    ASSERT_TRUE(Wait([&] { return out->client.received.size() == sent.size(); }));
    EXPECT_TRUE(out->client.received == sent);
    EXPECT_LE(largestQueue, net::kQueueLimit);
}

TEST_F(TcpFlowContract, ReadingGoesOnWhenTheStuckPartnerCloses) {
    in->server.socket->ReadFor(*out->server.socket);
    in->server.onData = [&](std::span<char> bytes) {
        if (out->server.socket) out->server.socket->Send(View(bytes));
    };
    out->client.socket->HoldReading(true);
    in->client.socket->Send(Pattern(15'000'000));
    in->client.socket->Close();
    ASSERT_TRUE(Wait([&] { return out->server.socket->QueuedBytes() >= net::kQueueLimit; }));
    LetPass();
    EXPECT_EQ(in->server.events, "d");
    out->server.socket.reset();
    EXPECT_TRUE(Wait([&] { return in->server.events == "dE"; }));
}

TEST_F(TcpFlowContract, ABusySocketLetsOthersAndTimersHaveTheirTurn) {
    auto &busy = in, &quiet = out;
    std::size_t busyBytes = 0;
    std::size_t atPing = 0;
    std::size_t atTick = 0;
    std::size_t longestWait = 0;
    int pings = 0;
    busy->server.onData = [&](std::span<char> bytes) {
        busyBytes += bytes.size();
        if (atPing == 0) {
            atPing = busyBytes;
            quiet->client.socket->Send("p");
        }
    };
    quiet->server.onData = [&](std::span<char>) {
        longestWait = std::max(longestWait, busyBytes - atPing);
        atPing = 0;
        ++pings;
    };
    net::Timer timer;
    auto tick = [&] { atTick = busyBytes; };
    timer.Tick.Bind(tick);
    timer.StartOnce(0);
    busy->client.socket->Send(std::string(10'000'000, 'x'));
    ASSERT_TRUE(Wait([&] { return busyBytes == 10'000'000; }));
    EXPECT_LE(busy->server.largestArrival, net::kTurnBytes);
    EXPECT_GT(pings, 1);
    EXPECT_LE(longestWait, 4 * net::kTurnBytes);
    EXPECT_FALSE(timer.IsRunning());
    EXPECT_LT(atTick, busyBytes / 2);
}

}  // namespace
