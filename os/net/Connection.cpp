#include "os/net/Connection.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <optional>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "os/net/ReadBuffer.h"

namespace os::net {
namespace {

// The address that a dotted text such as 10.0.0.5 stands for.
std::optional<Address> ParseDotted(std::string_view text) {
    std::array<std::uint8_t, 4> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bytes[i]);
        if (error != std::errc()) return {};
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        if (i == bytes.size() - 1) break;
        if (!text.starts_with('.')) return {};
        text.remove_prefix(1);
    }
    if (!text.empty()) return {};
    return Address{std::bit_cast<std::uint32_t>(bytes)};
}

}  // namespace

Connection::~Connection() {
    Release();
}

void Connection::Adopt(Socket accepted) {
    handle_ = std::move(accepted);
    phase_ = Phase::Connected;
    UpdateWatch();
}

void Connection::Connect(const std::string& host, std::uint16_t port) {
    port_ = port;
    if (const auto address = ParseDotted(host)) return ConnectTo(*address);
    phase_ = Phase::Resolving;
    try {
        question_ = AskForAddress(host, *this);
    } catch (const std::exception&) {
        FailLater(kTryAgain);
    }
}

void Connection::AddressFound(std::int32_t number, Address address) {
    question_ = 0;
    if (number != 0) return Fail(number);
    ConnectTo(address);
}

void Connection::ConnectTo(Address address) {
    phase_ = Phase::Connecting;
    try {
        handle_ = OpenSocket();
        UpdateWatch();
        StartConnecting(handle_.Get(), address, port_);
    } catch (const RuntimeError& error) {
        FailLater(error.Number());
    }
}

void Connection::FinishConnecting(bool broken) {
    const auto number = broken ? TakeError() : 0;
    if (number != 0) return Fail(number);
    phase_ = Phase::Connected;
    SetOutgoingOptions(handle_.Get());
    UpdateWatch();
    Trap("EventLoop:Dispatch", [this] { socket_->Connected(); });
}

void Connection::Ready(std::uint32_t events) {
    if (phase_ == Phase::Lingering) return Linger();
    if (failure_ != 0 && phase_ != Phase::Connected) return Fail(failure_);
    if (phase_ == Phase::Connecting) return FinishConnecting((events & kBroken) != 0);
    if (phase_ != Phase::Connected) return;

    if ((events & kWritable) != 0) SendQueued();
    const bool broken = failure_ != 0 || (events & kBroken) != 0;
    if (broken || (events & kReadable) != 0) Receive(broken);
}

// A broken connection may still hold bytes of the peer: they come before the failure.
void Connection::Receive(bool broken) {
    if (!MayRead()) {
        if (broken) Fail(TakeError());
        return;
    }
    EndGathering();  // of a handler that runs a loop of its own: its buffer is about to be overwritten
    // As much as the partner may still queue, in case that all of it has to wait there.
    const auto queued = partner_ != nullptr ? partner_->queue_.Size() : 0;
    const auto buffer = ReadBuffer().first(std::min(kReadBufferBytes, kQueueLimit - queued));
    const auto received = net::Receive(handle_.Get(), buffer);
    if (received.outcome == Outcome::Failed) return Fail(received.number);
    if (received.outcome == Outcome::WouldBlock) {
        if (broken) Fail(TakeError());
        return;
    }
    if (received.bytes > 0) {
        Deliver(buffer.first(received.bytes));
        if (failure_ != 0) Wake();
        return;
    }
    if (failure_ != 0) return Fail(failure_);
    ended_ = true;
    UpdateWatch();
    Trap("EventLoop:Dispatch", [this] { socket_->Closed(); });
}

void Connection::Fail(std::int32_t number) {
    auto* const socket = socket_;
    Unlink();
    Release();
    Trap("EventLoop:Dispatch", [=] { socket->Failed(number); });
}

// Failures within a call are reported from the loop.
void Connection::FailLater(std::int32_t number) {
    failure_ = number;
    Wake();
}

std::int32_t Connection::TakeError() const {
    if (failure_ != 0) return failure_;
    const auto number = PendingError(handle_.Get());
    return number != 0 ? number : kConnectionReset;
}

// Gives back all that the connection holds of the system, and its bytes.
void Connection::Release() {
    CancelQuestion(std::exchange(question_, 0));
    Forget();
    handle_.Close();
    queue_.Clear();
    limit_.reset();
    phase_ = Phase::Idle;
    failure_ = 0;
    held_ = paused_ = ended_ = false;
}

TcpSocket::State Connection::State() const {
    switch (phase_) {
        case Phase::Resolving:
        case Phase::Connecting:
            return TcpSocket::State::Connecting;
        case Phase::Connected:
            return TcpSocket::State::Connected;
        default:
            return TcpSocket::State::Closed;
    }
}

void Connection::HoldReading(bool hold) {
    held_ = hold;
    UpdateWatch();
}

// A watch that the system refuses breaks the connection.
void Connection::UpdateWatch() {
    std::uint32_t events = queue_.Empty() ? 0 : kWritable;
    switch (phase_) {
        case Phase::Connecting:
            events = kWritable;
            break;
        case Phase::Connected:
            if (MayRead()) events |= kReadable;
            break;
        case Phase::Lingering:
            if (!ended_) events |= kReadable;
            break;
        default:
            return;
    }
    try {
        Watch(handle_.Get(), events);
    } catch (const RuntimeError& error) {
        FailLater(error.Number());
    }
}

}  // namespace os::net
