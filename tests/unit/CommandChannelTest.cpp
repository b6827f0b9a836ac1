#include "features/CommandChannel.h"

#include "features/clsSessionFeatures.h"
#include "features/modAwayIdleProf.h"
#include "tests/unit/Rig.h"

namespace {

using Lines = std::vector<std::string>;

class CommandChannelTest : public testing::Test {
 protected:
    CommandChannelTest() { SetSessionHooks(&features_); }

    clsSessionFeatures features_;
    Rig rig_;
    CommandChannel channel_;
};

}  // namespace

TEST_F(CommandChannelTest, CommandsReachTheNamedSessionOnly) {
    auto first = rig_.SignOn("My Name");
    auto second = rig_.SignOn("Another");
    const struct {
        std::string line;
        ByteString payload;
    } cases[] = {
        {"away another Gone  fishing ", modAwayIdleProf::MakeAwayFlap("Gone  fishing ").Data()},
        {"BACK Another", modAwayIdleProf::MakeAwayFlap("").Data()},
        {"idle ANOTHER 10\r", modAwayIdleProf::MakeIdleFlap(10).Data()},
        {" profile  Another <b>me</b>", modAwayIdleProf::MakeProfileFlap("<b>me</b>").Data()},
        {"profile Another", modAwayIdleProf::MakeProfileFlap("").Data()},
    };
    std::int32_t sequence = 2;
    for (const auto& [line, payload] : cases) {
        EXPECT_EQ(channel_.Execute(line).size(), 1u) << line;
        EXPECT_EQ(second.server.TakeReceived(), Frame(2, sequence++, payload)) << line;
    }
    EXPECT_EQ(first.server.TakeReceived(), "");
}

TEST_F(CommandChannelTest, AllReachesEverySessionThatIsStillThere) {
    auto first = rig_.SignOn("My Name");
    auto second = rig_.SignOn("Another");
    EXPECT_EQ(channel_.Execute("names"), (Lines{"My Name", "Another"}));
    EXPECT_EQ(channel_.Execute("away (all) gone"), (Lines{"Sent for My Name.", "Sent for Another."}));
    const auto payload = modAwayIdleProf::MakeAwayFlap("gone").Data();
    EXPECT_EQ(first.server.TakeReceived(), Frame(2, 2, payload));
    EXPECT_EQ(second.server.TakeReceived(), Frame(2, 2, payload));

    modSocket::Connection(0)->CloseConnection();
    EXPECT_EQ(channel_.Execute("back (ALL)"), (Lines{"Sent for Another."}));
}

TEST_F(CommandChannelTest, WhatCannotBeMeantIsRefusedAndSendsNothing) {
    EXPECT_EQ(channel_.Execute("away Fred gone"), (Lines{"Nobody is signed on."}));
    EXPECT_EQ(channel_.Execute("names"), (Lines{"Nobody is signed on."}));
    auto pair = rig_.SignOn("My Name");
    // An unknown name must not reach the first connection, as the registry alone would have it.
    EXPECT_EQ(channel_.Execute("away Fred gone"),
              (Lines{"\"Fred\" is not signed on. \"names\" lists who is; leave the blanks of a name out."}));
    for (const char* line : {"away", "away myname", "idle myname", "idle myname 1093", "idle myname -1",
                             "idle myname 5x", "idle myname 99999999999", "sing myname"}) {
        EXPECT_EQ(channel_.Execute(line).size(), 1u) << line;
    }
    EXPECT_EQ(channel_.Execute("profile myname " + std::string(70000, 'x')).size(), 1u);
    EXPECT_TRUE(channel_.Execute("").empty());
    EXPECT_EQ(pair.server.TakeReceived(), "");
    EXPECT_TRUE(rig_.Reports().empty());
}

TEST_F(CommandChannelTest, EndsOnlyOnQuit) {
    EXPECT_FALSE(channel_.Execute("help").empty());
    EXPECT_FALSE(channel_.QuitWanted());
    channel_.Execute("quit");
    EXPECT_TRUE(channel_.QuitWanted());
}
