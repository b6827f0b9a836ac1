// Windows1252: the code page in which the program's texts stand wherever the system itself has none. The .cpp
// is os/CodePage.h for those systems, and for tests.
#pragma once

#include <array>
#include <cstddef>

namespace os {

// What the bytes 0x80 to 0x9F mean; every other byte is the Unicode character of the same number. The five
// bytes without a character (0x81, 0x8D, 0x8F, 0x90, 0x9D) stand for the control of their number, as Windows
// converts them.
inline constexpr std::array<char16_t, 32> kWindows1252Upper = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr char16_t UnicodeOfWindows1252(unsigned char byte) {
    return byte >= 0x80 && byte < 0xA0 ? kWindows1252Upper[static_cast<std::size_t>(byte - 0x80)]
                                       : static_cast<char16_t>(byte);
}

}  // namespace os
