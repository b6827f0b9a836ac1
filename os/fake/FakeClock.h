// FakeClock: time for tests. It moves only when a test moves it, or when the loop waits: then it jumps.
#pragma once

#include <cstdint>

#include "net/EventLoop.h"
#include "os/Clock.h"
#include "os/fake/FakeWorld.h"

namespace os::fake {

struct TimeOfDay {
    LocalTime local{2000, 1, 1, 0, 0, 0};
    std::int64_t secondsSince1970 = 0;  // in tests LocalTimeOf answers UTC
};
inline TimeOfDay& timeOfDay = Fresh<TimeOfDay>();

// What a wait for events does when there are none.
void MoveClock(std::int64_t milliseconds);

// The next wait tells nothing, as after a signal: what is ready is seen later than the time.
void InterruptWait();

// Moves the steady time on by `milliseconds`; every timer fires at its own moment on the way, and what the
// timers set off is handled before the time goes on. The time of day stays.
inline void AdvanceClock(std::int64_t milliseconds) {
    net::RunEventLoopUntil([] { return false; }, milliseconds);
    net::ProcessPendingEvents();
}

}  // namespace os::fake
