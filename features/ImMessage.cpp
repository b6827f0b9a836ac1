#include "features/ImMessage.h"

#include <string_view>
#include <utility>

#include "base/RuntimeError.h"
#include "core/clsTLVChain.h"
#include "core/wire/Ucs2.h"
#include "os/CodePage.h"

namespace {

constexpr std::int32_t kMessageData = 0x0002;  // the TLV
constexpr std::int32_t kSentAt = 0x0016;       // in what comes from the server
constexpr std::int32_t kUcs2 = 2;              // the character set
constexpr std::size_t kMaxTlvs = 999;

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
    return GetWord(fragment, 1) == kUcs2 ? wire::TextFromUcs2(text) : os::TextFromBytes(std::string(text));
}

ImMessage ReadTlvs(std::string screenName, const ByteString& data, std::size_t position) {
    clsTLVChain chain;
    chain.CreateFromString(data, position, data.size(), kMaxTlvs);
    ImMessage message{std::move(screenName), {}, {}};
    if (const auto* const text = chain.GetTLV(kMessageData)) message.text = ReadText(text->Value());
    const auto* const time = chain.GetTLV(kSentAt);
    if (time != nullptr && time->Value().size() >= 4)
        message.sentAt = static_cast<std::uint32_t>(GetDWord(time->Value(), 1));
    return message;
}

}  // namespace

ImMessage ReadIncomingMessage(const ByteString& data) {
    std::size_t position = 0;
    auto screenName = ReadScreenName(data, position);
    SkipSenderInformation(data, position);
    return ReadTlvs(std::move(screenName), data, position);
}

ImMessage ReadOutgoingMessage(const ByteString& data) {
    std::size_t position = 0;
    auto screenName = ReadScreenName(data, position);
    return ReadTlvs(std::move(screenName), data, position);
}
