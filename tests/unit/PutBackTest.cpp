// Buddy lists that are kept and put back, between a fake client and a fake server that keeps lists.
#include "app/relay/CommandChannel.h"
#include "base/RuntimeError.h"
#include "features/SnacBytes.h"
#include "features/buddies/BuddyFiles.h"
#include "features/buddies/PutBack.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/Rig.h"

namespace {

const std::string kFolder = "/program/buddies/";

struct PutBackTest : testing::Test, NumberedSession {
    PutBackTest() {
        os::fake::timeOfDay.local = {2004, 5, 6, 13, 5, 9};
        SignOn("M e");
        ServerSends(Snac(1, 3, "00 01 00 03 00 13"_hex));
        pair->client.TakeReceived();
        toClient++;
    }
    ~PutBackTest() override {
        End(pair->server);
        ThePutBack().Cancel();
    }

    static ByteString ListFrame(const BuddyList& list, std::uint32_t request, bool hasMore = false) {
        ByteString data = ByteToStr(0) + Word(list.size());
        for (const auto& item : list) data += item.ToBytes();
        auto payload = SnacPayload(0x13, 6, request, data + DWordToStr(1'000'000));
        if (hasMore) payload[5] = '\1';
        return payload;
    }
    static std::size_t KeptCount() { return KeptLists().size(); }
};

const BuddyItem kRoot{"", 0, 0, BuddyItem::Group, Tlv(0xC8, "00 01"_hex)};
const BuddyItem kFriends{"Friends", 1, 0, BuddyItem::Group, Tlv(0xC8, "00 17"_hex)};
const BuddyItem kFred{"Fred", 1, 0x17, BuddyItem::Buddy, ""};

}  // namespace

TEST_F(PutBackTest, EachListThatDiffersIsKeptUpToFifty) {
    os::fake::PutFile("/program/repl.dat", "fred\r\nFreddy\r\n");
    pair->server.Feed(Frame(2, serverNumber++, ListFrame({kRoot, kFriends}, 5, true)));
    EXPECT_EQ(KeptCount(), 0u) << "more is to come";
    ServerSends(ListFrame({kFred}, 5));
    EXPECT_EQ(os::fake::FileText(kFolder + "me 2004-05-06-130509.txt"),
              "# Buddy list of M e\ngroup \"\" group 0 raw 00c800020001\ngroup \"Friends\" group 1 raw "
              "00c800020017\nbuddy \"Fred\" group 1 item 23\n");
    const auto first = ToClient(ListFrame({kRoot, kFriends}, 5, true));
    EXPECT_EQ(pair->client.TakeReceived(), first + ToClient(ListFrame({kFred}, 5)));
    os::fake::timeOfDay.local = {2004, 5, 7, 0, 0, 0};
    ServerSends(ListFrame({kFred, kFriends, kRoot}, 6));
    EXPECT_EQ(KeptCount(), 1u) << "in another order";
    ServerSends(ListFrame({kFred}, 7, true));
    ServerSends(Snac(0x13, 6, "00 00 09"_hex));
    EXPECT_EQ(KeptCount(), 1u) << "half a list is none";
    for (int i = 0; i < 60; ++i) {
        os::fake::timeOfDay.local = {2004, 5, 8, 1, i, 0};
        ServerSends(ListFrame({kRoot, {"b" + std::to_string(i), 1, 1, 0, ""}}, 8));
    }
    EXPECT_EQ(KeptCount(), kMaxKeptLists);
    EXPECT_EQ(KeptLists().back().date, "2004-05-08-011000");
    EXPECT_EQ(rig.Reports().size(), 1u) << "the damaged one";
}

TEST_F(PutBackTest, WhatAnOlderClientTellsIsKeptInTheSameForm) {
    ClientSends(Snac(3, 4, Named("Fred") + Named("tom")));
    ClientSends(Snac(3, 4, Named("ada") + Named("f r e d")));
    ClientSends(Snac(3, 5, Named("TOM")));
    os::fake::AdvanceClock(6000);
    EXPECT_EQ(os::fake::FileText(kFolder + "me 2004-05-06-130509.txt"),
              "# Buddy list of M e\ngroup \"\" group 0 raw 00c800020001\ngroup \"Buddies\" group 1 raw "
              "00c8000400010002\nbuddy \"Fred\" group 1 item 1\nbuddy \"ada\" group 1 item 2\n");
}

