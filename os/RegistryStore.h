// RegistryStore: named values in a tree of keys, as the Windows registry holds them.
//
// Key paths are separated by "\"; case does not matter in paths and names, a trailing "\" is ignored. Data
// are raw bytes with the registry's type number. Natively the values live in a settings file (see
// os/SettingsFile.h). Nothing is cached: every call sees what other processes have written. No function
// throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "os/Path.h"

namespace os {

enum class RegistryHive : std::uint32_t { CurrentUser = 0x80000001u };

namespace RegistryType {
inline constexpr std::uint32_t String = 1;            // REG_SZ
inline constexpr std::uint32_t ExpandableString = 2;  // REG_EXPAND_SZ
inline constexpr std::uint32_t Binary = 3;            // REG_BINARY
inline constexpr std::uint32_t DWord = 4;             // REG_DWORD, lowest byte first
}  // namespace RegistryType

struct RegistryValue {
    std::uint32_t type;
    std::string data;

    bool operator==(const RegistryValue&) const = default;
};

// The value; nothing when the key or value is missing, cannot be opened for reading and writing, or holds
// more than `maxBytes` bytes. A text comes without the zero that may stand at its end: some systems add one
// to a text that was written without.
std::optional<RegistryValue> ReadRegistryValue(RegistryHive hive, const std::string& keyPath,
                                               const std::string& name, std::size_t maxBytes);

// Creates the key when missing (with the class text) and writes the value. Whether that worked.
bool WriteRegistryValue(RegistryHive hive, const std::string& keyPath, const std::string& name,
                        std::uint32_t type, std::string_view data);

// Creates or opens the key and deletes the value. Whether the value existed and was deleted.
bool RemoveRegistryValue(RegistryHive hive, const std::string& keyPath, const std::string& name);

// The same for a path, which no text may be able to tell: a value of type String. An empty path when there is
// none.
Path ReadRegistryPath(RegistryHive hive, const std::string& keyPath, const std::string& name);
bool WriteRegistryPath(RegistryHive hive, const std::string& keyPath, const std::string& name,
                       const Path& path);

// For the implementations: a stored value as ReadRegistryValue hands it out.
inline std::optional<RegistryValue> AsRead(RegistryValue stored, std::size_t maxBytes) {
    const bool isText = stored.type == RegistryType::String || stored.type == RegistryType::ExpandableString;
    if (isText && stored.data.ends_with('\0')) stored.data.pop_back();
    if (stored.data.size() > maxBytes) return std::nullopt;
    return stored;
}

}  // namespace os
