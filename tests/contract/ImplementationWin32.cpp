#include <winsock2.h>

#include <stdexcept>

#include "tests/contract/Implementation.h"

void PrepareContract() {}

void BeginRegistryTest() {
    EndRegistryTest();
}

// Key by key, deepest first: SHDeleteKey would be one more library.
void EndRegistryTest() {
    const std::string root = kContractKey;
    for (const auto& key : {root + "\\One\\Two", root + "\\One", root})
        RegDeleteKeyA(HKEY_CURRENT_USER, key.c_str());
}

struct RawPeer::Impl {
    ~Impl() { ::closesocket(socket); }
    SOCKET socket;
};

// Winsock runs already: the port is that of a listener under test.
RawPeer::RawPeer(std::uint16_t port) : impl_(new Impl{::socket(AF_INET, SOCK_STREAM, 0)}) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(impl_->socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("the raw peer cannot connect");
    const DWORD limitMs = 5000;
    ::setsockopt(impl_->socket, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&limitMs),
                 sizeof limitMs);
}

RawPeer::~RawPeer() = default;

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
    impl_.reset();
}

std::string RawPeer::Receive(std::size_t count) {
    std::string bytes(count, '\0');
    std::size_t filled = 0;
    while (filled < count) {
        const int received =
            ::recv(impl_->socket, bytes.data() + filled, static_cast<int>(count - filled), 0);
        if (received <= 0) break;
        filled += static_cast<std::size_t>(received);
    }
    bytes.resize(filled);
    return bytes;
}

bool CanAbort() {
    return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") == nullptr;
}
