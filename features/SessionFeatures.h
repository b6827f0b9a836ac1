// SessionFeatures: the session features of the relay, in their order.
#pragma once

#include <vector>

#include "core/SessionFeature.h"

std::vector<FeatureEntry> SessionFeatures();
