#include "net/Tcp.h"

#include "net/Acceptor.h"
#include "net/Connection.h"

// A closed socket holds no connection, unless it waits for the next with its link to a partner.
struct net::TcpSocket::Impl : net::Connection {
    using net::Connection::Connection;
};

net::TcpSocket::TcpSocket() = default;

net::TcpSocket::~TcpSocket() {
    if (impl_) net::Connection::Close(std::move(impl_));
}

void net::TcpSocket::Accept(std::int32_t requestId) {
    auto accepted = net::TakeRequest(requestId);
    Close();
    if (!impl_) impl_ = std::make_unique<Impl>(*this);
    impl_->Adopt(std::move(accepted));
}

void net::TcpSocket::Connect(const std::string& host, std::uint16_t port) {
    Close();
    hostIsFound_ = hostHasIPv4_ = false;
    if (!impl_) impl_ = std::make_unique<Impl>(*this);
    impl_->Connect(host, port);
}

void net::TcpSocket::Send(std::string_view bytes) {
    if (impl_) impl_->Send(bytes);
}

void net::TcpSocket::Close() {
    if (GetState() != State::Closed) net::Connection::Close(std::move(impl_));
}

net::TcpSocket::State net::TcpSocket::GetState() const {
    return impl_ ? impl_->State() : State::Closed;
}

os::Ends net::TcpSocket::Ends() const {
    return impl_ ? impl_->Ends() : os::Ends{};
}

std::size_t net::TcpSocket::QueuedBytes() const {
    return impl_ ? impl_->QueuedBytes() : 0;
}

void net::TcpSocket::ReadFor(TcpSocket& partner) {
    if (!impl_) impl_ = std::make_unique<Impl>(*this);
    if (!partner.impl_) partner.impl_ = std::make_unique<Impl>(partner);
    impl_->ReadFor(*partner.impl_);
}

void net::TcpSocket::TellSilence(std::int64_t milliseconds) {
    if (impl_) impl_->TellSilence(milliseconds);
}

void net::TcpSocket::HoldReading(bool hold) {
    if (impl_) impl_->HoldReading(hold);
}

bool net::FlushClosedSockets(std::int64_t milliseconds) {
    const auto before = net::Connection::CountGivenUp();
    const auto done = [] { return net::Connection::CountFlushing() == 0; };
    return RunEventLoopUntil(done, milliseconds) && net::Connection::CountGivenUp() == before;
}

struct net::TcpListener::Impl : net::Acceptor {
    using net::Acceptor::Acceptor;
};

net::TcpListener::TcpListener() = default;

net::TcpListener::~TcpListener() {
    Close();
}

void net::TcpListener::Listen(std::uint16_t port) {
    if (impl_ && port != 0 && impl_->Port() == port) return;
    auto next = std::make_unique<Impl>(*this, port);
    Close();
    impl_ = std::move(next);
}

void net::TcpListener::Close() {
    if (!impl_) return;
    impl_->Stop();
    os::Bury(std::move(impl_));
}

std::uint16_t net::TcpListener::Port() const {
    return impl_ ? impl_->Port() : std::uint16_t{0};
}
