#include "core/Socks4.h"

#include <gtest/gtest.h>

#include "tests/unit/Hex.h"

TEST(Socks4, ReadsPortAndAddressAndWaitsOnlyForTheNameThatSocks4aPutsBehindTheUser) {
    const struct {
        ByteString request;
        std::size_t needed;  // bytes without which there is no request yet
        std::string host, port;
        ByteString reply;
    } cases[] = {
        {"04 01 04 D2 0A 00 00 05 'me' 00"_hex, 8, "10.0.0.5", "1234", "00 5A 04 D2 0A 00 00 05"_hex},
        // Version and command are not examined.
        {"05 09 00 50 FF 00 00 01"_hex, 8, "255.0.0.1", "80", "00 5A 00 50 FF 00 00 01"_hex},
        {"04 01 14 46 00 00 00 01 'me' 00 'login.example' 00"_hex, 25, "login.example", "5190",
         "00 5A 14 46 00 00 00 01"_hex},
        {"04 01 14 46 00 00 00 00 00 'a.b' 00"_hex, 13, "a.b", "5190", "00 5A 14 46 00 00 00 00"_hex},
        {"04 01 14 46 00 00 00 07 00 00"_hex, 10, "0.0.0.7", "5190", "00 5A 14 46 00 00 00 07"_hex},
    };
    for (const auto& [request, needed, host, port, reply] : cases) {
        for (std::size_t length = 0; length <= request.size(); ++length) {
            const auto parsed = ParseSocks4Request(std::string_view(request).substr(0, length));
            ASSERT_EQ(parsed.has_value(), length >= needed) << host << " " << length;
            if (!parsed) continue;
            EXPECT_EQ(parsed->host, host);
            EXPECT_EQ(parsed->port, port);
            EXPECT_EQ(MakeSocks4Reply(parsed->con), reply);
        }
    }
}
