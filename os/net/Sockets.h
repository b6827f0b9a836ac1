// Sockets: the system calls under TCP sockets, in the one form in which the rest of os/net uses them. Each
// system implements this header; nothing here blocks, raises events or keeps state.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace os::net {

// A descriptor, or what Windows has for one.
using SocketHandle = std::intptr_t;
inline constexpr SocketHandle kNoSocket = -1;

void CloseSocket(SocketHandle handle);

// Owns a socket of the system. Every socket is non-blocking, at the latest when it is
// watched, and not inherited by other programs.
class Socket {
 public:
    Socket() = default;
    explicit Socket(SocketHandle handle) : handle_(handle) {}
    Socket(Socket&& other) noexcept : handle_(std::exchange(other.handle_, kNoSocket)) {}
    Socket& operator=(Socket&& other) noexcept {
        if (this != &other) {
            Close();
            handle_ = std::exchange(other.handle_, kNoSocket);
        }
        return *this;
    }
    ~Socket() { Close(); }

    SocketHandle Get() const { return handle_; }
    explicit operator bool() const { return handle_ != kNoSocket; }

    void Close() {
        if (handle_ != kNoSocket) CloseSocket(std::exchange(handle_, kNoSocket));
    }

 private:
    SocketHandle handle_ = kNoSocket;
};

// What a call has moved: bytes, nothing for now (WouldBlock), or nothing any more (Failed, with the system's
// error number).
enum class Outcome : std::uint8_t { Done, WouldBlock, Failed };
struct Transfer {
    Outcome outcome = Outcome::Done;
    std::size_t bytes = 0;
    std::int32_t number = 0;
};

// Done with 0 bytes: the peer has ended its direction.
Transfer Receive(SocketHandle handle, std::span<char> buffer);
// The same for bytes that nobody wants; `scratch` may be written to.
Transfer Discard(SocketHandle handle, std::span<char> scratch);

struct Part {
    const char* bytes;
    std::size_t size;
};
Transfer Send(SocketHandle handle, std::span<const Part> parts);

// An IPv4 address in the byte order of the network.
struct Address {
    std::uint32_t value;
};

// A socket to connect or listen with. Throws RuntimeError.
Socket OpenSocket();
// Throws RuntimeError when the connection fails at once. The socket is to be watched already: a system may
// tell of a failure only once.
void StartConnecting(SocketHandle handle, Address address, std::uint16_t port);

// Gives a connection of ours, now that it stands, the options that os/Tcp.h promises.
void SetOutgoingOptions(SocketHandle handle);

// The error that the system keeps for the socket; 0 when there is none.
std::int32_t PendingError(SocketHandle handle);

// Sends FIN after what the system still has to send.
void EndSending(SocketHandle handle);

// Closing will reset the connection.
void ResetOnClose(SocketHandle handle);

// Listens on 127.0.0.1, to the exclusion of everybody else. Throws RuntimeError.
Socket ListenOnLoopback(std::uint16_t port);
std::uint16_t PortOf(SocketHandle listening);

enum class AcceptOutcome : std::uint8_t { Accepted, NobodyWaits, ClientIsGone, OutOfResources };
AcceptOutcome AcceptClient(SocketHandle listening, Socket& accepted);

// Numbers for failures that are found by us, in the system's terms.
extern const std::int32_t kConnectionReset;
extern const std::int32_t kNoMemory;
extern const std::int32_t kTryAgain;  // no thread or descriptor to resolve a name with

}  // namespace os::net
