#include "os/Sockets.h"

#include <winsock2.h>

#include <windows.h>

#include <mstcpip.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <array>

#include "os/SystemAddress.h"
#include "os/win32/SystemError.h"

namespace os {
namespace {

// A server that is lost without a word is noticed after a minute and ten probes, the system's fixed number.
constexpr ULONG kKeepAliveIdleMs = 60'000;
constexpr ULONG kKeepAliveIntervalMs = 6'000;

// Winsock is started with the first socket and stays until the process ends.
void StartWinsock() {
    static const int failure = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data);
    }();
    if (failure != 0) ThrowSystemError(static_cast<DWORD>(failure));
}

[[noreturn]] void ThrowSocketError() {
    ThrowSystemError(static_cast<DWORD>(WSAGetLastError()));
}

SOCKET Native(SocketHandle handle) {
    return static_cast<SOCKET>(handle);
}

void SetOption(SocketHandle handle, int level, int option, int value) {
    // Each of them only makes things better; a socket that refuses one still works.
    setsockopt(Native(handle), level, option, reinterpret_cast<const char*>(&value), sizeof value);
}

// Programs that we start inherit sockets unless told otherwise: they would hold ports and connections open.
void KeepToOurselves(SOCKET native) {
    SetHandleInformation(reinterpret_cast<HANDLE>(native), HANDLE_FLAG_INHERIT, 0);
}

void SwitchOffNagle(SocketHandle handle) {
    SetOption(handle, IPPROTO_TCP, TCP_NODELAY, 1);
}

void KeepAlive(SocketHandle handle) {
    tcp_keepalive settings{1, kKeepAliveIdleMs, kKeepAliveIntervalMs};
    DWORD unused = 0;
    if (WSAIoctl(Native(handle), SIO_KEEPALIVE_VALS, &settings, sizeof settings, nullptr, 0, &unused, nullptr,
                 nullptr) != 0) {
        SetOption(handle, SOL_SOCKET, SO_KEEPALIVE, 1);  // with the system's own times
    }
}

Transfer Result(int result, DWORD bytes) {
    if (result == 0) return {Outcome::Done, bytes, 0};
    const int number = WSAGetLastError();
    if (number == WSAEWOULDBLOCK) return {Outcome::WouldBlock, 0, number};
    return {number == WSAENOBUFS ? Outcome::NoBuffers : Outcome::Failed, 0, number};
}

}  // namespace

const std::int32_t kConnectionRefused = WSAECONNREFUSED;
const std::int32_t kConnectionReset = WSAECONNRESET;
const std::int32_t kNoMemory = WSAENOBUFS;
const std::int32_t kTryAgain = WSATRY_AGAIN;
const std::int32_t kTimedOut = WSAETIMEDOUT;
const std::int32_t kUnknownName = WSAHOST_NOT_FOUND;

std::string SocketErrorText(std::int32_t number) {
    return SystemErrorLine(static_cast<DWORD>(number));
}

void CloseSocket(SocketHandle handle) {
    closesocket(Native(handle));
}

// A reset reads like an end under Wine, which has taken the error to itself.
Transfer Receive(SocketHandle handle, std::span<char> buffer) {
    WSABUF room{static_cast<ULONG>(buffer.size()), buffer.data()};
    DWORD count = 0;
    DWORD flags = 0;
    const int result = WSARecv(Native(handle), &room, 1, &count, &flags, nullptr, nullptr);
    return Result(result, count);
}

Transfer Discard(SocketHandle handle, std::span<char> scratch) {
    return Receive(handle, scratch);
}

