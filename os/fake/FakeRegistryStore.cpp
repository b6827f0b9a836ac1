#include "os/fake/FakeRegistryStore.h"

#include <algorithm>

#include "base/Text.h"

namespace os {
namespace {

// Case does not matter in keys and names.
std::pair<std::string, std::string> PlaceOf(const std::string& keyPath, const std::string& name) {
    return {LowerCase(TrimEnd(keyPath, "\\")), LowerCase(name)};
}

}  // namespace

std::optional<RegistryValue> ReadRegistryValue(RegistryHive, const std::string& keyPath,
                                               const std::string& name, std::size_t maxBytes) {
    const auto& values = fake::registry.values;
    const auto found = values.find(PlaceOf(keyPath, name));
    if (found == values.end()) return {};
    return AsRead(found->second, maxBytes);
}

bool WriteRegistryValue(RegistryHive, const std::string& keyPath, const std::string& name, std::uint32_t type,
                        std::string_view data) {
    auto& registry = fake::registry;
    if (registry.failWrites) return false;
    registry.values[PlaceOf(keyPath, name)] = {type, std::string(data)};
    ++registry.changes;
    return true;
}

Path ReadRegistryPath(RegistryHive hive, const std::string& keyPath, const std::string& name) {
    constexpr std::size_t kMaxPath = 4096;
    const auto value = ReadRegistryValue(hive, keyPath, name, kMaxPath);
    if (!value) return {};
    auto bytes = value->data;  // a path from WriteRegistryPath, or a text of a test
    std::replace(bytes.begin(), bytes.end(), '\\', '/');
    return Path::FromSystem(std::move(bytes));
}

bool WriteRegistryPath(RegistryHive hive, const std::string& keyPath, const std::string& name,
                       const Path& path) {
    return WriteRegistryValue(hive, keyPath, name, RegistryType::String, path.System());
}

bool RemoveRegistryValue(RegistryHive, const std::string& keyPath, const std::string& name) {
    auto& registry = fake::registry;
    if (registry.failWrites || registry.values.erase(PlaceOf(keyPath, name)) == 0) return false;
    ++registry.changes;
    return true;
}

}  // namespace os
