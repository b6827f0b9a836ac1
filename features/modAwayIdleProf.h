// modAwayIdleProf: the frames that commands inject into a session, and the profile view. The builders make
// frames without a number; the stream socket numbers and sends them. Texts are sent as they are.
#pragma once

#include <cstdint>
#include <string>

#include "core/clsHeaderFLAP.h"

namespace modAwayIdleProf {

// The longest idle time that the frame's 16 bits of seconds can tell.
inline constexpr std::int32_t kMostIdleMinutes = 1092;

// Sets the away message; an empty text clears it. Throws RuntimeError (InvalidArgument), as MakeProfileFlap
// does, for a text over 65,535 bytes.
clsHeaderFLAP MakeAwayFlap(const std::string& strAway);

// Sets the idle time; 0 removes it. Throws RuntimeError: InvalidArgument outside 0 to kMostIdleMinutes,
// Overflow where the seconds pass 32 bits.
clsHeaderFLAP MakeIdleFlap(std::int32_t mins);

clsHeaderFLAP MakeProfileFlap(const std::string& strProfile);

// Whether profiles are to show their source: the setting "seehtml", read at every call.
bool WantsProfileHtml();

// Rewrites a user-information reply, SNAC (0x0002, 0x0006), so that its profile is followed by its own HTML
// source. Throws RuntimeError (InvalidArgument), the frame unchanged, for a reply that ends too early and
// for a profile that would outgrow its TLV.
void SeeProfileHtml(clsHeaderFLAP& flap);

}  // namespace modAwayIdleProf