// Sends until all is taken or more is refused: the system tells of new room only after it has refused.
Transfer Send(SocketHandle handle, std::span<const Part> parts) {
    std::size_t total = 0;
    std::size_t taken = 0;  // of the first part
    while (!parts.empty()) {
        std::array<WSABUF, 64> buffers;
        const auto count = std::min(parts.size(), buffers.size());
        for (std::size_t i = 0; i < count; ++i) {
            buffers[i] = {static_cast<ULONG>(parts[i].size), const_cast<char*>(parts[i].bytes)};
        }
        buffers[0].buf += taken;
        buffers[0].len -= static_cast<ULONG>(taken);
        DWORD sent = 0;
        const int result =
            WSASend(Native(handle), buffers.data(), static_cast<DWORD>(count), &sent, 0, nullptr, nullptr);
        const auto transfer = Result(result, sent);
        if (transfer.outcome == Outcome::WouldBlock && total > 0) break;
        // Bytes that were taken are told now, the want of buffers with the next call.
        if (transfer.outcome == Outcome::NoBuffers && total > 0) break;
        if (transfer.outcome != Outcome::Done) return transfer;
        total += sent;
        for (taken += sent; !parts.empty() && taken >= parts[0].size; parts = parts.subspan(1)) {
            taken -= parts[0].size;
        }
    }
    return {Outcome::Done, total, 0};
}

// It becomes non-blocking with its watch.
Socket OpenSocket(const Address& address) {
    StartWinsock();
    const SOCKET native = WSASocketA(address.isIPv6 ? AF_INET6 : AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr,
                                     0, WSA_FLAG_OVERLAPPED);
    if (native == INVALID_SOCKET) ThrowSocketError();
    KeepToOurselves(native);
    return Socket(static_cast<SocketHandle>(native));
}

void StartConnecting(SocketHandle handle, const Address& address, std::uint16_t port) {
    const SystemAddress peer(address, port);
    if (connect(Native(handle), peer.Get(), peer.size) != 0 && WSAGetLastError() != WSAEWOULDBLOCK) {
        ThrowSocketError();
    }
}

// Not before: until a socket is connected, Wine asks the wineserver for each option.
void SetOutgoingOptions(SocketHandle handle) {
    SwitchOffNagle(handle);
    KeepAlive(handle);
}

Ends EndsOf(SocketHandle handle) {
    sockaddr_storage here{};
    sockaddr_storage there{};
    int size = sizeof here;
    getsockname(Native(handle), reinterpret_cast<sockaddr*>(&here), &size);
    size = sizeof there;
    getpeername(Native(handle), reinterpret_cast<sockaddr*>(&there), &size);
    return {EndpointFrom(reinterpret_cast<const sockaddr&>(here)),
            EndpointFrom(reinterpret_cast<const sockaddr&>(there))};
}

std::int32_t PendingError(SocketHandle handle) {
    int number = 0;
    int size = sizeof number;
    getsockopt(Native(handle), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&number), &size);
    return number;
}

bool StoodBefore(std::int32_t error) {
    return error == WSAECONNRESET || error == WSAECONNABORTED;
}

std::size_t UnsentBytes(SocketHandle) {
    return 0;
}

void EndSending(SocketHandle handle) {
    shutdown(Native(handle), SD_SEND);
}

void ResetOnClose(SocketHandle handle) {
    const linger reset{1, 0};
    setsockopt(Native(handle), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&reset), sizeof reset);
}

Socket ListenOnLoopback(std::uint16_t port) {
    auto socket = OpenSocket(kLoopback);
    // On Windows others could otherwise listen on the same port and take our clients.
    SetOption(socket.Get(), SOL_SOCKET, SO_EXCLUSIVEADDRUSE, 1);
    const SystemAddress address(kLoopback, port);
    if (bind(Native(socket.Get()), address.Get(), address.size) != 0 ||
        listen(Native(socket.Get()), SOMAXCONN) != 0) {
        ThrowSocketError();
    }
    return socket;
}

std::uint16_t PortOf(SocketHandle listening) {
    sockaddr_in address{};
    int size = sizeof address;
    getsockname(Native(listening), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

AcceptOutcome AcceptClient(SocketHandle listening, Socket& accepted) {
    const SOCKET native = accept(Native(listening), nullptr, nullptr);
    if (native != INVALID_SOCKET) {
        accepted = Socket(static_cast<SocketHandle>(native));
        KeepToOurselves(native);
        SwitchOffNagle(accepted.Get());
        return AcceptOutcome::Accepted;
    }
    switch (WSAGetLastError()) {
        case WSAEWOULDBLOCK:
            return AcceptOutcome::NobodyWaits;
        case WSAEMFILE:
        case WSAENOBUFS:
            return AcceptOutcome::OutOfResources;
        default:
            return AcceptOutcome::ClientIsGone;
    }
}

}  // namespace os
