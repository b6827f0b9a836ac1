// Lengths: what encloses a change in a frame learns of it.
//
// Whoever replaces bytes of a payload hands over where each byte comes from. The lengths that the table of
// layouts knows around the changes are then written anew, so that a frame that fitted its layout before fits
// it afterwards, part by part.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "core/modTools.h"

namespace wire {

inline constexpr std::uint32_t kNewByte = 0xFFFFFFFF;

// A payload and, for each of its bytes, its offset in the payload before the change, or kNewByte. The offsets
// go up.
struct ChangedPayload {
    ByteString bytes;
    std::vector<std::uint32_t> origins;
};

// Corrects the lengths in the changed payload. One that did not fit its layout before, or is not in the
// table, stays as it is. Returns false when no correction makes it fit again: where what was replaced crosses
// the end of a block or is itself a type, a length or a count, and where a block outgrows its length.
bool CorrectLengths(std::uint8_t channel, std::string_view before, ChangedPayload& changed);

}  // namespace wire
