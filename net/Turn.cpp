#include "net/Turn.h"

#include <algorithm>
#include <utility>

#include "base/Trap.h"
#include "net/Connection.h"
#include "net/EventLoop.h"
#include "os/Clock.h"
#include "os/Watched.h"

namespace {
int depth = 0;  // of the turns that are under way
std::uint64_t turns = 0;
}  // namespace

// Never destroyed: timers of static storage stop after the end of main.
net::Timer::Running& net::Timer::running_ = *new Running;
std::uint64_t net::Timer::starts_ = 0;

net::Timer::Timer() {
    Running made{this};
    entry_ = made.extract(made.begin());
}

net::Timer::~Timer() {
    Stop();
}

void net::Timer::StartOnce(std::int64_t milliseconds) {
    period_ = 0;
    Start(std::max<std::int64_t>(milliseconds, 0));
}

void net::Timer::StartRepeating(std::int64_t milliseconds) {
    period_ = std::max<std::int64_t>(milliseconds, 1);
    Start(period_);
}

void net::Timer::Start(std::int64_t delay) {
    Stop();
    due_ = {os::MonotonicMilliseconds() + delay, ++starts_};
    place_ = running_.insert(std::move(entry_)).position;
    if (place_ == running_.begin()) os::LoopHasWork();
}

void net::Timer::Stop() {
    if (IsRunning()) entry_ = running_.extract(place_);
}

bool net::Timer::IsRunning() const {
    return entry_.empty();
}

void net::Timer::RaiseTick() {
    Stop();
    if (period_ > 0) Start(period_);
    Trap("EventLoop:Dispatch", [this] { Tick(); });  // may destroy the timer
}

namespace net {

TurnScope::TurnScope() {
    ++turns;
    if (++depth > 1) Connection::EndGathering();
}

TurnScope::~TurnScope() {
    if (--depth == 0) os::EmptyGraveyard();
}

std::uint64_t TurnNumber() {
    return turns;
}

// Timers started by the ticks wait for the next turn.
bool TickDueTimers(const bool& stop) {
    auto& running = Timer::running_;
    const std::pair latest(running.empty() ? 0 : os::MonotonicMilliseconds(), Timer::starts_);
    bool any = false;
    while (!stop && !running.empty()) {
        auto* const timer = *running.begin();
        if (timer->due_.first > latest.first || timer->due_.second > latest.second) break;
        any = true;
        timer->RaiseTick();
    }
    return any;
}

std::int64_t MillisecondsToFirstTimer(std::int64_t limit) {
    if (Timer::running_.empty()) return limit;
    const auto due = (*Timer::running_.begin())->due_.first;
    return std::clamp<std::int64_t>(due - os::MonotonicMilliseconds(), 0, limit);
}

}  // namespace net
