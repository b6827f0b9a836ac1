// PostedCalls: the calls that wait in a loop for their turn (os/EventLoop.h, Post).
#pragma once

#include <deque>
#include <functional>
#include <utility>

#include "base/Trap.h"

namespace os {

class PostedCalls {
 public:
    void Add(std::function<void()> call) { calls_.push_back(std::move(call)); }
    bool Empty() const { return calls_.empty(); }

    // Makes the calls that were added before, until `stop` becomes true; what they add waits for the next
    // turn. A call may run a loop of its own, which makes the calls behind it. Whether there were any.
    bool Run(const bool& stop) {
        bool any = false;
        for (auto left = calls_.size(); left > 0 && !calls_.empty() && !stop; --left) {
            const auto call = std::move(calls_.front());
            calls_.pop_front();
            any = true;
            Trap("EventLoop:Dispatch", call);
        }
        return any;
    }

 private:
    std::deque<std::function<void()>> calls_;
};

}  // namespace os
