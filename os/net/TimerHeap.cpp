#include "os/net/TimerHeap.h"

#include <tuple>

namespace os::net {
namespace {

bool IsBefore(const TimerEntry& one, const TimerEntry& other) {
    return std::tie(one.due, one.order) < std::tie(other.due, other.order);
}

}  // namespace

void TimerHeap::Add(TimerEntry& entry) {
    entry.order = ++lastOrder_;
    entries_.push_back(&entry);
    Rise(entry, entries_.size() - 1);
}

void TimerHeap::Remove(TimerEntry& entry) {
    const auto place = entry.place;
    if (place == TimerEntry::kNotRunning) return;
    entry.place = TimerEntry::kNotRunning;
    auto& last = *entries_.back();
    entries_.pop_back();
    if (&last == &entry) return;
    Rise(last, place);
    Sink(last, last.place);
}

void TimerHeap::Put(TimerEntry& entry, std::size_t place) {
    entries_[place] = &entry;
    entry.place = place;
}

void TimerHeap::Rise(TimerEntry& entry, std::size_t place) {
    while (place > 0) {
        const auto parent = (place - 1) / 2;
        if (!IsBefore(entry, *entries_[parent])) break;
        Put(*entries_[parent], place);
        place = parent;
    }
    Put(entry, place);
}

void TimerHeap::Sink(TimerEntry& entry, std::size_t place) {
    while (true) {
        auto child = 2 * place + 1;
        if (child >= entries_.size()) break;
        if (child + 1 < entries_.size() && IsBefore(*entries_[child + 1], *entries_[child])) ++child;
        if (!IsBefore(*entries_[child], entry)) break;
        Put(*entries_[child], place);
        place = child;
    }
    Put(entry, place);
}

}  // namespace os::net
