// SettingsLine: one line of a settings file (os/SettingsFile.h) and what it says.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "os/RegistryStore.h"

namespace os {

struct SettingsEntry {
    std::string name;
    RegistryValue value;
};

// The key that a line in brackets names; the value that a line sets; nothing for lines of any other form.
std::optional<std::string> ParseKeyLine(std::string_view line);
std::optional<SettingsEntry> ParseEntryLine(std::string_view line);

std::string WriteKeyLine(const std::string& key);
std::string WriteEntryLine(const SettingsEntry& entry);

}  // namespace os
