// Watched: whatever waits on a socket of the system; the same on every one (os/Waiting.h is what differs).
//
// A Watched may be unwatched or destroyed at any time, also by its own handler: an event that the system has
// already handed out for it is recognised by its token and ignored. Readiness is level-triggered: what is not
// taken is reported again. Once it has a slot nothing here allocates, so that an end never fails.
#pragma once

#include <cstdint>
#include <memory>

#include "os/Waiting.h"

namespace os {

class Watched {
 public:
    Watched() = default;
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;
    virtual ~Watched() { Forget(); }

    // Called from the loop with what is ready; with 0 after Wake. Must not throw.
    virtual void Ready(std::uint32_t events) = 0;

 protected:
    // What Watch and Wake need, taken in advance. Throws std::bad_alloc.
    void TakeSlot();

    // Watches the socket for the events from now on. One socket at a time. Throws RuntimeError or
    // std::bad_alloc.
    void Watch(SocketHandle socket, std::uint32_t events);

    // Ends the watch of a socket that stays open.
    void Unwatch(SocketHandle socket);

    // Calls Ready(0) from the next turn of the loop, with or without a socket.
    void Wake();

    // No call comes any more. To be called before the socket is closed.
    void Forget();

 private:
    friend void Bury(std::unique_ptr<Watched> watched);
    friend void EmptyGraveyard();

    static constexpr std::uint32_t kNoSlot = UINT32_MAX;
    static constexpr std::uint32_t kNotWatched = UINT32_MAX;

    std::uint32_t slot_ = kNoSlot;
    std::uint32_t events_ = kNotWatched;
    std::unique_ptr<Watched> nextBuried_;
};

// Destroys the object when no handler runs any more: its own may be the one that gives it up.
void Bury(std::unique_ptr<Watched> watched);

// For the loop.

void ReportReady(Token token, std::uint32_t events);
// Calls what Wake asked for; stops when `stop` has become true. Whether there was any.
bool HandleWoken(const bool& stop);
bool AnyWoken();
// Destroys what was buried.
void EmptyGraveyard();

}  // namespace os
