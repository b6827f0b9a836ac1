// FakeLoop: what the fakes have between them. Tests do not need it.
#pragma once

namespace os::fake {

// Raises the network events that are ready at the beginning of the turn, until `stop` becomes true. Whether
// there were any.
bool DeliverNetworkEvents(const bool& stop);

// A fake's share of ResetWorld, to be made once beside its state. A fake that is not linked has no share.
class WorldPart {
 public:
    explicit WorldPart(void (*reset)());
};

}  // namespace os::fake
