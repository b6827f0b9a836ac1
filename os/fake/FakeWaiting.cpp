// Waiting in memory: level-triggered, in the order in which sockets were opened. When nothing is ready the
// clock jumps.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <utility>

#include "os/Waiting.h"
#include "os/fake/FakeClock.h"
#include "os/fake/FakeWire.h"

namespace os {
namespace {

// A loop that waits that often without a timer of its own waits for ever.
constexpr int kMaxIdleWaits = 1000;
constexpr std::int64_t kWithoutTimer = 60'000;

struct Waiter {
    Token token;
    std::uint32_t events;
};
// Never destroyed: sockets of static storage close after the end of main.
auto& waiters = *new std::map<SocketHandle, Waiter>;
bool isInterrupted = false;

}  // namespace

void WaitFor(SocketHandle socket, Token token, std::uint32_t events, bool) {
    waiters[socket] = {token, events};
}

void StopWaitingFor(SocketHandle socket, Token) {
    waiters.erase(socket);
}

void ForgetWaiting(Token token) {
    std::erase_if(waiters, [=](const auto& waiter) { return waiter.second.token == token; });
}

// Every turn looks for it before it waits.
void LoopHasWork() {}

std::size_t WaitUntilReady(std::span<ReadyToken> ready, std::int64_t milliseconds) {
    if (std::exchange(isInterrupted, false)) return 0;
    static int idleWaits = 0;
    std::size_t count = 0;
    for (const auto& [socket, waiter] : waiters) {
        const auto events = fake::ReadyEvents(socket, waiter.events);
        if (events != 0) ready[count++] = {waiter.token, events};
        if (count == ready.size()) break;
    }
    if (count == 0) fake::MoveClock(milliseconds);
    idleWaits = count == 0 && milliseconds >= kWithoutTimer ? idleWaits + 1 : 0;
    if (idleWaits < kMaxIdleWaits) return count;
    std::fputs("the loop would wait for ever\n", stderr);
    std::abort();
}

void fake::InterruptWait() {
    isInterrupted = true;
}

}  // namespace os
