#include <winsock2.h>

#include <stdexcept>

#include "tests/contract/RawListener.h"

namespace {

constexpr DWORD kPatienceMs = 5000;

void StartWinsockOnce() {
    static const int failure = [] {
        WSADATA data;
        return ::WSAStartup(MAKEWORD(2, 2), &data);
    }();
    if (failure != 0) throw std::runtime_error("Winsock does not start");
}

sockaddr_in Loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

}  // namespace

struct RawPeer::Impl {
    explicit Impl(SOCKET fresh) : socket(fresh) {
        ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&kPatienceMs),
                     sizeof kPatienceMs);
    }
    SOCKET socket;
    bool open = true;
};

RawPeer::RawPeer(std::unique_ptr<Impl> accepted) : impl_(std::move(accepted)) {}

RawPeer::RawPeer(std::uint16_t port) {
    StartWinsockOnce();
    impl_ = std::make_unique<Impl>(::socket(AF_INET, SOCK_STREAM, 0));
    const auto address = Loopback(port);
    if (::connect(impl_->socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("the raw peer cannot connect");
}

RawPeer::~RawPeer() {
    if (impl_->open) ::closesocket(impl_->socket);
}

void RawPeer::Send(std::string_view bytes) {
    if (::send(impl_->socket, bytes.data(), static_cast<int>(bytes.size()), 0) < 0)
        throw std::runtime_error("the raw peer cannot send");
}

void RawPeer::EndDirection() {
    ::shutdown(impl_->socket, SD_SEND);
}

void RawPeer::Abort() {
    const linger reset{1, 0};
    ::setsockopt(impl_->socket, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&reset), sizeof reset);
    ::closesocket(impl_->socket);
    impl_->open = false;
}

std::string RawPeer::Receive(std::size_t count) {
    std::string bytes;
    while (bytes.size() < count) {
        char part[4096];
        const int received = ::recv(impl_->socket, part, sizeof part, 0);
        if (received <= 0) break;
        bytes.append(part, static_cast<std::size_t>(received));
    }
    return bytes;
}

RawListener::RawListener(std::uint16_t port) {
    StartWinsockOnce();
    socket_ = ::socket(AF_INET, SOCK_STREAM, 0);
    const auto address = Loopback(port);
    if (::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket_, SOMAXCONN) != 0)
        throw std::runtime_error("the raw listener cannot listen");
}

RawListener::~RawListener() {
    ::closesocket(socket_);
}

std::uint16_t RawListener::Port() const {
    sockaddr_in address{};
    int size = sizeof address;
    ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

std::unique_ptr<RawPeer> RawListener::Accept() {
    fd_set waiting{};
    waiting.fd_count = 1;
    waiting.fd_array[0] = socket_;
    timeval limit{kPatienceMs / 1000, 0};
    if (::select(0, &waiting, nullptr, nullptr, &limit) != 1) return nullptr;
    return std::unique_ptr<RawPeer>(
        new RawPeer(std::make_unique<RawPeer::Impl>(::accept(socket_, nullptr, nullptr))));
}

bool CanAbort() {
    return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") == nullptr;
}

const bool kTellsResetWithoutReading = false;

void PrepareContract() {}
