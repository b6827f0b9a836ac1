// FetchMessages: messages that wait at the server. Clients of the time when servers kept none do not ask for
// them, so they are asked for on the client's behalf, and each says when it was written.
#pragma once

#include "core/SessionFeature.h"

FeatureEntry FetchMessages();
