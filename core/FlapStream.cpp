#include "core/FlapStream.h"

#include <algorithm>
#include <utility>

#include "core/FlapFrame.h"

namespace {

constexpr std::size_t kGoodbyeLength = 4;

// Length of the whole frame at the front of the bytes, 0 while it is incomplete.
std::size_t WholeFrameLength(std::span<char> bytes) {
    if (bytes.size() < FlapFrame::kHeaderLength) return 0;
    const auto length = FlapFrame(bytes).TotalLength();
    return length <= bytes.size() ? length : 0;
}

enum class Verdict { Undecided, Header, Goodbye };

// Judges four bytes by those that follow, as soon as one of them rules a new frame out. Waiting delays no
// frame: a following 0x2A as a length field would announce more than 10,000 bytes.
Verdict Judge(const ByteString& held) {
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(held[i]); };
    const auto next = static_cast<std::uint16_t>((byte(2) << 8 | byte(3)) + 1);
    const auto size = held.size();
    if (size > 4 && held[4] != FlapFrame::kMarker) return Verdict::Header;
    if (size > 5 && (byte(5) < 1 || byte(5) > 5)) return Verdict::Header;
    if (size > 6 && byte(6) != next >> 8) return Verdict::Header;
    if (size > 7) return byte(7) == (next & 0xFF) ? Verdict::Goodbye : Verdict::Header;
    return Verdict::Undecided;
}

// Moves bytes from the arrival to the held ones until there are `wanted` of them; whether that was enough.
bool Fill(ByteString& held, std::span<char>& arrival, std::size_t wanted) {
    const auto count = std::min(wanted - held.size(), arrival.size());
    held.append(arrival.data(), count);
    arrival = arrival.subspan(count);
    return held.size() == wanted;
}

}  // namespace

void FlapStream::Feed(std::span<char> arrival) {
    bool behindFrame = false;
    if (!held_.empty()) arrival = FinishHeld(arrival, behindFrame);
    while (const auto length = WholeFrameLength(arrival)) {
        HandOut(arrival.first(length));
        arrival = arrival.subspan(length);
        behindFrame = true;
    }
    held_.append(arrival.data(), arrival.size());
    if (held_.size() == kGoodbyeLength) mayBeGoodbye_ = true;
    awaitsSilence_ = held_.size() == kGoodbyeLength && behindFrame && LooksLikeNextFrame();
}

bool FlapStream::LooksLikeNextFrame() const {
    const auto channel = static_cast<std::uint8_t>(held_[1]);
    const auto sequence = static_cast<std::uint16_t>(GetWord(held_, 3));
    return held_[0] == FlapFrame::kMarker && channel >= 1 && channel <= 5 &&
           sequence == static_cast<std::uint16_t>(lastSequence_ + 1);
}

// Completes the held frame from the arrival and hands it out; returns what the arrival holds behind it.
std::span<char> FlapStream::FinishHeld(std::span<char> arrival, bool& behindFrame) {
    if (mayBeGoodbye_) arrival = JudgeGoodbye(arrival, behindFrame);
    if (mayBeGoodbye_) return arrival;
    if (held_.size() < FlapFrame::kHeaderLength && !Fill(held_, arrival, FlapFrame::kHeaderLength))
        return arrival;
    if (!Fill(held_, arrival, FlapFrame(held_).TotalLength())) return arrival;
    HandOut(held_);
    Release();
    behindFrame = true;
    return arrival;
}

std::span<char> FlapStream::JudgeGoodbye(std::span<char> arrival, bool& behindFrame) {
    while (mayBeGoodbye_ && !arrival.empty()) {
        held_ += arrival.front();
        arrival = arrival.subspan(1);
        const auto verdict = Judge(held_);
        mayBeGoodbye_ = verdict == Verdict::Undecided;
        if (verdict != Verdict::Goodbye) continue;
        auto next = held_.substr(kGoodbyeLength);
        HandOutGoodbye();
        held_ = std::move(next);
        behindFrame = true;
    }
    return arrival;
}

void FlapStream::SilencePassed() {
    if (awaitsSilence_) HandOutGoodbye();
}

ByteString FlapStream::TakeHeld() {
    auto held = std::exchange(held_, {});
    Release();
    return held;
}

void FlapStream::PeerClosed() {
    if (held_.size() == kGoodbyeLength) HandOutGoodbye();
    Release();
}

void FlapStream::HandOutGoodbye() {
    held_.resize(kGoodbyeLength);
    held_.append(FlapFrame::kHeaderLength - kGoodbyeLength, '\0');
    HandOut(held_);
    Release();
}

// The handler may number the frame anew.
void FlapStream::HandOut(std::span<char> frame) {
    lastSequence_ = FlapFrame(frame).Sequence();
    Frame(frame);
}

// An idle connection keeps no buffer.
void FlapStream::Release() {
    ByteString().swap(held_);
    mayBeGoodbye_ = false;
    awaitsSilence_ = false;
}
