// Reader: takes a frame's payload apart by the table of layouts. The payload is a stranger's: whatever it
// holds, reading ends, and takes time and memory in proportion to its size.
//
// A frame fits when every field of its layout has the bytes that it needs. The value of a TLV that does not
// fit the layout of its type is taken as mere bytes, because its own length says where it ends; the frame may
// fit nevertheless.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "core/wire/Layout.h"

namespace wire {

// A piece of the payload: a field, a TLV, or several of them together. Parts stand in the order of their
// bytes, what is inside another one behind it and one deeper.
struct Part {
    const Field* field;  // never nullptr
    std::size_t offset;  // from the payload's first byte to the contents, behind type and length
    std::size_t size;
    std::uint8_t depth;
    std::uint8_t lengthWidth;  // bytes of the length, which stands right before the contents; 0: none does
    Shape shape;               // the field's, or Bytes where the value is not as its layout says

    bool operator==(const Part&) const = default;
};

struct Parts {
    const Snac* snac = nullptr;  // nullptr: no SNAC, or none of the table
    bool fits = false;           // false also for a frame that is not in the table
    std::size_t readTo = 0;      // where the fields ended, or the first that does not fit begins
    std::vector<Part> parts;
};

// The channel is the frame's; on channel 2 stand SNACs.
Parts Read(std::uint8_t channel, std::string_view payload);

// An unsigned number of up to eight bytes.
std::uint64_t NumberAt(std::string_view bytes, std::size_t offset, std::size_t width);

}  // namespace wire
