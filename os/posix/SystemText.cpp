#include "os/posix/SystemText.h"

#include "os/CodePage.h"
#include "os/Windows1252.h"

namespace os::posix {
namespace {

void AppendUtf8(std::string& utf8, char32_t character) {
    const auto tail = [&](int shift) { utf8 += static_cast<char>(0x80 | ((character >> shift) & 0x3F)); };
    if (character < 0x80) {
        utf8 += static_cast<char>(character);
    } else if (character < 0x800) {
        utf8 += static_cast<char>(0xC0 | (character >> 6));
        tail(0);
    } else {
        utf8 += static_cast<char>(0xE0 | (character >> 12));
        tail(6);
        tail(0);
    }
}

// The number of bytes that follow the first one of a character; -1 when none begins so.
int CountTail(unsigned char first) {
    if (first < 0x80) return 0;
    if (first >= 0xC2 && first <= 0xDF) return 1;
    if (first >= 0xE0 && first <= 0xEF) return 2;
    if (first >= 0xF0 && first <= 0xF4) return 3;
    return -1;
}

// Takes the next character off the front; 0xFFFD for one byte that is no UTF-8.
char32_t TakeCharacter(std::string_view& utf8) {
    constexpr char32_t kInvalid = 0xFFFD;
    const auto first = static_cast<unsigned char>(utf8.front());
    const int tail = CountTail(first);
    utf8.remove_prefix(1);
    if (tail <= 0) return tail == 0 ? first : kInvalid;
    if (utf8.size() < static_cast<std::size_t>(tail)) return kInvalid;
    auto character = static_cast<char32_t>(first & (0x3F >> tail));
    for (int index = 0; index < tail; ++index) {
        const auto byte = static_cast<unsigned char>(utf8[static_cast<std::size_t>(index)]);
        if ((byte & 0xC0) != 0x80) return kInvalid;
        character = character << 6 | (byte & 0x3F);
    }
    utf8.remove_prefix(static_cast<std::size_t>(tail));
    return character;
}

}  // namespace

std::string Utf8FromText(std::string_view text) {
    std::string utf8;
    utf8.reserve(text.size());
    for (const char byte : text) AppendUtf8(utf8, UnicodeOfWindows1252(static_cast<unsigned char>(byte)));
    return utf8;
}

std::string TextFromUtf8(std::string_view utf8) {
    std::string text;
    text.reserve(utf8.size());
    while (!utf8.empty()) {
        const auto encoded = EncodeInCodePage(TakeCharacter(utf8));
        text += encoded.empty() ? "?" : encoded;
    }
    return text;
}

}  // namespace os::posix
