// FakeNetwork: the other side of every TcpSocket, played by a test.
//
// A TcpSocket that connects to 127.0.0.1 or localhost finds the TcpListeners of the same test, or is refused.
// A connection to any other host waits until the test accepts or refuses it; "*.invalid" is an unknown
// host. Nothing is raised before the loop runs.
//
// The fake is strict: bytes given to Send out of the read buffer are taken when the handler returns, and
// when they were changed in between, the loop throws std::logic_error. Each arrival is memory of its own,
// so that a sanitizer sees a handler's span used after its time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace os::fake {

inline constexpr std::int32_t kConnectionRefused = 10061;
inline constexpr std::int32_t kConnectionReset = 10054;
inline constexpr std::int32_t kAddressInUse = 10048;
inline constexpr std::int32_t kHostNotFound = 11001;

struct Connection;  // one side of a connection

class Peer {
 public:
    explicit Peer(std::shared_ptr<Connection> side) : side_(std::move(side)) {}

    // What the socket asked for when it connected; the port alone for a client of a listener.
    const std::string& Host() const;
    std::uint16_t Port() const;

    // Answers to a socket that is connecting.
    void AcceptConnect();
    void RefuseConnect(std::int32_t number = kConnectionRefused);

    // Sends bytes to the socket. What is sent before the loop runs is one arrival (of kReadChunk at most).
    void Send(std::string_view bytes);
    // Send, and then handles all events.
    void Feed(std::string_view bytes);

    // What the socket has sent and the peer has not been asked for yet; TakeReceived empties it.
    const std::string& Received() const;
    std::string TakeReceived();
    // The peer holds that many bytes in Received(); more stays queued at the socket until they are taken.
    void LimitReceived(std::size_t bytes);

    void Close();  // ends the peer's direction
    void Reset(std::int32_t number = kConnectionReset);

    // Whether the socket has ended its direction after all its bytes, or aborted the connection.
    bool SawClose() const;
    bool SawReset() const;
    // Whether the connection stands: accepted and not ended by either side.
    bool IsConnected() const;

 private:
    std::shared_ptr<Connection> side_;
};

// The outgoing connections to other hosts since ResetWorld, in the order of the Connect calls.
std::size_t OutgoingCount();
Peer& Outgoing(std::size_t index);

// A client connects to the listener on the port. Throws std::logic_error when nobody listens there.
Peer& ConnectTo(std::uint16_t port);

// How many TcpSockets are open, and how many closed ones still flush.
std::size_t OpenSocketCount();
std::size_t LingeringSocketCount();

}  // namespace os::fake
