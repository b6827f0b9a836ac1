// EventLoop: the one loop of the program's one thread. Socket events, timers, posted calls and, on Windows,
// window messages arrive through it one at a time; so nothing in the program is locked.
//
// On Windows it is the message loop, and socket events and timers keep coming inside the modal loops of
// message boxes and menus. So no code may keep a half-done frame, an iterator or a reference across such a
// call. An exception that leaves a handler is reported through Trap under "EventLoop:Dispatch"; it ends
// nothing.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "base/Event.h"

namespace os {

// Runs the loop until QuitEventLoop; returns its exit code.
int RunEventLoop();

// Makes RunEventLoop return after the event that is being handled. May be called from any handler.
void QuitEventLoop(int exitCode);

// Handles what is pending, without waiting, and returns.
void ProcessPendingEvents();

// Runs the loop until `done` returns true or the time is over; returns the last result of `done`. `done` is
// asked after every turn of the loop.
bool RunEventLoopUntil(const std::function<bool()>& done, std::int64_t milliseconds);

// Calls `task` later, from the loop, after the events that are already waiting. From the loop's thread only.
void Post(std::function<void()> task);

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
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace os
