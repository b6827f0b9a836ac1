// Frames and what is in them, as clients and servers build them.
#pragma once

#include "tests/unit/Hex.h"

inline ByteString Word(std::size_t number) {
    return WordToStr(static_cast<std::int32_t>(number));
}

inline ByteString Frame(std::int32_t channel, std::int32_t sequence, const ByteString& payload) {
    return "*" + ByteToStr(channel) + WordToStr(sequence) + Word(payload.size()) + payload;
}

inline ByteString Snac(std::int32_t family, std::int32_t subtype, const ByteString& data) {
    return WordToStr(family) + WordToStr(subtype) + "00 00 00 00 00 00"_hex + data;
}

inline ByteString Named(const std::string& name) {
    return ByteToStr(static_cast<std::int32_t>(name.size())) + name;
}

inline ByteString Tlv(std::int32_t type, const ByteString& value) {
    return WordToStr(type) + Word(value.size()) + value;
}

// The value of the message TLV: what the sender can show, then the text in a character set.
inline ByteString MessageData(const ByteString& text, std::int32_t charset = 0) {
    return "05 01 00 04 01 01 01 02"_hex + "01 01"_hex + Word(text.size() + 4) + WordToStr(charset) +
           "00 00"_hex + text;
}

// Data of SNAC (4, 6) and of SNAC (4, 7), the latter with the user information that servers send.
inline ByteString OutgoingData(const std::string& recipient, const ByteString& tlvs) {
    return "11 22 33 44 55 66 77 88 00 01"_hex + Named(recipient) + tlvs;
}
inline ByteString IncomingData(const std::string& sender, const ByteString& tlvs) {
    return "11 22 33 44 55 66 77 88 00 01"_hex + Named(sender) + "00 00 00 02"_hex + Tlv(0x01, "00 10"_hex) +
           Tlv(0x03, "3F 00 00 00"_hex) + tlvs;
}
