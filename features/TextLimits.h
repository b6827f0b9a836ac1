// TextLimits: how long a profile or an away message may be. Every server has a limit of its own and says it
// at sign-on; what is longer it cuts or refuses.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "core/SessionFeature.h"

namespace TextLimits {

// What holds for a server that has said nothing, in bytes. Edit controls of some systems take minutes over a
// long paragraph and hold all traffic up meanwhile; at this length nobody notices.
inline constexpr std::size_t kUnsaid = 8'000;

// The longest text in bytes that the servers of all these screen names take.
std::size_t For(const std::vector<std::string>& screenNames);

// A server has said how much it takes from this name: the data of SNAC (0x0002, 0x0003), a chain of TLVs of
// which 0x0001 holds the most bytes of a text. Data without it, or with 0 in it, change nothing.
void Learn(const std::string& screenName, std::string_view rights);

// Forgets everything that was learnt.
void Reset();

// Listens to what servers say.
FeatureEntry Learning();

}  // namespace TextLimits
