// LearnNames: the relay's own step among the features: it reads the user's screen name in the client's
// sign-on request, SNAC (0x17, 2), and in the server's self-information, SNAC (1, 0x0F). What the features
// before it have made of the frame is the name that the client knows.
#pragma once

#include "core/SessionFeature.h"

FeatureEntry LearnNames();
