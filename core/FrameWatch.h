// FrameWatch: somebody who looks at every frame that passes, and changes none. While there is no watch
// nothing is copied and nothing called.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/SessionFeature.h"

// A frame that has been handled. Views are valid during the call.
struct PassedFrame {
    enum class Fate : std::uint8_t {
        Passed,     // as it came, but for its number
        Rewritten,  // with another payload
        Dropped,    // by a feature: it went no further
        Injected,   // the program's own: it came from nobody
    };

    Direction direction;
    std::uint8_t channel;
    Fate fate;
    std::uint16_t numberBefore;  // as its sender wrote it; of an injected frame 0
    std::uint16_t numberAfter;   // as its receiver reads it; of a dropped frame 0
    std::string_view before;     // payloads; of an injected frame ""
    std::string_view after;      // the same bytes as `before` where it passed; of a dropped frame ""
};

class FrameWatch {
 public:
    // In the order in which the frames of a direction leave. Must not throw.
    virtual void Frame(std::size_t slot, const PassedFrame& frame) = 0;

 protected:
    ~FrameWatch() = default;
};
