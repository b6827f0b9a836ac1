// What the relay has the session features do, between a fake client and a fake server, and that no failure of
// theirs costs a frame.
#include "app/services/modRegistry.h"
#include "base/RuntimeError.h"
#include "features/SignedOnNames.h"
#include "features/modAwayIdleProf.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/Rig.h"

namespace {

constexpr char kAliases[] = "/program\\repl.dat";

struct HooksTest : testing::Test {
    HooksTest() {
        os::fake::PutFile(kAliases, "asdf\r\nFred\r\n");
        os::fake::timeOfDay.local = {2004, 5, 6, 13, 5, 9};
        Set("logwhere", "/logs");
        Set("logims", "1");
        Set("loghowhtm", "False");
        Set("logfolder", "0");
    }

    static void Set(const char* name, const std::string& value) { modRegistry::WriteSetting(name, value); }

    static ByteString SignOnRequest(const std::string& name) { return Snac(0x17, 2, Tlv(1, name)); }
    static ByteString SelfInformation(const std::string& name) { return Snac(1, 0xF, Named(name)); }
    static ByteString Incoming(const std::string& sender, const std::string& text) {
        return Snac(4, 7, IncomingData(sender, Tlv(2, MessageData(text))));
    }
    static ByteString Away(const std::string& text) { return modAwayIdleProf::MakeAwayFlap(text).Data(); }

    static std::string Log(const std::string& buddy) {
        return os::fake::FileText("/logs\\" + buddy + " 2004-05-06.txt").value_or("");
    }
    static std::string PutCache(const std::string& name) {
        const auto file = "\\Aim\\" + name + "\\userinfo.bag";
        os::fake::PutFile(file, "cache");
        return file;
    }

    Rig rig;
};

}  // namespace

TEST_F(HooksTest, SignOnClearsTheCacheAndLeavesTheNameToTheServersWord) {
    // The client has its files under the name that it knows.
    const auto cache = PutCache("fred"), other = PutCache("asdf");
    auto [client, server] = rig.ConnectTalking();
    client.Feed(Frame(2, 2, SignOnRequest("F red")));
    EXPECT_FALSE(os::fake::FileText(cache));
    EXPECT_TRUE(os::fake::FileText(other));
    EXPECT_EQ(modSocket::Connection(0)->hasScreenName(), "");
}

TEST_F(HooksTest, NamesAreKeptBeforeAndAfterAliasesUntilTheEndClearsTheCache) {
    const auto cache = PutCache("asdf");
    auto [client, server] = rig.ConnectTalking();
    server.Feed(Frame(2, 101, SelfInformation("asdf")));
    EXPECT_EQ(client.Received(), Frame(2, 101, SelfInformation("Fred")));
    EXPECT_EQ(modSocket::Connection(0)->hasScreenName(), "Fred");
    EXPECT_EQ(modSocket::Connection(0)->hasScreenNameOrig(false), "asdf");
    EXPECT_TRUE(os::fake::FileText(cache));
    End(client);
    EXPECT_FALSE(os::fake::FileText(cache));
}

TEST_F(HooksTest, WhileTheAliasFileCannotBeReadTheListThatWasReadLastStands) {
    rig.ConnectPair();
    os::fake::FailReads(kAliases, true);
    auto [client, server] = rig.SignOn("My Name");
    ASSERT_EQ(Rig::Reports().size(), 1u);
    EXPECT_NE(Rig::Reports()[0].description.find("stay in force"), std::string::npos);
    server.Feed(Frame(2, 102, Incoming("asdf", "")));
    EXPECT_EQ(client.TakeReceived(), Frame(2, 102, Incoming("Fred", "")));
}

TEST_F(HooksTest, WhereNoAliasListCouldBeReadTheConnectionIsRefused) {
    os::fake::FailReads(kAliases, true);
    auto& client = rig.Connect();
    net::ProcessPendingEvents();
    EXPECT_FALSE(client.IsConnected());
    EXPECT_EQ(os::fake::OutgoingCount(), 0u);
    ASSERT_EQ(Rig::Reports().size(), 1u);
    EXPECT_NE(Rig::Reports()[0].description.find("refused"), std::string::npos);
    os::fake::FailReads(kAliases, false);
    rig.SignOn("My Name");
}

TEST_F(HooksTest, AProfileWithItsSourceLeavesOnTheChannelOfSnacs) {
    auto [client, server] = rig.SignOn("me");
    const auto reply = Snac(2, 6, Named("Bob") + "00 00 00 00"_hex + Tlv(2, "<b>"));
    const auto passedOn = [&](std::int32_t channel) {
        server.Feed(Frame(channel, 102, reply));
        return client.TakeReceived();
    };
    EXPECT_EQ(passedOn(3), Frame(3, 102, reply));
    Set("seehtml", "1");
    const auto first = passedOn(2), second = passedOn(3);
    EXPECT_NE(first.find("&lt;b>"), ByteString::npos);
    EXPECT_EQ(second.substr(0, 4), "2A 02 00 68"_hex);
    EXPECT_EQ(second.substr(4), first.substr(4));
}

