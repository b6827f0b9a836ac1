#include "core/wire/Ucs2.h"

#include <cstddef>
#include <cstdint>

#include "base/Text.h"
#include "base/Unicode.h"
#include "core/modTools.h"
#include "os/CodePage.h"

namespace wire {
namespace {

char32_t UnitAt(std::string_view bytes, std::size_t index) {
    return static_cast<char32_t>(GetWord(bytes, index + 1));
}

// One character of the text at `index`, which moves behind it.
char32_t TakeCharacter(std::string_view bytes, std::size_t& index) {
    const auto isHigh = [](char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; };
    const auto isLow = [](char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; };
    const auto unit = UnitAt(bytes, index);
    index += 2;
    if (!isHigh(unit)) return isLow(unit) ? char32_t{0xFFFD} : unit;
    if (index + 1 >= bytes.size() || !isLow(UnitAt(bytes, index))) return 0xFFFD;
    const auto low = UnitAt(bytes, index);
    index += 2;
    return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
}

}  // namespace

std::string Utf8FromUcs2(std::string_view bytes) {
    std::string utf8;
    for (std::size_t index = 0; index + 1 < bytes.size();) AppendUtf8(utf8, TakeCharacter(bytes, index));
    return utf8;
}

std::string TextFromUcs2(std::string_view bytes) {
    std::string text;
    for (std::size_t index = 0; index + 1 < bytes.size();) {
        const auto character = TakeCharacter(bytes, index);
        const auto encoded = os::EncodeInCodePage(character);
        text += !encoded.empty() ? encoded : "&#" + std::to_string(std::uint32_t{character}) + ";";
    }
    return text;
}

std::string Utf8OfText(std::string_view text) {
    std::string utf8;
    while (!text.empty()) {
        const auto plain = text.substr(0, text.find("&#"));
        utf8 += os::Utf8FromText(std::string(plain));
        text.remove_prefix(plain.size());
        if (text.empty()) break;
        const auto digits = text.substr(2, text.find(';') - 2);
        const auto number = ParseNumber<std::uint32_t>(digits).value_or(0);
        const bool isMissing = number >= 0x80 && number <= 0x10FFFF && os::EncodeInCodePage(number).empty();
        if (isMissing)
            AppendUtf8(utf8, number);
        else
            utf8 += "&#";
        text.remove_prefix(isMissing ? 2 + digits.size() + 1 : 2);
    }
    return utf8;
}

std::string Ucs2FromAscii(std::string_view text) {
    std::string bytes;
    for (const char c : text) {
        bytes += '\0';
        bytes += c;
    }
    return bytes;
}

}  // namespace wire
