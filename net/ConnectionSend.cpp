// The sending half of Connection: gathering, the queue and the pace of the socket that reads for it.
#include "base/Trap.h"
#include "net/Connection.h"
#include "net/ReadBuffer.h"

namespace net {
namespace {

// How long the system is left alone that has no buffers.
constexpr std::int64_t kRetryMs = 50;
constexpr std::size_t kMaxParts = 32;  // of the queue in one call: some reads of the other side

// What the handler of Data that is running sends.
struct {
    bool active = false;
    Connection* receiver = nullptr;
    Gathering parts;
} gathering;

std::size_t SizeOf(std::span<const os::Part> parts) {
    std::size_t size = 0;
    for (const auto& part : parts) size += part.size;
    return size;
}

}  // namespace

void Connection::Deliver(std::span<char> bytes) {
    gathering.active = true;
    Trap("EventLoop:Dispatch", [&] { socket_->Data(bytes); });
    EndGathering();
}

void Connection::Send(std::string_view bytes) {
    if (phase_ != Phase::Connected || failure_ != 0 || bytes.empty()) return;
    if (gathering.active && queue_.Empty()) {
        if (gathering.receiver != this) SendGathered();
        gathering.receiver = this;
        bool isTaken = false;
        if (!Try([&] { isTaken = gathering.parts.Add(bytes); }) || isTaken) return;
        SendGathered();
    }
    if (!queue_.Empty()) {
        Enqueue(bytes);
        return PaceReader();
    }
    const os::Part part{bytes.data(), bytes.size()};
    SendNow({&part, 1});
}

void Connection::SendGathered() {
    auto* const receiver = std::exchange(gathering.receiver, nullptr);
    if (receiver == nullptr) return;
    if (gathering.parts.Size() > 0) receiver->SendNow(gathering.parts.Parts());
    gathering.parts.Clear();
}

void Connection::EndGathering() {
    SendGathered();
    gathering.active = false;
}

void Connection::SendNow(std::span<const os::Part> parts) {
    const auto sent = os::Send(handle_.Get(), parts);
    if (sent.outcome == os::Outcome::Failed) return FailLater(sent.number);
    if (sent.outcome == os::Outcome::NoBuffers) TryAgainLater();
    QueueRest(parts, sent.bytes);
}

void Connection::QueueRest(std::span<const os::Part> parts, std::size_t taken) {
    for (const auto& part : parts) {
        const auto skipped = std::min(taken, part.size);
        taken -= skipped;
        Enqueue({part.bytes + skipped, part.size - skipped});
    }
    if (queue_.Empty()) return;
    UpdateWatch();
    PaceReader();
}

// A connection whose bytes find no memory is broken; there must be no hole in the stream.
void Connection::Enqueue(std::string_view bytes) {
    if (failure_ == 0) Try([&] { queue_.Append(bytes); });
}

// Until the system refuses: not every system tells of room that it has not refused before.
void Connection::SendQueued() {
    if (queue_.Empty()) return;
    for (bool allTaken = true; allTaken && !queue_.Empty();) {
        os::Part parts[kMaxParts];
        const auto count = queue_.Describe(parts);
        const auto sent = os::Send(handle_.Get(), {parts, count});
        if (sent.outcome == os::Outcome::Failed) return FailLater(sent.number);
        if (sent.outcome == os::Outcome::NoBuffers) TryAgainLater();
        if (sent.outcome != os::Outcome::Done) break;
        queue_.DropFront(sent.bytes);
        allTaken = sent.bytes == SizeOf({parts, count});
    }
    if (queue_.Empty()) UpdateWatch();
    PaceReader();
}

void Connection::TryAgainLater() {
    Try([&] {
        if (!retry_) retry_ = std::make_unique<Timer>();
        retry_->Tick.Bind<&Connection::retry_Tick>(*this);
        retry_->StartOnce(kRetryMs);
        UpdateWatch();
    });
}

void Connection::retry_Tick() {
    UpdateWatch();
    if (phase_ == Phase::Lingering) return Linger();
    SendQueued();
    if (phase_ == Phase::Connected && MayRead()) Receive(false);
}

std::size_t Connection::QueuedBytes() const {
    return queue_.Size() + (gathering.receiver == this ? gathering.parts.Size() : 0);
}

void Connection::ReadFor(Connection& partner) {
    if (partner_ != nullptr) partner_->reader_ = nullptr;
    if (partner.reader_ != nullptr) partner.reader_->partner_ = nullptr;
    partner_ = &partner;
    partner.reader_ = this;
    partner.PaceReader();
}

void Connection::PaceReader() {
    if (reader_ == nullptr) return;
    const bool tooMuch = queue_.Size() >= kQueueLimit;
    const bool enough = queue_.Size() <= kQueueLimit / 2;
    if (reader_->paused_ ? !enough : !tooMuch) return;
    reader_->paused_ = tooMuch;
    reader_->UpdateWatch();
}

// The link ends with either side; whoever waited for our queue reads on.
void Connection::Unlink() {
    if (gathering.receiver == this) SendGathered();
    if (partner_ != nullptr) partner_->reader_ = nullptr;
    partner_ = nullptr;
    if (reader_ == nullptr) return;
    auto& reader = *std::exchange(reader_, nullptr);
    reader.partner_ = nullptr;
    if (std::exchange(reader.paused_, false)) reader.UpdateWatch();
}

}  // namespace net
