// TimerHeap: the running timers, the next one to tick on top. Each entry knows its place, so starting and
// stopping a timer neither walks nor allocates.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace os::net {

struct TimerEntry {
    static constexpr std::size_t kNotRunning = SIZE_MAX;

    std::int64_t due = 0;     // MonotonicMilliseconds
    std::int64_t period = 0;  // 0: ticks once
    std::uint64_t order = 0;  // of the starts: timers due together tick in the order of their starts
    std::size_t place = kNotRunning;
    void* timer = nullptr;
};

class TimerHeap {
 public:
    bool Empty() const { return entries_.empty(); }
    TimerEntry& Top() const { return *entries_.front(); }
    std::uint64_t LastOrder() const { return lastOrder_; }

    // The entry's due time is set by the caller; it takes the next order.
    void Add(TimerEntry& entry);
    void Remove(TimerEntry& entry);

 private:
    void Put(TimerEntry& entry, std::size_t place);
    void Rise(TimerEntry& entry, std::size_t place);
    void Sink(TimerEntry& entry, std::size_t place);

    std::vector<TimerEntry*> entries_;
    std::uint64_t lastOrder_ = 0;
};

}  // namespace os::net
