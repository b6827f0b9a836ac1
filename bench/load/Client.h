// The client's end of connections through the proxy under test.
#pragma once

#include <netinet/in.h>
#include <poll.h>

#include <vector>

#include "bench/load/Common.h"
#include "bench/load/Server.h"
#include "bench/load/Stream.h"

namespace bench {

struct Step {  // one exchange of the proxy handshake
    Bytes send;
    std::size_t expect;
};
std::vector<Step> HandshakeSteps();
bool ReplyGranted(const Bytes& reply);

constexpr std::uint16_t kClientFirstSeq = 0xFF00;  // wraps early in every longer run

// Where clients connect to: the proxy, or the server itself without one.
sockaddr_in Target();
// A socket that waits 10 s at most, without Nagle's delay.
int ClientSocket(int extraFlags);

// Through the proxy to the server, with the hello behind it; waits for the server's hello if asked to.
StreamPtr OpenConnection(bool awaitSignon = true);
// Waits until so many frames have arrived in all.
void AwaitFrames(Stream& s, std::uint64_t total);

// Tells the server what to do on this connection: source modes send `budget` bytes for `ms` at most.
void Command(Stream& s, Mode mode, std::uint64_t budget = 0, std::uint64_t ms = 0);
void Ping(Stream& s);
void OpenPingClose();

// Moves data both ways on one connection until done() holds.
template <class Done, class OnFrame>
void Pump(Stream& s, double limitSeconds, Done done, OnFrame onFrame) {
    double deadline = Now() + limitSeconds;
    while (!done()) {
        if (Now() > deadline) Fail("time-out: the transfer did not finish");
        if (s.peerClosed) Fail("connection closed before everything arrived");
        pollfd p{s.fd, short(POLLIN | (s.HasOutput() ? POLLOUT : 0)), 0};
        ::poll(&p, 1, 1000);
        if (p.revents & (POLLIN | POLLHUP | POLLERR)) s.Receive(MSG_DONTWAIT, onFrame);
        if ((p.revents & POLLOUT) && !s.Flush(MSG_DONTWAIT)) Fail("connection lost while sending");
    }
}

}  // namespace bench
