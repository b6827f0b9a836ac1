// The network of a test: os/Tcp.h over connections in memory. Peers, played by the test, are in
// FakeNetwork.h; the two sides' bytes are moved in FakeConnection.cpp.
#include <algorithm>
#include <deque>
#include <map>
#include <stdexcept>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "os/EventLoop.h"
#include "os/Tcp.h"
#include "os/fake/FakeConnection.h"
#include "os/fake/FakeLoop.h"
#include "os/fake/FakeNetwork.h"

namespace os::fake {

struct SocketState {
    std::shared_ptr<Connection> side;  // null unless open
    TcpSocket* socket = nullptr;
    SocketState* partner = nullptr;  // what we read goes out there
    SocketState* reader = nullptr;   // the socket whose partner we are
    bool paused = false;             // until the partner's queue is half empty
    bool held = false;
};

}  // namespace os::fake

namespace {

using os::TcpSocket;
using os::fake::Connection;
using os::fake::SocketState;
using Side = std::shared_ptr<Connection>;

constexpr std::uint16_t kFirstFreePort = 49152;
constexpr std::uint16_t kNobodyListens = 0;
constexpr std::int32_t kFlushTooSlow = os::fake::kConnectionReset;

struct ListenerState {
    os::TcpListener* listener = nullptr;
    std::deque<Side> backlog;
    std::uint16_t port = 0;
};

// A part of the read buffer that a handler has given to Send: it leaves when the handler returns and must
// not have changed by then.
struct Borrowed {
    Side side;
    std::string_view bytes;
    std::string asGiven;
};

struct Lingering {
    Side side;
    std::unique_ptr<os::Timer> limit;
};

struct Network {
    std::vector<SocketState*> open;
    std::map<std::uint16_t, ListenerState*> listeners;
    std::deque<std::pair<Side, std::unique_ptr<os::fake::Peer>>> outgoing;
    std::deque<std::pair<Side, std::unique_ptr<os::fake::Peer>>> clients;
    std::map<std::int32_t, Side> requests;
    std::int32_t lastRequest = 0;
    std::vector<Lingering> lingering;
    std::size_t givenUp = 0;  // closed sockets that could not send all
    std::span<char> readBuffer;
    std::vector<Borrowed> borrowed;
    std::uint16_t lastPort = kFirstFreePort - 1;
};
// Never destroyed: sockets of static storage close after the end of main.
Network& network = *new Network;

void EndLink(SocketState*& ours, SocketState* SocketState::*theirs) {
    if (ours == nullptr) return;
    ours->*theirs = nullptr;
    ours = nullptr;
}

void LeaveNetwork(SocketState& state) {
    EndLink(state.partner, &SocketState::reader);
    if (state.reader != nullptr) state.reader->paused = false;
    EndLink(state.reader, &SocketState::partner);
    state.held = state.paused = false;
    std::erase(network.open, &state);
    if (state.side) state.side->owner = nullptr;
    state.side.reset();
}

void Open(SocketState& state, Side side) {
    side->owner = &state;
    state.side = std::move(side);
    network.open.push_back(&state);
}

// Closed sockets whose queue is empty, or whose time is over.
void DropFlushed() {
    std::erase_if(network.lingering, [](const Lingering& one) {
        const bool tooSlow = !one.limit->IsRunning() && !one.side->queue.empty();
        if (tooSlow) {
            ++network.givenUp;
            os::fake::Abort(*one.side, kFlushTooSlow);
        }
        return tooSlow || one.side->queue.empty();
    });
}

bool MayRead(SocketState& state) {
    if (state.held) return false;
    if (state.partner != nullptr) {
        const auto queued = state.partner->socket->QueuedBytes();
        if (queued >= os::kQueueLimit) state.paused = true;
        if (queued <= os::kQueueLimit / 2) state.paused = false;
    }
    return !state.paused;
}

void SendBorrowed() {
    const auto borrowed = std::exchange(network.borrowed, {});
    for (const auto& part : borrowed) {
        if (part.bytes != part.asGiven)
            throw std::logic_error("bytes given to Send were changed within the same event");
        os::fake::Flow(*part.side);
    }
}

void Deliver(SocketState& state) {
    auto& side = *state.side;
    const auto queued = state.partner != nullptr ? state.partner->socket->QueuedBytes() : 0;
    std::string bytes = side.inbox.substr(0, std::min(os::kReadChunk, os::kQueueLimit - queued));
    side.inbox.erase(0, bytes.size());
    if (const auto opposite = side.opposite.lock()) os::fake::Flow(*opposite);

    const auto outerBuffer = std::exchange(network.readBuffer, std::span<char>(bytes));
    Trap("EventLoop:Dispatch", [&, socket = state.socket] { socket->Data(std::span<char>(bytes)); });
    SendBorrowed();
    network.readBuffer = outerBuffer;
}

// Lets the connection arrive at the listener of the same test, or be refused.
void ConnectWithin(const Side& side, std::uint16_t port) {
    const auto found = network.listeners.find(port);
    if (found == network.listeners.end()) {
        side->failure = os::fake::kConnectionRefused;
        return;
    }
    auto arriving = std::make_shared<Connection>();
    os::fake::Join(side, arriving);
    os::fake::LetKnow(*side);
    found->second->backlog.push_back(std::move(arriving));
}

// Raises the first of the news that wait on the socket; whether there were any. The socket may be gone
// afterwards.
bool RaiseNext(SocketState& state) {
    auto& side = *state.side;
    auto* const socket = state.socket;
    if (side.failure != 0) {
        const auto number = side.failure;
        side.state = TcpSocket::State::Closed;
        LeaveNetwork(state);
        Trap("EventLoop:Dispatch", [=] { socket->Failed(number); });
        return true;
    }
    if (std::exchange(side.resolving, false)) {
        ConnectWithin(state.side, side.port);
        return true;
    }
    if (side.established) {
        side.established = false;
        side.state = TcpSocket::State::Connected;
        Trap("EventLoop:Dispatch", [=] { socket->Connected(); });
        return true;
    }
    if (side.state != TcpSocket::State::Connected || !MayRead(state)) return false;
    if (!side.inbox.empty()) {
        Deliver(state);
        return true;
    }
    if (!side.ended || side.endDelivered) return false;
    side.endDelivered = true;
    Trap("EventLoop:Dispatch", [=] { socket->Closed(); });
    return true;
}

bool RaiseRequest(ListenerState& state) {
    if (state.backlog.empty()) return false;
    const auto request = ++network.lastRequest;
    network.requests[request] = std::move(state.backlog.front());
    state.backlog.pop_front();
    Trap("EventLoop:Dispatch", [&] { state.listener->ConnectionRequest(request); });
    const auto left = network.requests.extract(request);
    if (!left.empty()) os::fake::End(*left.mapped());
    return true;
}

std::uint16_t FreePort() {
    do {
        network.lastPort =
            std::max<std::uint16_t>(kFirstFreePort, static_cast<std::uint16_t>(network.lastPort + 1));
    } while (network.listeners.contains(network.lastPort));
    return network.lastPort;
}

}  // namespace

