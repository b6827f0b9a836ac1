// ServerRouter: where connections go by the settings "server", "server-always" and "server-fallback", and
// what servers have advertised.
//
//   client's own connection     the configured server; without one, where the client asked
//   a server has sent it there  with "server-always" the configured server; otherwise the advertised address
//                               and, with "server-fallback", behind it or instead of it the first leg's
//                               server or the configured one: the port that was asked for, then the server's
//                               own
//
// An address that SOCKS4 cannot carry, of IPv6, is advertised to the client as 127.0.0.x; whoever asks for
// that is led to the true one.
#pragma once

#include <deque>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "core/Route.h"
#include "os/Sockets.h"

class Connections;

class ServerRouter final : public Router {
 public:
    explicit ServerRouter(Connections& connections) : connections_(connections) {}

    std::vector<Place> PlacesFor(std::size_t slot, const Place& asked) override;

    // The server of the leg has told the client to go to "host", "host:port" or "[IPv6]:port"; `isIPv6Only`
    // tells of the host that the leg leads to. Returns what the client is to read instead; "" when the
    // address may stand.
    std::string Advertised(std::size_t slot, std::string_view address, bool isIPv6Only);

    // Whether the client was sent to that place by a server a short while ago.
    bool IsSentTo(const Place& asked) const { return Find(TrueOf(asked)) != nullptr; }

 private:
    struct Word {
        Place place;
        Place server;         // of the leg on which it came
        os::Address reached;  // and its address
        std::int64_t when;    // os::MonotonicMilliseconds
        bool hasName;         // instead of an address
    };

    const Word* Find(const Place& asked) const;
    Place TrueOf(const Place& asked) const;
    bool IsOwnConnection(const Place& asked) const;

    Connections& connections_;
    std::deque<Word> words_;
    std::map<std::string, std::string> placeholders_;  // the text of an address of 127.0.0.x, and its host
    std::set<std::string> ownHosts_;                   // that clients have asked for of their own accord
};
