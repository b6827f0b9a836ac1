#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "core/clsHeaderFLAP.h"
#include "core/clsHeaderSNAC.h"
#include "core/clsTLVChain.h"
#include "tests/unit/Hex.h"

TEST(clsHeaderFLAP, ReadsAndWritesTheSameBytes) {
    const auto bytes = "2A 02 12 34 00 03 'abc'"_hex;
    clsHeaderFLAP flap;
    flap.ParseData(bytes);
    EXPECT_EQ(flap.ChannelID(), 2);
    EXPECT_EQ(flap.SeqNum(), 0x1234);
    EXPECT_EQ(flap.DataLen(), 3);
    EXPECT_EQ(flap.Data(), "abc");
    EXPECT_FALSE(flap.isIncomplete());
    EXPECT_EQ(flap.MessageLen(), 9);
    EXPECT_EQ(flap.toString(), bytes);
}

TEST(clsHeaderFLAP, TellsHowMuchOfAFrameIsThere) {
    const struct {
        ByteString bytes;
        bool incomplete;
    } cases[] = {
        {"2A 02 12"_hex, true},
        {"2A 02 12 34 00"_hex, true},
        {"2A 02 12 34 00 03 'ab'"_hex, true},
        {"2A 05 00 01 00 00"_hex, false},
        {"FF 02 12 34 00 01 'a'"_hex, false},
        {"", true},
    };
    for (const auto& c : cases) {
        clsHeaderFLAP flap;
        flap.ParseData(c.bytes);
        EXPECT_EQ(flap.isIncomplete(), c.incomplete) << HexDump(c.bytes);
    }
}

TEST(clsHeaderFLAP, FourBytesLeaveCompletenessAndLengthOfTheFrameBefore) {
    clsHeaderFLAP flap;
    flap.ParseData("2A 04 00 07"_hex);
    EXPECT_TRUE(flap.isIncomplete());
    EXPECT_EQ(flap.MessageLen(), 0);

    flap.ParseData("2A 02 00 06 00 02 'hi'"_hex);
    flap.ParseData("2A 04 00 07"_hex);
    EXPECT_FALSE(flap.isIncomplete());
    EXPECT_EQ(flap.MessageLen(), 8);
    EXPECT_EQ(flap.toString(), "2A 04 00 07 00 00"_hex);
}

TEST(clsHeaderFLAP, ALargestFrameIsNoOverflow) {
    clsHeaderFLAP flap;
    flap.ParseData("2A 02 00 01 FF FF"_hex + ByteString(65535, 'x'));
    EXPECT_FALSE(flap.isIncomplete());
    EXPECT_EQ(flap.MessageLen(), 65541);
}

TEST(clsHeaderSNAC, KeepsTheRequestIdentifier) {
    const auto bytes = "00 04 00 06 00 00 00 00 00 2A 'xyz'"_hex;
    clsHeaderSNAC snac;
    snac.ParseData(bytes);
    EXPECT_EQ(snac.FamID(), 4);
    EXPECT_EQ(snac.SubId(), 6);
    EXPECT_EQ(snac.Data(), "xyz");
    EXPECT_EQ(snac.toString(), bytes);

    snac.Create(2, 4, 0, 0, "d");
    EXPECT_EQ(snac.toString(), "00 02 00 04 00 00 00 00 00 00 'd'"_hex);
}

TEST(clsHeaderSNAC, AHeaderCutAnywhereIsIncomplete) {
    const auto bytes = "00 04 00 06 00 00 00 00 00 2A"_hex;
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        clsHeaderSNAC snac;
        snac.ParseData(bytes.substr(0, length));
        EXPECT_TRUE(snac.isIncomplete()) << length;
    }
}

TEST(clsTLVChain, ReadsAndWritesTheSameBytes) {
    const auto bytes = "00 01 00 02 'ab' 00 03 00 00"_hex;
    clsTLVChain chain;
    EXPECT_EQ(chain.toString(), "");
    chain.CreateFromString(bytes, 1, bytes.size(), 999);
    ASSERT_EQ(chain.Records().size(), 2u);
    EXPECT_EQ(chain.toString(), bytes);
    EXPECT_EQ(chain.GetTLV(1)->Value(), "ab");
    EXPECT_EQ(chain.GetTLV(9), nullptr);
}

TEST(clsTLVChain, FindsTheFirstOrTheLastOfAType) {
    const auto bytes = "00 05 00 01 'a' 00 05 00 01 'b'"_hex;
    clsTLVChain chain;
    chain.CreateFromString(bytes, 1, bytes.size(), 999);
    EXPECT_EQ(chain.GetTLV(5)->Value(), "a");
    EXPECT_EQ(chain.GetTLVRev(5)->Value(), "b");
}

TEST(clsTLVChain, StopsAtItsLimitsAndTakesACutValue) {
    const auto bytes = "00 01 00 01 'a' 00 02 00 01 'b' 00 03 00 09 'cut'"_hex;
    const struct {
        std::size_t end, maxTlvs, expected;
    } cases[] = {
        {bytes.size(), 2, 2}, {5, 999, 1}, {6, 999, 2}, {bytes.size(), 999, 3}, {bytes.size(), 0, 0}};
    for (const auto& c : cases) {
        clsTLVChain chain;
        chain.CreateFromString(bytes, 1, c.end, c.maxTlvs);
        EXPECT_EQ(chain.Records().size(), c.expected) << c.end << " " << c.maxTlvs;
    }
    clsTLVChain chain;
    chain.CreateFromString(bytes, 1, bytes.size(), 999);
    EXPECT_EQ(chain.GetTLV(3)->Value(), "cut");
}

TEST(clsTLVChain, RefusesAHeaderCutByTheEndAndAValueTooLongToWrite) {
    clsTLVChain chain;
    EXPECT_THROW(chain.CreateFromString("00 01 00"_hex, 1, 3, 999), RuntimeError);
    clsHeaderTLV tlv;
    tlv.Create(1, ByteString(65536, 'x'));
    chain.Add(tlv);
    EXPECT_THROW(chain.toString(), RuntimeError);
}
