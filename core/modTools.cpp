#include "core/modTools.h"

#include <algorithm>
#include <array>

#include "base/RuntimeError.h"

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

// `width` bytes from `position` on as an unsigned big-endian number.
std::uint32_t GetNumber(std::string_view bytes, std::size_t position, std::size_t width) {
    if (position < 1 || position > bytes.size() || bytes.size() - position + 1 < width)
        ThrowInvalidArgument();
    std::uint32_t number = 0;
    for (const char byte : bytes.substr(position - 1, width)) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

ByteString NumberToStr(std::int32_t number, std::size_t width) {
    const auto value = static_cast<std::uint64_t>(number);
    if (number < 0 || value >> (8 * width) != 0) ThrowInvalidArgument();
    ByteString bytes;
    for (std::size_t i = width; i-- > 0;) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    return bytes;
}

char HexPieceToByte(std::string_view piece) {
    std::size_t value = 0;
    if (piece.empty()) throw RuntimeError(ErrorNumber::TypeMismatch, "Type mismatch");
    for (const char c : piece) {
        const auto digit = kHexDigits.find(UpperAscii(c));
        if (digit == std::string_view::npos) throw RuntimeError(ErrorNumber::TypeMismatch, "Type mismatch");
        value = value * 16 + digit;
        if (value > 0xFF) ThrowInvalidArgument();
    }
    return static_cast<char>(value);
}

}  // namespace

std::int32_t GetByte(std::string_view bytes, std::size_t position) {
    return static_cast<std::int32_t>(GetNumber(bytes, position, 1));
}

std::int32_t GetWord(std::string_view bytes, std::size_t position) {
    return static_cast<std::int32_t>(GetNumber(bytes, position, 2));
}

std::int32_t GetDWord(std::string_view bytes, std::size_t position) {
    return static_cast<std::int32_t>(GetNumber(bytes, position, 4));
}

ByteString ByteToStr(std::int32_t number) {
    return NumberToStr(number, 1);
}
ByteString WordToStr(std::int32_t number) {
    return NumberToStr(number, 2);
}
ByteString DWordToStr(std::int32_t number) {
    return NumberToStr(number, 4);
}

std::string HexDump(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size() * 3);
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += {kHexDigits[byte >> 4], kHexDigits[byte & 0xF], ' '};
    }
    return text;
}

ByteString HexToBytes(std::string_view text) {
    ByteString bytes;
    text = Trim(text, " ");
    while (!text.empty()) bytes += HexPieceToByte(TakeUpTo(text, ' '));
    return bytes;
}

std::string NormalizeScreenName(std::string_view name) {
    std::string normalized;
    for (const char c : name) {
        if (c != ' ') normalized += LowerAscii(c);
    }
    return normalized;
}

std::string TextBeforeParen(const std::string& text) {
    const auto paren = text.find('(');
    if (paren == std::string::npos) return text;
    if (paren == 0) ThrowInvalidArgument();
    return text.substr(0, paren - 1);
}

std::string TextInParen(const std::string& text) {
    const auto paren = text.find('(');
    if (paren == std::string::npos) return text;
    const auto after =
        text.size() - paren - 1;  // characters behind the parenthesis, the closing one included
    if (after == 0) ThrowInvalidArgument();
    return text.substr(paren + 1, after - 1);
}
