// modAwayIdleProf: the frames that commands inject into a session, and the profile view. The builders make
// frames without a number; the stream socket numbers and sends them. Texts leave as TextForWire has them
// (os/CodePage.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "core/SessionFeature.h"
#include "core/clsHeaderFLAP.h"

namespace modAwayIdleProf {

// The longest idle time that the frame's 16 bits of seconds can tell.
inline constexpr std::int32_t kMaxIdleMinutes = 1092;

// The longest away message or profile, in bytes; leaves room for what stands around a text in its frame.
inline constexpr std::size_t kMaxText = 65'000;

// Sets the away message; an empty text clears it. Throws RuntimeError (InvalidArgument), as MakeProfileFlap
// does, for a text over 65,535 bytes.
clsHeaderFLAP MakeAwayFlap(const std::string& strAway);

// Sets the idle time; 0 removes it. Throws RuntimeError: InvalidArgument outside 0 to kMaxIdleMinutes,
// Overflow where the seconds pass 32 bits.
clsHeaderFLAP MakeIdleFlap(std::int32_t mins);

clsHeaderFLAP MakeProfileFlap(const std::string& strProfile);

// The features: the source of profiles, and the user's commands.
FeatureEntry ProfileSource();
FeatureEntry Commands();

// Whether profiles are to show their source: the setting "seehtml", read at every call.
bool WantsProfileHtml();

// Rewrites a user-information reply, SNAC (0x0002, 0x0006), so that its profile is followed by its own HTML
// source, in the profile's character set; a profile in one that is not known stays as it is. The frame is
// then one of channel 2, whatever it was. Throws RuntimeError (InvalidArgument), the frame unchanged, for a
// reply that ends too early and for a profile that would outgrow its TLV.
void SeeProfileHtml(clsHeaderFLAP& flap);

}  // namespace modAwayIdleProf
