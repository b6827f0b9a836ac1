#include "features/waiting/ImFrames.h"

#include <algorithm>

#include "base/RuntimeError.h"
#include "features/SnacBytes.h"
#include "os/CodePage.h"

namespace {

constexpr std::uint16_t kMessage = 0x0002;
constexpr std::uint16_t kAcknowledge = 0x0003;
constexpr std::uint16_t kAutomatic = 0x0004;
constexpr std::uint16_t kStore = 0x0006;
constexpr std::uint16_t kSentAt = 0x0016;

constexpr std::uint16_t kTextChannel = 1;
constexpr std::size_t kCookieLength = 8;

// A fragment of a message reads like a TLV, whose type is identifier (1) and version (1). That of the text
// holds character set (2), subset (2) and the text.
constexpr std::uint16_t kTextFragment = 0x0101;
constexpr std::size_t kBeforeText = 4;
constexpr std::uint16_t kAscii = 0, kUcs2 = 2, kLatin1 = 3;

// "" for data that end too early: a message that the server wrote badly is not a failure of ours.
std::string_view TlvsOfIncoming(std::string_view payload) {
    try {
        auto data = SnacDataOf(payload);
        TakeBytes(data, kCookieLength + 2);
        TakeUser(data);
        return data;
    } catch (const RuntimeError&) {
        return {};
    }
}

// Makes the length that stands right before the field larger.
void Lengthen(ByteString& bytes, std::size_t field, std::size_t by) {
    auto before = std::string_view(bytes).substr(field - 2, 2);
    const auto length = TakeWord(before) + by;
    if (length > 0xFFFF) ThrowOverflow();
    bytes.replace(field - 2, 2, WordToStr(static_cast<std::int32_t>(length)));
}

ByteString WithTlv(std::string_view data, std::uint16_t type) {
    ByteString bytes(data);
    if (!FindTlv(ReadOutgoingIm(data).tlvs, type)) bytes += TlvBytes(type);
    return bytes;
}

}  // namespace

OutgoingIm ReadOutgoingIm(std::string_view data) {
    constexpr std::size_t kName = kCookieLength + 2 + 1;
    if (data.size() < kName) return {};
    const auto length = static_cast<std::uint8_t>(data[kName - 1]);
    if (data.size() < kName + length) return {};
    data.remove_prefix(kCookieLength);
    const auto channel = TakeWord(data);
    return {channel, data.substr(1, length), data.substr(1 + length)};
}

bool CanWait(std::string_view data) {
    const auto im = ReadOutgoingIm(data);
    return im.channel == kTextChannel && !im.receiver.empty() && FindTlv(im.tlvs, kMessage) &&
           !FindTlv(im.tlvs, kAutomatic) && !FindTlv(im.tlvs, kStore);
}

bool AsksForAcknowledgement(std::string_view data) {
    return FindTlv(ReadOutgoingIm(data).tlvs, kAcknowledge).has_value();
}

ByteString AskingForAcknowledgement(std::string_view data) {
    return WithTlv(data, kAcknowledge);
}

ByteString AskingForStorage(std::string_view data) {
    return WithTlv(AskingForAcknowledgement(data), kStore);
}

ByteString NoticeFrom(const std::string& buddy, const std::string& text, std::uint16_t cookie) {
    constexpr std::uint16_t kUserClass = 0x0001;
    constexpr std::int32_t kOrdinaryUser = 0x0010;
    const auto wire = os::TextForWire(text);
    const bool isAscii =
        std::all_of(wire.bytes.begin(), wire.bytes.end(), [](unsigned char c) { return c < 0x80; });
    const auto charset = wire.isUcs2 ? kUcs2 : isAscii ? kAscii : kLatin1;
    const auto message = HexToBytes("05 01 00 01 01") +
                         TlvBytes(kTextFragment, WordToStr(charset) + WordToStr(0) + wire.bytes);
    return SnacPayload(0x0004, 0x0007, 0,
                       "Wrenlo" + WordToStr(cookie) + WordToStr(kTextChannel) +
                           ByteToStr(static_cast<std::int32_t>(buddy.size())) + buddy + WordToStr(0) +
                           WordToStr(1) + TlvBytes(kUserClass, WordToStr(kOrdinaryUser)) +
                           TlvBytes(kMessage, message) + TlvBytes(kAutomatic));
}

std::optional<std::uint32_t> SentAt(std::string_view payload) {
    auto time = FindTlv(TlvsOfIncoming(payload), kSentAt);
    if (!time || time->size() < 4) return {};
    return TakeDWord(*time);
}

ByteString WithTextInFront(std::string_view payload, std::string_view text) {
    ByteString bytes(payload);
    const auto message = FindTlv(TlvsOfIncoming(payload), kMessage);
    if (!message) return bytes;
    const auto fragment = FindTlv(*message, kTextFragment);
    if (!fragment || fragment->size() < kBeforeText) return bytes;
    ByteString front(text);
    auto head = *fragment;
    if (TakeWord(head) == kUcs2) {
        front.clear();
        for (const char c : text) front += {'\0', c};
    }
    for (const auto field : {*message, *fragment})
        Lengthen(bytes, static_cast<std::size_t>(field.data() - payload.data()), front.size());
    bytes.insert(static_cast<std::size_t>(fragment->data() - payload.data()) + kBeforeText, front);
    return bytes;
}
