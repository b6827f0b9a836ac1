#include "os/net/Watched.h"

#include <deque>
#include <vector>

#include "os/net/Waiting.h"

namespace os::net {
namespace {

// A token is the slot's number (low half) and its generation, which counts how often the slot was given up.
struct Slot {
    Watched* watched = nullptr;
    std::uint32_t generation = 0;
};

class Table {
 public:
    std::uint32_t Take(Watched& watched) {
        if (free_.empty()) {
            slots_.push_back({&watched, 0});
            free_.reserve(slots_.capacity());  // so that giving back never throws
            return static_cast<std::uint32_t>(slots_.size() - 1);
        }
        const auto slot = free_.back();
        free_.pop_back();
        slots_[slot].watched = &watched;
        return slot;
    }

    void GiveBack(std::uint32_t slot) {
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

    std::deque<Token> woken;
    std::vector<std::unique_ptr<Watched>> graveyard;

 private:
    std::vector<Slot> slots_;
    std::vector<std::uint32_t> free_;
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
    TheTable().woken.push_back(TheTable().TokenOf(slot_));
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
    TheTable().graveyard.push_back(std::move(watched));
}

void ReportReady(Token token, std::uint32_t events) {
    if (auto* const watched = TheTable().Find(token)) watched->Ready(events);
}

bool HandleWoken(const bool& stop) {
    auto& woken = TheTable().woken;
    bool any = false;
    for (auto left = woken.size(); left > 0 && !woken.empty() && !stop; --left) {
        const auto token = woken.front();
        woken.pop_front();
        any = true;
        ReportReady(token, 0);
    }
    return any;
}

bool AnyWoken() {
    return !TheTable().woken.empty();
}

void EmptyGraveyard() {
    // What is destroyed may bury something else.
    while (!TheTable().graveyard.empty()) {
        const auto buried = std::exchange(TheTable().graveyard, {});
    }
}

}  // namespace os::net
