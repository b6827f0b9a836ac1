// Rig: the relay between a fake client and a fake server, and what a test needs to speak for both.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "base/Trap.h"
#include "core/SessionHooks.h"
#include "core/modSocket.h"
#include "os/EventLoop.h"
#include "os/fake/FakeClock.h"
#include "os/fake/FakeNetwork.h"
#include "os/fake/FakeWorld.h"
#include "tests/unit/Hex.h"

inline ByteString Frame(std::int32_t channel, std::int32_t sequence, const ByteString& payload) {
    return "*" + ByteToStr(channel) + WordToStr(sequence) +
           WordToStr(static_cast<std::int32_t>(payload.size())) + payload;
}

inline ByteString Snac(std::int32_t family, std::int32_t subtype, const ByteString& data) {
    return WordToStr(family) + WordToStr(subtype) + "00 00 00 00 00 00"_hex + data;
}

// What was reported while the rig stood.
struct Report {
    std::string description, where;
    std::int32_t number;
};

class Rig {
 public:
    static constexpr std::uint16_t kPort = 11080;

    Rig() {
        os::fake::ResetWorld();
        reports_.clear();
        previousReporter_ = SetErrorReporter(
            [](const std::string& description, std::int32_t number, const std::string& where, std::int16_t) {
                reports_.push_back({description, where, number});
            });
        listener_.emplace();
        listener_->ConnectionRequest.Bind<&Rig::listener_ConnectionRequest>(*this);
        modSocket::SetListener(&*listener_);
        modSocket::SetListeningPort(kPort);
        modSocket::InitWs();
        modSocket::WinsockStartListen();
    }

    ~Rig() {
        modSocket::InitWs();
        modSocket::SetListener(nullptr);
        SetSessionHooks(nullptr);
        SetErrorReporter(previousReporter_);
    }

    Rig(const Rig&) = delete;
    Rig& operator=(const Rig&) = delete;

    // A client connects and asks for a server at 10.0.0.5:5190.
    os::fake::Peer& Connect() {
        auto& client = os::fake::ConnectTo(kPort);
        os::ProcessPendingEvents();
        client.Feed(kRequest);
        return client;
    }

    // A client that has its server and has been given the reply.
    struct Pair {
        os::fake::Peer& client;
        os::fake::Peer& server;
    };
    Pair ConnectPair() {
        auto& client = Connect();
        auto& server = os::fake::Outgoing(os::fake::OutgoingCount() - 1);
        server.AcceptConnect();
        os::ProcessPendingEvents();
        EXPECT_EQ(client.TakeReceived(), kReply);
        return {client, server};
    }
    // The same, and both have said their hello (numbers 1 and 100).
    Pair ConnectTalking() {
        auto pair = ConnectPair();
        pair.client.Feed(Frame(1, 1, "00 00 00 01"_hex));
        pair.server.Feed(Frame(1, 100, "00 00 00 01"_hex));
        EXPECT_EQ(pair.server.TakeReceived(), Frame(1, 1, "00 00 00 01"_hex));
        EXPECT_EQ(pair.client.TakeReceived(), Frame(1, 100, "00 00 00 01"_hex));
        return pair;
    }
    // The same, and the server has named the user.
    Pair SignOn(const std::string& name) {
        auto pair = ConnectTalking();
        pair.server.Feed(
            Frame(2, 101, Snac(1, 0xF, ByteToStr(static_cast<std::int32_t>(name.size())) + name)));
        pair.client.TakeReceived();
        return pair;
    }

    static std::vector<Report>& Reports() { return reports_; }

    static inline const ByteString kRequest = "04 01 14 46 0A 00 00 05 00"_hex;
    static inline const ByteString kReply = "00 5A 14 46 0A 00 00 05"_hex;

 private:
    void listener_ConnectionRequest(std::int32_t requestID) {
        modSocket::NewLocalConnection(requestID);
        modSocket::WinsockStartListen();
    }

    static inline std::vector<Report> reports_;
    ErrorReporter previousReporter_ = nullptr;
    std::optional<os::TcpListener> listener_;
};
