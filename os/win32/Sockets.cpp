#include "os/net/Sockets.h"

#include <winsock2.h>

#include <windows.h>

#include <mstcpip.h>

#include <algorithm>
#include <array>

#include "os/win32/SystemError.h"

namespace os::net {
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

sockaddr_in SocketAddress(std::uint32_t address, std::uint16_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(port);
    result.sin_addr.s_addr = address;
    return result;
}

Transfer Result(int result, DWORD bytes) {
    if (result == 0) return {Outcome::Done, bytes, 0};
    const int number = WSAGetLastError();
    const bool later = number == WSAEWOULDBLOCK || number == WSAENOBUFS;
    return {later ? Outcome::WouldBlock : Outcome::Failed, 0, number};
}

}  // namespace

const std::int32_t kConnectionReset = WSAECONNRESET;
const std::int32_t kNoMemory = WSAENOBUFS;
const std::int32_t kTryAgain = WSATRY_AGAIN;

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
        if (transfer.outcome != Outcome::Done) return transfer;
        total += sent;
        for (taken += sent; !parts.empty() && taken >= parts[0].size; parts = parts.subspan(1)) {
            taken -= parts[0].size;
        }
    }
    return {Outcome::Done, total, 0};
}

// It becomes non-blocking with its watch; programs that are started inherit nothing.
Socket OpenSocket() {
    StartWinsock();
    const SOCKET native = WSASocketA(AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr, 0, WSA_FLAG_OVERLAPPED);
    if (native == INVALID_SOCKET) ThrowSocketError();
    return Socket(static_cast<SocketHandle>(native));
}

void StartConnecting(SocketHandle handle, Address address, std::uint16_t port) {
    const auto peer = SocketAddress(address.value, port);
    if (connect(Native(handle), reinterpret_cast<const sockaddr*>(&peer), sizeof peer) != 0 &&
        WSAGetLastError() != WSAEWOULDBLOCK) {
        ThrowSocketError();
    }
}

// Not before: until a socket is connected, Wine asks the wineserver for each option.
void SetOutgoingOptions(SocketHandle handle) {
    SwitchOffNagle(handle);
    KeepAlive(handle);
}

std::int32_t PendingError(SocketHandle handle) {
    int number = 0;
    int size = sizeof number;
    getsockopt(Native(handle), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&number), &size);
    return number;
}

void EndSending(SocketHandle handle) {
    shutdown(Native(handle), SD_SEND);
}

void ResetOnClose(SocketHandle handle) {
    const linger reset{1, 0};
    setsockopt(Native(handle), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&reset), sizeof reset);
}

Socket ListenOnLoopback(std::uint16_t port) {
    auto socket = OpenSocket();
    // On Windows others could otherwise listen on the same port and take our clients.
    SetOption(socket.Get(), SOL_SOCKET, SO_EXCLUSIVEADDRUSE, 1);
    const auto address = SocketAddress(htonl(INADDR_LOOPBACK), port);
    if (bind(Native(socket.Get()), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
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

}  // namespace os::net
