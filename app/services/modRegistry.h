// modRegistry: reading, writing and deleting settings as text.
//
// Every reader reads the registry at the moment it needs a value; nothing is kept in memory. Failures never
// reach the user: they come out as "" or false, and "" means "not set".
#pragma once

#include <string>

#include "os/RegistryStore.h"

namespace modRegistry {

// The key of the program's own settings.
inline constexpr char kSettingsKey[] = "software\\Wrenlow\\";

// The value as text: strings as they are (cut at their first zero byte), numbers as decimal text, anything
// else and values of 1,024 bytes or more as "".
std::string QueryValue(os::RegistryHive hive, const std::string& keyPath, const std::string& name);

// Writes the data; type is one of os::RegistryType. An empty text is stored as a single blank: the store
// never holds an empty string. For a number the data are four characters, its bytes lowest first.
bool SetValue(os::RegistryHive hive, const std::string& keyPath, const std::string& name,
              const std::string& data, std::uint32_t type);

// Whether the value existed and was deleted.
bool DeleteValue(os::RegistryHive hive, const std::string& keyPath, const std::string& name);

// One of the program's own settings (see kSettingsKey).
std::string ReadSetting(const std::string& name);
bool WriteSetting(const std::string& name, const std::string& data);

// The text of a stored value, by the rules of QueryValue.
std::string ValueAsText(const os::RegistryValue& value);

}  // namespace modRegistry
