#include "os/EventLoop.h"
#include "os/fake/FakeConnection.h"
#include "os/fake/FakeNetwork.h"

using os::TcpSocket;

namespace os::fake {

const std::string& Peer::Host() const {
    return side_->host;
}

std::uint16_t Peer::Port() const {
    return side_->port;
}

void Peer::AcceptConnect() {
    const auto socketSide = side_->opposite.lock();
    if (!socketSide || socketSide->state != TcpSocket::State::Connecting) return;
    Join(side_, socketSide);
    LetKnow(*socketSide);
}

void Peer::RefuseConnect(std::int32_t number) {
    if (const auto socketSide = side_->opposite.lock()) socketSide->failure = number;
}

void Peer::Send(std::string_view bytes) {
    if (side_->state != TcpSocket::State::Connected || side_->ending) return;
    side_->queue.append(bytes);
    Flow(*side_);
}

void Peer::Feed(std::string_view bytes) {
    Send(bytes);
    ProcessPendingEvents();
}

const std::string& Peer::Received() const {
    return side_->inbox;
}

std::string Peer::TakeReceived() {
    auto bytes = std::exchange(side_->inbox, {});
    if (const auto socketSide = side_->opposite.lock()) Flow(*socketSide);
    return bytes;
}

void Peer::LimitReceived(std::size_t bytes) {
    side_->inboxLimit = bytes;
    if (const auto socketSide = side_->opposite.lock()) Flow(*socketSide);
}

void Peer::Close() {
    side_->ending = true;
    Flow(*side_);
}

void Peer::Reset(std::int32_t number) {
    Abort(*side_, number);
}

bool Peer::SawClose() const {
    return side_->ended;
}

bool Peer::SawReset() const {
    return side_->failure != 0;
}

bool Peer::IsConnected() const {
    return side_->state == TcpSocket::State::Connected && side_->failure == 0 && !side_->ended &&
           !side_->ending;
}

}  // namespace os::fake
