#include "features/ImMessage.h"

#include <string_view>
#include <utility>

#include "base/RuntimeError.h"
#include "core/clsTLVChain.h"
#include "os/CodePage.h"

namespace {

constexpr std::int32_t kMessageData = 0x0002;  // the TLV
constexpr std::int32_t kUcs2 = 2;              // the character set
constexpr std::size_t kMostTlvs = 999;

// Both kinds of data begin alike; what follows the name differs:
//
//   offset  width  meaning
//   0       8      message cookie
//   8       2      message channel
//   10      1      length L of the screen name
//   11      L      screen name of the other party
//   11+L    ...    toward the server: TLVs
//                  toward the client: warning level (2), count of the sender's TLVs (2), those TLVs, TLVs
constexpr std::size_t kNameLengthPosition = 11;

std::string ReadScreenName(const ByteString& data, std::size_t& position) {
    const auto length = static_cast<std::size_t>(GetByte(data, kNameLengthPosition));
    position = kNameLengthPosition + 1;
    if (data.size() - kNameLengthPosition < length) ThrowInvalidArgument();
    position += length;
    return data.substr(kNameLengthPosition, length);
}

// Exactly the counted TLVs, whatever their types: a sender's information may hold a type 2 of its own.
void SkipSenderInformation(const ByteString& data, std::size_t& position) {
    const auto count = GetWord(data, position + 2);
    position += 4;
    for (std::int32_t i = 0; i < count; ++i) {
        clsHeaderTLV tlv;
        position += tlv.CreateFromString(data, position);
    }
}

char32_t UnitAt(std::string_view bytes, std::size_t index) {
    return static_cast<char32_t>(GetWord(bytes, index + 1));
}

// One character of the big-endian UCS-2 text at `index`, which moves behind it. Surrogates are joined though
// UCS-2 has none: clients send the UTF-16 of their system. Half a pair reads as U+FFFD.
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

// What the code page lacks becomes a numeric entity, which the HTML of the message allows anywhere.
std::string TextFromUcs2(std::string_view bytes) {
    std::string text;
    for (std::size_t index = 0; index + 1 < bytes.size();) {
        const auto character = TakeCharacter(bytes, index);
        const auto encoded = os::EncodeInCodePage(character);
        text += !encoded.empty() ? encoded : "&#" + std::to_string(std::uint32_t{character}) + ";";
    }
    return text;
}

// A fragment of the message data: identifier (1), version (1), length (2), that many bytes, or as many as
// there are. Takes it off the front; "" when there is none.
std::string_view TakeFragment(std::string_view& bytes) {
    constexpr std::size_t kHeader = 4;
    if (bytes.size() < kHeader) {
        bytes = {};
        return {};
    }
    const auto fragment = bytes.substr(kHeader, static_cast<std::size_t>(GetWord(bytes, 3)));
    bytes.remove_prefix(kHeader + fragment.size());
    return fragment;
}

// The first fragment tells what the sender can show, the second holds character set (2), subset (2), text.
std::string ReadText(std::string_view messageData) {
    constexpr std::size_t kBeforeText = 4;
    TakeFragment(messageData);
    const auto fragment = TakeFragment(messageData);
    if (fragment.size() < kBeforeText) return {};
    const auto text = fragment.substr(kBeforeText);
    return GetWord(fragment, 1) == kUcs2 ? TextFromUcs2(text) : std::string(text);
}

std::string ReadMessageTlv(const ByteString& data, std::size_t position) {
    clsTLVChain chain;
    chain.CreateFromString(data, position, data.size(), kMostTlvs);
    const auto* const message = chain.GetTLV(kMessageData);
    return message != nullptr ? ReadText(message->Value()) : std::string();
}

}  // namespace

ImMessage ReadIncomingMessage(const ByteString& data) {
    std::size_t position = 0;
    auto screenName = ReadScreenName(data, position);
    SkipSenderInformation(data, position);
    return {std::move(screenName), ReadMessageTlv(data, position)};
}

ImMessage ReadOutgoingMessage(const ByteString& data) {
    std::size_t position = 0;
    auto screenName = ReadScreenName(data, position);
    return {std::move(screenName), ReadMessageTlv(data, position)};
}