TEST_F(HooksTest, ACommandReachesEverySessionOfTheNameOnce) {
    auto impostor = rig.ConnectTalking();  // its server says somebody else's name, in an earlier slot
    impostor.server.Feed(Frame(2, 101, SelfInformation("Some User")));
    auto [client, server] = rig.SignOn("someuser");
    auto other = rig.SignOn("other");
    SendForEach({"Some User", "someuser"}, [](const auto& name) { modSocket::SetAwayMessage(name, "gone"); });
    EXPECT_EQ(server.Received(), Frame(2, 2, Away("gone")));
    EXPECT_EQ(impostor.server.Received(), Frame(2, 2, Away("gone")));
    EXPECT_EQ(other.server.Received(), "");
    // One that has ended, or fails, keeps it from no other.
    End(impostor.client);
    modSocket::SetAwayMessage("someuser", "back");
    EXPECT_EQ(server.Received(), Frame(2, 2, Away("gone")) + Frame(2, 3, Away("back")));
}

TEST_F(HooksTest, AnInjectedFrameTakesTheNextNumberOfTheClientAndIsNotShownToIt) {
    auto [client, server] = rig.SignOn("me");
    client.Feed(Frame(2, 2, "a") + Frame(2, 3, "b").substr(0, 5));
    modSocket::SetAwayMessage("ME", "gone");
    client.Feed(Frame(2, 3, "b").substr(5));
    EXPECT_EQ(server.Received(), Frame(2, 2, "a") + Frame(2, 3, Away("gone")) + Frame(2, 4, "b"));
    EXPECT_EQ(client.Received(), "");
}

TEST_F(HooksTest, ACommandForAnUnknownNameGoesToSlotZero) {
    auto [client, server] = rig.SignOn("me");
    rig.SignOn("other");
    modSocket::SetAwayMessage("nobody", "gone");
    EXPECT_EQ(server.Received(), Frame(2, 2, Away("gone")));
}

TEST_F(HooksTest, ACommandThatCannotBeSentIsReportedAndTakesNoNumber) {
    const auto expectReport = [](const char* why, const ByteString& text = "") {
        Rig::Reports().clear();
        modSocket::SetAwayMessage("nobody", text);
        ASSERT_EQ(Rig::Reports().size(), 1u) << why;
        EXPECT_EQ(Rig::Reports()[0].where, "modSocket:SetAwayMessage");
    };
    expectReport("an empty table");
    auto [client, server] = rig.ConnectPair();
    expectReport("no number known yet");
    client.Feed(Frame(1, 1, "x"));
    expectReport("cannot be built", ByteString(65536, 'x'));
    expectReport("too long for a frame", ByteString(65500, 'x'));
    modSocket::SetIdle("nobody", 1093);
    EXPECT_EQ(Rig::Reports().back().where, "modSocket:SetIdle");
    client.Feed(Frame(1, 1, "y"));
    EXPECT_EQ(server.Received(), Frame(1, 1, "x") + Frame(1, 2, "y"));
    End(server);
    expectReport("closed");
    EXPECT_TRUE(modSocket::Connection(0)->IsClosed());
}

TEST_F(HooksTest, WhatIsSaidInAChatRoomIsLoggedUnderTheRoomsName) {
    rig.SignOn("Some User");
    auto [client, server] = rig.ConnectTalking();
    const auto room = [](const ByteString& tlvs) {
        return Snac(0x0E, 2, "00 04"_hex + Named("!aol://2719:10-4-Old") + "00 00 02 00 01"_hex + tlvs);
    };
    const auto says = [](int subtype, const ByteString& before, const ByteString& said) {
        return Snac(0x0E, subtype, "11 22 33 44 55 66 77 88 00 03"_hex + before + Tlv(1, "") + Tlv(5, said));
    };
    const auto from = [](const std::string& name) {
        return Tlv(3, Named(name) + "00 00 00 01"_hex + Tlv(1, "00 10"_hex));
    };
    std::int32_t number = 101;
    const auto hears = [&](const ByteString& payload) { server.Feed(Frame(2, number++, payload)); };
    hears(room(Tlv(0xD3, "Old Poets")));
    hears(says(6, from("asdf"), Tlv(1, "not wanted")));
    Set("logchat", "1");
    hears(says(6, from("asdf"), Tlv(1, "<b>hi</b>")));
    hears(says(6, from("someuser"), Tlv(2, "unicode-2-0") + Tlv(1, "00 E9"_hex)));
    client.Feed(Frame(2, 2, says(5, "", Tlv(2, "utf-8") + Tlv(1, "\xC3\xA9"))));
    client.Feed(Frame(2, 3, says(5, Tlv(6, ""), Tlv(1, "comes back"))));
    EXPECT_EQ(Log("Old Poets"),
              "Fred (13:05:09): hi\r\nsomeuser (13:05:09): \xE9\r\nSome User (13:05:09): \xE9\r\n");
    hears(room(Tlv(1, "")));
    hears(says(6, from("bob"), Tlv(1, "no name")));
    EXPECT_EQ(Log("Old"), "bob (13:05:09): no name\r\n");
    hears(says(6, Tlv(3, "\x7F"), Tlv(1, "damaged")));
    hears(room("").substr(0, 14));
    EXPECT_NE(client.Received().find("damaged"), std::string::npos) << "costs no frame";
}
