// The loop: a turn handles the sockets that are ready, then the timers that are due.
#include "net/EventLoop.h"

#include <algorithm>
#include <array>

#include "base/Trap.h"
#include "net/Turn.h"
#include "os/Clock.h"
#include "os/Watched.h"

namespace {

// The most turns of ProcessPendingEvents: what starts itself again must not keep it for ever.
constexpr int kMaxPendingTurns = 16;
constexpr std::int64_t kMaxWaitMs = 60'000;
constexpr std::size_t kBatch = 128;  // sockets taken from the system at once

bool quit = false;
int exitCode = 0;

bool HandleReady(std::int64_t wait, const bool& stop) {
    std::array<os::ReadyToken, kBatch> ready;
    const auto count = os::WaitUntilReady(ready, wait);
    for (std::size_t index = 0; index < count && !stop; ++index)
        os::ReportReady(ready[index].token, ready[index].events);
    return count > 0;
}

// One turn, which waits for `limit` milliseconds at most. Whether anything happened. A quit ends the turn
// after the event that asked for it; turns after that (a clean end flushes) are whole again.
bool Turn(std::int64_t limit) {
    const bool quitBefore = std::exchange(quit, false);
    const bool& stop = quit;
    const net::TurnScope scope;
    const auto wait = os::AnyWoken() ? 0 : net::MillisecondsToFirstTimer(std::min(limit, kMaxWaitMs));
    bool any = Trap("EventLoop:Dispatch", [&] { return HandleReady(wait, stop); });
    if (!stop) any |= os::HandleWoken(stop);
    if (!stop) any |= net::TickDueTimers(stop);
    quit |= quitBefore;
    return any;
}

}  // namespace

int net::RunEventLoop() {
    while (!quit) Turn(kMaxWaitMs);
    quit = false;
    return exitCode;
}

void net::QuitEventLoop(int code) {
    quit = true;
    exitCode = code;
}

void net::ProcessPendingEvents() {
    for (int turns = 0; turns < kMaxPendingTurns && Turn(0); ++turns) {
    }
}

bool net::RunEventLoopUntil(const std::function<bool()>& done, std::int64_t milliseconds) {
    const auto deadline = os::MonotonicMilliseconds() + milliseconds;
    Turn(0);
    while (!done()) {
        const auto left = deadline - os::MonotonicMilliseconds();
        if (left <= 0) return false;
        Turn(left);
    }
    return true;
}
