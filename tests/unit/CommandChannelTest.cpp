#include "features/CommandChannel.h"

#include "features/clsSessionFeatures.h"
#include "features/modAwayIdleProf.h"
#include "tests/unit/Rig.h"

namespace {

using namespace modAwayIdleProf;
using Lines = std::vector<std::string>;

struct CommandChannelTest : testing::Test {
    CommandChannelTest() { SetSessionHooks(&features_); }

    clsSessionFeatures features_;
    Rig rig_;
    CommandChannel channel_;
};

}  // namespace

TEST_F(CommandChannelTest, CommandsReachWhomTheyNameAmongThoseWhoAreThere) {
    auto first = rig_.SignOn("My Name");
    auto second = rig_.SignOn("Another");
    EXPECT_EQ(channel_.Execute("names"), (Lines{"My Name", "Another"}));
    const struct {
        std::string line;
        clsHeaderFLAP flap;
    } cases[] = {
        {"away another Gone  fishing ", MakeAwayFlap("Gone  fishing ")},
        {"BACK Another", MakeAwayFlap("")},
        {"idle ANOTHER 10\r", MakeIdleFlap(10)},
        {" profile  Another <b>me</b>", MakeProfileFlap("<b>me</b>")},
        {"profile Another", MakeProfileFlap("")},
    };
    std::int32_t sequence = 2;
    for (const auto& [line, flap] : cases) {
        EXPECT_EQ(channel_.Execute(line).size(), 1u) << line;
        EXPECT_EQ(second.server.TakeReceived(), Frame(2, sequence++, flap.Data())) << line;
    }
    EXPECT_EQ(channel_.Execute("away (all) gone"), (Lines{"Sent for My Name.", "Sent for Another."}));
    EXPECT_EQ(first.server.TakeReceived(), Frame(2, 2, MakeAwayFlap("gone").Data()));
    modSocket::Connection(0)->CloseConnection();
    EXPECT_EQ(channel_.Execute("back (ALL)"), (Lines{"Sent for Another."}));
}

TEST_F(CommandChannelTest, WhatCannotBeMeantIsRefusedAndSendsNothing) {
    for (const char* line : {"away Fred gone", "names"})
        EXPECT_EQ(channel_.Execute(line), (Lines{"Nobody is signed on."}));
    auto pair = rig_.SignOn("My Name");
    // An unknown name must not reach the first connection, as the registry alone would have it.
    EXPECT_EQ(channel_.Execute("away Fred gone"),
              (Lines{"\"Fred\" is not signed on. \"names\" lists who is; leave the blanks of a name out."}));
    for (const auto& line :
         Lines{"away", "away myname", "idle myname", "idle myname 1093", "idle myname -1", "idle myname 5x",
               "idle myname 99999999999", "sing myname", "profile myname " + std::string(70000, 'x')})
        EXPECT_EQ(channel_.Execute(line).size(), 1u) << line.substr(0, 30);
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
