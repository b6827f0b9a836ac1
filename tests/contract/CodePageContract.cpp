// What every implementation of os/CodePage.h does; on Windows whatever the machine's code page is.
#include "os/CodePage.h"

#include <gtest/gtest.h>

TEST(CodePageContract, AsciiIsItselfAndHalfASurrogatePairIsNothing) {
    for (char32_t character = 0; character < 0x80; ++character) {
        EXPECT_EQ(os::EncodeInCodePage(character), std::string(1, static_cast<char>(character)));
    }
    EXPECT_EQ(os::EncodeInCodePage(0xD83D), "");
    EXPECT_EQ(os::EncodeInCodePage(0xDE00), "");
}

TEST(CodePageContract, NoSimilarCharacterStandsIn) {
    // A wide A, a dotless i and a small alpha: the system likes to make "A", "i" and "a" of them.
    for (const char32_t character : {U'\xFF21', U'\x0131', U'\x03B1'}) {
        const auto bytes = os::EncodeInCodePage(character);
        EXPECT_TRUE(bytes.empty() || static_cast<unsigned char>(bytes[0]) >= 0x80) << bytes;
    }
    EXPECT_NE(os::EncodeInCodePage(0x1F600), "?");
}
