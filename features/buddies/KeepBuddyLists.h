// KeepBuddyLists: each buddy list that a server sends is kept in a file when it differs from the last, and so
// is what older clients, whose lists the server does not keep, tell it at sign-on. A list that is put back
// (features/buddies/PutBack.h) goes over the same connections.
#pragma once

#include "core/SessionFeature.h"

FeatureEntry KeepBuddyLists();
