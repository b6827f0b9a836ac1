// The records by themselves; what they read and write in whole frames is in the tests of those who use them.
#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "core/clsHeaderFLAP.h"
#include "core/clsHeaderSNAC.h"
#include "core/clsTLVChain.h"
#include "tests/unit/Messages.h"

namespace {

clsTLVChain Chain(const ByteString& bytes, std::size_t end, std::size_t most = 999) {
    clsTLVChain chain;
    chain.CreateFromString(bytes, 1, end, most);
    return chain;
}

}  // namespace

TEST(clsHeaderFLAP, TellsHowMuchOfAFrameIsThere) {
    const struct {
        ByteString bytes;
        bool incomplete;
        std::int32_t messageLength;
    } cases[] = {
        {"", true, 0},
        {"2A 02 12"_hex, true, 0},
        {"2A 04 00 07"_hex, true, 0},
        {"2A 02 12 34 00"_hex, true, 0},
        {"2A 02 12 34 00 03 'ab'"_hex, true, 9},
        {"2A 05 00 01 00 00"_hex, false, 6},
        {"FF 02 12 34 00 01 'a'"_hex, false, 7},
        {Frame(2, 1, ByteString(65535, 'x')), false, 65541},
    };
    for (const auto& [bytes, incomplete, messageLength] : cases) {
        clsHeaderFLAP flap;
        flap.ParseData(bytes);
        EXPECT_EQ(flap.isIncomplete(), incomplete) << HexDump(bytes.substr(0, 10));
        EXPECT_EQ(flap.MessageLen(), messageLength) << HexDump(bytes.substr(0, 10));
    }
}

TEST(clsHeaderFLAP, FourBytesLeaveCompletenessAndLengthOfTheFrameBefore) {
    clsHeaderFLAP flap;
    flap.ParseData("2A 02 12 06 00 02 'hi'"_hex);
    EXPECT_EQ(flap.SeqNum(), 0x1206);
    flap.ParseData("2A 04 00 07"_hex);
    EXPECT_FALSE(flap.isIncomplete());
    EXPECT_EQ(flap.MessageLen(), 8);
    EXPECT_EQ(flap.toString(), "2A 04 00 07 00 00"_hex);
    flap.Create(2, "new");
    EXPECT_EQ(flap.toString(), Frame(2, 0, "new"));
}

TEST(clsHeaderSNAC, ReadsItsFieldsKeepsTheRequestIdentifierAndNeedsItWhole) {
    const auto bytes = "01 04 02 06 80 01 00 00 00 2A 'xyz'"_hex;
    clsHeaderSNAC snac;
    snac.ParseData(bytes);
    EXPECT_EQ(snac.FamID(), 0x104);
    EXPECT_EQ(snac.SubId(), 0x206);
    EXPECT_EQ(snac.Flag1(), 0x80);
    EXPECT_EQ(snac.Flag2(), 1);
    EXPECT_EQ(snac.Data(), "xyz");
    EXPECT_EQ(snac.toString(), bytes);
    for (std::size_t length = 0; length <= 10; ++length) {
        snac.ParseData(bytes.substr(0, length));
        EXPECT_EQ(snac.isIncomplete(), length < 10) << length;
    }
    snac.Create(4, 7, 0, 0, "new");
    EXPECT_EQ(snac.toString(), Snac(4, 7, "new"));
}

TEST(clsTLVChain, StopsAtItsLimitsAndTakesACutValue) {
    const auto bytes = Tlv(1, "a") + Tlv(2, "b") + "00 03 00 09 'cut'"_hex;
    const struct {
        std::size_t end, most, expected;
    } cases[] = {
        {bytes.size(), 2, 2}, {5, 999, 1}, {6, 999, 2}, {bytes.size(), 999, 3}, {bytes.size(), 0, 0}};
    for (const auto& [end, most, expected] : cases) {
        EXPECT_EQ(Chain(bytes, end, most).Records().size(), expected) << end << " " << most;
    }
    EXPECT_EQ(Chain(bytes, bytes.size()).GetTLV(3)->Value(), "cut");
    EXPECT_EQ(Chain(bytes, bytes.size()).GetTLV(9), nullptr);
}

TEST(clsTLVChain, RefusesAHeaderCutByTheEndAndAValueTooLongToWrite) {
    EXPECT_THROW(Chain("00 01 00"_hex, 3), RuntimeError);
    clsTLVChain chain;
    clsHeaderTLV tlv;
    tlv.Create(1, ByteString(65536, 'x'));
    chain.Add(tlv);
    EXPECT_THROW(chain.toString(), RuntimeError);
}
