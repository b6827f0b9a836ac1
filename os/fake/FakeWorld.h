// FakeWorld: the fakes of the os/ contracts, for deterministic tests: a network, a clock, a file system and
// all that a program finds on a machine, in memory, with one loop that never sleeps. Tests drive them through
// the headers of this folder; events come only while the loop runs (ProcessPendingEvents, RunEventLoopUntil,
// AdvanceClock).
#pragma once

namespace os::fake {

// Forgets everything: connections, listeners, timers, posted calls, files, settings, boxes, menus, other
// programs; the clock stands at its beginning. To be called before each test; sockets, listeners and timers
// that still exist go dead.
void ResetWorld();

}  // namespace os::fake
