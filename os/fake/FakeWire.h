// FakeWire: connections in memory, each of two ends. An end belongs to a socket of the program
// (FakeSockets.cpp) or to a test (FakeNetwork.h); bytes that one sends lie at the other as soon as there is
// room.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "os/Sockets.h"

namespace os::fake {

struct End {
    std::weak_ptr<End> other;
    std::string host;
    std::uint16_t port = 0;
    Address address{{127, 0, 0, 1}};
    bool ofTest = false;  // answers the other's end with its own, as a program does that is told of it

    std::string inbox;  // arrived, not taken yet
    std::size_t inboxLimit = std::size_t{64} * 1024;
    bool isConnected = false;
    bool hasEnded = false;    // our direction
    bool otherEnded = false;  // to be seen behind the inbox
    bool resetsOnClose = false;
    bool hasNoBuffers = false;  // the last send was refused so: nothing tells when it may be tried again
    std::int32_t failure = 0;

    std::size_t Room() const { return inboxLimit - std::min(inboxLimit, inbox.size()); }
};

// The two ends see each other; the second is told with its next event.
void Join(const std::shared_ptr<End>& one, const std::shared_ptr<End>& other);
void EndDirection(End& end);
// The connection is gone for both; the other end sees the number. What it has received stays readable.
void Abort(End& end, std::int32_t number);

// What is ready on a socket, of the events asked for; with kBroken in any case.
std::uint32_t ReadyEvents(SocketHandle handle, std::uint32_t wanted);

}  // namespace os::fake
