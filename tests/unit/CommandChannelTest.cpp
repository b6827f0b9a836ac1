#include "app/relay/CommandChannel.h"

#include "features/modAwayIdleProf.h"
#include "features/waiting/WaitingMessages.h"
#include "tests/unit/Rig.h"

namespace {

using Lines = std::vector<std::string>;

struct CommandChannelTest : testing::Test {
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

TEST_F(CommandChannelTest, EverybodyMeansEverybodyAndANameItsOwn) {
    auto first = rig_.SignOn("My Name"), second = rig_.SignOn("tom");
    const auto away = [](const std::string& text) { return modAwayIdleProf::MakeAwayFlap(text).Data(); };
    EXPECT_EQ(channel_.Execute("names"), (Lines{"My Name", "tom"}));
    EXPECT_EQ(channel_.Execute("away (all) out to lunch"), (Lines{"Sent for My Name.", "Sent for tom."}));
    EXPECT_EQ(channel_.Execute("back tom"), (Lines{"Sent for tom."}));
    EXPECT_EQ(first.server.TakeReceived(), Frame(2, 2, away("out to lunch")));
    EXPECT_EQ(second.server.TakeReceived(), Frame(2, 2, away("out to lunch")) + Frame(2, 3, away("")));
}

TEST_F(CommandChannelTest, EndsOnlyOnQuit) {
    EXPECT_FALSE(channel_.Execute("help").empty());
    EXPECT_FALSE(channel_.QuitWanted());
    channel_.Execute("quit");
    EXPECT_TRUE(channel_.QuitWanted());
}

TEST_F(CommandChannelTest, MessagesThatWaitAreListedAndDropped) {
    TheWaitingMessages().Forget();
    EXPECT_EQ(channel_.Execute("waiting"), (Lines{"No message waits."}));
    const auto number =
        TheWaitingMessages().Keep({.since = 1'000'000'000,
                                   .tried = 2,
                                   .from = "me",
                                   .to = "tom1",
                                   .shownTo = "Tom",
                                   .data = OutgoingData("tom1", Tlv(2, MessageData("<B>hi</B>")))});
    EXPECT_EQ(channel_.Execute("waiting"), (Lines{"1: me to Tom, 2001-09-09 01:46:40, tried 2: hi"}));
    for (const char* line : {"waiting drop", "waiting drop 2", "waiting drop x", "waiting for"})
        EXPECT_EQ(channel_.Execute(line).size(), 1u) << line;
    EXPECT_NE(TheWaitingMessages().Find(*number), nullptr);
    EXPECT_EQ(channel_.Execute("waiting drop 1"), (Lines{"Deleted."}));
    EXPECT_TRUE(TheWaitingMessages().All().empty());
}
