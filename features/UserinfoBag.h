// UserinfoBag: deletes the AIM client's cached user information ("userinfo.bag") of the user, before any
// alias, when the client asks to sign on and when the connection ends.
#pragma once

#include "core/SessionFeature.h"

FeatureEntry UserinfoBag();
