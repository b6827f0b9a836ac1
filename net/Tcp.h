// Tcp: non-blocking TCP sockets that report through the event loop of the program's one thread.
//
// The contract, line by line; tests/contract/TcpContract.cpp runs each on every implementation:
//   1. No event is raised from inside a call: closing, sending or connecting only ever reports later.
//   2. All received bytes come before Closed. One arrival takes what is available, up to os::kReadBytes.
//   3. Send never blocks and never drops on a connected socket. Close flushes what is queued, then sends FIN;
//      it lingers on its own until the peer has taken nothing for kFlushLimitMs, for kMaxFlushMs at most;
//      what is left then is lost and reported, and the peer sees a reset instead of an end. A reset by the
//      peer is reported like an end: behind the bytes that the system still has, once these may be read.
//   4. After Close() no event comes. A handler may close or destroy any socket, its own included.
//   5. Listening on a port again keeps the clients that wait in the backlog. Loopback only, and nobody else
//      can listen on the same address and port.
//   6. Of what a socket reads for another, kQueueLimit bytes at most wait there: then it is not read, and
//      reading resumes at half. One stuck reader costs a fixed amount of memory and slows nobody else.
//   7. Fairness: a busy socket gets a turn of at most kTurnBytes, then the others, timers and other events.
//
// All sockets share one read buffer. What Data hands out lies in it and may be changed in place; a part of it
// that is given to another socket's Send while the event is handled is not copied: contiguous parts leave in
// one system call when the handler returns. So bytes given to Send must not be changed afterwards within
// the same event. Nothing else is asked of the caller: any other memory is copied by Send.
//
// Nagle's delay is off on every connected socket; keep-alive probes are on for sockets that Connect made,
// so that a server lost in a machine's sleep is noticed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "base/Event.h"
#include "os/Sockets.h"

namespace net {

// Bytes that one socket may deliver in one turn, at the most.
inline constexpr std::size_t kTurnBytes = std::size_t{256} * 1024;
// Bytes queued before the other side is not read.
inline constexpr std::size_t kQueueLimit = std::size_t{256} * 1024;
// How long a closed socket tries to empty its queue: since the peer took something last, and in all.
inline constexpr std::int64_t kFlushLimitMs = 10'000;
inline constexpr std::int64_t kMaxFlushMs = 5 * 60'000;

class TcpSocket {
 public:
    enum class State {
        Closed,      // never opened, closed by us, or failed
        Connecting,  // resolving the host's name or waiting for the server
        Connected,   // Send delivers; also after the peer has ended its direction, until Close()
    };

    // Received bytes, in the shared read buffer: valid until the handler returns, may be changed in place.
    Event<std::span<char>> Data;
    // An outgoing connection is established.
    Event<> Connected;
    // The peer has ended its direction; all its bytes have been delivered.
    Event<> Closed;
    // Nothing has come for the time that TellSilence was given.
    Event<> Silent;
    // The connection failed or was reset; the operating system's error number. The socket is closed.
    Event<std::int32_t> Failed;

    TcpSocket();
    ~TcpSocket();  // as Close()
    TcpSocket(const TcpSocket&) = delete;
    TcpSocket& operator=(const TcpSocket&) = delete;

    // Takes the pending connection that a listener reported under this identifier. Throws RuntimeError
    // (InvalidArgument) when there is none. A request is valid while its ConnectionRequest event is handled.
    void Accept(std::int32_t requestId);

    // Starts a connection to a host (dotted IPv4 text or a name, which is resolved without blocking) and
    // port. The result comes as Connected or Failed. A socket that was open is closed first. Throws
    // std::bad_alloc.
    void Connect(const std::string& host, std::uint16_t port);

    // Queues bytes for the peer and sends what can go at once. Bytes for a socket that is not connected are
    // dropped. A failure to send, or no memory to queue them, is reported later, through Failed.
    void Send(std::string_view bytes);

    // Ends the connection: what is queued is flushed in the background, then FIN follows. Idempotent.
    void Close();

    State GetState() const;

    // The two ends of the connection; all zeros while it does not stand.
    os::Ends Ends() const;

    // What has become of the host that Connect was given last: whether it has an address at all, and whether
    // it has one of IPv4. Both false until the addresses are there.
    bool HostIsFound() const { return hostIsFound_; }
    bool HostHasIPv4() const { return hostHasIPv4_; }

    // Bytes accepted by Send that the system has not taken yet.
    std::size_t QueuedBytes() const;

    // What this socket receives goes out on `partner`: reading pauses when the partner's queue is at
    // kQueueLimit and resumes at half of it. The link ends with either socket. One partner per socket.
    void ReadFor(TcpSocket& partner);

    // Silent comes once when nothing has been received for so long; 0 takes the wish back. Time counts only
    // while the socket is read, neither held nor paused, and a last look at what the system has comes before.
    // Throws std::bad_alloc.
    void TellSilence(std::int64_t milliseconds);

    // Stops or resumes reading whatever the queues say. Nothing is lost: the bytes wait in the system, and
    // so does the news that the peer has closed.
    void HoldReading(bool hold);

 private:
    friend class Connection;

    struct Impl;
    std::unique_ptr<Impl> impl_;
    bool hostIsFound_ = false;
    bool hostHasIPv4_ = false;
};

class TcpListener {
 public:
    // A client wants to connect; the identifier is for TcpSocket::Accept within this event. A request that
    // nobody accepts is closed when the handler returns.
    Event<std::int32_t> ConnectionRequest;

    TcpListener();
    ~TcpListener();
    TcpListener(const TcpListener&) = delete;
    TcpListener& operator=(const TcpListener&) = delete;

    // Listens on 127.0.0.1. On a listener that already listens on the port this changes nothing, so clients
    // in the backlog stay. Port 0 picks a free one. Throws RuntimeError with the system's error number, for
    // instance when the port is taken. When open files run out, accepting pauses and recovers by itself.
    void Listen(std::uint16_t port);
    void Close();

    // The port listened on, 0 when not listening.
    std::uint16_t Port() const;

 private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// Runs the event loop until the queues of closed sockets have been flushed, for `milliseconds` at most.
// For the end of the program. Returns whether all went out.
bool FlushClosedSockets(std::int64_t milliseconds);

}  // namespace net
