// What the relay asks of the session features, and that no failure of theirs costs a frame.
#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "tests/unit/Rig.h"

namespace {

// Features that note what they are asked, and fail where they are told to.
struct Features final : SessionHooks {
    std::vector<std::string> calls;
    std::string failing;
    bool aliases = false;
    bool wantsHtml = true;
    ByteString profilePayload = "rewritten profile";

    void Note(const std::string& name, const std::string& detail) {
        if (failing == name) throw RuntimeError(5, name + " failed");
        calls.push_back(name + ":" + detail);
    }

    std::shared_ptr<const ReplacementList> LoadReplacements() override {
        Note("load", "");
        if (!aliases) return nullptr;
        // Opaque to the relay, so any address will do: it is only handed back.
        const auto owner = std::make_shared<int>();
        return {owner, reinterpret_cast<const ReplacementList*>(owner.get())};
    }
    // "asdf" is called "Fred".
    bool ReplaceScreenNames(const ReplacementList&, Direction direction, std::string_view payload,
                            ByteString& rewritten) override {
        const std::string from = direction == Direction::ToClient ? "\4asdf" : "\4Fred";
        const auto at = payload.find(from);
        rewritten = payload;
        if (at == std::string_view::npos) return false;
        rewritten.replace(at, from.size(), direction == Direction::ToClient ? "\4Fred" : "\4asdf");
        Note("replace", "");
        return true;
    }
    void LogMessage(Direction direction, const clsHeaderSNAC& snac, const std::string& own) override {
        Note("log", (direction == Direction::ToClient ? "in " : "out ") + own + " " + snac.Data());
    }
    bool WantsProfileHtml() override { return wantsHtml; }
    void SeeProfileHtml(clsHeaderFLAP& flap) override {
        Note("html", flap.Data().substr(10));
        flap.Create(2, profilePayload);
    }
    std::optional<clsHeaderFLAP> MakeAwayFlap(const std::string& text) override {
        Note("away", text);
        clsHeaderFLAP flap;
        flap.Create(2, "away " + text);
        return flap;
    }
    void DeleteUserinfoBag(const std::string& name) override { Note("bag", name); }
};

using Calls = std::vector<std::string>;

ByteString Named(const std::string& name) {
    return ByteToStr(static_cast<std::int32_t>(name.size())) + name;
}

struct HooksTest : testing::Test {
    HooksTest() { SetSessionHooks(&features); }
    Rig rig;
    Features features;
};

}  // namespace

TEST_F(HooksTest, SignOnNamesTheClientsSideAndClearsItsCache) {
    auto [client, server] = rig.ConnectTalking();
    client.Feed(Frame(2, 2, Snac(0x17, 2, "00 01 00 09 'Some User' 00 02"_hex)));
    EXPECT_EQ(features.calls, (Calls{"load:", "bag:Some User"}));
    EXPECT_EQ(modSocket::Connection(0)->hasScreenName(), "");  // that is the server's word
}

TEST_F(HooksTest, NamesAreKeptBeforeAndAfterAliases) {
    features.aliases = true;
    auto [client, server] = rig.ConnectTalking();
    server.Feed(Frame(2, 101, Snac(1, 0xF, Named("asdf"))));
    EXPECT_EQ(client.Received(), Frame(2, 101, Snac(1, 0xF, Named("Fred"))));
    EXPECT_EQ(modSocket::Connection(0)->hasScreenName(), "Fred");
    EXPECT_EQ(modSocket::Connection(0)->hasScreenNameOrig(false), "asdf");
    client.Feed(Frame(2, 2, Snac(4, 6, Named("Fred"))));
    EXPECT_EQ(server.Received(), Frame(2, 2, Snac(4, 6, Named("asdf"))));
    // Outgoing messages are logged as the steps hand them over: rewritten, under the name of this side.
    EXPECT_EQ(features.calls.back(), "log:out Fred " + Named("asdf"));
}

TEST_F(HooksTest, MessagesOfBothDirectionsAreLogged) {
    auto [client, server] = rig.SignOn("me");
    features.calls.clear();
    server.Feed(Frame(2, 102, Snac(4, 7, "hi")));
    client.Feed(Frame(2, 2, Snac(4, 6, "ho")));
    EXPECT_EQ(features.calls, (Calls{"log:in me hi", "log:out me ho"}));
}

TEST_F(HooksTest, ProfilesAreRewrittenOnlyWhenAskedFor) {
    auto [client, server] = rig.ConnectTalking();
    const auto reply = Frame(2, 101, Snac(2, 6, "profile"));
    features.wantsHtml = false;
    server.Feed(reply);
    EXPECT_EQ(client.TakeReceived(), reply);
    features.wantsHtml = true;
    server.Feed(Frame(2, 7, Snac(2, 6, "profile")));
    EXPECT_EQ(client.TakeReceived(), Frame(2, 102, "rewritten profile"));
    features.profilePayload = ByteString(65536, 'x');  // no length field can say that
    server.Feed(Frame(2, 7, Snac(2, 6, "profile")));
    EXPECT_EQ(client.TakeReceived(), Frame(2, 103, Snac(2, 6, "profile")));
    EXPECT_EQ(Rig::Reports().size(), 1u);
}

