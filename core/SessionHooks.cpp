#include "core/SessionHooks.h"

namespace {

SessionHooks doNothing;
SessionHooks* current = &doNothing;

}  // namespace

SessionHooks& CurrentSessionHooks() {
    return *current;
}

void SetSessionHooks(SessionHooks* hooks) {
    current = hooks != nullptr ? hooks : &doNothing;
}
