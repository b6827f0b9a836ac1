// Addresses as text.
#include <algorithm>
#include <charconv>

#include "os/Sockets.h"

namespace os {
namespace {

constexpr std::size_t kWords = 8;
using Words = std::array<std::uint16_t, kWords>;

std::optional<Address> FromDotted(std::string_view text) {
    Address address;
    for (std::size_t i = 0; i < 4; ++i) {
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), address.bytes[i]);
        if (error != std::errc()) return {};
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        if (i == 3) break;
        if (!text.starts_with('.')) return {};
        text.remove_prefix(1);
    }
    if (!text.empty()) return {};
    return address;
}

// Groups of digits with ":" between them, at most so many as an address has; nothing for anything else.
std::optional<std::size_t> ReadWords(std::string_view text, Words& words) {
    std::size_t count = 0;
    while (!text.empty()) {
        if (count == kWords) return {};
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), words[count++], 16);
        if (error != std::errc() || end - text.data() > 4) return {};
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        if (text.empty()) break;
        if (text.size() == 1 || !text.starts_with(':')) return {};
        text.remove_prefix(1);
    }
    return count;
}

std::optional<Address> FromColons(std::string_view text) {
    const auto gap = text.find("::");
    const bool hasGap = gap != std::string_view::npos;
    Words front{};
    Words back{};
    const auto inFront = ReadWords(text.substr(0, gap), front);
    const auto behind = hasGap ? ReadWords(text.substr(gap + 2), back) : std::size_t{0};
    if (!inFront || !behind) return {};
    const auto count = *inFront + *behind;
    if (hasGap ? count >= kWords : count != kWords) return {};
    std::copy_n(back.begin(), *behind, front.end() - static_cast<std::ptrdiff_t>(*behind));
    Address address{{}, true};
    for (std::size_t i = 0; i < kWords; ++i) {
        address.bytes[2 * i] = static_cast<std::uint8_t>(front[i] >> 8);
        address.bytes[2 * i + 1] = static_cast<std::uint8_t>(front[i]);
    }
    return address;
}

std::string WithColons(const Address& address) {
    const auto word = [&](std::size_t i) { return address.bytes[2 * i] << 8 | address.bytes[2 * i + 1]; };
    std::size_t gap = kWords;  // of the longest run of zeros
    std::size_t longest = 1;
    for (std::size_t i = 0, run = 0; i < kWords; ++i) {
        run = word(i) == 0 ? run + 1 : 0;
        if (run > longest) gap = i + 1 - (longest = run);
    }
    std::string text;
    for (std::size_t i = 0; i < kWords; ++i) {
        if (i == gap) {
            text += "::";
            i += longest - 1;
            continue;
        }
        if (!text.empty() && !text.ends_with(':')) text += ':';
        std::array<char, 4> digits;
        text.append(digits.data(), std::to_chars(digits.begin(), digits.end(), word(i), 16).ptr);
    }
    return text;
}

}  // namespace

std::string TextOf(const Address& address) {
    if (address.isIPv6) return WithColons(address);
    std::string text;
    for (std::size_t i = 0; i < 4; ++i) text += (i > 0 ? "." : "") + std::to_string(address.bytes[i]);
    return text;
}

std::optional<Address> AddressFrom(std::string_view text) {
    return text.find(':') != std::string_view::npos ? FromColons(text) : FromDotted(text);
}

}  // namespace os
