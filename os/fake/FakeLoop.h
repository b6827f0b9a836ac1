// FakeLoop: what the fakes have between them. Tests do not need it.
#pragma once

namespace os::fake {

// Raises the network events that are ready at the beginning of the turn, until `stop` becomes true. Whether
// there were any.
bool DeliverNetworkEvents(const bool& stop);

void ResetLoop();
void ResetClock();
void ResetNetwork();
void ResetFiles();

}  // namespace os::fake
