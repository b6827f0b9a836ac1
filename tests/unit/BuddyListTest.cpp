#include "features/buddies/BuddyList.h"

#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "tests/unit/Messages.h"

namespace {

const BuddyList kSome = {
    {"", 0, 0, BuddyItem::Group, Tlv(0xC8, HexToBytes("00 01 00 02"))},
    {"Friends", 1, 0, BuddyItem::Group, Tlv(0xC8, HexToBytes("00 17"))},
    {"Work", 2, 0, BuddyItem::Group, Tlv(0xC8, HexToBytes("00 18"))},
    {"Fred", 1, 0x17, BuddyItem::Buddy, Tlv(0x131, "Freddy \"the\" \\ one\x01")},
    {"ada", 2, 0x18, BuddyItem::Buddy, "no TLVs"},
    {"stranger", 0, 0x19, BuddyItem::Deny, ""},
    {"friend", 0, 0x1A, BuddyItem::Permit, ""},
    {"", 0, 0x1B, 4, Tlv(0xCA, "\x04")},
};

ByteString DataOf(const BuddyList& list) {
    auto data = ByteToStr(0) + WordToStr(static_cast<std::int32_t>(list.size()));
    for (const auto& item : list) data += item.ToBytes();
    return data + DWordToStr(1'000'000);
}

}  // namespace

TEST(BuddyList, AnItemStandsOnTheWireAsServersExpectIt) {
    EXPECT_EQ(HexDump(BuddyItem{"Fred", 1, 0x17, 0, Tlv(0x131, "F")}.ToBytes()),
              "00 04 46 72 65 64 00 01 00 17 00 00 00 05 01 31 00 01 46 ");
}

TEST(BuddyList, GoesThroughTheWireAndThroughTextWhole) {
    BuddyList list;
    AppendItems(list, DataOf(kSome));
    AppendItems(list, DataOf({{"more", 1, 0x20, 0, ""}}));  // a list that comes in two frames
    auto both = kSome;
    both.push_back({"more", 1, 0x20, 0, ""});
    EXPECT_EQ(list, both);
    EXPECT_EQ(ListFromText(TextOf(kSome, "Walter, 2026-05-06")), kSome);
    EXPECT_EQ(TextOf({kSome[3], kSome[5]}, "x"),
              "# x\nbuddy \"Fred\" group 1 item 23 alias \"Freddy \\\"the\\\" \\\\ one\\x01\" raw "
              "0131001346726564647920227468652220"
              "5c206f6e6501\ndeny \"stranger\" group 0 item 25\n");

    const auto data = DataOf(kSome);
    for (std::size_t size = 0; size < data.size() - 4; ++size) {
        EXPECT_THROW(AppendItems(list, data.substr(0, size)), RuntimeError) << size;
        EXPECT_EQ(list.size(), both.size());
    }
    for (const char* line : {"buddy", "buddy Fred", "buddy \"Fred", "budy \"Fred\"", "buddy \"Fred\" group",
                             "buddy \"Fred\" group 65536", "buddy \"Fred\" raw 0g", "buddy \"Fred\" raw 0",
                             "buddy \"Fred\"group 1", "kind- \"x\"", "buddy \"\\x0\""}) {
        EXPECT_THROW(ListFromText(line), RuntimeError) << line;
    }
}

TEST(BuddyList, WhatIsMissingIsAddedUnderFreeNumbersAndNothingElse) {
    const BuddyList present = {
        {"", 0, 0, BuddyItem::Group, Tlv(0xC8, HexToBytes("00 01"))},
        {"work", 1, 0, BuddyItem::Group, Tlv(0xC8, HexToBytes("00 01")) + Tlv(0x99, "kept")},
        {"F R E D", 1, 1, BuddyItem::Buddy, ""},
    };
    auto missing = Missing(kSome, present);
    const auto changed = Regrouped(present, missing);
    const BuddyList expected = {
        {"Friends", 2, 0, BuddyItem::Group, Tlv(0xC8, "")},
        {"ada", 1, 2, BuddyItem::Buddy, "no TLVs"},
        {"stranger", 0, 3, BuddyItem::Deny, ""},
        {"friend", 0, 4, BuddyItem::Permit, ""},
        {"", 0, 5, 4, Tlv(0xCA, "\x04")},
    };
    EXPECT_EQ(missing, expected);
    const BuddyList regrouped = {
        {"", 0, 0, BuddyItem::Group, Tlv(0xC8, HexToBytes("00 01 00 02"))},
        {"work", 1, 0, BuddyItem::Group, Tlv(0x99, "kept") + Tlv(0xC8, HexToBytes("00 01 00 02"))},
    };
    EXPECT_EQ(changed, regrouped);
    EXPECT_TRUE(Missing(kSome, kSome).empty());
}

TEST(BuddyList, DifferencesAreWhatAUserWouldSee) {
    auto now = kSome;
    now[0].attributes = "";      // order only
    now[3].attributes = "";      // the alias
    now.erase(now.begin() + 5);  // no longer denied
    now.push_back({"New", 2, 9, BuddyItem::Buddy, ""});
    EXPECT_EQ(Differences(kSome, now),
              (std::vector<std::string>{"~ Fred (Friends)", "+ New (Work)", "- deny stranger"}));
    now = kSome;
    now.push_back({"Fred", 2, 0x30, BuddyItem::Buddy, ""});  // in two groups
    EXPECT_TRUE(Differences(now, now).empty());
}

TEST(BuddyList, OtherProgramsGetTheirForms) {
    const BuddyList list = {{"A<B", 1, 0, BuddyItem::Group, ""}, {"x \"y\"", 1, 1, 0, Tlv(0x131, "a,&")}};
    EXPECT_EQ(CsvOf(list), "group,name,alias\r\n\"A<B\",\"x \"\"y\"\"\",\"a,&\"\r\n");
    EXPECT_EQ(HtmlOf(list, "T"),
              "<html><head><title>T</title></head><body><h1>T</h1>\r\n<h2>A&lt;B</h2><ul>\r\n"
              "<li>x \"y\" (a,&amp;)</li>\r\n</ul></body></html>\r\n");
}
