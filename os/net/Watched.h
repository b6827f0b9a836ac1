// Watched: whatever waits on a socket of the system.
//
// A Watched may be unwatched or destroyed at any time, also by its own handler: an event that the system has
// already handed out for it is recognised by its token and ignored. Readiness is level-triggered: what is not
// taken is reported again.
#pragma once

#include <cstdint>
#include <memory>

#include "os/net/Sockets.h"

namespace os::net {

inline constexpr std::uint32_t kReadable = 1;
inline constexpr std::uint32_t kWritable = 2;
// An error or a hang-up, which need not be asked for.
inline constexpr std::uint32_t kBroken = 4;
// Of a listening socket, which is watched for nothing else: a client waits.
inline constexpr std::uint32_t kAcceptable = 8;

class Watched {
 public:
    Watched() = default;
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;
    virtual ~Watched() { Forget(); }

    // Called from the loop with what is ready; with 0 after Wake. Must not throw.
    virtual void Ready(std::uint32_t events) = 0;

 protected:
    // Watches the socket for the events from now on. One socket at a time. Throws RuntimeError.
    void Watch(SocketHandle socket, std::uint32_t events);

    // Ends the watch of a socket that stays open.
    void Unwatch(SocketHandle socket);

    // Calls Ready(0) from the next turn of the loop, with or without a socket.
    void Wake();

    // No call comes any more. To be called before the socket is closed.
    void Forget();

 private:
    static constexpr std::uint32_t kNoSlot = UINT32_MAX;
    static constexpr std::uint32_t kNotWatched = UINT32_MAX;

    void TakeSlot();

    std::uint32_t slot_ = kNoSlot;
    std::uint32_t events_ = kNotWatched;
};

// Destroys the object when no handler runs any more: its own may be the one that gives it up.
void Bury(std::unique_ptr<Watched> watched);

}  // namespace os::net
