// KeepMessages: messages for buddies who are off line. A message that the server refuses because its receiver
// is not there is offered to it once more, to be stored; where that fails too it waits in "waiting.dat" and
// is sent when the buddy comes. The client never sees the refusal; its user is told once for each buddy and
// sign-on.
#pragma once

#include <cstdint>

#include "core/SessionFeature.h"

FeatureEntry KeepMessages();

// Sends a waiting message now, on a connection on which its user is signed on. Whether there was one.
bool SendWaitingNow(std::uint32_t number);
