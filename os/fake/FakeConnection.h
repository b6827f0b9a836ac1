// FakeConnection: one side of a connection in memory. Its owner is a TcpSocket, or a test through Peer, or,
// while a closed socket flushes, nobody.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "os/Tcp.h"

namespace os::fake {

struct SocketState;

struct Connection {
    SocketState* owner = nullptr;  // raises the events; null at the test's side and after Close
    std::weak_ptr<Connection> opposite;
    TcpSocket::State state = TcpSocket::State::Closed;
    std::string host;
    std::uint16_t port = 0;

    std::string queue;  // accepted by Send, not taken by the opposite side yet
    std::string inbox;  // arrived, not delivered yet
    std::size_t inboxLimit = kReadChunk;
    bool ending = false;  // closed by us: the end follows the queue

    // News that wait to be delivered.
    bool resolving = false;
    bool established = false;
    bool ended = false;  // the opposite side has ended its direction
    bool endDelivered = false;
    std::int32_t failure = 0;
};

// Connects two sides; nobody hears of it.
void Join(const std::shared_ptr<Connection>& one, const std::shared_ptr<Connection>& other);

// The side, so far connecting, is connected with its next event.
void LetKnow(Connection& side);

// Moves what the opposite side has room for; the end follows when the queue is empty.
void Flow(Connection& side);

// Ends our direction after the queue.
void End(Connection& side);

// Breaks the connection at once, for both sides.
void Abort(Connection& side, std::int32_t number);

}  // namespace os::fake
