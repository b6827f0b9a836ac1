// Waiting: what the system has for waiting on many sockets at once. Each system implements this header; who
// waits is in os/Watched.h, and what a turn of the loop consists of in net/.
//
// Everything watched has a token; the system works with sockets and tokens only, and reports what is ready by
// token. A token that has been given up since means nobody any more.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "os/Sockets.h"

namespace os {

using Token = std::uint64_t;

inline constexpr std::uint32_t kReadable = 1;
inline constexpr std::uint32_t kWritable = 2;
// An error or a hang-up, which need not be asked for.
inline constexpr std::uint32_t kBroken = 4;
// Of a listening socket, which is watched for nothing else: a client waits.
inline constexpr std::uint32_t kAcceptable = 8;

// Waits for the events of the socket from now on; `isNew` when it was not waited for so far. Throws
// RuntimeError.
void WaitFor(SocketHandle socket, Token token, std::uint32_t events, bool isNew);
// Waits no more; the socket stays open.
void StopWaitingFor(SocketHandle socket, Token token);
// The socket behind the token is about to be closed.
void ForgetWaiting(Token token);
// The loop has got something to do without an event of the system: a woken watch, or a timer that is now
// the first.
void LoopHasWork();

struct ReadyToken {
    Token token;
    std::uint32_t events;
};
// Waits until something is ready, `milliseconds` at most, and tells what it is; returns how many of `ready`
// were filled. What is not taken then is told again. Throws RuntimeError. Not on Windows, where the message
// loop waits (os/win32/EventLoop.cpp).
std::size_t WaitUntilReady(std::span<ReadyToken> ready, std::int64_t milliseconds);

}  // namespace os
