#include "features/Overview.h"

#include <utility>

namespace {
Overview* current = nullptr;
}

Overview::Overview(Relay& relay)
    : traffic(relay), router(connections), relay_(relay), before_(std::exchange(current, this)) {
    relay_.SetRouter(&router);
}

// The features of open sessions refer to it.
Overview::~Overview() {
    relay_.RemoveAllPairs();
    relay_.SetRouter(nullptr);
    current = before_;
}

Overview* Overview::Current() {
    return current;
}
