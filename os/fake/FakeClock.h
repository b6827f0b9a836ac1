// FakeClock: time for tests. It moves only when a test or RunEventLoopUntil moves it.
#pragma once

#include <cstdint>

#include "os/Clock.h"

namespace os::fake {

// Moves the steady time on by `milliseconds`; every timer fires at its own moment on the way, and what the
// timers set off is handled before the time goes on. The time of day stays.
void AdvanceClock(std::int64_t milliseconds);

// What Now() answers; 1 January 2000, 00:00:00 in a fresh world.
void SetLocalTime(const LocalTime& time);

}  // namespace os::fake
