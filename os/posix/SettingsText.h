// SettingsText: the text of a settings file (os/SettingsFile.h), looked into and changed line by line, so
// that remarks, order and lines that are no settings survive.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "os/RegistryStore.h"

namespace os {

// For comparing keys and names: without their case, and keys without a "\" at the end.
std::string FoldName(std::string_view name);
std::string FoldKey(std::string_view key);

class SettingsText {
 public:
    SettingsText(std::string_view utf8, const std::string& topKey);

    std::string Text() const;

    // Of several lines with one name the first counts.
    std::optional<RegistryValue> Find(const std::string& key, const std::string& name) const;
    void Put(const std::string& key, const std::string& name, const RegistryValue& value);
    bool Remove(const std::string& key, const std::string& name);

 private:
    // Calls `visit` with the position of each line that belongs to the key until it returns false.
    void VisitKey(const std::string& key, const std::function<bool(std::size_t)>& visit) const;
    std::vector<std::size_t> LinesOf(const std::string& key, const std::string& name) const;
    std::size_t PlaceForNewLine(const std::string& key);

    std::vector<std::string> lines_;
    std::string topKey_;  // folded
};

}  // namespace os
