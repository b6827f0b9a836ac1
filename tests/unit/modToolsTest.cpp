#include "core/modTools.h"

#include <gtest/gtest.h>

#include "base/RuntimeError.h"

TEST(modTools, ReadsBigEndianNumbersAtOneBasedPositions) {
    const ByteString bytes("\x01\x02\xFF\xFE\x00", 5);
    EXPECT_EQ(GetByte(bytes, 1), 1);
    EXPECT_EQ(GetWord(bytes, 3), 0xFFFE);
    EXPECT_EQ(GetDWord(bytes, 2), 0x02FFFE00);
}

TEST(modTools, RefusesPositionsOutsideTheString) {
    EXPECT_THROW(GetByte("ab", 0), RuntimeError);
    EXPECT_THROW(GetByte("ab", 3), RuntimeError);
    EXPECT_THROW(GetWord("ab", 2), RuntimeError);
    EXPECT_THROW(GetDWord("abc", 1), RuntimeError);
    EXPECT_THROW(GetWord("ab", static_cast<std::size_t>(-1)), RuntimeError);
}

TEST(modTools, RefusesNumbersThatDoNotFitTheirBytes) {
    EXPECT_EQ(WordToStr(65535), "\xFF\xFF");
    EXPECT_EQ(DWordToStr(0x01020304), "\x01\x02\x03\x04");
    EXPECT_THROW(WordToStr(65536), RuntimeError);
    EXPECT_THROW(ByteToStr(256), RuntimeError);
    for (auto* write : {ByteToStr, WordToStr, DWordToStr}) EXPECT_THROW(write(-1), RuntimeError);
}

TEST(modTools, HexDumpKeepsATrailingBlankAndReadsBack) {
    EXPECT_EQ(HexDump(""), "");
    EXPECT_EQ(HexDump("\n"), "0A ");
    EXPECT_EQ(HexDump("AB"), "41 42 ");
    EXPECT_EQ(HexToBytes(" 48 2b 00 00 "), ByteString("\x48\x2B\0\0", 4));
    EXPECT_EQ(HexToBytes(""), "");
    EXPECT_THROW(HexToBytes("4G"), RuntimeError);
    EXPECT_THROW(HexToBytes("41  42"), RuntimeError);
    EXPECT_THROW(HexToBytes("100"), RuntimeError);
}

TEST(modTools, NormalizesOnlyCaseAndBlanks) {
    EXPECT_EQ(NormalizeScreenName(" Some  User "), "someuser");
    EXPECT_EQ(NormalizeScreenName("\xC4\t_1"), "\xC4\t_1");  // ASCII only: bytes above 127 stay as they are
}

TEST(modTools, SplitsChooserEntriesIntoTheirHalves) {
    EXPECT_EQ(TextBeforeParen("Fred (asdf1234)"), "Fred");
    EXPECT_EQ(TextInParen("Fred (asdf1234)"), "asdf1234");
    EXPECT_EQ(TextBeforeParen("Fred"), "Fred");
    EXPECT_EQ(TextInParen("Fred"), "Fred");
    EXPECT_THROW(TextBeforeParen("(all)"), RuntimeError);
    EXPECT_THROW(TextInParen("Fred ("), RuntimeError);
}
