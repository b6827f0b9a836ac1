// ImFrames: what the features that keep and fetch messages do to instant messages (family 4).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/modTools.h"

// The data of a SNAC (0x0004, 0x0006), whose parts lie in the bytes that they were read from.
struct OutgoingIm {
    std::uint16_t channel = 0;  // 1: a text
    std::string_view receiver;  // "" when the data end too early
    std::string_view tlvs;
};
OutgoingIm ReadOutgoingIm(std::string_view data);

// Whether a message can be kept for later: a text to somebody, neither an automatic one (TLV 4), which says
// something about the moment, nor one whose client has it stored itself (TLV 6).
bool CanWait(std::string_view data);

// The same data with an empty TLV at the end, where it is missing: the server is asked to acknowledge the
// message, and to store it when the receiver is off line.
ByteString AskingForAcknowledgement(std::string_view data);
ByteString AskingForStorage(std::string_view data);
bool AsksForAcknowledgement(std::string_view data);

// A message that seems to come from the buddy, marked as an automatic one (TLV 4), which no client answers:
// the payload of a SNAC (0x0004, 0x0007). The cookie tells it from the other notices of its connection.
ByteString NoticeFrom(const std::string& buddy, const std::string& text, std::uint16_t cookie);

// When a stored message was sent, in seconds since 1970 (TLV 0x16); nothing for one that comes at once. The
// payload is that of a SNAC (0x0004, 0x0007).
std::optional<std::uint32_t> SentAt(std::string_view payload);

// The payload of a SNAC (0x0004, 0x0007) with a text put in front of the message's own, in its character set;
// the text is ASCII. A message without a text comes back as it is. Throws RuntimeError (Overflow) where the
// text finds no room.
ByteString WithTextInFront(std::string_view payload, std::string_view text);
