// The program's texts natively: UTF-8, and how they leave for a server.
#include <gtest/gtest.h>

#include "os/CodePage.h"

TEST(CodePage, ATextLeavesInSingleBytesWhereTheyHoldItAndInUcs2Otherwise) {
    const struct {
        std::string text, bytes;
        bool isUcs2;
    } cases[] = {
        {"", "", false},
        {"na\xC3\xAFve \xE2\x82\xAC", "na\xEFve \x80", false},
        {"\xE6\x97\xA5 a", std::string("\x65\xE5\0 \0a", 6), true},
        {"\xF0\x9F\x98\x80", std::string("\xD8\x3D\xDE\0", 4), true},
        {"caf\xE9", "caf\xE9", false},  // no UTF-8
    };
    for (const auto& [text, bytes, isUcs2] : cases) {
        const auto wire = os::TextForWire(text);
        EXPECT_EQ(wire.bytes, bytes) << text;
        EXPECT_EQ(wire.isUcs2, isUcs2) << text;
    }
}

TEST(CodePage, WhatIsNoUtf8IsReadAsWindows1252) {
    const std::pair<std::string, std::string> cases[] = {
        {"caf\xC3\xA9", "caf\xC3\xA9"},
        {"caf\xE9 \x80", "caf\xC3\xA9 \xE2\x82\xAC"},
        {"\xC0\x80", "\xC3\x80\xE2\x82\xAC"},              // longer than it need be
        {"\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xE2\x82\xAC"},  // half a surrogate pair
        {"\xF5\x80\x80\x80", "\xC3\xB5\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC"},
        {"\xE2\x82", "\xC3\xA2\xE2\x80\x9A"},
    };
    for (const auto& [bytes, text] : cases) EXPECT_EQ(os::TextFromBytes(bytes), text);
}
