#include "features/SnacBytes.h"

#include <algorithm>

#include "base/RuntimeError.h"
#include "core/clsHeaderSNAC.h"

namespace {

// Offsets in a SNAC header.
constexpr std::size_t kFlags = 4;
constexpr std::size_t kRequestId = 6;

constexpr std::uint32_t kHasVersions = 0x8000;
constexpr std::uint32_t kMoreToCome = 0x0001;

// A number of `width` bytes, which are there.
std::uint32_t NumberAt(std::string_view bytes, std::size_t offset, std::size_t width) {
    std::uint32_t number = 0;
    for (const char byte : bytes.substr(offset, width))
        number = number << 8 | static_cast<std::uint8_t>(byte);
    return number;
}

std::uint32_t FlagsOf(std::string_view payload) {
    return NumberAt(payload, kFlags, 2);
}

}  // namespace

std::uint32_t SnacKindOf(std::string_view payload) {
    return NumberAt(payload, 0, 4);
}

std::string_view SnacDataOf(std::string_view payload) {
    auto data = payload.substr(clsHeaderSNAC::kHeaderLength);
    if (!(FlagsOf(payload) & kHasVersions)) return data;
    if (data.size() < 2) return {};
    const auto versions = 2 + NumberAt(data, 0, 2);
    return data.substr(std::min<std::size_t>(versions, data.size()));
}

bool HasMoreToCome(std::string_view payload) {
    return (FlagsOf(payload) & kMoreToCome) != 0;
}

std::uint32_t RequestIdOf(std::string_view payload) {
    return NumberAt(payload, kRequestId, 4);
}

ByteString WithRequestId(std::string_view payload, std::uint32_t requestId) {
    ByteString bytes(payload);
    for (std::size_t i = 0; i < 4; ++i)
        bytes[kRequestId + i] = static_cast<char>(requestId >> 8 * (3 - i) & 0xFF);
    return bytes;
}

ByteString SnacPayload(std::uint16_t family, std::uint16_t subtype, std::uint32_t requestId,
                       std::string_view data) {
    ByteString payload = WordToStr(family) + WordToStr(subtype) + ByteString(6, '\0');
    payload += data;
    return WithRequestId(payload, requestId);
}

std::string_view TakeBytes(std::string_view& bytes, std::size_t size) {
    if (bytes.size() < size) ThrowInvalidArgument();
    const auto taken = bytes.substr(0, size);
    bytes.remove_prefix(size);
    return taken;
}

std::uint8_t TakeByte(std::string_view& bytes) {
    return static_cast<std::uint8_t>(TakeBytes(bytes, 1).front());
}

std::uint16_t TakeWord(std::string_view& bytes) {
    return static_cast<std::uint16_t>(NumberAt(TakeBytes(bytes, 2), 0, 2));
}

std::uint32_t TakeDWord(std::string_view& bytes) {
    return NumberAt(TakeBytes(bytes, 4), 0, 4);
}

std::string_view TakeUser(std::string_view& bytes) {
    const auto name = TakeBytes(bytes, TakeByte(bytes));
    TakeWord(bytes);
    for (auto left = TakeWord(bytes); left > 0; --left) {
        TakeWord(bytes);
        TakeBytes(bytes, TakeWord(bytes));
    }
    return name;
}

std::optional<std::string_view> FindTlv(std::string_view tlvs, std::uint16_t type) {
    while (tlvs.size() >= 4) {
        const auto found = NumberAt(tlvs, 0, 2);
        const auto length = NumberAt(tlvs, 2, 2);
        tlvs.remove_prefix(4);
        if (length > tlvs.size()) return {};
        if (found == type) return tlvs.substr(0, length);
        tlvs.remove_prefix(length);
    }
    return {};
}

ByteString TlvBytes(std::uint16_t type, std::string_view value) {
    auto bytes = WordToStr(type) + WordToStr(static_cast<std::int32_t>(value.size()));
    bytes += value;
    return bytes;
}
