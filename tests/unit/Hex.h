// "2A 02 00"_hex: bytes in a test, readable as they stand on the wire. A piece in quotes such as 'Fred' is
// text.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "core/modTools.h"

inline ByteString operator""_hex(const char* text, std::size_t length) {
    ByteString bytes;
    std::string_view rest(text, length);
    while (!rest.empty()) {
        if (rest.front() == '\'') {
            const auto end = rest.find('\'', 1);
            bytes += rest.substr(1, end - 1);
            rest.remove_prefix(end + 1);
            continue;
        }
        const auto end = std::min(rest.find('\''), rest.size());
        bytes += HexToBytes(rest.substr(0, end));
        rest.remove_prefix(end);
    }
    return bytes;
}
