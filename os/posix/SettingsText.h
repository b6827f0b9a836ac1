// SettingsText: the text of a settings file (os/SettingsFile.h), looked into and changed line by line, so
// that remarks, order and lines that are no settings survive.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "os/RegistryStore.h"

namespace os {

class SettingsText {
 public:
    // A byte order mark at the beginning is no part of the first line.
    explicit SettingsText(std::string_view text);

    std::string Text() const;

    // Case does not matter in names. Of several lines with one name the first counts.
    std::optional<RegistryValue> Find(std::string_view name) const;
    void Put(const std::string& name, const RegistryValue& value);
    // Whether there was a value.
    bool Remove(std::string_view name);

 private:
    std::vector<std::string> lines_;
};

}  // namespace os
