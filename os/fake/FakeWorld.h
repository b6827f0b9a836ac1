// FakeWorld: the fakes of the os/ contracts, for deterministic tests: sockets, a clock, a file system and all
// that a program finds on a machine, in memory. The real loop and connections of net/ run on them and never
// sleep. Tests drive them through the headers of this folder; events come only while the loop runs
// (ProcessPendingEvents, RunEventLoopUntil, AdvanceClock).
#pragma once

#include <vector>

#include "net/EventLoop.h"

namespace os::fake {

// A fake's share of ResetWorld, to be made once beside its state. A fake that is not linked has no share.
class WorldPart {
 public:
    explicit WorldPart(void (*reset)()) { All().push_back(reset); }

    static std::vector<void (*)()>& All() {
        static std::vector<void (*)()> parts;
        return parts;
    }
};

// The state of a fake, which tests read and set; ResetWorld makes it new. Never destroyed: what has static
// storage uses it after the end of main.
template <typename State>
State& Fresh() {
    static State& state = *new State;
    static const WorldPart part([] { state = State(); });
    return state;
}

// Forgets everything: connections, listeners, files, settings, boxes, menus, other programs. To be called
// before each test; connections that still exist are broken, and the loop hears of it. The steady clock goes
// on, as it always does.
inline void ResetWorld() {
    for (auto* const reset : WorldPart::All()) reset();
    net::ProcessPendingEvents();
}

}  // namespace os::fake
