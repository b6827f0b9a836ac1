// The loop of a test: a turn raises the network events, the timers that are due and the calls posted before
// the turn, in this order. Waiting means moving the clock to the next timer.
#include "os/fake/FakeLoop.h"

#include <algorithm>
#include <map>
#include <stdexcept>

#include "base/Trap.h"
#include "os/EventLoop.h"
#include "os/PostedCalls.h"
#include "os/fake/FakeClock.h"

namespace {

// A world that is still busy after so many turns feeds itself.
constexpr int kMostTurns = 1'000'000;

struct Moment {
    std::int64_t due = 0;
    std::uint64_t order = 0;  // timers that are due together tick in the order of their starts
    auto operator<=>(const Moment&) const = default;
};

struct TimerEntry {
    os::Timer* timer = nullptr;
    Moment moment;
    std::int64_t period = 0;  // 0: ticks once
};

struct Loop {
    std::int64_t now = 0;
    std::uint64_t starts = 0;
    std::map<Moment, TimerEntry*> timers;
    os::PostedCalls posted;
    bool quit = false;
    int exitCode = 0;
};
// Never destroyed: timers of static storage stop after the end of main.
Loop& loop = *new Loop;
const os::fake::WorldPart part([] { loop = Loop(); });

bool IsInTable(const TimerEntry& entry) {
    const auto found = loop.timers.find(entry.moment);
    return found != loop.timers.end() && found->second == &entry;
}

void PutInTable(TimerEntry& entry, std::int64_t milliseconds) {
    entry.moment = {loop.now + std::max<std::int64_t>(milliseconds, 0), ++loop.starts};
    loop.timers.emplace(entry.moment, &entry);
}

// Timers that are started by the ticks wait for the next turn.
bool TickDueTimers() {
    const auto lastStart = loop.starts;
    bool any = false;
    while (!loop.quit && !loop.timers.empty()) {
        const auto [moment, entry] = *loop.timers.begin();
        if (moment.due > loop.now || moment.order > lastStart) break;
        loop.timers.erase(loop.timers.begin());
        if (entry->period > 0) PutInTable(*entry, entry->period);
        any = true;
        Trap("EventLoop:Dispatch", [timer = entry->timer] { timer->Tick(); });
    }
    return any;
}

// One turn. Whether anything happened. A quit ends the turn after the event that asked for it; turns after
// that (a clean end flushes) are whole again.
bool Turn() {
    const bool quitBefore = std::exchange(loop.quit, false);
    bool any = os::fake::DeliverNetworkEvents(loop.quit);
    any |= TickDueTimers();
    any |= loop.posted.Run(loop.quit);
    loop.quit |= quitBefore;
    return any;
}

// Handles everything that needs no waiting.
void RunUntilIdle() {
    for (int turns = 0; Turn(); ++turns) {
        if (turns == kMostTurns) throw std::logic_error("the events never end");
    }
}

// Moves the time to the next timer that is due until `limit`; whether there is one.
bool MoveToNextTimer(std::int64_t limit) {
    if (loop.timers.empty()) return false;
    const auto due = loop.timers.begin()->first.due;
    if (due > limit) return false;
    loop.now = std::max(loop.now, due);
    return true;
}

}  // namespace

int os::RunEventLoop() {
    while (!loop.quit) {
        if (Turn() || loop.quit || MoveToNextTimer(INT64_MAX)) continue;
        throw std::logic_error("the loop would wait for ever");
    }
    loop.quit = false;
    return loop.exitCode;
}

void os::QuitEventLoop(int exitCode) {
    loop.quit = true;
    loop.exitCode = exitCode;
}

void os::ProcessPendingEvents() {
    RunUntilIdle();
}

bool os::RunEventLoopUntil(const std::function<bool()>& done, std::int64_t milliseconds) {
    const auto deadline = loop.now + milliseconds;
    for (int turns = 0; turns < kMostTurns; ++turns) {
        const bool busy = Turn();
        if (done()) return true;
        if (busy || MoveToNextTimer(deadline)) continue;
        loop.now = std::max(loop.now, deadline);
        return done();
    }
    throw std::logic_error("the events never end");
}

void os::Post(std::function<void()> task) {
    loop.posted.Add(std::move(task));
}

struct os::Timer::Impl : TimerEntry {};

os::Timer::Timer() : impl_(std::make_unique<Impl>()) {
    impl_->timer = this;
}

os::Timer::~Timer() {
    Stop();
}

void os::Timer::StartOnce(std::int64_t milliseconds) {
    Stop();
    impl_->period = 0;
    PutInTable(*impl_, milliseconds);
}

void os::Timer::StartRepeating(std::int64_t milliseconds) {
    Stop();
    impl_->period = std::max<std::int64_t>(milliseconds, 1);
    PutInTable(*impl_, impl_->period);
}

void os::Timer::Stop() {
    if (IsInTable(*impl_)) loop.timers.erase(impl_->moment);
}

bool os::Timer::IsRunning() const {
    return IsInTable(*impl_);
}

std::int64_t os::MonotonicMilliseconds() {
    return loop.now;
}

void os::fake::AdvanceClock(std::int64_t milliseconds) {
    const auto target = loop.now + milliseconds;
    RunUntilIdle();
    while (MoveToNextTimer(target)) RunUntilIdle();
    loop.now = std::max(loop.now, target);
}
