#include "os/net/Sockets.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>

#include "os/posix/FileDescriptor.h"

namespace os::net {
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

sockaddr_in SocketAddress(std::uint32_t address, std::uint16_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(port);
    result.sin_addr.s_addr = address;
    return result;
}

Transfer Result(ssize_t count) {
    if (count >= 0) return {Outcome::Done, static_cast<std::size_t>(count), 0};
    const int number = errno;
    const bool later = number == EAGAIN || number == EINTR || number == ENOBUFS;
    return {later ? Outcome::WouldBlock : Outcome::Failed, 0, number};
}

}  // namespace

const std::int32_t kConnectionReset = ECONNRESET;
const std::int32_t kNoMemory = ENOMEM;
const std::int32_t kTryAgain = EAGAIN;

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

Socket OpenSocket() {
    Socket socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket) posix::ThrowLastError();
    return socket;
}

void StartConnecting(SocketHandle handle, Address address, std::uint16_t port) {
    const auto peer = SocketAddress(address.value, port);
    const int result = ::connect(Descriptor(handle), reinterpret_cast<const sockaddr*>(&peer), sizeof peer);
    if (result != 0 && errno != EINPROGRESS) posix::ThrowLastError();
}

void SetOutgoingOptions(SocketHandle handle) {
    SetOption(handle, IPPROTO_TCP, TCP_NODELAY, 1);
    SetOption(handle, SOL_SOCKET, SO_KEEPALIVE, 1);
    SetOption(handle, IPPROTO_TCP, TCP_KEEPIDLE, kKeepAliveIdleSeconds);
    SetOption(handle, IPPROTO_TCP, TCP_KEEPINTVL, kKeepAliveIntervalSeconds);
    SetOption(handle, IPPROTO_TCP, TCP_KEEPCNT, kKeepAliveProbes);
}

std::int32_t PendingError(SocketHandle handle) {
    int number = 0;
    socklen_t size = sizeof number;
    ::getsockopt(Descriptor(handle), SOL_SOCKET, SO_ERROR, &number, &size);
    return number;
}

void EndSending(SocketHandle handle) {
    ::shutdown(Descriptor(handle), SHUT_WR);
}

void ResetOnClose(SocketHandle handle) {
    const linger reset{1, 0};
    ::setsockopt(Descriptor(handle), SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
}

Socket ListenOnLoopback(std::uint16_t port) {
    auto socket = OpenSocket();
    // Lets a restarted program listen while connections of the last one are in TIME_WAIT; two listeners on
    // one port are still refused (socket(7)).
    SetOption(socket.Get(), SOL_SOCKET, SO_REUSEADDR, 1);
    // Accepted sockets inherit it.
    SetOption(socket.Get(), IPPROTO_TCP, TCP_NODELAY, 1);
    const auto address = SocketAddress(htonl(INADDR_LOOPBACK), port);
    const int descriptor = Descriptor(socket.Get());
    if (::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(descriptor, SOMAXCONN) != 0) {
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

}  // namespace os::net
