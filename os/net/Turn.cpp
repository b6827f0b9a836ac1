#include "os/net/Turn.h"

#include <algorithm>

#include "base/Trap.h"
#include "os/Clock.h"
#include "os/EventLoop.h"
#include "os/PostedCalls.h"
#include "os/net/Connection.h"
#include "os/net/TimerHeap.h"
#include "os/net/Waiting.h"

namespace {

struct Work {
    os::net::TimerHeap timers;
    os::PostedCalls posted;
    int depth = 0;
};
// Never destroyed: timers of static storage stop after the end of main.
Work& work = *new Work;

void StartTimer(os::net::TimerEntry& entry, std::int64_t delay) {
    entry.due = os::MonotonicMilliseconds() + delay;
    work.timers.Add(entry);
    if (&work.timers.Top() == &entry) os::net::LoopHasWork();
}

}  // namespace

namespace os::net {

TurnScope::TurnScope() {
    if (++work.depth > 1) Connection::EndGathering();
}

TurnScope::~TurnScope() {
    if (--work.depth == 0) EmptyGraveyard();
}

// Timers started by the ticks wait for the next turn.
bool TickDueTimers(const bool& stop) {
    if (work.timers.Empty()) return false;
    const auto now = MonotonicMilliseconds();
    const auto lastOrder = work.timers.LastOrder();
    bool any = false;
    while (!stop && !work.timers.Empty()) {
        auto& entry = work.timers.Top();
        if (entry.due > now || entry.order > lastOrder) break;
        work.timers.Remove(entry);
        if (entry.period > 0) {
            entry.due = now + entry.period;
            work.timers.Add(entry);
        }
        any = true;
        Trap("EventLoop:Dispatch", [timer = static_cast<Timer*>(entry.timer)] { timer->Tick(); });
    }
    return any;
}

bool RunPostedCalls(const bool& stop) {
    return work.posted.Run(stop);
}

bool AnyPosted() {
    return !work.posted.Empty();
}

std::int64_t MillisecondsToFirstTimer(std::int64_t limit) {
    if (work.timers.Empty()) return limit;
    return std::clamp<std::int64_t>(work.timers.Top().due - MonotonicMilliseconds(), 0, limit);
}

}  // namespace os::net

void os::Post(std::function<void()> task) {
    work.posted.Add(std::move(task));
    net::LoopHasWork();
}

struct os::Timer::Impl : net::TimerEntry {};

os::Timer::Timer() : impl_(std::make_unique<Impl>()) {
    impl_->timer = this;
}

os::Timer::~Timer() {
    Stop();
}

void os::Timer::StartOnce(std::int64_t milliseconds) {
    Stop();
    impl_->period = 0;
    StartTimer(*impl_, std::max<std::int64_t>(milliseconds, 0));
}

void os::Timer::StartRepeating(std::int64_t milliseconds) {
    Stop();
    impl_->period = std::max<std::int64_t>(milliseconds, 1);
    StartTimer(*impl_, impl_->period);
}

void os::Timer::Stop() {
    work.timers.Remove(*impl_);
}

bool os::Timer::IsRunning() const {
    return impl_->place != net::TimerEntry::kNotRunning;
}
