// SystemAddress: addresses as the sockets' calls take and give them. To be included behind the system's own
// headers of sockets and look-ups, which have other names on each system but declare the same.
#pragma once

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "os/Sockets.h"

namespace os {

inline constexpr Address kLoopback{{127, 0, 0, 1}, false};

// What connect and bind take: an address of either family and its length.
struct SystemAddress {
    SystemAddress(const Address& address, std::uint16_t port) {
        if (address.isIPv6) {
            auto& ip = reinterpret_cast<sockaddr_in6&>(storage);
            ip.sin6_family = AF_INET6;
            ip.sin6_port = htons(port);
            std::memcpy(&ip.sin6_addr, address.bytes.data(), sizeof ip.sin6_addr);
            size = sizeof ip;
        } else {
            auto& ip = reinterpret_cast<sockaddr_in&>(storage);
            ip.sin_family = AF_INET;
            ip.sin_port = htons(port);
            std::memcpy(&ip.sin_addr, address.bytes.data(), sizeof ip.sin_addr);
            size = sizeof ip;
        }
    }
    const sockaddr* Get() const { return reinterpret_cast<const sockaddr*>(&storage); }

    sockaddr_storage storage{};
    socklen_t size;
};

inline Endpoint EndpointFrom(const sockaddr& system) {
    Endpoint end;
    if (system.sa_family == AF_INET6) {
        const auto& ip = reinterpret_cast<const sockaddr_in6&>(system);
        end.address.isIPv6 = true;
        std::memcpy(end.address.bytes.data(), &ip.sin6_addr, sizeof ip.sin6_addr);
        end.port = ntohs(ip.sin6_port);
    } else if (system.sa_family == AF_INET) {
        const auto& ip = reinterpret_cast<const sockaddr_in&>(system);
        std::memcpy(end.address.bytes.data(), &ip.sin_addr, sizeof ip.sin_addr);
        end.port = ntohs(ip.sin_port);
    }
    return end;
}

// Looks the host up, in the order in which its addresses should be tried; may take minutes. Returns what
// getaddrinfo does: 0, or one of its own numbers. Throws std::bad_alloc.
inline int LookUpAddresses(const std::string& host, std::vector<Address>& addresses) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (const int number = ::getaddrinfo(host.c_str(), nullptr, &hints, &found); number != 0) return number;
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owned(found, ::freeaddrinfo);
    for (; found != nullptr; found = found->ai_next) {
        if (found->ai_family == AF_INET || found->ai_family == AF_INET6)
            addresses.push_back(EndpointFrom(*found->ai_addr).address);
    }
    return addresses.empty() ? EAI_NONAME : 0;
}

}  // namespace os
