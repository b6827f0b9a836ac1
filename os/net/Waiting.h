// Waiting: between the watches and what the system has for waiting on many sockets at once.
//
// Everything watched has a token; the system's half works with sockets and tokens only, and reports what is
// ready by token. A token that has been given up since means nobody any more.
#pragma once

#include <cstdint>

#include "os/net/Sockets.h"

namespace os::net {

using Token = std::uint64_t;

// The system's half.

// Waits for the events of the socket from now on; `isNew` when it was not waited for so far. Throws
// RuntimeError.
void WaitFor(SocketHandle socket, Token token, std::uint32_t events, bool isNew);
// Waits no more; the socket stays open.
void StopWaitingFor(SocketHandle socket, Token token);
// The socket behind the token is about to be closed.
void ForgetWaiting(Token token);
// The loop has got something to do without an event of the system: a woken watch, a posted call, or a timer
// that is now the first.
void LoopHasWork();

// The watches' half, for the system's.

void ReportReady(Token token, std::uint32_t events);
// Calls what Wake asked for before this call; stops when `stop` has become true. Whether there was any.
bool HandleWoken(const bool& stop);
bool AnyWoken();
// Destroys what was buried.
void EmptyGraveyard();

}  // namespace os::net
