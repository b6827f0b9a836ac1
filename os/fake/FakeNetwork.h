// FakeNetwork: the other side of every connection, played by a test, below the real connections of net/.
//
// Who connects to 127.0.0.1 or localhost finds the listeners of the same test, or is refused. A connection to
// any other host waits until the test accepts or refuses it; "*.invalid" is an unknown host, and nobody
// answers a question after "*.unanswered". Nothing is raised before the loop runs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "net/EventLoop.h"
#include "os/fake/FakeWire.h"

namespace os::fake {

class Peer {
 public:
    explicit Peer(std::shared_ptr<End> end) : end_(std::move(end)) {}

    // What was asked for by who connected; the port alone for a client of a listener.
    const std::string& Host() const { return end_->host; }
    std::uint16_t Port() const { return end_->port; }

    // Answers to who is connecting.
    void AcceptConnect() {
        const auto socket = end_->other.lock();
        if (socket && !end_->isConnected) Join(socket, end_);
    }
    void RefuseConnect(std::int32_t number = kConnectionRefused) { Abort(*end_, number); }

    // Sends bytes. What is sent before the loop runs is one arrival (of os::kReadBytes at most).
    void Send(std::string_view bytes) {
        const auto socket = end_->other.lock();
        if (socket && end_->isConnected && !end_->hasEnded) socket->inbox.append(bytes);
    }
    // Send, and then handles all events.
    void Feed(std::string_view bytes) {
        Send(bytes);
        net::ProcessPendingEvents();
    }

    // What has come and the test has not asked for yet; TakeReceived empties it.
    const std::string& Received() const { return end_->inbox; }
    std::string TakeReceived() { return std::exchange(end_->inbox, {}); }
    // So many of the bytes that were sent has the other not read yet.
    std::size_t Unread() const {
        const auto other = end_->other.lock();
        return other ? other->inbox.size() : 0;
    }
    // The peer holds that many bytes in Received(); the sender has to keep more until they are taken.
    void LimitReceived(std::size_t bytes) { end_->inboxLimit = bytes; }

    // Ends the peer's direction, which also follows the other's end by itself.
    void Close() { EndDirection(*end_); }
    void Reset(std::int32_t number = kConnectionReset) { Abort(*end_, number); }

    // Whether the other has ended its direction after all its bytes, or aborted the connection.
    bool SawClose() const { return end_->otherEnded; }
    bool SawReset() const { return end_->failure != 0; }
    // Whether the connection stands: accepted and not ended by either side.
    bool IsConnected() const { return end_->isConnected && !SawReset() && !SawClose() && !end_->hasEnded; }

 private:
    std::shared_ptr<End> end_;
};

std::deque<Peer>& OutgoingPeers();

// The outgoing connections to other hosts since ResetWorld, in the order in which they were begun; what is
// pending is handled first, because a name has to be looked up.
inline std::size_t OutgoingCount() {
    net::ProcessPendingEvents();
    return OutgoingPeers().size();
}
inline Peer& Outgoing(std::size_t index) {
    net::ProcessPendingEvents();
    return OutgoingPeers().at(index);
}

// A client connects to the listener on the port. Throws std::logic_error when nobody listens there.
Peer& ConnectTo(std::uint16_t port);

// So many of the next sends find no buffers, and nothing tells when there are any again.
void RefuseSends(std::size_t count);

// How many sockets the program holds of the system once nothing is pending, listeners aside.
std::size_t CountSockets();
inline std::size_t OpenSocketCount() {
    net::ProcessPendingEvents();
    return CountSockets();
}

}  // namespace os::fake
