// What the relay has the session features do, between a fake client and a fake server, and that no failure of
// theirs costs a frame.
#include "app/services/modRegistry.h"
#include "base/RuntimeError.h"
#include "features/clsSessionFeatures.h"
#include "features/modAwayIdleProf.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/Rig.h"

namespace {

constexpr char kAliases[] = "/program\\repl.dat";

struct HooksTest : testing::Test {
    HooksTest() {
        SetSessionHooks(&features_);
        os::fake::PutFile(kAliases, "asdf\r\nFred\r\n");
        os::fake::SetLocalTime({2004, 5, 6, 13, 5, 9});
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

    clsSessionFeatures features_;
    Rig rig;
};

}  // namespace

TEST_F(HooksTest, SignOnClearsTheCacheAndLeavesTheNameToTheServersWord) {
    const auto cache = PutCache("someuser");
    auto [client, server] = rig.ConnectTalking();
    client.Feed(Frame(2, 2, SignOnRequest("Some User")));
    EXPECT_FALSE(os::fake::FileText(cache));
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

TEST_F(HooksTest, AnAliasListThatCannotBeReadCostsOneReportAndNoConnection) {
    os::fake::FailReads(kAliases, true);
    auto [client, server] = rig.SignOn("My Name");
    EXPECT_EQ(Rig::Reports().size(), 1u);
    server.Feed(Frame(2, 102, Incoming("asdf", "")));
    EXPECT_EQ(client.TakeReceived(), Frame(2, 102, Incoming("asdf", "")));
}

TEST_F(HooksTest, AFeatureThatThrowsOrMakesAFrameTooLongLeavesItAsItWas) {
    struct Faulty final : clsSessionFeatures {
        bool ReplaceScreenNames(const ReplacementList&, Direction, std::string_view, ByteString&) override {
            throw RuntimeError(5, "on purpose");
        }
        void SeeProfileHtml(clsHeaderFLAP& flap) override { flap.Create(2, ByteString(65536, 'x')); }
    } faulty;
    SetSessionHooks(&faulty);
    Set("seehtml", "1");
    auto [client, server] = rig.ConnectTalking();
    Rig::Reports().clear();
    server.Feed(Frame(2, 101, Snac(2, 6, Named("asdf"))));
    EXPECT_EQ(client.TakeReceived(), Frame(2, 101, Snac(2, 6, Named("asdf"))));
    EXPECT_EQ(Rig::Reports().size(), 2u);
}

TEST_F(HooksTest, AFrameTooShortForASnacRunsNoHook) {
    auto [client, server] = rig.SignOn("me");
    const auto tooShort = Frame(2, 103, "00 04 00 07 00 00 00 00 00"_hex) + Frame(2, 104, "");
    server.Feed(Frame(2, 102, Incoming("Bob", "hi")) + tooShort);
    EXPECT_EQ(client.Received(), Frame(2, 102, Incoming("Bob", "hi")) + tooShort);
    EXPECT_EQ(Log("Bob"), "Bob (13:05:09): hi\r\n");
    EXPECT_TRUE(Rig::Reports().empty());
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
