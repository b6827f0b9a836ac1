#include "net/Connection.h"

#include <algorithm>
#include <utility>

#include "base/Trap.h"
#include "net/ReadBuffer.h"

namespace net {
namespace {

// How long one address of several is tried.
constexpr std::int64_t kAttemptMs = 10'000;

}  // namespace

Connection::~Connection() {
    Release();
}

void Connection::Adopt(os::Socket accepted) {
    TakeSlot();
    handle_ = std::move(accepted);
    phase_ = Phase::Connected;
    UpdateWatch();
    if (os::kLooksAtAccepted) Wake();
}

void Connection::Connect(const std::string& host, std::uint16_t port) {
    TakeSlot();
    port_ = port;
    phase_ = Phase::Resolving;
    Try([&] {
        if (const auto address = os::AddressFrom(host)) {
            TakeAddresses({*address});
            return TryNextAddress(0);
        }
        question_ = AskForAddresses(host, *this);
    });
}

void Connection::AddressesFound(std::int32_t number, const std::vector<os::Address>& addresses) {
    question_ = 0;
    if (number != 0) return Fail(number);
    if (Try([&] { TakeAddresses(addresses); })) TryNextAddress(number);
}

void Connection::TakeAddresses(const std::vector<os::Address>& addresses) {
    addresses_.assign(addresses.rbegin(), addresses.rend());
    socket_->hostIsFound_ = true;
    socket_->hostHasIPv4_ = std::ranges::any_of(addresses, [](const auto& one) { return !one.isIPv6; });
}

// After an attempt that failed with the number.
void Connection::TryNextAddress(std::int32_t number) {
    limit_.reset();
    for (phase_ = Phase::Connecting; !addresses_.empty();) {
        const auto address = addresses_.back();
        addresses_.pop_back();
        try {
            Unwatch(handle_.Get());
            handle_ = os::OpenSocket(address);
            Watch(handle_.Get(), os::kWritable);
            os::StartConnecting(handle_.Get(), address, port_);
            if (!addresses_.empty()) StartLimit(kAttemptMs);
            return;
        } catch (const RuntimeError& error) {
            number = error.Number();
        } catch (const std::bad_alloc&) {
            number = os::kNoMemory;
        }
    }
    FailLater(number);
}

void Connection::FinishConnecting(bool broken) {
    const auto number = broken ? TakeError() : 0;
    const bool stands = number == 0 || os::StoodBefore(number);
    if (!stands && !addresses_.empty()) return TryNextAddress(number);
    if (!stands) return Fail(number);
    limit_.reset();
    std::vector<os::Address>().swap(addresses_);
    phase_ = Phase::Connected;
    os::SetOutgoingOptions(handle_.Get());
    if (number != 0) FailLater(number);  // behind what the peer has sent
    UpdateWatch();
    Trap("EventLoop:Dispatch", [this] { socket_->Connected(); });
}

void Connection::Ready(std::uint32_t events) {
    if (phase_ == Phase::Lingering) return Linger();
    if (failure_ != 0 && phase_ != Phase::Connected) return Fail(failure_);
    if (phase_ == Phase::Connecting) return FinishConnecting((events & os::kBroken) != 0);
    if (phase_ != Phase::Connected) return;

    if ((events & os::kWritable) != 0) SendQueued();
    const bool broken = broken_ || failure_ != 0 || (events & os::kBroken) != 0;
    if (MayRead()) {
        if (broken || events == 0 || (events & os::kReadable) != 0) Receive(broken);
    } else if (broken && ended_) {
        Fail(TakeError());
    } else if (broken && !broken_) {
        // What the system still has waits for the reading, and the error with it; it would be told for ever.
        broken_ = true;
        Unwatch(handle_.Get());
    }
}

// A broken connection may still hold bytes of the peer: they come before the failure. Whether anything came.
bool Connection::Receive(bool broken) {
    EndGathering();  // of a handler that runs a loop of its own: its buffer is about to be overwritten
    // As much as the partner may still queue, in case that all of it has to wait there.
    const auto queued = partner_ != nullptr ? std::min(partner_->queue_.Size(), kQueueLimit) : 0;
    const auto buffer = ReadBuffer().first(std::min(os::kReadBytes, kQueueLimit - queued));
    if (buffer.empty()) return false;
    const auto received = os::Receive(handle_.Get(), buffer);
    if (received.outcome == os::Outcome::Failed)
        return Fail(failure_ != 0 ? failure_ : received.number), true;
    if (received.outcome == os::Outcome::NoBuffers) return TryAgainLater(), true;
    if (received.outcome == os::Outcome::WouldBlock) return broken && (Fail(TakeError()), true);
    if (received.bytes > 0) {
        Deliver(buffer.first(received.bytes));
        if (failure_ != 0 || broken_) Wake();
        return true;
    }
    if (failure_ != 0) return Fail(failure_), true;
    ended_ = true;
    Trap("EventLoop:Dispatch", [this] { socket_->Closed(); });
    UpdateWatch();  // of one that has not been closed for it
    return true;
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
    const auto number = os::PendingError(handle_.Get());
    return number != 0 ? number : os::kConnectionReset;
}

// Gives back all that the connection holds of the system, and its bytes.
void Connection::Release() {
    CancelQuestion(std::exchange(question_, 0));
    Forget();
    handle_.Close();
    queue_.Clear();
    limit_.reset();
    retry_.reset();
    silence_.reset();
    std::vector<os::Address>().swap(addresses_);
    phase_ = Phase::Idle;
    failure_ = 0;
    held_ = paused_ = ended_ = broken_ = false;
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

void Connection::TellSilence(std::int64_t milliseconds) {
    silence_.reset();
    if (milliseconds == 0 || phase_ != Phase::Connected) return;
    silence_ = std::make_unique<Silence>();
    silence_->timer.Tick.Bind<&Connection::silence_Tick>(*this);
    silence_->milliseconds = milliseconds;
    UpdateWatch();
}

// Bytes may have come since the last turn looked.
void Connection::silence_Tick() {
    if (!MayRead() || Receive(false)) return;
    silence_.reset();
    socket_->Silent();
}

// A watch that the system refuses breaks the connection.
void Connection::UpdateWatch() {
    std::uint32_t events = queue_.Empty() || (retry_ && retry_->IsRunning()) ? 0 : os::kWritable;
    switch (phase_) {
        case Phase::Connecting:
            events = os::kWritable;
            break;
        case Phase::Connected:
            if (silence_ && !MayRead()) silence_->timer.Stop();
            if (silence_ && MayRead() && !silence_->timer.IsRunning())
                silence_->timer.StartOnce(silence_->milliseconds);
            if (broken_) {
                if (MayRead()) Wake();
                return;
            }
            if (MayRead()) events |= os::kReadable;
            break;
        case Phase::Lingering:
            if (!ended_) events |= os::kReadable;
            break;
        default:
            return;
    }
    Try([&] { Watch(handle_.Get(), events); });
}

}  // namespace net
