// ConnectionNotes: the feature that notes of each connection what becomes of it, for people to be told
// (features/connections/Connections.h), and where the server sends the client, which the router goes by.
//
// Of a server's word it changes one thing: an address that the client cannot ask for (ServerRouter.h).
#pragma once

#include "core/SessionFeature.h"

FeatureEntry NotesOfConnections();
