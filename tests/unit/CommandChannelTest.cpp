#include "features/CommandChannel.h"

#include "features/clsSessionFeatures.h"
#include "tests/unit/Rig.h"

namespace {

using Lines = std::vector<std::string>;

struct CommandChannelTest : testing::Test {
    CommandChannelTest() { SetSessionHooks(&features_); }

    clsSessionFeatures features_;
    Rig rig_;
    CommandChannel channel_;
};

}  // namespace

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
