#include "core/Socks4.h"

#include <gtest/gtest.h>

#include "tests/unit/Hex.h"

TEST(Socks4, ReadsPortAndAddressAndNothingElse) {
    const auto request = ParseSocks4Request("04 01 04 D2 0A 00 00 05 'me' 00"_hex);
    ASSERT_TRUE(request);
    EXPECT_EQ(request->host, "10.0.0.5");
    EXPECT_EQ(request->port, "1234");
    EXPECT_EQ(MakeSocks4Reply(request->con), "00 5A 04 D2 0A 00 00 05"_hex);
    // Version and command are not examined, and the user name is not waited for.
    EXPECT_TRUE(ParseSocks4Request("05 09 00 50 FF 00 00 01"_hex));
}

TEST(Socks4, WaitsForTheNameThatSocks4aPutsBehindTheUser) {
    const auto whole = "04 01 14 46 00 00 00 01 'me' 00 'login.example' 00"_hex;
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(ParseSocks4Request(std::string_view(whole).substr(0, length))) << length;
    }
    EXPECT_EQ(ParseSocks4Request(whole)->host, "login.example");
    EXPECT_EQ(ParseSocks4Request("04 01 14 46 00 00 00 00 00 'a.b' 00"_hex)->host, "a.b");
    EXPECT_EQ(ParseSocks4Request("04 01 14 46 00 00 00 07 00 00"_hex)->host, "0.0.0.7");
}