TEST_F(HooksTest, AFailingFeatureCostsAReportAndNotAFrame) {
    features.aliases = true;
    auto [client, server] = rig.ConnectTalking();
    std::int32_t number = 101;
    const struct {
        const char* failing;
        std::int32_t family, subtype;
    } cases[] = {{"replace", 9, 9}, {"log", 4, 7}, {"log", 4, 6}, {"html", 2, 6}};
    for (const auto& c : cases) {
        features.failing = c.failing;
        Rig::Reports().clear();
        const auto payload = Snac(c.family, c.subtype, Named("asdf"));
        server.Feed(Frame(2, 0, payload));
        const bool replaced = std::string("replace") != c.failing;
        EXPECT_EQ(client.TakeReceived(),
                  Frame(2, number++, replaced ? Snac(c.family, c.subtype, Named("Fred")) : payload));
        ASSERT_EQ(Rig::Reports().size(), 1u) << c.failing;
        EXPECT_EQ(Rig::Reports()[0].where, "clsAIMSocket:DataArrival");
    }
}

TEST_F(HooksTest, MalformedSignOnDataAreReportedOnceAndPassedOn) {
    auto [client, server] = rig.ConnectTalking();
    std::int32_t number = 2;
    for (const auto& data : {""_hex, "00"_hex, "00 FF 00"_hex}) {
        Rig::Reports().clear();
        client.Feed(Frame(2, 0, Snac(0x17, 2, data)));
        EXPECT_EQ(server.TakeReceived(), Frame(2, number++, Snac(0x17, 2, data)));
        EXPECT_EQ(Rig::Reports().size(), 1u);
    }
    server.Feed(Frame(2, 0, Snac(1, 0xF, "")));
    EXPECT_EQ(client.TakeReceived(), Frame(2, 101, Snac(1, 0xF, "")));
}

TEST_F(HooksTest, AFrameTooShortForASnacRunsNoHook) {
    auto [client, server] = rig.SignOn("me");
    features.calls.clear();
    server.Feed(Frame(2, 0, Snac(4, 7, "hi")) + Frame(2, 0, "00 04 00 07 00 00 00 00 00"_hex) +
                Frame(2, 0, ""));
    EXPECT_EQ(features.calls.size(), 1u);
    EXPECT_EQ(client.Received().size(), 18u + 15u + 6u);
}

TEST_F(HooksTest, AnInjectedFrameTakesTheNextNumberOfTheClient) {
    auto [client, server] = rig.SignOn("me");
    server.TakeReceived();
    client.Feed(Frame(2, 2, "a") + Frame(2, 3, "b").substr(0, 5));
    modSocket::SetAwayMessage("ME", "gone");
    client.Feed(Frame(2, 3, "b").substr(5));
    EXPECT_EQ(server.Received(), Frame(2, 2, "a") + Frame(2, 3, "away gone") + Frame(2, 4, "b"));
    EXPECT_EQ(client.Received(), "");
}

TEST_F(HooksTest, ACommandForAnUnknownNameGoesToSlotZero) {
    auto [client, server] = rig.SignOn("me");
    server.TakeReceived();
    modSocket::SetAwayMessage("nobody", "gone");
    EXPECT_EQ(server.Received(), Frame(2, 2, "away gone"));
}

TEST_F(HooksTest, ACommandThatCannotBeSentIsReportedAndTakesNoNumber) {
    modSocket::SetAwayMessage("nobody", "");
    EXPECT_EQ(Rig::Reports().size(), 1u) << "an empty table";

    auto [client, server] = rig.ConnectPair();
    modSocket::SetAwayMessage("nobody", "");
    EXPECT_EQ(Rig::Reports().size(), 2u) << "no number known yet";
    client.Feed(Frame(1, 1, "x"));
    features.failing = "away";
    modSocket::SetAwayMessage("nobody", "");
    features.failing.clear();
    modSocket::SetAwayMessage("nobody", ByteString(65535, 'x'));
    EXPECT_EQ(Rig::Reports().size(), 4u) << "cannot be built, too long";
    client.Feed(Frame(1, 1, "y"));
    EXPECT_EQ(server.Received(), Frame(1, 1, "x") + Frame(1, 2, "y"));

    server.Close();
    os::ProcessPendingEvents();
    modSocket::SetAwayMessage("nobody", "");
    EXPECT_EQ(Rig::Reports().size(), 5u) << "closed";
    EXPECT_TRUE(modSocket::Connection(0)->IsClosed());
    for (const auto& report : Rig::Reports()) EXPECT_EQ(report.where, "modSocket:SetAwayMessage");
}

TEST_F(HooksTest, ClosingClearsTheCacheOfTheOriginalName) {
    features.aliases = true;
    auto [client, server] = rig.ConnectTalking();
    server.Feed(Frame(2, 101, Snac(1, 0xF, Named("asdf"))));
    features.calls.clear();
    client.Close();
    os::ProcessPendingEvents();
    EXPECT_EQ(features.calls, Calls{"bag:asdf"});
}
