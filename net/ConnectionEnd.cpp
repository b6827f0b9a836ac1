// The end of a Connection: after TcpSocket::Close it belongs to the loop, empties its queue, sends FIN and
// waits a little for the peer's own FIN. Closing at once would answer bytes of the peer that are still on
// their way with a reset, and a reset makes many systems throw away what the peer has not read yet.
#include <new>
#include <string>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "net/Connection.h"
#include "net/ReadBuffer.h"
#include "os/Clock.h"

namespace net {
namespace {

constexpr std::int64_t kDrainLimitMs = 2'000;  // how long the peer's FIN is waited for after ours
constexpr std::int64_t kLookMs = 1'000;        // how often it is looked whether the peer takes anything

Connection* firstLingerer = nullptr;  // what still flushes at the end of the process is the system's
std::size_t givenUp = 0;

}  // namespace

// Nothing here may fail; a connection that finds no memory to linger ends at once.
void Connection::Close(std::unique_ptr<Connection> connection) {
    auto& closing = *connection;
    closing.Unlink();
    closing.socket_ = nullptr;
    closing.silence_.reset();
    const bool linger = closing.phase_ == Phase::Connected && closing.failure_ == 0 && !closing.broken_ &&
                        !(closing.ended_ && closing.queue_.Empty());
    if (!linger) {
        closing.Release();
        return os::Bury(std::move(connection));
    }
    connection.release();  // NOLINT: the list of lingering connections owns it
    closing.nextLingerer_ = firstLingerer;
    if (firstLingerer != nullptr) firstLingerer->previousLingerer_ = &closing;
    firstLingerer = &closing;
    closing.StartLingering();
}

void Connection::StartLingering() {
    phase_ = Phase::Lingering;
    try {
        StartLimit(kLookMs);
    } catch (const std::bad_alloc&) {
        return GiveUp();
    }
    if (queue_.Empty()) {
        EndOwnDirection();
    } else {
        lingersSince_ = lastTaken_ = os::MonotonicMilliseconds();
        left_ = queue_.Size() + os::UnsentBytes(handle_.Get());
    }
    UpdateWatch();
}

void Connection::EndOwnDirection() {
    os::EndSending(handle_.Get());
    limit_->StartOnce(kDrainLimitMs);
}

// Something is ready: takes what the peer sends, so that it gets around to reading, and sends what is left.
void Connection::Linger() {
    if (failure_ != 0) return Vanish();
    if (!ended_) {
        const auto discarded = os::Discard(handle_.Get(), ReadBuffer());
        if (discarded.outcome == os::Outcome::Failed) return Vanish();
        ended_ = discarded.outcome == os::Outcome::Done && discarded.bytes == 0;
    }
    if (!queue_.Empty()) {
        SendQueued();
        if (failure_ != 0) return Vanish();
        if (queue_.Empty() && !ended_) EndOwnDirection();
    }
    if (queue_.Empty() && ended_) return Vanish();
    UpdateWatch();
}

void Connection::StartLimit(std::int64_t milliseconds) {
    if (!limit_) limit_ = std::make_unique<Timer>();
    limit_->Tick.Bind<&Connection::limit_Tick>(*this);
    limit_->StartOnce(milliseconds);
}

void Connection::limit_Tick() {
    if (phase_ == Phase::Connecting) return TryNextAddress(os::kTimedOut);
    if (queue_.Empty()) return Vanish();
    const auto now = os::MonotonicMilliseconds();
    const auto left = queue_.Size() + os::UnsentBytes(handle_.Get());
    if (left < left_) lastTaken_ = now;
    left_ = left;
    if (now - lastTaken_ >= kFlushLimitMs || now - lingersSince_ >= kMaxFlushMs) return GiveUp();
    limit_->StartOnce(kLookMs);
}

// What could not be sent in time is lost, and the peer must not take the rest for the whole.
void Connection::GiveUp() {
    Trap("Connection:GiveUp", [this] {
        throw RuntimeError(os::kTimedOut, "A closed connection's receiver takes nothing; " +
                                              std::to_string(queue_.Size()) + " bytes and more are lost");
    });
    os::ResetOnClose(handle_.Get());
    Vanish();
}

// The limit may be due in the turn in which the peer's end has come.
void Connection::Vanish() {
    if (!queue_.Empty()) ++givenUp;
    (previousLingerer_ != nullptr ? previousLingerer_->nextLingerer_ : firstLingerer) = nextLingerer_;
    if (nextLingerer_ != nullptr) nextLingerer_->previousLingerer_ = previousLingerer_;
    Forget();
    handle_.Close();
    queue_.Clear();
    if (limit_) limit_->Stop();
    if (retry_) retry_->Stop();
    os::Bury(std::unique_ptr<Connection>(this));
}

std::size_t Connection::CountFlushing() {
    std::size_t count = 0;
    for (const auto* one = firstLingerer; one != nullptr; one = one->nextLingerer_)
        count += one->queue_.Empty() ? 0u : 1u;
    return count;
}

std::size_t Connection::CountGivenUp() {
    return givenUp;
}

}  // namespace net
