// The end of a Connection: after TcpSocket::Close it belongs to the loop, empties its queue, sends FIN and
// waits a little for the peer's own FIN. Closing at once would answer bytes of the peer that are still on
// their way with a reset, and a reset makes many systems throw away what the peer has not read yet.
#include <vector>

#include "os/net/Connection.h"
#include "os/net/ReadBuffer.h"

namespace os::net {
namespace {

constexpr std::int64_t kDrainLimitMs = 2'000;  // how long the peer's FIN is waited for after ours

// Never destroyed: what still flushes at the end of the process is the system's.
std::vector<std::unique_ptr<Connection>>& Lingerers() {
    static auto& lingerers = *new std::vector<std::unique_ptr<Connection>>;
    return lingerers;
}

std::size_t givenUp = 0;

}  // namespace

void Connection::Close(std::unique_ptr<Connection> connection) {
    auto& closing = *connection;
    closing.Unlink();
    closing.socket_ = nullptr;
    const bool linger = closing.phase_ == Phase::Connected && closing.failure_ == 0 &&
                        !(closing.ended_ && closing.queue_.Empty());
    if (!linger) {
        closing.Release();
        return Bury(std::move(connection));
    }
    closing.lingeringPlace_ = Lingerers().size();
    Lingerers().push_back(std::move(connection));
    closing.StartLingering();
}

void Connection::StartLingering() {
    phase_ = Phase::Lingering;
    limit_ = std::make_unique<Timer>();
    limit_->Tick.Bind<&Connection::limit_Tick>(*this);
    limit_->StartOnce(kFlushLimitMs);
    if (queue_.Empty()) EndOwnDirection();
    UpdateWatch();
}

void Connection::EndOwnDirection() {
    EndSending(handle_.Get());
    limit_->StartOnce(kDrainLimitMs);
}

// Something is ready: takes what the peer sends, so that it gets around to reading, and sends what is left.
void Connection::Linger() {
    if (failure_ != 0) return Vanish();
    if (!ended_) {
        const auto discarded = Discard(handle_.Get(), ReadBuffer());
        if (discarded.outcome == Outcome::Failed) return Vanish();
        ended_ = discarded.outcome == Outcome::Done && discarded.bytes == 0;
    }
    if (!queue_.Empty()) {
        SendQueued();
        if (failure_ != 0) return Vanish();
        if (queue_.Empty() && !ended_) EndOwnDirection();
    }
    if (queue_.Empty() && ended_) return Vanish();
    UpdateWatch();
}

void Connection::limit_Tick() {
    // What could not be sent in time is lost, and the peer must not take the rest for the whole.
    if (!queue_.Empty()) ResetOnClose(handle_.Get());
    Vanish();
}

// The limit may be due in the turn in which the peer's end has come.
void Connection::Vanish() {
    limit_->Stop();
    if (!queue_.Empty()) ++givenUp;
    auto& lingerers = Lingerers();
    auto self = std::move(lingerers[lingeringPlace_]);
    if (lingerers.back()) {
        lingerers.back()->lingeringPlace_ = lingeringPlace_;
        lingerers[lingeringPlace_] = std::move(lingerers.back());
    }
    lingerers.pop_back();
    Forget();
    handle_.Close();
    queue_.Clear();
    Bury(std::move(self));
}

std::size_t Connection::CountFlushing() {
    std::size_t count = 0;
    for (const auto& one : Lingerers()) count += one->queue_.Empty() ? 0u : 1u;
    return count;
}

std::size_t Connection::CountGivenUp() {
    return givenUp;
}

}  // namespace os::net
