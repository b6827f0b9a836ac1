// Rig: the relay between a fake client and a fake server, and what a test needs to speak for both.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/modSocket.h"
#include "features/Overview.h"
#include "features/SessionFeatures.h"
#include "net/EventLoop.h"
#include "os/fake/FakeClock.h"
#include "os/fake/FakeNetwork.h"
#include "os/fake/FakeWorld.h"
#include "tests/unit/Messages.h"
#include "tests/unit/Reported.h"

// What a peer does, and all that follows from it.
inline void Accept(os::fake::Peer& peer) {
    peer.AcceptConnect();
    net::ProcessPendingEvents();
}
inline void End(os::fake::Peer& peer) {
    peer.Close();
    net::ProcessPendingEvents();
}

class Rig {
 public:
    static constexpr std::uint16_t kPort = Relay::kListeningPort;

    // With the features as both programs have them, unless a test brings its own.
    explicit Rig(std::vector<FeatureEntry> features = SessionFeatures()) : relay_(std::move(features)) {
        modSocket::WinsockStartListen();
    }

    Rig(const Rig&) = delete;
    Rig& operator=(const Rig&) = delete;

    // A client connects and asks for a server at 10.0.0.5:5190.
    static os::fake::Peer& Connect() {
        auto& client = ConnectSilently();
        client.Feed(kRequest);
        return client;
    }
    // One that has not asked yet.
    static os::fake::Peer& ConnectSilently() {
        auto& client = os::fake::ConnectTo(kPort);
        net::ProcessPendingEvents();
        return client;
    }
    // The server that was asked for last.
    static os::fake::Peer& LastServer() { return os::fake::Outgoing(os::fake::OutgoingCount() - 1); }

    // A client that has its server and has been given the reply.
    struct Pair {
        os::fake::Peer& client;
        os::fake::Peer& server;
    };
    Pair ConnectPair() {
        auto& client = Connect();
        auto& server = LastServer();
        Accept(server);
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
        pair.server.Feed(Frame(2, 101, Snac(1, 0xF, Named(name))));
        pair.client.TakeReceived();
        return pair;
    }

    static std::vector<Report>& Reports() { return Reported::reports; }
    Relay& TheRelay() { return relay_; }
    Overview& TheOverview() { return overview_; }

    static inline const ByteString kRequest = "04 01 14 46 0A 00 00 05 00"_hex;
    static inline const ByteString kReply = "00 5A 14 46 0A 00 00 05"_hex;

 private:
    // Around everything else: an empty world, and an ear for reports.
    struct World {
        World() { os::fake::ResetWorld(); }
    };

    World world_;
    Reported reported_;
    Relay relay_;
    Overview overview_{relay_};
};

// One session of a rig whose frames carry the numbers that follow the greetings.
struct NumberedSession {
    void SignOn(const std::string& name) {
        pair.emplace(rig.SignOn(name));
        clientNumber = toServer = 2;
        serverNumber = toClient = 102;
    }
    void ClientSends(const ByteString& payload) { pair->client.Feed(Frame(2, clientNumber++, payload)); }
    void ServerSends(const ByteString& payload) { pair->server.Feed(Frame(2, serverNumber++, payload)); }
    // What the other side gets.
    ByteString ToServer(const ByteString& payload) { return Frame(2, toServer++, payload); }
    ByteString ToClient(const ByteString& payload) { return Frame(2, toClient++, payload); }

    Rig rig;
    std::optional<Rig::Pair> pair;
    std::int32_t clientNumber = 0, serverNumber = 0, toServer = 0, toClient = 0;
};
