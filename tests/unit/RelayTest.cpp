// The relay between a client and a server: handshake, numbering, closing, and what never happens to a frame.
#include <gtest/gtest.h>

#include <random>

#include "tests/unit/Rig.h"

namespace {

void Advance(std::int64_t milliseconds) {
    os::fake::AdvanceClock(milliseconds);
}

}  // namespace

TEST(Handshake, ConnectsToTheAddressAskedForAndRepeatsItInTheReply) {
    Rig rig;
    auto& client = rig.Connect();
    auto& server = os::fake::Outgoing(0);
    EXPECT_EQ(server.Host(), "10.0.0.5");
    EXPECT_EQ(server.Port(), 5190);
    EXPECT_EQ(client.Received(), "");
    server.AcceptConnect();
    os::ProcessPendingEvents();
    EXPECT_EQ(client.Received(), Rig::kReply);
}

TEST(Handshake, ARequestInPiecesIsCollected) {
    Rig rig;
    auto& client = os::fake::ConnectTo(Rig::kPort);
    os::ProcessPendingEvents();
    for (const char byte : "04 01 14 46 00 00 00 01 00 'host.test' 00"_hex) client.Feed(ByteString(1, byte));
    ASSERT_EQ(os::fake::OutgoingCount(), 1u);
    EXPECT_EQ(os::fake::Outgoing(0).Host(), "host.test");
}

TEST(Handshake, ARequestWithoutEndIsGivenUp) {
    Rig rig;
    auto& client = os::fake::ConnectTo(Rig::kPort);
    os::ProcessPendingEvents();
    client.Feed("04 01 14 46 00 00 00 01"_hex + ByteString(600, 'u'));
    EXPECT_TRUE(client.SawClose());
    EXPECT_TRUE(modSocket::Connection(0)->IsClosed());
    EXPECT_EQ(os::fake::OutgoingCount(), 0u);
}

TEST(Handshake, BytesBeforeTheReplyBelongToTheRequest) {
    Rig rig;
    auto& client = os::fake::ConnectTo(Rig::kPort);
    os::ProcessPendingEvents();
    client.Feed(Rig::kRequest + Frame(1, 1, "early"));
    client.Feed("late user name");
    auto& server = os::fake::Outgoing(0);
    server.AcceptConnect();
    os::ProcessPendingEvents();
    client.Feed(Frame(1, 5, "hello"));
    EXPECT_EQ(server.Received(), Frame(1, 5, "hello"));
}

TEST(Handshake, ARefusedServerClosesTheClientWithoutAWord) {
    Rig rig;
    auto& client = rig.Connect();
    os::fake::Outgoing(0).RefuseConnect();
    os::ProcessPendingEvents();
    EXPECT_TRUE(client.SawClose());
    EXPECT_EQ(client.Received(), "");
    EXPECT_EQ(os::fake::OpenSocketCount(), 0u);
}

TEST(Handshake, TheServersFirstBytesWaitForTheClientButNotForever) {
    {
        Rig rig;
        auto [client, server] = rig.ConnectPair();
        server.Feed(Frame(1, 100, "hello"));
        EXPECT_EQ(client.Received(), "");
        client.Feed("*");  // any byte shows that the reply has been read
        os::ProcessPendingEvents();
        EXPECT_EQ(client.Received(), Frame(1, 100, "hello"));
    }
    {
        Rig rig;
        auto [client, server] = rig.ConnectPair();
        server.Feed(Frame(1, 100, "hello"));
        Advance(50);
        os::ProcessPendingEvents();
        EXPECT_EQ(client.Received(), Frame(1, 100, "hello"));
    }
}

TEST(Relay, FramesOfOneArrivalKeepTheirOrderAndGetConsecutiveNumbers) {
    Rig rig;
    auto [client, server] = rig.ConnectPair();
    client.Feed(Frame(1, 0xFFFF, "a") + Frame(2, 7, "b") + Frame(5, 7, ""));
    EXPECT_EQ(server.Received(), Frame(1, 0xFFFF, "a") + Frame(2, 0, "b") + Frame(5, 1, ""));
}

TEST(Relay, AWrongMarkerIsReadAsAHeaderAndMended) {
    Rig rig;
    auto [client, server] = rig.ConnectPair();
    client.Feed("FF 02 00 09 00 01 'x'"_hex);
    EXPECT_EQ(server.Received(), Frame(2, 9, "x"));
}

TEST(Relay, ALargestFrameGoesThrough) {
    Rig rig;
    auto [client, server] = rig.ConnectPair();
    const auto frame = Frame(2, 9, ByteString(65535, 'x'));
    client.Feed(frame);
    os::ProcessPendingEvents();
    EXPECT_TRUE(server.Received() == frame);
}

TEST(Relay, RandomChunksGiveTheReferenceRenumbering) {
    std::mt19937 random(11080);
    const auto upTo = [&](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit)(random);
    };
    for (int round = 0; round < 30; ++round) {
        Rig rig;
        auto [client, server] = rig.ConnectPair();
        ByteString sent, expected;
        const auto seed = static_cast<std::int32_t>(65500 + upTo(35));
        for (std::int32_t i = 0; i < 60; ++i) {
            ByteString payload(upTo(200), '\0');
            for (auto& byte : payload) byte = static_cast<char>(upTo(255));
            const auto number = i == 0 ? seed : static_cast<std::int32_t>(upTo(65535));
            sent += Frame(2, number, payload);
            expected += Frame(2, (seed + i) % 65536, payload);
        }
        for (std::size_t at = 0; at < sent.size();) {
            const auto length = 1 + upTo(upTo(2) == 0 ? 900 : 9);
            client.Feed(sent.substr(at, length));
            at += length;
        }
        ASSERT_TRUE(server.Received() == expected) << "round " << round;
    }
}

