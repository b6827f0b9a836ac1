// TcpRig: sockets that write down what they are told, and a listener that accepts for the tests of net/Tcp.h.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "net/EventLoop.h"
#include "net/Tcp.h"
#include "tests/contract/Implementation.h"

inline constexpr std::int64_t kBoundMs = 20'000;  // for conditions that must come true

// A socket and all that it has reported: "C" connected, "d" data, "E" ended by the peer, "F" failed.
class Recorder {
 public:
    Recorder() {
        socket->Data.Bind<&Recorder::socket_Data>(*this);
        socket->Connected.Bind<&Recorder::socket_Connected>(*this);
        socket->Closed.Bind<&Recorder::socket_Closed>(*this);
        socket->Failed.Bind<&Recorder::socket_Failed>(*this);
    }

    std::unique_ptr<net::TcpSocket> socket = std::make_unique<net::TcpSocket>();
    std::string events;
    std::string received;
    std::size_t largestArrival = 0;
    std::int32_t failure = 0;
    // Run inside the events, after they have been written down; `onData` instead of keeping the bytes.
    std::function<void(std::span<char>)> onData;
    std::function<void()> onOther;

 private:
    void socket_Data(std::span<char> bytes) {
        if (!events.ends_with('d')) events += 'd';
        largestArrival = std::max(largestArrival, bytes.size());
        if (onData) return onData(bytes);
        received.append(bytes.data(), bytes.size());
    }
    void socket_Connected() { Note('C'); }
    void socket_Closed() { Note('E'); }
    void socket_Failed(std::int32_t number) {
        failure = number;
        Note('F');
    }
    void Note(char event) {
        events += event;
        if (onOther) onOther();
    }
};

struct Pair {
    Recorder client;
    Recorder server;
};

class TcpContract : public testing::Test {
 protected:
    TcpContract() {
        PrepareContract();
        listener.ConnectionRequest.Bind<&TcpContract::listener_ConnectionRequest>(*this);
        listener.Listen(0);
    }

    static bool Wait(const std::function<bool()>& done) { return net::RunEventLoopUntil(done, kBoundMs); }

    // Gives events that must not come time to come anyway.
    static void LetPass(std::int64_t milliseconds = 30) {
        net::RunEventLoopUntil([] { return false; }, milliseconds);
    }

    // A connection within the test: `server` is the listener's side.
    std::unique_ptr<Pair> Connect() {
        auto pair = std::make_unique<Pair>();
        toAccept.push_back(&pair->server);
        pair->client.socket->Connect("127.0.0.1", listener.Port());
        EXPECT_TRUE(Wait([&] { return toAccept.empty() && pair->client.events == "C"; }));
        return pair;
    }

    // A connection from a raw peer to `server`.
    std::unique_ptr<RawPeer> ConnectRaw(Recorder& server) {
        toAccept.push_back(&server);
        auto peer = std::make_unique<RawPeer>(listener.Port());
        EXPECT_TRUE(Wait([&] { return toAccept.empty(); }));
        return peer;
    }

    net::TcpListener listener;
    std::deque<Recorder*> toAccept;  // the next connection requests are for these; others are not accepted
    int requests = 0;

 private:
    void listener_ConnectionRequest(std::int32_t id) {
        ++requests;
        if (toAccept.empty()) return;
        auto& next = *toAccept.front();
        toAccept.pop_front();
        next.socket->Accept(id);
    }
};

// Bytes in which every loss, repetition and exchange shows.
inline std::string Pattern(std::size_t size, std::uint32_t seed = 1) {
    std::string bytes(size, '\0');
    for (auto& byte : bytes) {
        seed = seed * 1664525u + 1013904223u;
        byte = static_cast<char>(seed >> 24);
    }
    return bytes;
}
