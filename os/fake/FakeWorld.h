// FakeWorld: the fakes of the os/ contracts, for deterministic tests: a network, a clock and a file system
// in memory, with one loop that never sleeps. Tests drive them through FakeNetwork.h, FakeClock.h and
// FakeFiles.h; events come only while the loop runs (ProcessPendingEvents, RunEventLoopUntil, AdvanceClock).
#pragma once

namespace os::fake {

// Forgets everything: connections, listeners, timers, posted calls, files; the clock stands at its beginning.
// To be called before each test; sockets, listeners and timers that still exist go dead.
void ResetWorld();

}  // namespace os::fake
