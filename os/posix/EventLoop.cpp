// The loop: a turn handles what epoll reports, then the timers that are due, then the calls posted before.
#include "os/EventLoop.h"

#include <algorithm>

#include "base/Trap.h"
#include "os/Clock.h"
#include "os/net/Turn.h"
#include "os/posix/Reactor.h"

namespace {

// The most turns of ProcessPendingEvents: calls that post themselves again must not keep it for ever.
constexpr int kMostPendingTurns = 16;
constexpr std::int64_t kLongestWaitMs = 60'000;

bool quit = false;
int exitCode = 0;

// One turn, which waits for `limit` milliseconds at most. Whether anything happened. A quit ends the turn
// after the event that asked for it; turns after that (a clean end flushes) are whole again.
bool Turn(std::int64_t limit) {
    const bool quitBefore = std::exchange(quit, false);
    const bool& stop = quit;
    const os::net::TurnScope scope;
    const auto wait =
        os::net::AnyPosted() ? 0 : os::net::MillisecondsToFirstTimer(std::min(limit, kLongestWaitMs));
    bool any = Trap("EventLoop:Dispatch",
                    [&] { return os::posix::HandleReadyWatches(static_cast<int>(wait), stop); });
    if (!stop) any |= os::net::TickDueTimers(stop);
    if (!stop) any |= os::net::RunPostedCalls(stop);
    quit |= quitBefore;
    return any;
}

}  // namespace

int os::RunEventLoop() {
    while (!quit) Turn(kLongestWaitMs);
    quit = false;
    return exitCode;
}

void os::QuitEventLoop(int code) {
    quit = true;
    exitCode = code;
}

void os::ProcessPendingEvents() {
    for (int turns = 0; turns < kMostPendingTurns && Turn(0); ++turns) {
    }
}

bool os::RunEventLoopUntil(const std::function<bool()>& done, std::int64_t milliseconds) {
    const auto deadline = MonotonicMilliseconds() + milliseconds;
    Turn(0);
    while (!done()) {
        const auto left = deadline - MonotonicMilliseconds();
        if (left <= 0) return false;
        Turn(left);
    }
    return true;
}
