#include "core/wire/Lengths.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "core/wire/Reader.h"

namespace wire {
namespace {

// Where the places between the bytes have gone. What was put in belongs to the byte before it, which tells
// its length, so a place is behind the byte before it; where that is gone, it is in front of the byte behind
// it.
class Places {
 public:
    Places(const std::vector<std::uint32_t>& origins, std::size_t sizeBefore) : gone_(sizeBefore, kNewByte) {
        for (std::uint32_t i = 0; i < origins.size(); ++i) {
            if (origins[i] != kNewByte) gone_[origins[i]] = i;
        }
        gone_.push_back(static_cast<std::uint32_t>(origins.size()));
    }

    std::optional<std::size_t> Of(std::size_t place) const {
        if (place > 0 && gone_[place - 1] != kNewByte) return gone_[place - 1] + 1;
        if (gone_[place] != kNewByte) return gone_[place];
        return {};
    }

 private:
    std::vector<std::uint32_t> gone_;  // by the offset before; behind the last byte stands the end
};

// The part as it should stand in the changed payload; nothing when an end of it has gone.
std::optional<Part> Moved(const Part& part, const Places& places) {
    const auto from = places.Of(part.offset);
    const auto to = places.Of(part.offset + part.size);
    if (!from || !to || *to < *from) return {};
    auto moved = part;
    moved.offset = *from;
    moved.size = *to - *from;
    return moved;
}

bool WriteLength(const Part& part, ByteString& bytes) {
    if (part.lengthWidth > part.offset || part.size >> (8 * part.lengthWidth) != 0) return false;
    auto rest = part.size;
    for (std::size_t i = 1; i <= part.lengthWidth; ++i, rest >>= 8)
        bytes[part.offset - i] = static_cast<char>(rest & 0xFF);
    return true;
}

}  // namespace

bool CorrectLengths(std::uint8_t channel, std::string_view before, ChangedPayload& changed) {
    auto read = Read(channel, before);
    if (!read.fits) return true;
    const Places places(changed.origins, before.size());
    for (auto& part : read.parts) {
        const auto moved = Moved(part, places);
        if (!moved) return false;
        part = *moved;
        if (part.lengthWidth > 0 && !WriteLength(part, changed.bytes)) return false;
    }
    // What was put in may have changed types and counts; only what reads as before is right.
    const auto again = Read(channel, changed.bytes);
    return again.fits && std::ranges::equal(again.parts, read.parts);
}

}  // namespace wire
