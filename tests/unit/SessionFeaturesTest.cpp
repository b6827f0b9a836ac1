// The features at work on a session, between a fake client and a fake server.
#include "features/clsSessionFeatures.h"

#include "app/services/modRegistry.h"
#include "os/Files.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/Messages.h"
#include "tests/unit/Rig.h"

namespace {

constexpr char kAliases[] = "/program\\repl.dat";
constexpr char kLog[] = "/logs\\Fred 2004-05-06.txt";

class SessionFeatures : public testing::Test {
 protected:
    SessionFeatures() {
        SetSessionHooks(&features_);
        os::fake::PutFile(kAliases, "asdf1234\r\nFred\r\n");
        os::fake::SetLocalTime({2004, 5, 6, 13, 5, 9});
        modRegistry::WriteSetting("logwhere", "/logs");
        modRegistry::WriteSetting("logims", "1");
        modRegistry::WriteSetting("loghowhtm", "False");
        modRegistry::WriteSetting("logfolder", "0");
        modRegistry::WriteSetting("seehtml", "0");
    }

    static ByteString IncomingFrame(std::int32_t sequence, const std::string& sender,
                                    const std::string& text) {
        return Frame(2, sequence, Snac(4, 7, IncomingData(sender, Tlv(2, MessageData(text)))));
    }

    clsSessionFeatures features_;
    Rig rig_;
};

}  // namespace

TEST_F(SessionFeatures, AliasesAreSeenByTheClientTheLogAndNeverByTheServer) {
    auto [client, server] = rig_.SignOn("My Name");
    server.Feed(IncomingFrame(102, "asdf1234", "hi"));
    EXPECT_EQ(client.TakeReceived(), IncomingFrame(102, "Fred", "hi"));

    const auto outgoing = [](const std::string& recipient) {
        return Frame(2, 2, Snac(4, 6, OutgoingData(recipient, Tlv(2, MessageData("hello")))));
    };
    client.Feed(outgoing("Fred"));
    EXPECT_EQ(server.TakeReceived(), outgoing("asdf1234"));
    EXPECT_EQ(os::fake::FileText(kLog), "Fred (13:05:09): hi\r\n");
    EXPECT_TRUE(rig_.Reports().empty());
}

TEST_F(SessionFeatures, AConnectionKeepsTheAliasesItBeganWith) {
    auto first = rig_.SignOn("My Name");
    os::fake::PutFile(kAliases, "asdf1234\r\nBoss\r\n");
    rig_.Connect();  // a program that only asks for a server
    first.server.Feed(IncomingFrame(102, "asdf1234", ""));
    EXPECT_EQ(first.client.TakeReceived(), IncomingFrame(102, "Fred", ""));

    auto second = rig_.SignOn("Another");
    second.server.Feed(IncomingFrame(102, "asdf1234", ""));
    EXPECT_EQ(second.client.TakeReceived(), IncomingFrame(102, "Boss", ""));
}

TEST_F(SessionFeatures, AnUnreadableAliasListIsReportedAndTheSessionGoesOn) {
    os::fake::FailReads(kAliases, true);
    auto [client, server] = rig_.SignOn("My Name");
    server.Feed(IncomingFrame(102, "asdf1234", ""));
    EXPECT_EQ(client.TakeReceived(), IncomingFrame(102, "asdf1234", ""));
    EXPECT_EQ(rig_.Reports().size(), 1u);
}

TEST_F(SessionFeatures, ALogThatFailsCostsALineAndNeverAFrame) {
    auto [client, server] = rig_.SignOn("My Name");
    os::fake::FailWrites("/logs", 28);
    server.Feed(IncomingFrame(102, "asdf1234", "lost"));
    EXPECT_EQ(client.TakeReceived(), IncomingFrame(102, "Fred", "lost"));
    EXPECT_EQ(rig_.Reports().size(), 1u);
    os::fake::FailWrites("/logs", 0);
    server.Feed(IncomingFrame(103, "asdf1234", "kept"));
    EXPECT_EQ(os::fake::FileText(kLog), "Fred (13:05:09): kept\r\n");
    EXPECT_EQ(rig_.Reports().size(), 1u);
}

TEST_F(SessionFeatures, AMalformedMessageIsRelayedReportedOnceAndTheNextOneIsFine) {
    auto [client, server] = rig_.SignOn("My Name");
    const auto malformed = Frame(2, 102, Snac(4, 7, "11 22 33 44 55 66 77 88 00 01 FF 'Fre'"_hex));
    server.Feed(malformed);
    EXPECT_EQ(client.TakeReceived(), malformed);
    EXPECT_EQ(rig_.Reports().size(), 1u);
    server.Feed(IncomingFrame(103, "Fred", "fine"));
    EXPECT_EQ(os::fake::FileText(kLog), "Fred (13:05:09): fine\r\n");
}

TEST_F(SessionFeatures, TheProfileSettingCountsFromTheNextReplyOn) {
    auto [client, server] = rig_.SignOn("My Name");
    const auto reply = Frame(2, 102, Snac(2, 6, "03 'Bob' 00 00 00 00"_hex + Tlv(2, "<b>x")));
    for (const char* value : {"0", " ", "True", "2"}) {
        modRegistry::WriteSetting("seehtml", value);
        server.Feed(reply);
        EXPECT_EQ(client.TakeReceived().substr(6), reply.substr(6)) << value;
    }
    modRegistry::WriteSetting("seehtml", "1");
    server.Feed(reply);
    EXPECT_NE(client.TakeReceived().find("<b>x<br></body>"), std::string::npos);
    const auto malformed = Snac(2, 6, "FF 'Bob'"_hex);
    server.Feed(Frame(2, 107, malformed));
    EXPECT_EQ(client.TakeReceived().substr(6), malformed);
    EXPECT_EQ(rig_.Reports().size(), 1u);
}

TEST_F(SessionFeatures, InjectedFramesStandInTheClientsSequence) {
    auto [client, server] = rig_.SignOn("My Name");
    modSocket::SetAwayMessage("my name", "gone");
    EXPECT_EQ(server.TakeReceived(), Frame(2, 2, features_.MakeAwayFlap("gone")->Data()));
    modSocket::SetIdle("My Name", 1093);
    EXPECT_EQ(rig_.Reports().size(), 1u);
    client.Feed(Frame(5, 2, ""));
    EXPECT_EQ(server.TakeReceived(), Frame(5, 3, ""));
    EXPECT_EQ(client.TakeReceived(), "");
}
