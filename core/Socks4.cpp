#include "core/Socks4.h"

#include <algorithm>

namespace {

constexpr std::size_t kFixedLength = 8;
constexpr std::int32_t kRequestGranted = 90;

std::string DottedAddress(std::string_view bytes, std::size_t position) {
    std::string text;
    for (std::size_t i = 0; i < 4; ++i) {
        if (i > 0) text += '.';
        text += std::to_string(GetByte(bytes, position + i));
    }
    return text;
}

// 0.0.0.x stands for "resolve the name behind the user name"; 0.0.0.0 too, because some clients send it.
bool AsksForName(std::string_view bytes) {
    return GetByte(bytes, 5) == 0 && GetByte(bytes, 6) == 0 && GetByte(bytes, 7) == 0;
}

}  // namespace

bool IsNoSocks4Request(std::string_view bytes) {
    const auto isPrintable = [](char c) { return c >= ' ' && c <= '~'; };
    return bytes.size() >= kFixedLength && std::ranges::all_of(bytes.substr(0, kFixedLength), isPrintable);
}

std::optional<Socks4Request> ParseSocks4Request(std::string_view bytes) {
    if (bytes.size() < kFixedLength) return {};
    const auto userEnd = bytes.find('\0', kFixedLength);
    Socks4Request request{DottedAddress(bytes, 5), std::to_string(GetWord(bytes, 3)),
                          userEnd != std::string_view::npos, ByteString(bytes.substr(2, 6))};
    if (!AsksForName(bytes)) return request;

    if (userEnd == std::string_view::npos) return {};
    const auto hostEnd = bytes.find('\0', userEnd + 1);
    if (hostEnd == std::string_view::npos) return {};
    const auto name = bytes.substr(userEnd + 1, hostEnd - userEnd - 1);
    if (!name.empty()) request.host = name;
    return request;
}

ByteString MakeSocks4Reply(std::string_view con) {
    return WordToStr(kRequestGranted) + ByteString(con);
}