TEST(Relay, TheServersGoodbyeArrivesAsAnEmptyFrame) {
    const auto goodbye = "2A 04 00 66"_hex;
    const auto empty = "2A 04 00 66 00 00"_hex;
    {
        Rig rig;  // alone, then the server closes
        auto [client, server] = rig.ConnectTalking();
        server.Feed(Frame(2, 101, "x"));
        client.TakeReceived();
        server.Feed(goodbye);
        EXPECT_EQ(client.Received(), "");
        server.Close();
        os::ProcessPendingEvents();
        EXPECT_EQ(client.Received(), empty);
        EXPECT_TRUE(client.SawClose());
    }
    {
        Rig rig;  // behind a frame, and silence
        auto [client, server] = rig.ConnectTalking();
        server.Feed(Frame(2, 101, "x") + goodbye);
        client.TakeReceived();
        Advance(1499);
        EXPECT_EQ(client.Received(), "");
        Advance(1);
        EXPECT_EQ(client.Received(), empty);
    }
}

TEST(Close, EitherSideEndsTheOtherAfterWhatWasQueued) {
    for (const bool clientCloses : {true, false}) {
        Rig rig;
        auto [client, server] = rig.SignOn("Some User");
        auto& closing = clientCloses ? client : server;
        auto& other = clientCloses ? server : client;
        other.LimitReceived(10);
        closing.Send(Frame(2, 200, ByteString(300'000, 'x').substr(0, 60'000)));
        closing.Close();
        os::ProcessPendingEvents();
        ByteString received;
        for (int i = 0; i < 10'000 && !other.SawClose(); ++i) {
            received += other.TakeReceived();
            os::ProcessPendingEvents();
        }
        received += other.TakeReceived();
        EXPECT_TRUE(other.SawClose());
        EXPECT_EQ(received.size(), 60'006u);
    }
}

TEST(Close, KeepsSlotAndOriginalNameAndNothingElse) {
    Rig rig;
    auto [client, server] = rig.SignOn("Some User");
    auto* const connection = modSocket::Connection(0);
    EXPECT_EQ(connection->hasScreenName(), "Some User");
    client.Close();
    os::ProcessPendingEvents();
    EXPECT_TRUE(server.SawClose());
    EXPECT_EQ(modSocket::Connection(0), connection);
    EXPECT_EQ(connection->hasScreenName(), "");
    EXPECT_EQ(connection->hasScreenNameOrig(false), "");
    EXPECT_EQ(connection->hasScreenNameOrig(true), "Some User");
    EXPECT_EQ(os::fake::OpenSocketCount(), 0u);
    connection->CloseConnection();
    EXPECT_EQ(connection->hasScreenNameOrig(true), "Some User");
}

TEST(Close, AResetDisturbsNobodyElse) {
    Rig rig;
    auto [client, server] = rig.ConnectTalking();
    auto bystander = rig.ConnectTalking();
    server.Send(Frame(2, 1, "whole") + "2A 02 00"_hex);
    server.Reset();
    os::ProcessPendingEvents();
    EXPECT_TRUE(client.SawClose());
    bystander.client.Feed(Frame(2, 2, "still here"));
    EXPECT_EQ(bystander.server.Received(), Frame(2, 2, "still here"));
    EXPECT_TRUE(Rig::Reports().empty());
}

TEST(Registry, SlotsAreNeverReused) {
    Rig rig;
    auto first = rig.ConnectTalking();
    auto second = rig.SignOn("b");
    EXPECT_EQ(modSocket::ConnIndex("B"), 1u);
    for (auto* client : {&first.client, &second.client}) client->Close();
    os::ProcessPendingEvents();
    rig.SignOn("c");
    EXPECT_EQ(modSocket::ConnIndex("c"), 2u);
    EXPECT_EQ(modSocket::SlotCount(), 3u);
}

TEST(Registry, ARequestThatIsGoneIsReported) {
    Rig rig;
    modSocket::NewLocalConnection(424242);
    ASSERT_EQ(Rig::Reports().size(), 1u);
    EXPECT_EQ(Rig::Reports()[0].where, "modSocket:NewLocalConnection");
}

TEST(Registry, APortThatIsTakenIsReportedAndTheProgramGoesOn) {
    Rig rig;
    os::TcpListener second;
    modSocket::SetListener(&second);
    modSocket::WinsockStartListen();
    ASSERT_EQ(Rig::Reports().size(), 1u);
    EXPECT_EQ(Rig::Reports()[0].where, "modSocket:WinsockStartListen");
}

namespace {

struct Names final : NameList {
    std::vector<std::string> entries;
    void Clear() override { entries.clear(); }
    void AddEntry(const std::string& entry) override { entries.push_back(entry); }
    std::size_t EntryCount() const override { return entries.size(); }
    std::string EntryText(std::size_t index) const override { return entries[index]; }
};

}  // namespace

TEST(Registry, ListsEachUserOnceUnlessTheOriginalNameIsShown) {
    Rig rig;
    Names names;
    modSocket::ListScreenNames(names, true, false);
    EXPECT_EQ(names.entries, std::vector<std::string>{"(all)"});
    rig.ConnectTalking();  // not signed on
    rig.SignOn("Some User");
    rig.SignOn("someuser");
    modSocket::ListScreenNames(names, true, false);
    EXPECT_EQ(names.entries, (std::vector<std::string>{"(all)", "Some User"}));
    modSocket::ListScreenNames(names, false, true);
    EXPECT_EQ(names.entries, (std::vector<std::string>{"Some User (Some User)", "someuser (someuser)"}));
}
