// Route: where a connection to a server goes. The client asks for a place; a router may name others.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// A host (dotted IPv4 text, IPv6 text or a name) and a port.
struct Place {
    std::string host;
    std::uint16_t port = 0;

    bool operator==(const Place&) const = default;
};

// "host:port"; an IPv6 address stands in brackets.
std::string TextOf(const Place& place);

class Router {
 public:
    // How long each place but the last is tried. The last one is given the time that the system takes.
    static constexpr std::int64_t kPatienceMs = 5'000;

    // The places to be tried for a connection in that slot whose client has asked for this one, in turn; at
    // least one. May throw: then it goes where the client asked.
    virtual std::vector<Place> PlacesFor(std::size_t slot, const Place& asked) = 0;

 protected:
    ~Router() = default;
};
