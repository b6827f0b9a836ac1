// Turn: one turn of the event loop, as far as it is the same on every system: due timers and posted calls.
// The system's half adds the events of its sockets and windows around it (os/EventLoop.h).
#pragma once

#include <cstdint>

namespace os::net {

// A handler may run a loop of its own, whose turns lie within the outer one. Begins and ends one turn: ends
// the gathering of the interrupted handler, and destroys what was buried when no handler runs any more.
class TurnScope {
 public:
    TurnScope();
    ~TurnScope();
    TurnScope(const TurnScope&) = delete;
    TurnScope& operator=(const TurnScope&) = delete;
};

// Ticks the timers that are due and were started before the turn; stops when `stop` has become true. Whether
// there were any.
bool TickDueTimers(const bool& stop);

// Makes the calls that were posted before. The same.
bool RunPostedCalls(const bool& stop);
bool AnyPosted();

// Milliseconds until the first timer is due, 0 when it is already; `limit` when there is none before.
std::int64_t MillisecondsToFirstTimer(std::int64_t limit);

}  // namespace os::net
