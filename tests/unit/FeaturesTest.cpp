// What a session feature can do to a connection, and that one that fails costs no frame.
#include "base/RuntimeError.h"
#include "core/LearnNames.h"
#include "tests/unit/Rig.h"

namespace {

// A feature that does what the test says, and notes what it is told.
struct Script {
    std::function<Verdict(Session&, FrameView&)> frame;
    std::string told = {};
};

FeatureEntry Scripted(Script& script, std::vector<Interest> interests, Made made = Made::WithFirstFrame) {
    struct Feature final : SessionFeature {
        Feature(Session& session, Script& script) : session_(session), script_(script) {}
        Verdict Frame(FrameView& frame) override { return script_.frame(session_, frame); }
        void Connected() override { script_.told += "connected "; }
        void SignedOn() override { script_.told += session_.Names(Direction::ToServer).name + " "; }
        void Ended(const SessionEnd&) override { script_.told += "ended"; }
        Session& session_;
        Script& script_;
    };
    return {std::move(interests),
            [&script](Session& session) { return std::make_unique<Feature>(session, script); }, made};
}

Verdict Fail() {
    throw RuntimeError(5, "on purpose");
}

}  // namespace

TEST(Features, SeeWhatTheyWantAndNothingElse) {
    const struct {
        const char* what;
        std::vector<Interest> interests;
        std::string seen;  // of the frames below
    } cases[] = {
        {"nothing", {}, ""},
        {"every frame", {Interest{}}, "abcdef"},
        {"one way", {{kAny, kAny, Direction::ToClient}}, "bdf"},
        {"a family", {{4, kAny}}, "abc"},
        {"one SNAC", {{4, 7}}, "ab"},
        {"one SNAC one way", {{4, 7, Direction::ToServer}}, "a"},
        {"several, one of them twice", {{4, 7}, {4, kAny, Direction::ToClient}, {0x10, 2}}, "abd"},
    };
    for (const auto& [what, interests, wanted] : cases) {
        std::string seen;
        Script script{[&](Session&, FrameView& frame) {
            seen += frame.Payload().back();
            return Verdict::Pass;
        }};
        Rig rig({Scripted(script, interests)});
        auto [client, server] = rig.ConnectPair();
        client.Feed(Frame(2, 1, Snac(4, 7, "a")));
        server.Feed(Frame(2, 1, Snac(4, 7, "b")));
        client.Feed(Frame(2, 2, Snac(4, 6, "c")));
        server.Feed(Frame(2, 2, Snac(0x10, 2, "d")));
        client.Feed(Frame(2, 3, Snac(0x104, 7, "e")));
        server.Feed(Frame(2, 3, "\4\7 short f"));  // no SNAC
        EXPECT_EQ(seen, wanted) << what;
    }
}

TEST(Features, MayReplaceDropAndSendEitherWayWithoutAGapInTheNumbers) {
    Script script{[](Session& session, FrameView& frame) {
        switch (frame.Payload().back()) {
            case 'd':
                return Verdict::Drop;
            case 'r':
                frame.Replace(Snac(4, 9, "replaced"));
                return Verdict::Pass;
            case 'b':  // both ways, the answer on a channel of its own
                session.Send(Direction::ToServer, Snac(4, 9, "sent"));
                session.Send(Direction::ToClient, "answer", 5);
                return Verdict::Pass;
        }
        return Fail();
    }};
    Rig rig({Scripted(script, {{4, 7, Direction::ToServer}})});
    auto [client, server] = rig.ConnectTalking();
    client.Feed(Frame(2, 2, Snac(4, 7, "d")) + Frame(2, 3, Snac(4, 7, "r")) + Frame(2, 4, Snac(4, 7, "x")) +
                Frame(2, 5, Snac(4, 7, "b")) + Frame(2, 6, "end"));
    EXPECT_EQ(server.Received(), Frame(2, 2, Snac(4, 9, "replaced")) + Frame(2, 3, Snac(4, 7, "x")) +
                                     Frame(2, 4, Snac(4, 9, "sent")) + Frame(2, 5, Snac(4, 7, "b")) +
                                     Frame(2, 6, "end"));
    server.Feed(Frame(2, 101, "next"));
    EXPECT_EQ(client.Received(), Frame(5, 101, "answer") + Frame(2, 102, "next"));
    EXPECT_EQ(Rig::Reports().size(), 1u);
}

TEST(Features, OneThatFailsLeavesTheFrameAsItWasAndTheOthersAtWork) {
    std::vector<Script> scripts(4);
    scripts[0].frame = [](Session&, FrameView& frame) {
        frame.Replace(Snac(4, 7, "first"));
        return Verdict::Pass;
    };
    scripts[1].frame = [](Session&, FrameView& frame) {
        frame.Replace("spoilt");
        return Fail();
    };
    scripts[2].frame = [](Session&, FrameView& frame) {
        frame.Replace(ByteString(65'536, 'x'));
        return Verdict::Drop;
    };
    // Wants what the frame was made into, not what it was.
    scripts[3].frame = [](Session&, FrameView& frame) {
        EXPECT_EQ(frame.Original(), Snac(4, 6, "it"));
        frame.Replace(ByteString(frame.Payload()) + ", last");
        return Verdict::Pass;
    };
    Rig rig({Scripted(scripts[0], {{4, 6}}), Scripted(scripts[1], {Interest{}}),
             Scripted(scripts[2], {{4, 7}}), Scripted(scripts[3], {{4, 7}})});
    auto [client, server] = rig.ConnectPair();
    client.Feed(Frame(2, 1, Snac(4, 6, "it")));
    EXPECT_EQ(server.Received(), Frame(2, 1, Snac(4, 7, "first, last")));
    EXPECT_EQ(Rig::Reports().size(), 2u);
}

TEST(Features, AreToldOfConnectSignOnAndEndOnce) {
    Script script, late, never;
    late.frame = never.frame = [](Session&, FrameView&) { return Verdict::Pass; };
    Rig rig({LearnNames(), Scripted(script, {}, Made::AtOnce), Scripted(late, {{1, 0xF}}),
             Scripted(never, {{1, 0x10}})});
    auto [client, server] = rig.SignOn("Walter");
    server.Feed(Frame(2, 102, Snac(1, 0xF, Named("walter"))));
    EXPECT_EQ(script.told, "connected Walter ");
    End(server);
    EXPECT_EQ(script.told, "connected Walter ended");
    EXPECT_EQ(late.told, "Walter ended");
    EXPECT_EQ(never.told, "");
}