TEST_F(PutBackTest, OnlyWhatIsMissingIsAddedByteForByteAtTheRateOfTheAnswers) {
    os::fake::PutFile(
        kFolder + "old 2003-01-01-000000.txt",
        TextOf({kRoot, kFriends, kFred, {"ada", 1, 0x18, 0, Tlv(0x131, "A")}, {"eve", 0, 9, 3, ""}},
               "of another name"));
    CommandChannel commands;
    EXPECT_EQ(commands.Execute("buddies put-back old 2003-01-01-000000 me"),
              (std::vector<std::string>{"The server is asked for the list that it has."}));
    const std::uint32_t ask = RequestIdOf(pair->server.TakeReceived().substr(6));
    ServerSends(ListFrame({kRoot, kFriends}, ask, true));
    ServerSends(ListFrame({kFred}, ask));
    EXPECT_EQ(pair->client.TakeReceived(), "") << "the client has not asked";
    EXPECT_EQ(commands.News(), (std::vector<std::string>{"+ ada (Friends)", "+ deny eve",
                                                         "2 items will be added; nothing is deleted."}));
    toServer++;
    os::fake::AdvanceClock(200);
    const auto ada = "00 03 'ada' 00 01 00 01 00 00 00 05 01 31 00 01 'A'"_hex;
    const auto eve = "00 03 'eve' 00 00 00 02 00 03 00 00"_hex;
    const auto beginning = ToServer(SnacPayload(0x13, 0x11, ask + 1));
    EXPECT_EQ(pair->server.TakeReceived(), beginning + ToServer(SnacPayload(0x13, 8, ask + 2, ada + eve)));
    os::fake::AdvanceClock(5000);
    EXPECT_EQ(pair->server.TakeReceived(), "") << "not before the answer";
    ServerSends(SnacPayload(0x13, 0xE, ask + 2, "00 00 00 0C"_hex));
    os::fake::AdvanceClock(200);
    EXPECT_EQ(pair->server.TakeReceived(),
              ToServer(SnacPayload(0x13, 9, ask + 3,
                                   "00 07 'Friends' 00 01 00 00 00 01 00 08 00 C8 00 04 00 17 00 01"_hex)));
    ServerSends(SnacPayload(0x13, 0xE, ask + 3, "00 00"_hex));
    os::fake::AdvanceClock(200);
    EXPECT_EQ(pair->server.TakeReceived(), ToServer(SnacPayload(0x13, 0x12, ask + 4)));
    EXPECT_EQ(pair->client.TakeReceived(), "");
    EXPECT_EQ(ThePutBack().Sentence(), "Added 1 item; the server refused 1 item. Sign on again to see them.");
    EXPECT_TRUE(rig.Reports().empty());
}

TEST_F(PutBackTest, AnEndASilenceAndARefusalAreTold) {
    const auto begin = [] { return ThePutBack().Begin("ME", {kFriends, kFred}); };
    ASSERT_TRUE(begin());
    EXPECT_FALSE(begin()) << "one at a time";
    os::fake::AdvanceClock(31'000);
    EXPECT_EQ(ThePutBack().Sentence(), "The server does not answer.");
    pair->server.TakeReceived();
    ASSERT_TRUE(begin());
    ServerSends(SnacPayload(0x13, 1, RequestIdOf(pair->server.TakeReceived().substr(6)), "00 01"_hex));
    EXPECT_EQ(ThePutBack().Sentence(), "The server does not take buddy lists.");
    ASSERT_TRUE(begin());
    End(pair->server);
    EXPECT_EQ(ThePutBack().Sentence(), "The connection has ended.");
    EXPECT_FALSE(begin());
    EXPECT_EQ(pair->client.TakeReceived(), "");
}
