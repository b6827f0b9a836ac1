// The relay between a client and a server: handshake, numbering, closing, and what never happens to a frame.
#include <random>

#include "tests/unit/Rig.h"

TEST(Handshake, ARequestInPiecesIsCollected) {
    Rig rig;
    auto& client = rig.ConnectSilently();
    for (const char byte : "04 01 14 46 00 00 00 01 00 'host.test' 00"_hex) client.Feed(ByteString(1, byte));
    ASSERT_EQ(os::fake::OutgoingCount(), 1u);
    EXPECT_EQ(rig.LastServer().Host(), "host.test");
}

TEST(Handshake, ARequestWithoutEndIsGivenUp) {
    Rig rig;
    auto& client = rig.ConnectSilently();
    client.Feed("04 01 14 46 00 00 00 01"_hex + ByteString(600, 'u'));
    EXPECT_TRUE(client.SawClose());
    EXPECT_TRUE(modSocket::Connection(0)->IsClosed());
    EXPECT_EQ(os::fake::OutgoingCount(), 0u);
}

TEST(Handshake, TheServersFirstBytesWaitForTheClientButNotForever) {
    for (const bool clientSpeaks : {true, false}) {
        Rig rig;
        auto [client, server] = rig.ConnectPair();
        server.Feed(Frame(1, 100, "hello"));
        EXPECT_EQ(client.Received(), "");
        if (clientSpeaks) client.Feed("*");  // any byte shows that the reply has been read
        os::fake::AdvanceClock(clientSpeaks ? 0 : 50);
        EXPECT_EQ(client.Received(), Frame(1, 100, "hello")) << clientSpeaks;
    }
}

TEST(Relay, AWrongMarkerIsReadAsAHeaderAndMended) {
    Rig rig;
    auto [client, server] = rig.ConnectPair();
    client.Feed("FF 02 00 09 00 01 'x'"_hex);
    EXPECT_EQ(server.Received(), Frame(2, 9, "x"));
}

TEST(Relay, RandomChunksGiveTheReferenceRenumbering) {
    std::mt19937 random(11080);
    const auto upTo = [&](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit)(random);
    };
    for (int round = 0; round < 10; ++round) {
        Rig rig;
        auto [client, server] = rig.ConnectPair();
        ByteString sent, expected;
        const auto seed = static_cast<std::int32_t>(65500 + upTo(35));
        for (std::int32_t i = 0; i < 60; ++i) {
            ByteString payload(i == 30 ? 65535 : upTo(upTo(10) == 0 ? 9000 : 100), '\0');
            for (auto& byte : payload) byte = static_cast<char>(upTo(255));
            const auto number = i == 0 ? seed : static_cast<std::int32_t>(upTo(65535));
            sent += Frame(2, number, payload);
            expected += Frame(2, (seed + i) % 65536, payload);
        }
        for (std::size_t at = 0; at < sent.size();) {
            const auto length = 1 + upTo(upTo(2) == 0 ? 3000 : 9);
            client.Feed(sent.substr(at, length));
            at += length;
        }
        ASSERT_TRUE(server.Received() == expected) << "round " << round;
    }
}

TEST(Relay, TheServersGoodbyeArrivesAsAnEmptyFrame) {
    const auto goodbye = "2A 04 00 66"_hex;
    for (const bool alone : {true, false}) {
        Rig rig;
        auto [client, server] = rig.ConnectTalking();
        server.Feed(Frame(2, 101, "x") + (alone ? "" : goodbye));
        if (alone) server.Feed(goodbye);
        EXPECT_EQ(client.TakeReceived(), Frame(2, 101, "x"));
        os::fake::AdvanceClock(1499);
        EXPECT_EQ(client.Received(), "");
        os::fake::AdvanceClock(1);
        if (alone) {  // may be the beginning of a header, until the server closes
            EXPECT_EQ(client.Received(), "");
            End(server);
        }
        EXPECT_EQ(client.Received(), goodbye + "00 00"_hex) << alone;
        EXPECT_EQ(client.SawClose(), alone);
    }
}

TEST(Close, EitherSideEndsTheOtherAfterWhatWasQueued) {
    for (const bool clientCloses : {true, false}) {
        Rig rig;
        auto [client, server] = rig.SignOn("Some User");
        auto& closing = clientCloses ? client : server;
        auto& other = clientCloses ? server : client;
        other.TakeReceived();
        other.LimitReceived(10);
        const auto frame = Frame(2, clientCloses ? 2 : 102, ByteString(60'000, 'x'));
        closing.Send(frame);
        End(closing);
        ByteString received;
        for (int i = 0; i < 10'000 && !other.SawClose(); ++i) {
            received += other.TakeReceived();
            os::ProcessPendingEvents();
        }
        EXPECT_TRUE(other.SawClose());
        EXPECT_TRUE(received + other.TakeReceived() == frame) << clientCloses;
    }
}

TEST(Close, KeepsSlotAndOriginalNameAndNothingElse) {
    Rig rig;
    auto [client, server] = rig.SignOn("Some User");
    auto* const connection = modSocket::Connection(0);
    EXPECT_EQ(connection->hasScreenName(), "Some User");
    End(client);
    connection->CloseConnection();  // once more
    EXPECT_TRUE(server.SawClose());
    EXPECT_EQ(modSocket::Connection(0), connection);
    EXPECT_EQ(connection->hasScreenName(), "");
    EXPECT_EQ(connection->hasScreenNameOrig(false), "");
    EXPECT_EQ(connection->hasScreenNameOrig(true), "Some User");
    EXPECT_EQ(os::fake::OpenSocketCount(), 0u);
}

TEST(Registry, ARequestThatIsGoneIsReported) {
    Rig rig;
    modSocket::NewLocalConnection(424242);
    ASSERT_EQ(Rig::Reports().size(), 1u);
    EXPECT_EQ(Rig::Reports()[0].where, "modSocket:NewLocalConnection");
}

TEST(Registry, ListsEachUserOnceUnlessTheOriginalNameIsShown) {
    struct Names final : NameList {
        std::vector<std::string> entries;
        void Clear() override { entries.clear(); }
        void AddEntry(const std::string& entry) override { entries.push_back(entry); }
        std::size_t EntryCount() const override { return entries.size(); }
        std::string EntryText(std::size_t index) const override { return entries[index]; }
    } names;
    using Entries = std::vector<std::string>;
    Rig rig;
    rig.ConnectTalking();  // not signed on
    modSocket::ListScreenNames(names, true, false);
    EXPECT_EQ(names.entries, Entries{"(all)"});
    rig.SignOn("Some User");
    rig.SignOn("someuser");
    modSocket::ListScreenNames(names, true, false);
    EXPECT_EQ(names.entries, (Entries{"(all)", "Some User"}));
    modSocket::ListScreenNames(names, false, true);
    EXPECT_EQ(names.entries, (Entries{"Some User (Some User)", "someuser (someuser)"}));
}
