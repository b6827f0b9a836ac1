// ChatLogging: what is said in chat rooms, in log files named after the room. A room has a connection of its
// own, on which the server tells of the room first.
#pragma once

#include <memory>

#include "features/modLogging.h"

FeatureEntry ChatLogging(std::shared_ptr<modLogging::MessageLog> log);
