// FakeRegistryStore: a registry in memory, empty at first. Tests use os/RegistryStore.h to fill and read it.
#pragma once

#include <map>
#include <string>
#include <utility>

#include "os/RegistryStore.h"
#include "os/fake/FakeWorld.h"

namespace os::fake {

struct Registry {
    std::map<std::pair<std::string, std::string>, RegistryValue> values;  // by key and name, in lower case
    bool failWrites = false;  // and removals, as in a registry without permission
    int changes = 0;          // values written or removed
};
inline Registry& registry = Fresh<Registry>();

}  // namespace os::fake
