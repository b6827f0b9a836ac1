#include "core/modTools.h"

#include <gtest/gtest.h>

#include "base/RuntimeError.h"

TEST(modTools, ReadsBigEndianNumbersAtOneBasedPositionsInsideTheString) {
    const ByteString bytes("\x01\x02\xFF\xFE\x00", 5);
    EXPECT_EQ(GetByte(bytes, 1), 1);
    EXPECT_EQ(GetWord(bytes, 3), 0xFFFE);
    EXPECT_EQ(GetDWord(bytes, 2), 0x02FFFE00);
    EXPECT_THROW(GetByte(bytes, 0), RuntimeError);
    EXPECT_THROW(GetByte(bytes, 6), RuntimeError);
    EXPECT_THROW(GetWord(bytes, 5), RuntimeError);
    EXPECT_THROW(GetDWord(bytes, 3), RuntimeError);
    EXPECT_THROW(GetWord(bytes, static_cast<std::size_t>(-1)), RuntimeError);
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
    EXPECT_EQ(HexDump("A\n"), "41 0A ");
    EXPECT_EQ(HexToBytes(" 48 2b 00 00 "), ByteString("\x48\x2B\0\0", 4));
    for (const char* text : {"4G", "41  42", "100"}) EXPECT_THROW(HexToBytes(text), RuntimeError) << text;
}

TEST(modTools, NormalizesOnlyCaseAndBlanks) {
    EXPECT_EQ(NormalizeScreenName(" Some  User "), "someuser");
    EXPECT_EQ(NormalizeScreenName("\xC4\t_1"), "\xC4\t_1");  // ASCII only: bytes above 127 stay as they are
}

TEST(modTools, SplitsChooserEntriesIntoTheirHalves) {
    EXPECT_EQ(TextBeforeParen("Fred (asdf1234)"), "Fred");
    EXPECT_EQ(TextInParen("Fred (asdf1234)"), "asdf1234");
    EXPECT_EQ(TextBeforeParen("Fred") + TextInParen("Fred"), "FredFred");
    EXPECT_THROW(TextBeforeParen("(all)"), RuntimeError);
    EXPECT_THROW(TextInParen("Fred ("), RuntimeError);
}
