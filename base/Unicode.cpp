#include "base/Unicode.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// What the bytes 0x80 to 0x9F mean; every other byte is the Unicode character of the same number.
constexpr std::array<char16_t, 32> kUpper = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                             0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                             0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                             0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

bool IsSurrogate(char32_t character) {
    return character >= 0xD800 && character < 0xE000;
}

struct Lead {
    std::size_t tail;   // bytes that follow
    char32_t smallest;  // character that takes as many
};

std::optional<Lead> LeadOf(unsigned char first) {
    if (first < 0x80) return Lead{0, 0};
    if (first >= 0xC2 && first <= 0xDF) return Lead{1, 0x80};
    if (first >= 0xE0 && first <= 0xEF) return Lead{2, 0x800};
    if (first >= 0xF0 && first <= 0xF4) return Lead{3, 0x10000};
    return std::nullopt;
}

}  // namespace

void AppendUtf8(std::string& utf8, char32_t character) {
    if (IsSurrogate(character)) character = kReplacement;
    const auto tail = [&](int shift) { utf8 += static_cast<char>(0x80 | ((character >> shift) & 0x3F)); };
    if (character < 0x80) {
        utf8 += static_cast<char>(character);
    } else if (character < 0x800) {
        utf8 += static_cast<char>(0xC0 | (character >> 6));
    } else if (character < 0x10000) {
        utf8 += static_cast<char>(0xE0 | (character >> 12));
    } else {
        utf8 += static_cast<char>(0xF0 | (character >> 18));
    }
    if (character >= 0x10000) tail(12);
    if (character >= 0x800) tail(6);
    if (character >= 0x80) tail(0);
}

std::optional<char32_t> TakeUtf8(std::string_view& utf8) {
    const auto first = static_cast<unsigned char>(utf8.front());
    utf8.remove_prefix(1);
    const auto lead = LeadOf(first);
    if (!lead || utf8.size() < lead->tail) return std::nullopt;
    if (lead->tail == 0) return first;
    auto character = static_cast<char32_t>(first & (0x3F >> lead->tail));
    for (std::size_t i = 0; i < lead->tail; ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if ((byte & 0xC0) != 0x80) return std::nullopt;
        character = character << 6 | (byte & 0x3F);
    }
    if (character < lead->smallest || character > 0x10FFFF || IsSurrogate(character)) return std::nullopt;
    utf8.remove_prefix(lead->tail);
    return character;
}

bool IsUtf8(std::string_view bytes) {
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    for (;;) {
        const auto* const other = std::find_if_not(bytes.begin(), bytes.end(), isAscii);
        bytes.remove_prefix(static_cast<std::size_t>(other - bytes.begin()));
        if (bytes.empty()) return true;
        if (!TakeUtf8(bytes)) return false;
    }
}

char32_t FromWindows1252(char byte) {
    const auto number = static_cast<unsigned char>(byte);
    return number >= 0x80 && number < 0xA0 ? kUpper[number - std::size_t{0x80}] : number;
}

std::optional<char> ToWindows1252(char32_t character) {
    if (character < 0x80 || (character >= 0xA0 && character <= 0xFF)) return static_cast<char>(character);
    for (int byte = 0x80; byte < 0xA0; ++byte) {
        if (FromWindows1252(static_cast<char>(byte)) == character) return static_cast<char>(byte);
    }
    return std::nullopt;
}

std::string AsUtf8(std::string_view bytes) {
    if (IsUtf8(bytes)) return std::string(bytes);
    std::string utf8;
    for (const char byte : bytes) AppendUtf8(utf8, FromWindows1252(byte));
    return utf8;
}

void AppendUcs2(std::string& ucs2, char32_t character) {
    const auto unit = [&](char32_t number) {
        ucs2 += {static_cast<char>(number >> 8), static_cast<char>(number & 0xFF)};
    };
    if (character < 0x10000) return unit(character);
    unit(0xD800 + ((character - 0x10000) >> 10));
    unit(0xDC00 + ((character - 0x10000) & 0x3FF));
}
