// Sockets: the system calls under TCP sockets, in the one form in which net/ uses them. Each system
// implements this header; nothing here blocks, raises events or keeps state.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace os {

// A descriptor, or what Windows has for one.
using SocketHandle = std::intptr_t;
inline constexpr SocketHandle kNoSocket = -1;

void CloseSocket(SocketHandle handle);

// Owns a socket of the system. Every socket is non-blocking, at the latest when it is watched, and not
// inherited by other programs.
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

// What one call should take at the most. Under Wine each call asks another process, and a look in vain costs
// as much as one that finds something.
#ifdef _WIN32
inline constexpr std::size_t kReadBytes = std::size_t{256} * 1024;
inline constexpr int kAcceptsPerTurn = 1;
// Wine never tells of the end of a client that was gone before it was accepted.
inline constexpr bool kLooksAtAccepted = true;
#else
// Nearly four full segments of Linux's loopback (65,483 bytes): what leaves as a small rest besides full ones
// is delivered, and waked for, like a full one.
inline constexpr std::size_t kReadBytes = 260'000;
inline constexpr int kAcceptsPerTurn = 16;
inline constexpr bool kLooksAtAccepted = false;
#endif

// What a call has moved: bytes, nothing for now, of whose end the watch tells (WouldBlock), nothing for want
// of buffers, of whose end nothing tells (NoBuffers), or nothing any more (Failed, with the system's error
// number).
enum class Outcome : std::uint8_t { Done, WouldBlock, NoBuffers, Failed };
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

// An IPv4 or IPv6 address in the byte order of the network; of the former the first four bytes count.
struct Address {
    std::array<std::uint8_t, 16> bytes{};
    bool isIPv6 = false;
};

// The two ends of a connection: ours and the peer's. All zeros where the system does not say, as of a
// connection that does not stand.
struct Endpoint {
    Address address;
    std::uint16_t port = 0;
};
struct Ends {
    Endpoint here, there;
};
Ends EndsOf(SocketHandle handle);

// "10.0.0.5", "2001:db8::1" (RFC 5952, without the mixed notation); and the reverse of both, nothing for a
// text that is neither.
std::string TextOf(const Address& address);
std::optional<Address> AddressFrom(std::string_view text);

// A socket to connect with to such an address. Throws RuntimeError.
Socket OpenSocket(const Address& address);
// Throws RuntimeError when the connection fails at once. The socket is to be watched already: a system may
// tell of a failure only once.
void StartConnecting(SocketHandle handle, const Address& address, std::uint16_t port);

// Gives a connection of ours, now that it stands, the options that net/Tcp.h promises.
void SetOutgoingOptions(SocketHandle handle);

// The error that the system keeps for the socket; 0 when there is none.
std::int32_t PendingError(SocketHandle handle);
// Whether an error found while connecting means that the connection stood and was broken since: what the peer
// sent meanwhile can still be received.
bool StoodBefore(std::int32_t error);

// Bytes that the system has taken and the peer's has not; 0 where the system does not say.
std::size_t UnsentBytes(SocketHandle handle);

// Sends FIN after what the system still has to send.
void EndSending(SocketHandle handle);

// Closing will reset the connection.
void ResetOnClose(SocketHandle handle);

// Listens on 127.0.0.1, to the exclusion of everybody else. Port 0 picks a free one. Throws RuntimeError.
Socket ListenOnLoopback(std::uint16_t port);
std::uint16_t PortOf(SocketHandle listening);

enum class AcceptOutcome : std::uint8_t { Accepted, NobodyWaits, ClientIsGone, OutOfResources };
AcceptOutcome AcceptClient(SocketHandle listening, Socket& accepted);

// Numbers for failures that are found by us, in the system's terms.
extern const std::int32_t kConnectionRefused;
extern const std::int32_t kConnectionReset;
extern const std::int32_t kNoMemory;
extern const std::int32_t kTryAgain;  // no thread or descriptor to resolve a name with
extern const std::int32_t kTimedOut;
extern const std::int32_t kUnknownName;  // nobody has the host's name

// What an error number of sockets and look-ups means, in the system's words.
std::string SocketErrorText(std::int32_t number);

}  // namespace os
