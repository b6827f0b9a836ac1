#include "os/Watched.h"

#include <vector>

namespace os {
namespace {

// A token is the slot's number (low half) and its generation, which counts how often the slot was given up.
struct Slot {
    Watched* watched = nullptr;
    std::uint32_t generation = 0;
    bool isWoken = false;
};

class Table {
 public:
    std::uint32_t Take(Watched& watched) {
        if (free_.empty()) {
            if (slots_.size() == slots_.capacity()) slots_.reserve(2 * slots_.size() + 16);
            free_.reserve(slots_.capacity());  // so that giving back never throws
            free_.push_back(static_cast<std::uint32_t>(slots_.size()));
            slots_.emplace_back();
        }
        const auto slot = free_.back();
        free_.pop_back();
        slots_[slot].watched = &watched;
        return slot;
    }

    void GiveBack(std::uint32_t slot) {
        TakeWoken(slot);
        slots_[slot].watched = nullptr;
        ++slots_[slot].generation;
        free_.push_back(slot);
    }

    Token TokenOf(std::uint32_t slot) const { return Token{slots_[slot].generation} << 32 | slot; }

    // Null when the token's slot has been given up since.
    Watched* Find(Token token) const {
        const auto slot = static_cast<std::uint32_t>(token);
        return slots_[slot].generation == token >> 32 ? slots_[slot].watched : nullptr;
    }

    void Wake(std::uint32_t slot) {
        woken_ += slots_[slot].isWoken ? 0u : 1u;
        slots_[slot].isWoken = true;
    }
    bool TakeWoken(std::uint32_t slot) {
        const bool wasWoken = std::exchange(slots_[slot].isWoken, false);
        woken_ -= wasWoken ? 1u : 0u;
        return wasWoken;
    }

    std::size_t CountWoken() const { return woken_; }
    std::uint32_t Size() const { return static_cast<std::uint32_t>(slots_.size()); }

    std::unique_ptr<Watched> graveyard;

 private:
    std::vector<Slot> slots_;
    std::vector<std::uint32_t> free_;
    std::size_t woken_ = 0;
};

// Never destroyed: sockets of static storage close after the end of main.
Table& TheTable() {
    static Table& table = *new Table;
    return table;
}

}  // namespace

void Watched::TakeSlot() {
    if (slot_ == kNoSlot) slot_ = TheTable().Take(*this);
}

void Watched::Watch(SocketHandle socket, std::uint32_t events) {
    if (events_ == events) return;
    TakeSlot();
    WaitFor(socket, TheTable().TokenOf(slot_), events, events_ == kNotWatched);
    events_ = events;
}

void Watched::Unwatch(SocketHandle socket) {
    if (events_ == kNotWatched) return;
    StopWaitingFor(socket, TheTable().TokenOf(slot_));
    events_ = kNotWatched;
}

void Watched::Wake() {
    TakeSlot();
    TheTable().Wake(slot_);
    LoopHasWork();
}

void Watched::Forget() {
    if (slot_ == kNoSlot) return;
    if (events_ != kNotWatched) ForgetWaiting(TheTable().TokenOf(slot_));
    TheTable().GiveBack(slot_);
    slot_ = kNoSlot;
    events_ = kNotWatched;
}

void Bury(std::unique_ptr<Watched> watched) {
    watched->nextBuried_ = std::move(TheTable().graveyard);
    TheTable().graveyard = std::move(watched);
}

void ReportReady(Token token, std::uint32_t events) {
    if (auto* const watched = TheTable().Find(token)) watched->Ready(events);
}

// Wakes are rare: ends and failures.
bool HandleWoken(const bool& stop) {
    auto& table = TheTable();
    bool any = false;
    for (std::uint32_t slot = 0; slot < table.Size() && table.CountWoken() > 0 && !stop; ++slot) {
        if (!table.TakeWoken(slot)) continue;
        any = true;
        ReportReady(table.TokenOf(slot), 0);
    }
    return any;
}

bool AnyWoken() {
    return TheTable().CountWoken() > 0;
}

void EmptyGraveyard() {
    // What is destroyed may bury something else.
    while (auto buried = std::move(TheTable().graveyard)) {
        TheTable().graveyard = std::move(buried->nextBuried_);
    }
}

}  // namespace os
