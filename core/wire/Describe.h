// Describe: what a frame says, for people, in UTF-8; and what of it nobody is to see.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/wire/Reader.h"

namespace wire {

// "SNAC(04,07) message from": the kind by its numbers, in hexadecimal digits, and its name; another channel's
// frame by its name, or "channel 7".
std::string Title(std::uint8_t channel, std::string_view payload, const Parts& parts);

// The title and the first texts of the frame, or its first numbers where it has no text. Secrets are left
// out. At most some 300 bytes.
std::string Summary(std::uint8_t channel, std::string_view payload, const Parts& parts);

// What the part is called: its field's name, of a TLV with its type in front: "131 nickname".
std::string NameOf(const Part& part);

// The value of the part that stands at `index`: a number in decimal digits, an address, a text without
// control characters; "" for bytes and for what is made of parts. HexDump (core/modTools.h) shows any part's
// bytes.
std::string ValueOf(std::string_view payload, const Parts& parts, std::size_t index);

// Bytes of a payload.
struct Range {
    std::size_t offset, size;

    bool operator==(const Range&) const = default;
};

// Where passwords, their hashes, and cookies that open a connection stand, front to back. Of a frame that may
// hold one and does not fit, all that could not be read; the same of a sign-on that is not in the table.
std::vector<Range> Secrets(std::uint8_t channel, std::string_view payload, const Parts& parts);

}  // namespace wire
