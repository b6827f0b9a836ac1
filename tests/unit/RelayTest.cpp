// The relay between a client and a server: handshake, numbering, closing, and what never happens to a frame.
#include "tests/unit/Rig.h"

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
