#include "os/Tcp.h"

#include "os/net/Acceptor.h"
#include "os/net/Connection.h"

// A closed socket holds no connection, unless it waits for the next with its link to a partner.
struct os::TcpSocket::Impl : net::Connection {
    using net::Connection::Connection;
};

os::TcpSocket::TcpSocket() = default;

os::TcpSocket::~TcpSocket() {
    if (impl_) net::Connection::Close(std::move(impl_));
}

void os::TcpSocket::Accept(std::int32_t requestId) {
    auto accepted = net::TakeRequest(requestId);
    Close();
    if (!impl_) impl_ = std::make_unique<Impl>(*this);
    impl_->Adopt(std::move(accepted));
}

void os::TcpSocket::Connect(const std::string& host, std::uint16_t port) {
    Close();
    if (!impl_) impl_ = std::make_unique<Impl>(*this);
    impl_->Connect(host, port);
}

void os::TcpSocket::Send(std::string_view bytes) {
    if (impl_) impl_->Send(bytes);
}

void os::TcpSocket::Close() {
    if (GetState() != State::Closed) net::Connection::Close(std::move(impl_));
}

os::TcpSocket::State os::TcpSocket::GetState() const {
    return impl_ ? impl_->State() : State::Closed;
}

std::size_t os::TcpSocket::QueuedBytes() const {
    return impl_ ? impl_->QueuedBytes() : 0;
}

void os::TcpSocket::ReadFor(TcpSocket& partner) {
    if (!impl_) impl_ = std::make_unique<Impl>(*this);
    if (!partner.impl_) partner.impl_ = std::make_unique<Impl>(partner);
    impl_->ReadFor(*partner.impl_);
}

void os::TcpSocket::HoldReading(bool hold) {
    if (impl_) impl_->HoldReading(hold);
}

bool os::FlushClosedSockets(std::int64_t milliseconds) {
    const auto before = net::Connection::CountGivenUp();
    const auto done = [] { return net::Connection::CountFlushing() == 0; };
    return RunEventLoopUntil(done, milliseconds) && net::Connection::CountGivenUp() == before;
}

struct os::TcpListener::Impl : net::Acceptor {
    using net::Acceptor::Acceptor;
};

os::TcpListener::TcpListener() = default;

os::TcpListener::~TcpListener() {
    Close();
}

void os::TcpListener::Listen(std::uint16_t port) {
    if (impl_ && port != 0 && impl_->Port() == port) return;
    auto next = std::make_unique<Impl>(*this, port);
    Close();
    impl_ = std::move(next);
}

void os::TcpListener::Close() {
    if (!impl_) return;
    impl_->Stop();
    net::Bury(std::move(impl_));
}

std::uint16_t os::TcpListener::Port() const {
    return impl_ ? impl_->Port() : std::uint16_t{0};
}
