// Text: what the layers share in reading text, where case and blanks are those of ASCII in every locale.
#pragma once

#include <algorithm>
#include <charconv>
#include <concepts>
#include <optional>
#include <string>
#include <string_view>

constexpr char LowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
constexpr char UpperAscii(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// Lower-case: bytes above 127 stay as they are.
inline std::string LowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), LowerAscii);
    return lower;
}

constexpr bool SameWithoutCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return LowerAscii(x) == LowerAscii(y); });
}

// The text without those characters at its end; at both ends.
constexpr std::string_view TrimEnd(std::string_view text, std::string_view dropped = " \t") {
    return text.substr(0, text.find_last_not_of(dropped) + 1);
}
constexpr std::string_view Trim(std::string_view text, std::string_view dropped = " \t") {
    text = TrimEnd(text, dropped);
    return text.substr(std::min(text.find_first_not_of(dropped), text.size()));
}

// The text up to the next `end`, or all of it; that and the `end` are taken off the front of `rest`.
constexpr std::string_view TakeUpTo(std::string_view& rest, char end) {
    const auto taken = rest.substr(0, rest.find(end));
    rest.remove_prefix(std::min(taken.size() + 1, rest.size()));
    return taken;
}

// The number that the whole text is, without any blank or plus sign; nothing when it is none or too large.
template <std::integral Number>
std::optional<Number> ParseNumber(std::string_view text, int base = 10) {
    Number number{};
    const auto* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    if (error != std::errc() || stop != end) return std::nullopt;
    return number;
}
