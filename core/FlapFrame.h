// FlapFrame: a FLAP frame where it lies, in a receive buffer. The stream is read and renumbered through this
// view; the record clsHeaderFLAP is made only for frames that a feature looks into. Layout: see
// core/clsHeaderFLAP.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

class FlapFrame {
 public:
    static constexpr std::size_t kHeaderLength = 6;
    static constexpr std::size_t kMaxPayload = 0xFFFF;
    static constexpr char kMarker = '*';

    // `bytes` begins with a frame's marker and holds at least its header.
    explicit FlapFrame(std::span<char> bytes) : bytes_(bytes) {}

    std::uint8_t Channel() const { return static_cast<std::uint8_t>(bytes_[1]); }
    std::uint16_t Sequence() const { return Word(2); }
    // Header and payload together, as the header declares it.
    std::size_t TotalLength() const { return kHeaderLength + Word(4); }
    std::string_view Payload() const {
        return std::string_view(bytes_.data(), bytes_.size()).substr(kHeaderLength);
    }

    // Writes what every frame that leaves carries: the marker, whatever came in its place, and the number.
    void Stamp(std::uint16_t sequence) {
        bytes_[0] = kMarker;
        bytes_[2] = static_cast<char>(sequence >> 8);
        bytes_[3] = static_cast<char>(sequence & 0xFF);
    }

 private:
    std::uint16_t Word(std::size_t offset) const {
        return static_cast<std::uint16_t>(static_cast<std::uint8_t>(bytes_[offset]) << 8 |
                                          static_cast<std::uint8_t>(bytes_[offset + 1]));
    }

    std::span<char> bytes_;
};
