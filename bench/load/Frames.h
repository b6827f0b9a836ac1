// FLAP header (6): 2A, channel, sequence (2), payload length (2).
// Payload: SNAC header (10) with a family no OSCAR feature uses, then frame
// index (8), hash (8), body. The hash covers the body and the index.
// This is frame code of the bench's own: a mistake of the relay must not repeat here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "bench/load/Common.h"

namespace bench {

constexpr std::size_t kFlapHeader = 6;
constexpr std::size_t kSnacHeader = 10;
constexpr std::size_t kMeta = 16;
constexpr std::size_t kPrefix = kFlapHeader + kSnacHeader + kMeta;
constexpr std::uint16_t kFamily = 0x7E57;

enum Subtype : std::uint16_t { kData = 1, kCommand = 2, kEnd = 3, kAck = 4 };

inline std::uint16_t Get16(const std::uint8_t* p) {
    return std::uint16_t(p[0] << 8 | p[1]);
}
inline void Put16(std::uint8_t* p, std::uint16_t v) {
    p[0] = std::uint8_t(v >> 8);
    p[1] = std::uint8_t(v);
}
inline std::uint64_t Load64(const std::uint8_t* p) {
    std::uint64_t v;
    std::memcpy(&v, p, 8);
    return v;
}
inline void Store64(std::uint8_t* p, std::uint64_t v) {
    std::memcpy(p, &v, 8);
}

// Covers the bytes and their number.
std::uint64_t HashBytes(const std::uint8_t* p, std::size_t n);
// What the hash of a frame is combined with, so that equal frames differ.
std::uint64_t MixIndex(std::uint64_t index);

struct Template {
    Bytes bytes;  // whole frame; sequence, index and hash are filled in when sent
    std::uint64_t bodyHash;
};

Template MakeTemplate(Subtype subtype, const Bytes& body);

// 95 % of the frames carry 40 to 300 bytes of SNAC payload, 5 % carry 2 to 8 KB, unless Options has one
// length for all. The same in every run.
const std::vector<Template>& FrameMix();
// 120 bytes on the wire.
const Template& PingTemplate();

}  // namespace bench
