// Resolver: who asks for a host's addresses, and what that may cost. A name that no server answers takes its
// thread a minute; so few are looked up at once, a bounded number waits, and nobody waits for ever.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "os/Sockets.h"

namespace net {

class AddressReceiver {
 public:
    // The addresses of the host, to be tried in turn; `number` is the system's error number, 0 when there are
    // any.
    virtual void AddressesFound(std::int32_t number, const std::vector<os::Address>& addresses) = 0;

 protected:
    ~AddressReceiver() = default;
};

using QuestionId = std::uint64_t;  // 0: no question

// Looked up at once for somebody who waits for it; with those that nobody waits for any more, which cannot be
// stopped; and waiting for their turn. One more is refused.
inline constexpr std::size_t kMaxLookUps = 4;
inline constexpr std::size_t kMaxThreads = 32;
inline constexpr std::size_t kMaxQuestions = 256;
// After this an unanswered question has failed, whether or not its turn has come.
inline constexpr std::int64_t kAnswerLimitMs = 10'000;

// Asks for the addresses; the answer comes from the loop, later. Throws RuntimeError when too many ask.
QuestionId AskForAddresses(const std::string& host, AddressReceiver& receiver);

// No answer comes to the receiver any more. A question whose turn has not come is not asked.
void CancelQuestion(QuestionId question);

}  // namespace net
