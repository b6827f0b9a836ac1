// Turn: one turn of the event loop, as far as it is the same on every system: the timers that are due.
// net/EventLoop.cpp adds the events of sockets around it, on Windows the message loop
// (os/win32/EventLoop.cpp).
#pragma once

#include <cstdint>

namespace net {

// A handler may run a loop of its own, whose turns lie within the outer one. Begins and ends one turn: ends
// the gathering of the interrupted handler, and destroys what was buried when no handler runs any more.
class TurnScope {
 public:
    TurnScope();
    ~TurnScope();
    TurnScope(const TurnScope&) = delete;
    TurnScope& operator=(const TurnScope&) = delete;
};

// Another one in each turn: what is asked for once a turn, as the time of day, can be kept with it.
std::uint64_t TurnNumber();

// Ticks the timers that are due and were started before the turn; stops when `stop` has become true. Whether
// there were any.
bool TickDueTimers(const bool& stop);

// Milliseconds until the first timer is due, 0 when it is already; `limit` when there is none before.
std::int64_t MillisecondsToFirstTimer(std::int64_t limit);

}  // namespace net
