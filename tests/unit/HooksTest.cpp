// What the relay asks of the session features, and that no failure of theirs costs a frame.
#include "base/RuntimeError.h"
#include "tests/unit/Rig.h"

namespace {

using Calls = std::vector<std::string>;

// Features that note what they are asked, and fail where they are told to.
struct Features final : SessionHooks {
    Calls calls;
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

TEST_F(HooksTest, NamesAreKeptBeforeAndAfterAliasesUntilTheEndClearsTheCache) {
    features.aliases = true;
    auto [client, server] = rig.ConnectTalking();
    server.Feed(Frame(2, 101, Snac(1, 0xF, Named("asdf"))));
    EXPECT_EQ(client.Received(), Frame(2, 101, Snac(1, 0xF, Named("Fred"))));
    EXPECT_EQ(modSocket::Connection(0)->hasScreenName(), "Fred");
    EXPECT_EQ(modSocket::Connection(0)->hasScreenNameOrig(false), "asdf");
    End(client);
    EXPECT_EQ(features.calls.back(), "bag:asdf");
}

TEST_F(HooksTest, MessagesAreLoggedAsTheyGoOnUnderTheNameOfTheirSide) {
    features.aliases = true;
    auto [client, server] = rig.SignOn("me");
    server.TakeReceived();
    server.Feed(Frame(2, 102, Snac(4, 7, Named("asdf"))));
    EXPECT_EQ(features.calls.back(), "log:in me " + Named("Fred"));
    client.Feed(Frame(2, 2, Snac(4, 6, Named("Fred"))));
    EXPECT_EQ(features.calls.back(), "log:out me " + Named("asdf"));
    EXPECT_EQ(server.Received(), Frame(2, 2, Snac(4, 6, Named("asdf"))));
}

TEST_F(HooksTest, ProfilesAreRewrittenWhenAskedForAndWhenTheyFitAFrame) {
    auto [client, server] = rig.ConnectTalking();
    const auto profile = Snac(2, 6, "profile");
    const struct {
        bool wanted;
        ByteString rewritten, arrived;
    } cases[] = {
        {false, "rewritten", profile},
        {true, "rewritten", "rewritten"},
        {true, ByteString(65536, 'x'), profile},  // no length field can say that
    };
    std::int32_t number = 101;
    for (const auto& [wanted, rewritten, arrived] : cases) {
        features.wantsHtml = wanted;
        features.profilePayload = rewritten;
        server.Feed(Frame(2, 7, profile));
        EXPECT_EQ(client.TakeReceived(), Frame(2, number++, arrived));
    }
    EXPECT_EQ(Rig::Reports().size(), 1u);
}

TEST_F(HooksTest, AFailingFeatureCostsAReportAndNotAFrame) {
    features.aliases = true;
    auto [client, server] = rig.ConnectTalking();
    const struct {
        const char* failing;
        std::int32_t family, subtype;
        const char* name;  // as it arrives
    } cases[] = {
        {"replace", 9, 9, "asdf"}, {"log", 4, 7, "Fred"}, {"log", 4, 6, "Fred"}, {"html", 2, 6, "Fred"}};
    std::int32_t number = 101;
    for (const auto& [failing, family, subtype, name] : cases) {
        features.failing = failing;
        Rig::Reports().clear();
        server.Feed(Frame(2, 0, Snac(family, subtype, Named("asdf"))));
        EXPECT_EQ(client.TakeReceived(), Frame(2, number++, Snac(family, subtype, Named(name))));
        ASSERT_EQ(Rig::Reports().size(), 1u) << failing;
        EXPECT_EQ(Rig::Reports()[0].where, "clsAIMSocket:DataArrival");
    }
}

TEST_F(HooksTest, MalformedSignOnDataAreReportedOnce) {
    auto [client, server] = rig.ConnectTalking();
    for (const auto& data : {""_hex, "00"_hex, "00 FF 00"_hex}) {
        Rig::Reports().clear();
        client.Feed(Frame(2, 0, Snac(0x17, 2, data)));
        EXPECT_EQ(Rig::Reports().size(), 1u) << HexDump(data);
    }
}

TEST_F(HooksTest, AFrameTooShortForASnacRunsNoHook) {
    auto [client, server] = rig.SignOn("me");
    features.calls.clear();
    server.Feed(Frame(2, 0, Snac(4, 7, "hi")) + Frame(2, 0, "00 04 00 07 00 00 00 00 00"_hex) +
                Frame(2, 0, ""));
    EXPECT_EQ(features.calls.size(), 1u);
    EXPECT_EQ(client.Received().size(), 18u + 15u + 6u);
}

TEST_F(HooksTest, AnInjectedFrameTakesTheNextNumberOfTheClientAndIsNotShownToIt) {
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
    rig.SignOn("other");
    server.TakeReceived();
    modSocket::SetAwayMessage("nobody", "gone");
    EXPECT_EQ(server.Received(), Frame(2, 2, "away gone"));
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
    features.failing = "away";
    expectReport("cannot be built");
    features.failing.clear();
    expectReport("too long", ByteString(65535, 'x'));
    client.Feed(Frame(1, 1, "y"));
    EXPECT_EQ(server.Received(), Frame(1, 1, "x") + Frame(1, 2, "y"));
    End(server);
    expectReport("closed");
    EXPECT_TRUE(modSocket::Connection(0)->IsClosed());
}
