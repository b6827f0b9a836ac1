#include "os/Sockets.h"

#include <linux/sockios.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>

#include "os/SystemAddress.h"
#include "os/posix/FileDescriptor.h"

namespace os {
namespace {

// A server that is lost without a word is noticed after 60 + 6 * 10 seconds.
constexpr int kKeepAliveIdleSeconds = 60;
constexpr int kKeepAliveIntervalSeconds = 10;
constexpr int kKeepAliveProbes = 6;

int Descriptor(SocketHandle handle) {
    return static_cast<int>(handle);
}

void SetOption(SocketHandle handle, int level, int option, int value) {
    // Each of them only makes things better; a socket that refuses one still works.
    ::setsockopt(Descriptor(handle), level, option, &value, sizeof value);
}

Transfer Result(ssize_t count) {
    if (count >= 0) return {Outcome::Done, static_cast<std::size_t>(count), 0};
    const int number = errno;
    if (number == EAGAIN || number == EINTR) return {Outcome::WouldBlock, 0, number};
    const bool noBuffers = number == ENOBUFS || number == ENOMEM;
    return {noBuffers ? Outcome::NoBuffers : Outcome::Failed, 0, number};
}

}  // namespace

const std::int32_t kConnectionRefused = ECONNREFUSED;
const std::int32_t kConnectionReset = ECONNRESET;
const std::int32_t kNoMemory = ENOMEM;
const std::int32_t kTryAgain = EAGAIN;
const std::int32_t kTimedOut = ETIMEDOUT;
const std::int32_t kUnknownName = posix::NumberOfLookUp(EAI_NONAME);

std::string SocketErrorText(std::int32_t number) {
    const auto failure = posix::NumberOfLookUp(number);  // the way back is the same
    return failure < 0 ? ::gai_strerror(failure) : std::generic_category().message(number);
}

void CloseSocket(SocketHandle handle) {
    ::close(Descriptor(handle));
}

Transfer Receive(SocketHandle handle, std::span<char> buffer) {
    return Result(::recv(Descriptor(handle), buffer.data(), buffer.size(), 0));
}

// The system need not even copy the bytes (MSG_TRUNC, tcp(7)).
Transfer Discard(SocketHandle handle, std::span<char> scratch) {
    return Result(::recv(Descriptor(handle), scratch.data(), scratch.size(), MSG_TRUNC));
}

Transfer Send(SocketHandle handle, std::span<const Part> parts) {
    if (parts.size() == 1) {
        return Result(::send(Descriptor(handle), parts[0].bytes, parts[0].size, MSG_NOSIGNAL));
    }
    std::array<iovec, 256> vectors;
    const auto count = std::min(parts.size(), vectors.size());
    for (std::size_t i = 0; i < count; ++i) vectors[i] = {const_cast<char*>(parts[i].bytes), parts[i].size};
    msghdr message{};
    message.msg_iov = vectors.data();
    message.msg_iovlen = count;
    return Result(::sendmsg(Descriptor(handle), &message, MSG_NOSIGNAL));
}

Socket OpenSocket(const Address& address) {
    Socket socket(
        ::socket(address.isIPv6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket) posix::ThrowLastError();
    return socket;
}

void StartConnecting(SocketHandle handle, const Address& address, std::uint16_t port) {
    const SystemAddress peer(address, port);
    const int result = ::connect(Descriptor(handle), peer.Get(), peer.size);
    if (result != 0 && errno != EINPROGRESS) posix::ThrowLastError();
}

void SetOutgoingOptions(SocketHandle handle) {
    SetOption(handle, IPPROTO_TCP, TCP_NODELAY, 1);
    SetOption(handle, SOL_SOCKET, SO_KEEPALIVE, 1);
    SetOption(handle, IPPROTO_TCP, TCP_KEEPIDLE, kKeepAliveIdleSeconds);
    SetOption(handle, IPPROTO_TCP, TCP_KEEPINTVL, kKeepAliveIntervalSeconds);
    SetOption(handle, IPPROTO_TCP, TCP_KEEPCNT, kKeepAliveProbes);
}

Ends EndsOf(SocketHandle handle) {
    sockaddr_storage here{};
    sockaddr_storage there{};
    socklen_t size = sizeof here;
    ::getsockname(Descriptor(handle), reinterpret_cast<sockaddr*>(&here), &size);
    size = sizeof there;
    ::getpeername(Descriptor(handle), reinterpret_cast<sockaddr*>(&there), &size);
    return {EndpointFrom(reinterpret_cast<const sockaddr&>(here)),
            EndpointFrom(reinterpret_cast<const sockaddr&>(there))};
}

std::int32_t PendingError(SocketHandle handle) {
    int number = 0;
    socklen_t size = sizeof number;
    ::getsockopt(Descriptor(handle), SOL_SOCKET, SO_ERROR, &number, &size);
    return number;
}

bool StoodBefore(std::int32_t error) {
    return error == ECONNRESET || error == EPIPE;
}

std::size_t UnsentBytes(SocketHandle handle) {
    int count = 0;
    return ::ioctl(Descriptor(handle), SIOCOUTQ, &count) == 0 ? static_cast<std::size_t>(count) : 0;
}

void EndSending(SocketHandle handle) {
    ::shutdown(Descriptor(handle), SHUT_WR);
}

void ResetOnClose(SocketHandle handle) {
    const linger reset{1, 0};
    ::setsockopt(Descriptor(handle), SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
}

Socket ListenOnLoopback(std::uint16_t port) {
    auto socket = OpenSocket(kLoopback);
    // Lets a restarted program listen while connections of the last one are in TIME_WAIT; two listeners on
    // one port are still refused (socket(7)).
    SetOption(socket.Get(), SOL_SOCKET, SO_REUSEADDR, 1);
    // Accepted sockets inherit it.
    SetOption(socket.Get(), IPPROTO_TCP, TCP_NODELAY, 1);
    const SystemAddress address(kLoopback, port);
    const int descriptor = Descriptor(socket.Get());
    if (::bind(descriptor, address.Get(), address.size) != 0 || ::listen(descriptor, SOMAXCONN) != 0) {
        posix::ThrowLastError();
    }
    return socket;
}

std::uint16_t PortOf(SocketHandle listening) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(Descriptor(listening), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

AcceptOutcome AcceptClient(SocketHandle listening, Socket& accepted) {
    accepted = Socket(::accept4(Descriptor(listening), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (accepted) return AcceptOutcome::Accepted;
    switch (errno) {
        case EAGAIN:
            return AcceptOutcome::NobodyWaits;
        case EMFILE:
        case ENFILE:
        case ENOBUFS:
        case ENOMEM:
            return AcceptOutcome::OutOfResources;
        default:
            return AcceptOutcome::ClientIsGone;  // accept(2) passes on errors of the network
    }
}

}  // namespace os
