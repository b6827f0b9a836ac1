// EventLoop: the one loop of the program's one thread. Socket events, timers and, on Windows, window
// messages arrive through it one at a time; so nothing in the program is locked.
//
// On Windows it is the message loop, and socket events and timers keep coming inside the modal loops of
// message boxes and menus. So no code may keep a half-done frame, an iterator or a reference across such a
// call. An exception that leaves a handler is reported through Trap under "EventLoop:Dispatch"; it ends
// nothing.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <utility>

#include "base/Event.h"

namespace net {

// Runs the loop until QuitEventLoop; returns its exit code.
int RunEventLoop();

// Makes RunEventLoop return after the event that is being handled. May be called from any handler.
void QuitEventLoop(int exitCode);

// Handles what is pending, without waiting, and returns.
void ProcessPendingEvents();

// Runs the loop until `done` returns true or the time is over; returns the last result of `done`. `done` is
// asked after every turn of the loop.
bool RunEventLoopUntil(const std::function<bool()>& done, std::int64_t milliseconds);

// Making a timer can run out of memory; starting and stopping one never fails. Started with 0 it ticks in the
// next turn, behind the events that are already waiting.
class Timer {
 public:
    Event<> Tick;

    Timer();
    ~Timer();  // as Stop()
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    // One Tick after the given time. A running timer starts anew.
    void StartOnce(std::int64_t milliseconds);
    // A Tick every period; ticks that were missed are not made up for.
    void StartRepeating(std::int64_t milliseconds);
    void Stop();
    bool IsRunning() const;

 private:
    struct Earlier {
        bool operator()(const Timer* one, const Timer* other) const { return one->due_ < other->due_; }
    };
    using Running = std::set<Timer*, Earlier>;
    friend bool TickDueTimers(const bool& stop);
    friend std::int64_t MillisecondsToFirstTimer(std::int64_t limit);

    static Running& running_;
    static std::uint64_t starts_;

    void Start(std::int64_t delay);
    void RaiseTick();

    // When it is due, and the order of the starts: timers that are due together tick in that order.
    std::pair<std::int64_t, std::uint64_t> due_;
    std::int64_t period_ = 0;   // 0: ticks once
    Running::node_type entry_;  // its own, while it does not run: so starting and stopping never fail
    Running::iterator place_;   // while it runs
};

}  // namespace net
