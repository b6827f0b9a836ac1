// The features at work on a session, between a fake client and a fake server.
#include "features/clsSessionFeatures.h"

#include "app/services/modRegistry.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/Rig.h"

namespace {

constexpr char kAliases[] = "/program\\repl.dat";

struct SessionFeatures : testing::Test {
    SessionFeatures() {
        SetSessionHooks(&features_);
        os::fake::PutFile(kAliases, "asdf1234\r\nFred\r\n");
        os::fake::SetLocalTime({2004, 5, 6, 13, 5, 9});
        for (const auto& [name, value] :
             {std::pair{"logwhere", "/logs"}, {"logims", "1"}, {"loghowhtm", "False"}, {"logfolder", "0"}})
            modRegistry::WriteSetting(name, value);
    }

    static ByteString FromServer(std::int32_t number, const std::string& sender, const std::string& text) {
        return Frame(2, number, Snac(4, 7, IncomingData(sender, Tlv(2, MessageData(text)))));
    }
    static ByteString FromClient(const std::string& recipient) {
        return Frame(2, 2, Snac(4, 6, OutgoingData(recipient, Tlv(2, MessageData("hello")))));
    }

    clsSessionFeatures features_;
    Rig rig_;
};

}  // namespace

TEST_F(SessionFeatures, AliasesAreSeenByTheClientTheLogAndNeverByTheServer) {
    auto [client, server] = rig_.SignOn("My Name");
    server.TakeReceived();
    server.Feed(FromServer(102, "asdf1234", "hi"));
    EXPECT_EQ(client.TakeReceived(), FromServer(102, "Fred", "hi"));
    client.Feed(FromClient("Fred"));
    EXPECT_EQ(server.TakeReceived(), FromClient("asdf1234"));
    EXPECT_EQ(os::fake::FileText("/logs\\Fred 2004-05-06.txt"), "Fred (13:05:09): hi\r\n");
    EXPECT_TRUE(rig_.Reports().empty());
}

TEST_F(SessionFeatures, AConnectionKeepsTheAliasesItBeganWith) {
    auto first = rig_.SignOn("My Name");
    os::fake::PutFile(kAliases, "asdf1234\r\nBoss\r\n");
    rig_.Connect();  // a program that only asks for a server
    first.server.Feed(FromServer(102, "asdf1234", ""));
    EXPECT_EQ(first.client.TakeReceived(), FromServer(102, "Fred", ""));

    auto second = rig_.SignOn("Another");
    second.server.Feed(FromServer(102, "asdf1234", ""));
    EXPECT_EQ(second.client.TakeReceived(), FromServer(102, "Boss", ""));
}

TEST_F(SessionFeatures, AnUnreadableAliasListIsReportedAndTheSessionGoesOn) {
    os::fake::FailReads(kAliases, true);
    auto [client, server] = rig_.SignOn("My Name");
    server.Feed(FromServer(102, "asdf1234", ""));
    EXPECT_EQ(client.TakeReceived(), FromServer(102, "asdf1234", ""));
    EXPECT_EQ(rig_.Reports().size(), 1u);
}

TEST_F(SessionFeatures, ALogThatFailsCostsALineAndNeverAFrame) {
    auto [client, server] = rig_.SignOn("My Name");
    os::fake::FailWrites("/logs", 28);
    server.Feed(FromServer(102, "asdf1234", "lost"));
    EXPECT_EQ(client.TakeReceived(), FromServer(102, "Fred", "lost"));
    os::fake::FailWrites("/logs", 0);
    server.Feed(FromServer(103, "asdf1234", "kept"));
    EXPECT_EQ(os::fake::FileText("/logs\\Fred 2004-05-06.txt"), "Fred (13:05:09): kept\r\n");
    EXPECT_EQ(rig_.Reports().size(), 1u);
}

TEST_F(SessionFeatures, TheProfileSettingCountsFromTheNextReplyOnAndOnlyOneIsOn) {
    auto [client, server] = rig_.SignOn("My Name");
    for (const std::string value : {"0", " ", "True", "2", "1"}) {
        modRegistry::WriteSetting("seehtml", value);
        server.Feed(Frame(2, 0, Snac(2, 6, "03 'Bob' 00 00 00 00"_hex + Tlv(2, "<b>x"))));
        EXPECT_EQ(client.TakeReceived().find("<b>x<br></body>") != ByteString::npos, value == "1") << value;
    }
}
