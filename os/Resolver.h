// Resolver: a host's addresses, looked up without blocking the loop. The only threads of the program are
// here: each looks one host up, hands the answer to the loop and ends; it touches nothing else. Who may ask,
// how many at once and for how long is decided in net/Resolver.h.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "os/Sockets.h"

namespace os {

class LookUpReceiver {
 public:
    // The addresses of the host in the order in which they should be tried; `number` is the system's error
    // number, 0 when there are any. From the loop. May throw.
    virtual void LookedUp(std::uint64_t id, std::int32_t number, const std::vector<Address>& addresses) = 0;

 protected:
    ~LookUpReceiver() = default;
};

// Starts to look the host up, which can take minutes and cannot be stopped; the answer carries the
// identifier. The receiver is never destroyed. Throws when no thread can be started.
void StartLookUp(std::uint64_t id, const std::string& host, LookUpReceiver& receiver);

}  // namespace os
