#include "features/traffic/Traffic.h"

#include <algorithm>
#include <new>

#include "core/Relay.h"
#include "net/Turn.h"

namespace {

// Frames lie in chunks, which are given back as a whole. Room for the largest frame, before and after.
constexpr std::size_t kChunk = std::size_t{256} * 1024;

}  // namespace

Traffic::~Traffic() {
    relay_.SetWatch(nullptr);
}

void Traffic::SwitchOn(bool on) {
    isOn_ = on;
    Watch();
}

void Traffic::SetSink(Sink sink) {
    sink_ = std::move(sink);
    Watch();
}

void Traffic::Watch() {
    relay_.SetWatch(isOn_ || sink_ ? this : nullptr);
}

void Traffic::Clear() {
    chunks_.clear();
    legs_.clear();
    latest_ = nullptr;
    first_ = end_ = 0;
    ++generation_;
}

TrafficFrame Traffic::At(std::uint64_t number) const {
    const auto behind = std::ranges::upper_bound(chunks_, number, {}, &Chunk::first);
    const auto& chunk = *std::prev(behind);
    const auto& entry = chunk.entries.at(static_cast<std::size_t>(number - chunk.first));
    TrafficFrame frame{};
    frame.direction = entry.direction;
    frame.channel = entry.channel;
    frame.fate = entry.fate;
    frame.numberBefore = entry.numberBefore;
    frame.numberAfter = entry.numberAfter;
    frame.before = {entry.bytes, entry.sizeBefore};
    frame.after = entry.fate == PassedFrame::Fate::Passed
                      ? frame.before
                      : std::string_view(entry.bytes + entry.sizeBefore, entry.sizeAfter);
    frame.slot = entry.slot;
    frame.microseconds = entry.microseconds;
    return frame;
}

const TrafficLeg& Traffic::LegOf(std::size_t slot) const {
    return legs_.at(slot).leg;
}

// A frame that finds no memory is not kept; it passes all the same. The clock is a system call on some
// systems, so it is read once a turn.
void Traffic::Frame(std::size_t slot, const PassedFrame& frame) {
    try {
        if (const auto turn = net::TurnNumber(); turn != turn_ || microseconds_ == 0) {
            turn_ = turn;
            microseconds_ = os::MicrosecondsSince1970();
        }
        auto& known = latest_ != nullptr && latest_->leg.slot == slot ? *latest_ : Meet(slot);
        if (isOn_) {
            known.end = end_ + 1;  // first: a leg of which nothing is kept may be forgotten meanwhile
            Keep(slot, frame);
            ++end_;
        }
        if (sink_) sink_(known.leg, TrafficFrame{frame, slot, microseconds_});
    } catch (const std::bad_alloc&) {
    }
}

void Traffic::Keep(std::size_t slot, const PassedFrame& frame) {
    const bool isSame = frame.fate == PassedFrame::Fate::Passed;
    const auto after = isSame ? std::string_view() : frame.after;
    const auto size = frame.before.size() + after.size();
    const bool hasRoom = !chunks_.empty() && chunks_.back().HasRoomFor(size);
    auto& chunk = hasRoom ? chunks_.back() : NextChunk();
    auto* const bytes = chunk.bytes.get() + chunk.used;
    chunk.entries.push_back({microseconds_, bytes, static_cast<std::uint32_t>(slot),
                             static_cast<std::uint16_t>(frame.before.size()),
                             static_cast<std::uint16_t>(after.size()), frame.numberBefore, frame.numberAfter,
                             frame.channel, frame.direction, frame.fate});
    std::copy(frame.before.begin(), frame.before.end(), bytes);
    std::copy(after.begin(), after.end(), bytes + frame.before.size());
    chunk.used += size;
}

// The entries, too, count as bytes of the chunk.
bool Traffic::Chunk::HasRoomFor(std::size_t more) const {
    return used + more + (entries.size() + 1) * sizeof(Entry) <= kChunk;
}

// The oldest one is used again: its memory is known to the processor.
Traffic::Chunk& Traffic::NextChunk() {
    Chunk chunk;
    if (chunks_.size() == kMaxBytes / kChunk) {
        chunk = std::move(chunks_.front());
        chunks_.pop_front();
        first_ = chunks_.front().first;
        ForgetLegs();
        chunk.entries.clear();
        chunk.used = 0;
    } else {
        chunk.bytes = std::make_unique_for_overwrite<char[]>(kChunk);
    }
    chunk.first = end_;
    return chunks_.emplace_back(std::move(chunk));
}

// Those that have ended and of which nothing is kept any more.
void Traffic::ForgetLegs() {
    latest_ = nullptr;
    std::erase_if(legs_,
                  [&](const auto& one) { return one.second.end <= first_ && !relay_.IsOpen(one.first); });
}

Traffic::KnownLeg& Traffic::Meet(std::size_t slot) {
    auto found = legs_.find(slot);
    if (found == legs_.end()) {
        ForgetLegs();
        const auto& pair = *relay_.Connections().at(slot);
        const TrafficLeg leg{slot, pair.EndsOf(Direction::ToServer), pair.EndsOf(Direction::ToClient)};
        found = legs_.emplace(slot, KnownLeg{leg}).first;
    }
    latest_ = &found->second;
    return *latest_;
}
