#include "os/fake/FakeRegistryStore.h"

#include <map>
#include <utility>

#include "os/RegistryStore.h"
#include "os/fake/FakeLoop.h"

namespace os {
namespace {

// Case does not matter in keys and names.
std::string Fold(std::string text) {
    for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return text;
}

using Place = std::pair<std::string, std::string>;

Place PlaceOf(const std::string& keyPath, const std::string& name) {
    auto key = Fold(keyPath);
    while (key.ends_with('\\')) key.pop_back();
    return {key, Fold(name)};
}

struct Registry {
    std::map<Place, RegistryValue> values;
    bool failWrites = false;
    int changes = 0;
};

Registry& TheRegistry() {
    static Registry registry;
    return registry;
}

}  // namespace

namespace fake {

void FailRegistryWrites(bool fail) {
    TheRegistry().failWrites = fail;
}
int RegistryChanges() {
    return TheRegistry().changes;
}
void ResetRegistry() {
    TheRegistry() = {};
}
const WorldPart part(ResetRegistry);

}  // namespace fake

std::optional<RegistryValue> ReadRegistryValue(RegistryHive, const std::string& keyPath,
                                               const std::string& name, std::size_t maxBytes) {
    const auto& values = TheRegistry().values;
    const auto found = values.find(PlaceOf(keyPath, name));
    if (found == values.end()) return {};
    return AsRead(found->second, maxBytes);
}

bool WriteRegistryValue(RegistryHive, const std::string& keyPath, const std::string& name, std::uint32_t type,
                        std::string_view data) {
    auto& registry = TheRegistry();
    if (registry.failWrites) return false;
    registry.values[PlaceOf(keyPath, name)] = {type, std::string(data)};
    ++registry.changes;
    return true;
}

bool RemoveRegistryValue(RegistryHive, const std::string& keyPath, const std::string& name) {
    auto& registry = TheRegistry();
    if (registry.failWrites || registry.values.erase(PlaceOf(keyPath, name)) == 0) return false;
    ++registry.changes;
    return true;
}

}  // namespace os