bool os::fake::DeliverNetworkEvents(const bool& stop) {
    SendBorrowed();  // of a handler that runs a loop of its own
    bool any = false;
    std::vector<Side> sides;
    for (const auto* const state : network.open) sides.push_back(state->side);
    for (const auto& side : sides) {
        if (stop) break;
        // An earlier handler may have closed or destroyed the socket.
        if (side->owner != nullptr) any |= RaiseNext(*side->owner);
    }
    std::vector<std::uint16_t> ports;
    for (const auto& [port, state] : network.listeners) ports.push_back(port);
    for (const auto port : ports) {
        if (stop) break;
        const auto found = network.listeners.find(port);
        if (found != network.listeners.end()) any |= RaiseRequest(*found->second);
    }
    DropFlushed();
    return any;
}

struct os::TcpSocket::Impl : SocketState {};

os::TcpSocket::TcpSocket() : impl_(std::make_unique<Impl>()) {
    impl_->socket = this;
}

os::TcpSocket::~TcpSocket() {
    Close();
    LeaveNetwork(*impl_);
}

void os::TcpSocket::Accept(std::int32_t requestId) {
    auto request = network.requests.extract(requestId);
    if (request.empty()) ThrowInvalidArgument();
    Close();
    Open(*impl_, std::move(request.mapped()));
}

void os::TcpSocket::Connect(const std::string& host, std::uint16_t port) {
    Close();
    auto side = std::make_shared<Connection>();
    side->state = State::Connecting;
    side->host = host;
    side->port = port;
    Open(*impl_, side);
    if (host == "localhost") {
        side->resolving = true;
    } else if (host.starts_with("127.")) {
        ConnectWithin(side, host == "127.0.0.1" ? port : kNobodyListens);
    } else if (host.ends_with(".invalid")) {
        side->failure = fake::kHostNotFound;
    } else {
        auto peer = std::make_shared<Connection>();
        peer->inboxLimit = SIZE_MAX;
        peer->state = State::Connecting;
        peer->host = host;
        peer->port = port;
        peer->opposite = side;
        side->opposite = peer;
        network.outgoing.emplace_back(peer, std::make_unique<fake::Peer>(peer));
    }
}

