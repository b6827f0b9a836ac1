// Resolver: host names to IPv4 addresses without blocking the loop. The only threads of the program are here;
// they call getaddrinfo and post the answer, live while there are questions, and touch nothing else.
#pragma once

#include <cstdint>
#include <string>

#include "os/net/Sockets.h"

namespace os::net {

class AddressReceiver {
 public:
    // The host's first address; `number` is the system's error number, 0 when the address is good.
    virtual void AddressFound(std::int32_t number, Address address) = 0;

 protected:
    ~AddressReceiver() = default;
};

using QuestionId = std::uint64_t;  // 0: no question

// Asks for the address; the answer comes from the loop, later. Throws when no thread can be started.
QuestionId AskForAddress(const std::string& host, AddressReceiver& receiver);

// No answer comes to the receiver any more. A question that is already being asked runs on by itself.
void CancelQuestion(QuestionId question);

}  // namespace os::net
