// ImMessage: the name and the text of an instant message, read out of the data of its SNAC.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/modTools.h"

struct ImMessage {
    std::string screenName;  // of the other party: the sender or the recipient
    std::string text;        // HTML as sent, in the program's code page; "" when the message carries none
    std::optional<std::int64_t> sentAt = {};  // seconds since 1970, of a message that waited at the server
};

// Read the data of SNAC (0x0004, 0x0007) and of SNAC (0x0004, 0x0006). Data that end before the fields around
// the message throw RuntimeError (InvalidArgument): the server or the client wrote them. The message itself
// is written by a stranger; where it is damaged, what is there of its text counts.
ImMessage ReadIncomingMessage(const ByteString& data);
ImMessage ReadOutgoingMessage(const ByteString& data);
