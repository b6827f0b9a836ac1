// RateLimit: how fast a server lets a client send one kind of frame, as SNAC (0x0001, 0x0007) tells it, and
// how near the client is to it. A level falls with each frame that comes soon after the last one, and a
// client below certain levels is warned, ignored or cut off:
//
//   level = (level * (window - 1) + milliseconds since the last frame) / window, at most the highest level
#pragma once

#include <cstdint>
#include <string_view>

class RateLimit {
 public:
    RateLimit(std::uint16_t family, std::uint16_t subtype) : family_(family), subtype_(subtype) {}

    // Reads the data of SNAC (0x0001, 0x0007). What cannot be understood sets no limit.
    void Read(std::string_view data);

    // Reads the data of SNAC (0x0001, 0x000A): the server tells new limits or warns. Throws RuntimeError
    // (InvalidArgument) for data that end too early.
    void ReadChange(std::string_view data);

    // A frame of the kind left at that time, in milliseconds.
    void Count(std::int64_t now);

    // Whether one more now would leave the level where nobody is warned.
    bool Allows(std::int64_t now) const;

 private:
    std::uint16_t ClassIn(std::string_view data, std::size_t classSize) const;
    void TakeClass(std::string_view& data);
    std::int64_t LevelAfter(std::int64_t now) const;

    std::uint16_t family_, subtype_;
    std::uint16_t class_ = 0;
    std::int64_t window_ = 0;  // 0: no limit is known
    std::int64_t level_ = 0;
    std::int64_t clear_ = 0;
    std::int64_t highest_ = 0;
    std::int64_t last_ = 0;
};
