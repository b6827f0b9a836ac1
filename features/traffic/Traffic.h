// Traffic: the frames that have passed lately, both before and after Wrenlow. 8 MB are kept at most, and of
// those the oldest go first. Off until somebody looks: then no frame is copied, and the relay does not call.
//
// Frames are numbered from 0 in the order of passing; a number stays its frame's name until Clear().
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "core/FrameWatch.h"
#include "os/Clock.h"
#include "os/Sockets.h"

class Relay;

// A frame as it is kept. Views are valid until the loop runs again.
struct TrafficFrame : PassedFrame {
    std::size_t slot;           // of the leg
    std::int64_t microseconds;  // since 1970, of the turn of the loop in which it passed
};

// The leg of a frame that is kept.
struct TrafficLeg {
    std::size_t slot = 0;
    os::Ends client;  // of the client's connection: here Wrenlow, there the client
    os::Ends server;
};

class Traffic final : private FrameWatch {
 public:
    static constexpr std::size_t kMaxBytes = std::size_t{8} * 1024 * 1024;

    // A frame has passed: for who writes it away at once. Bound, it switches the watching on like SwitchOn.
    using Sink = std::function<void(const TrafficLeg&, const TrafficFrame&)>;

    explicit Traffic(Relay& relay) : relay_(relay) {}
    ~Traffic();
    Traffic(const Traffic&) = delete;
    Traffic& operator=(const Traffic&) = delete;

    // Keeps frames from now on, or no longer; what is kept stays until Clear().
    void SwitchOn(bool on);
    bool IsOn() const { return isOn_; }
    void SetSink(Sink sink);
    // Nothing is kept then; numbers begin with 0 again.
    void Clear();

    // The numbers of the frames kept: [First(), First() + Count()).
    std::uint64_t First() const { return first_; }
    std::size_t Count() const { return static_cast<std::size_t>(end_ - first_); }
    TrafficFrame At(std::uint64_t number) const;
    // Of a frame that is kept.
    const TrafficLeg& LegOf(std::size_t slot) const;
    // How often Clear() was called: numbers of another generation are of other frames.
    std::uint32_t Generation() const { return generation_; }

 private:
    struct Entry {
        std::int64_t microseconds;
        const char* bytes;  // before, and after where that differs
        std::uint32_t slot;
        std::uint16_t sizeBefore, sizeAfter;
        std::uint16_t numberBefore, numberAfter;
        std::uint8_t channel;
        Direction direction;
        PassedFrame::Fate fate;
    };
    struct Chunk {
        std::unique_ptr<char[]> bytes;
        std::size_t used = 0;  // of the bytes
        std::uint64_t first = 0;
        std::vector<Entry> entries;

        bool HasRoomFor(std::size_t more) const;
    };

    // A leg, and the number behind its last frame.
    struct KnownLeg {
        TrafficLeg leg;
        std::uint64_t end = 0;
    };

    void Frame(std::size_t slot, const PassedFrame& frame) override;
    void Keep(std::size_t slot, const PassedFrame& frame);
    Chunk& NextChunk();
    void ForgetLegs();
    KnownLeg& Meet(std::size_t slot);
    void Watch();

    Relay& relay_;
    std::deque<Chunk> chunks_;
    std::map<std::size_t, KnownLeg> legs_;
    KnownLeg* latest_ = nullptr;  // the leg of the last frame
    std::uint64_t first_ = 0, end_ = 0;
    std::uint64_t turn_ = 0;  // in which the clock was read
    std::int64_t microseconds_ = 0;
    Sink sink_;
    std::uint32_t generation_ = 0;
    bool isOn_ = false;
};
