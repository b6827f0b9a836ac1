// The sockets of the program, on connections in memory.
#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <stdexcept>

#include "base/RuntimeError.h"
#include "os/Resolver.h"
#include "os/Watched.h"
#include "os/fake/FakeNetwork.h"
#include "os/fake/FakeWorld.h"

namespace {

using os::fake::End;
using os::fake::Peer;
using Side = std::shared_ptr<End>;

constexpr std::int32_t kAddressInUse = 10048;
constexpr std::uint16_t kFirstFreePort = 49152;
constexpr std::array<std::uint8_t, 4> kLoopback{127, 0, 0, 1};

struct FakeSocket {
    Side end;
    std::uint16_t listensOn = 0;
    std::deque<Side> backlog;
};

// The other hosts of the test's world have addresses from 198.18.0.0 on (RFC 2544), in the order of asking.
struct LookUp {
    std::uint64_t id;
    std::string host;
    os::LookUpReceiver* receiver;
};

struct Network {
    std::map<os::SocketHandle, FakeSocket> sockets;
    os::SocketHandle lastHandle = 0;
    std::uint16_t lastPort = kFirstFreePort - 1;
    std::deque<Peer> outgoing, clients;
    std::deque<std::string> hosts;
    std::deque<LookUp> lookUps;
    std::size_t refusedSends = 0;
};
// Never destroyed: sockets of static storage close after the end of main.
Network& network = *new Network;

FakeSocket* Listener(std::uint16_t port) {
    for (auto& [handle, socket] : network.sockets) {
        if (socket.listensOn == port) return &socket;
    }
    return nullptr;
}

End& EndOf(os::SocketHandle handle) {
    return *network.sockets.at(handle).end;
}

os::Socket Open(FakeSocket socket) {
    network.sockets.emplace(++network.lastHandle, std::move(socket));
    return os::Socket(network.lastHandle);
}

// The host that the address stands for: the name that was looked up, or dots.
std::string HostAt(const os::Address& address) {
    const auto& bytes = address.bytes;
    const std::size_t index = bytes[2] * 256u + bytes[3];
    if (bytes[0] == 198 && bytes[1] == 18 && index < network.hosts.size()) return network.hosts[index];
    return os::TextOf(address);
}

std::vector<os::Address> AddressesOf(const std::string& host) {
    // Nobody listens at the first one: who connects has to try both.
    if (host == "localhost")
        return {{{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, true}, {{127, 0, 0, 1}}};
    if (host.ends_with(".invalid")) return {};
    if (const auto literal = os::AddressFrom(host)) return {*literal};
    auto found = std::find(network.hosts.begin(), network.hosts.end(), host);
    if (found == network.hosts.end()) found = network.hosts.insert(found, host);
    const auto index = static_cast<std::size_t>(found - network.hosts.begin());
    return {{{198, 18, static_cast<std::uint8_t>(index >> 8), static_cast<std::uint8_t>(index)}}};
}

class Answers : public os::Watched {
 public:
    using os::Watched::Wake;

 private:
    void Ready(std::uint32_t) override {
        for (const auto& lookUp : std::exchange(network.lookUps, {})) {
            if (lookUp.host.ends_with(".unanswered")) {
                network.lookUps.push_back(lookUp);
                continue;
            }
            const auto addresses = AddressesOf(lookUp.host);
            lookUp.receiver->LookedUp(lookUp.id, addresses.empty() ? os::kUnknownName : 0, addresses);
        }
    }
};
Answers& answers = *new Answers;

const os::fake::WorldPart part([] {
    for (auto& [handle, socket] : network.sockets) {
        if (socket.end) socket.end->failure = os::kConnectionReset;
        socket.listensOn = 0;
        socket.backlog.clear();
    }
    network.outgoing.clear();
    network.clients.clear();
    network.refusedSends = 0;
    for (auto& lookUp : network.lookUps) lookUp.host = "gone.invalid";
    if (!network.lookUps.empty()) answers.Wake();
});

}  // namespace

namespace os {

const std::int32_t kConnectionRefused = 10061;
const std::int32_t kConnectionReset = 10054;
const std::int32_t kNoMemory = 10055;
const std::int32_t kTryAgain = 11002;
const std::int32_t kTimedOut = 10060;
const std::int32_t kUnknownName = 11001;

std::string SocketErrorText(std::int32_t number) {
    return "error " + std::to_string(number);
}

void StartLookUp(std::uint64_t id, const std::string& host, LookUpReceiver& receiver) {
    network.lookUps.push_back({id, host, &receiver});
    answers.Wake();
}

// A reset when there is something that nobody has read, as systems do.
void CloseSocket(SocketHandle handle) {
    const auto closed = std::move(network.sockets.extract(handle).mapped());
    for (const auto& waiting : closed.backlog) fake::Abort(*waiting, kConnectionReset);
    if (!closed.end) return;
    if (closed.end->resetsOnClose || !closed.end->inbox.empty() || !closed.end->isConnected)
        return fake::Abort(*closed.end, kConnectionReset);
    fake::EndDirection(*closed.end);
}

Transfer Receive(SocketHandle handle, std::span<char> buffer) {
    auto& end = EndOf(handle);
    const auto count = std::min(buffer.size(), end.inbox.size());
    std::memcpy(buffer.data(), end.inbox.data(), count);
    end.inbox.erase(0, count);
    if (count > 0 || (end.otherEnded && end.failure == 0)) return {Outcome::Done, count, 0};
    return {end.failure != 0 ? Outcome::Failed : Outcome::WouldBlock, 0, end.failure};
}

Transfer Discard(SocketHandle handle, std::span<char> scratch) {
    return Receive(handle, scratch);
}

Transfer Send(SocketHandle handle, std::span<const Part> parts) {
    auto& end = EndOf(handle);
    if (end.failure != 0 || !end.isConnected) return {Outcome::Failed, 0, kConnectionReset};
    const auto other = end.other.lock();
    end.hasNoBuffers = network.refusedSends > 0;
    if (end.hasNoBuffers) {
        --network.refusedSends;
        return {Outcome::NoBuffers, 0, kNoMemory};
    }
    std::size_t sent = 0;
    for (const auto& part : parts) {
        const auto count = other ? std::min(other->Room(), part.size) : part.size;
        if (other) other->inbox.append(part.bytes, count);
        sent += count;
    }
    // Nobody is there any more, which the sender hears later.
    if (!other) end.failure = kConnectionReset;
    return {sent > 0 ? Outcome::Done : Outcome::WouldBlock, sent, 0};
}

Socket OpenSocket(const Address&) {
    return Open({std::make_shared<End>(), 0, {}});
}

void StartConnecting(SocketHandle handle, const Address& address, std::uint16_t port) {
    auto& end = network.sockets.at(handle).end;
    auto other = std::make_shared<End>();
    const bool isOwn = address.isIPv6 ? address.bytes[0] == 0 : address.bytes[0] == kLoopback[0];
    if (isOwn) {
        const bool isLocal =
            !address.isIPv6 && std::equal(kLoopback.begin(), kLoopback.end(), address.bytes.begin());
        auto* const listener = isLocal ? Listener(port) : nullptr;
        if (listener == nullptr) {
            end->failure = kConnectionRefused;
            return;
        }
        fake::Join(end, other);
        listener->backlog.push_back(std::move(other));
        return;
    }
    other->ofTest = true;
    other->inboxLimit = SIZE_MAX;
    other->host = HostAt(address);
    other->port = port;
    other->address = address;
    other->other = end;
    end->other = other;
    network.outgoing.emplace_back(std::move(other));
}

void SetOutgoingOptions(SocketHandle) {}

// Ours is the machine's own, and its ports follow from the handles.
Ends EndsOf(SocketHandle handle) {
    const auto& socket = network.sockets.at(handle);
    const auto other = socket.end ? socket.end->other.lock() : nullptr;
    const auto port = static_cast<std::uint16_t>(handle);
    if (!other || !socket.end->isConnected) return {};
    return {{{{127, 0, 0, 1}}, port}, {other->address, other->address.bytes[0] == 127 ? port : other->port}};
}

std::int32_t PendingError(SocketHandle handle) {
    return EndOf(handle).failure;
}

bool StoodBefore(std::int32_t error) {
    return error == kConnectionReset;
}

std::size_t UnsentBytes(SocketHandle) {
    return 0;
}

void EndSending(SocketHandle handle) {
    fake::EndDirection(EndOf(handle));
}

void ResetOnClose(SocketHandle handle) {
    EndOf(handle).resetsOnClose = true;
}

Socket ListenOnLoopback(std::uint16_t port) {
    if (port != 0 && Listener(port) != nullptr) throw RuntimeError(kAddressInUse, "Address in use");
    while (port == 0 || Listener(port) != nullptr)
        port = ++network.lastPort < kFirstFreePort ? std::uint16_t{0} : network.lastPort;
    return Open({nullptr, port, {}});
}

std::uint16_t PortOf(SocketHandle listening) {
    return network.sockets.at(listening).listensOn;
}

AcceptOutcome AcceptClient(SocketHandle listening, Socket& accepted) {
    auto& backlog = network.sockets.at(listening).backlog;
    if (backlog.empty()) return AcceptOutcome::NobodyWaits;
    const auto end = std::move(backlog.front());
    backlog.pop_front();
    accepted = Open({end, 0, {}});
    return AcceptOutcome::Accepted;
}

}  // namespace os

namespace os::fake {

void Join(const std::shared_ptr<End>& one, const std::shared_ptr<End>& other) {
    one->other = other;
    other->other = one;
    one->isConnected = other->isConnected = true;
}

void EndDirection(End& end) {
    if (std::exchange(end.hasEnded, true)) return;
    const auto other = end.other.lock();
    if (!other) return;
    other->otherEnded = true;
    if (other->ofTest) EndDirection(*other);
}

void Abort(End& end, std::int32_t number) {
    end.isConnected = false;
    const auto other = end.other.lock();
    end.other.reset();
    if (!other) return;
    other->failure = number;
    other->other.reset();
}

std::uint32_t ReadyEvents(SocketHandle handle, std::uint32_t wanted) {
    const auto& socket = network.sockets.at(handle);
    if (!socket.end) return socket.backlog.empty() ? 0 : kAcceptable & wanted;
    const auto& end = *socket.end;
    const auto other = end.other.lock();
    std::uint32_t events = 0;
    if (!end.inbox.empty() || end.otherEnded) events |= kReadable;
    if (end.isConnected && !end.hasNoBuffers && (!other || other->Room() > 0)) events |= kWritable;
    if (end.failure != 0) events |= kBroken;
    return events & (wanted | kBroken);
}

std::deque<Peer>& OutgoingPeers() {
    return network.outgoing;
}

Peer& ConnectTo(std::uint16_t port) {
    auto* const listener = Listener(port);
    if (listener == nullptr) throw std::logic_error("nobody listens on the port");
    auto client = std::make_shared<End>();
    auto arriving = std::make_shared<End>();
    client->ofTest = true;
    client->inboxLimit = SIZE_MAX;
    client->port = port;
    Join(client, arriving);
    listener->backlog.push_back(std::move(arriving));
    return network.clients.emplace_back(std::move(client));
}

void RefuseSends(std::size_t count) {
    network.refusedSends = count;
}

std::size_t CountSockets() {
    return static_cast<std::size_t>(std::count_if(network.sockets.begin(), network.sockets.end(),
                                                  [](const auto& one) { return one.second.end != nullptr; }));
}

}  // namespace os::fake
