// Reactor: the epoll set under the event loop.
#pragma once

namespace os::posix {

// Handles what is ready: waits up to `timeoutMs` (-1: without end) when nothing is. At most one batch of
// events. Stops after an event when `stop` has become true. Whether anything was handled.
bool HandleReadyWatches(int timeoutMs, const bool& stop);

}  // namespace os::posix