void os::TcpSocket::Send(std::string_view bytes) {
    if (GetState() != State::Connected || bytes.empty()) return;
    const auto& buffer = network.readBuffer;
    const bool ofReadBuffer = !buffer.empty() && std::less_equal<>()(buffer.data(), bytes.data()) &&
                              std::less<>()(bytes.data(), buffer.data() + buffer.size());
    impl_->side->queue.append(bytes);
    if (ofReadBuffer) {
        network.borrowed.push_back({impl_->side, bytes, std::string(bytes)});
    } else {
        fake::Flow(*impl_->side);
    }
}

void os::TcpSocket::Close() {
    if (!impl_->side) return;
    const auto side = impl_->side;
    const bool connected = side->state == State::Connected;
    LeaveNetwork(*impl_);
    if (!connected) return fake::Abort(*side, fake::kConnectionReset);
    fake::End(*side);
    if (side->queue.empty()) return;
    network.lingering.push_back({side, std::make_unique<Timer>()});
    network.lingering.back().limit->StartOnce(kFlushLimitMs);
}

os::TcpSocket::State os::TcpSocket::GetState() const {
    return impl_->side ? impl_->side->state : State::Closed;
}

std::size_t os::TcpSocket::QueuedBytes() const {
    return impl_->side ? impl_->side->queue.size() : 0;
}

void os::TcpSocket::ReadFor(TcpSocket& partner) {
    EndLink(impl_->partner, &SocketState::reader);
    EndLink(partner.impl_->reader, &SocketState::partner);
    impl_->partner = partner.impl_.get();
    partner.impl_->reader = impl_.get();
}

void os::TcpSocket::HoldReading(bool hold) {
    impl_->held = hold;
}

struct os::TcpListener::Impl : ListenerState {};

os::TcpListener::TcpListener() : impl_(std::make_unique<Impl>()) {
    impl_->listener = this;
}

os::TcpListener::~TcpListener() {
    Close();
}

void os::TcpListener::Listen(std::uint16_t port) {
    if (impl_->port != 0 && impl_->port == port) return;
    if (port != 0 && network.listeners.contains(port))
        throw RuntimeError(fake::kAddressInUse, "Address in use");
    Close();
    impl_->port = port != 0 ? port : FreePort();
    network.listeners[impl_->port] = impl_.get();
}

void os::TcpListener::Close() {
    const auto found = network.listeners.find(impl_->port);
    if (found != network.listeners.end() && found->second == impl_.get()) network.listeners.erase(found);
    for (const auto& side : impl_->backlog) fake::Abort(*side, fake::kConnectionReset);
    impl_->backlog.clear();
    impl_->port = 0;
}

std::uint16_t os::TcpListener::Port() const {
    return impl_->port;
}

bool os::FlushClosedSockets(std::int64_t milliseconds) {
    const auto before = network.givenUp;
    const auto done = [] { return fake::LingeringSocketCount() == 0; };
    return RunEventLoopUntil(done, milliseconds) && network.givenUp == before;
}

std::size_t os::fake::OutgoingCount() {
    return network.outgoing.size();
}

os::fake::Peer& os::fake::Outgoing(std::size_t index) {
    return *network.outgoing.at(index).second;
}

os::fake::Peer& os::fake::ConnectTo(std::uint16_t port) {
    const auto found = network.listeners.find(port);
    if (found == network.listeners.end()) throw std::logic_error("nobody listens on the port");
    auto client = std::make_shared<Connection>();
    auto arriving = std::make_shared<Connection>();
    client->inboxLimit = SIZE_MAX;
    client->port = port;
    Join(client, arriving);
    found->second->backlog.push_back(std::move(arriving));
    network.clients.emplace_back(client, std::make_unique<Peer>(client));
    return *network.clients.back().second;
}

std::size_t os::fake::OpenSocketCount() {
    return network.open.size();
}

std::size_t os::fake::LingeringSocketCount() {
    DropFlushed();
    return network.lingering.size();
}

static const os::fake::WorldPart part([] {
    for (auto* const state : std::vector(network.open)) LeaveNetwork(*state);
    network = Network();
});
