#include "os/posix/SettingsText.h"

#include <algorithm>

#include "os/posix/SettingsLine.h"

namespace os {

std::string FoldName(std::string_view name) {
    std::string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return folded;
}

std::string FoldKey(std::string_view key) {
    return FoldName(key.substr(0, key.find_last_not_of('\\') + 1));
}

SettingsText::SettingsText(std::string_view utf8, const std::string& topKey) : topKey_(FoldKey(topKey)) {
    while (!utf8.empty()) {
        const auto end = std::min(utf8.find('\n'), utf8.size());
        const auto line = utf8.substr(0, end);
        lines_.emplace_back(line.substr(0, line.find_last_not_of('\r') + 1));
        utf8.remove_prefix(std::min(end + 1, utf8.size()));
    }
}

std::string SettingsText::Text() const {
    std::string text;
    for (const auto& line : lines_) text += line + "\n";
    return text;
}

void SettingsText::VisitKey(const std::string& key, const std::function<bool(std::size_t)>& visit) const {
    const auto wanted = FoldKey(key);
    bool inside = wanted == topKey_;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        if (const auto section = ParseKeyLine(lines_[i])) inside = FoldKey(*section) == wanted;
        if (inside && !visit(i)) return;
    }
}

std::vector<std::size_t> SettingsText::LinesOf(const std::string& key, const std::string& name) const {
    std::vector<std::size_t> found;
    VisitKey(key, [&, wanted = FoldName(name)](std::size_t i) {
        const auto entry = ParseEntryLine(lines_[i]);
        if (entry && FoldName(entry->name) == wanted) found.push_back(i);
        return true;
    });
    return found;
}

std::optional<RegistryValue> SettingsText::Find(const std::string& key, const std::string& name) const {
    std::optional<RegistryValue> value;
    VisitKey(key, [&, wanted = FoldName(name)](std::size_t i) {
        auto entry = ParseEntryLine(lines_[i]);
        if (entry && FoldName(entry->name) == wanted) value = std::move(entry->value);
        return !value;
    });
    return value;
}

// Behind the last line of the key that says something; a key that is not there yet gets its own lines.
std::size_t SettingsText::PlaceForNewLine(const std::string& key) {
    std::optional<std::size_t> last;
    VisitKey(key, [&](std::size_t i) {
        if (!lines_[i].empty()) last = i;
        return true;
    });
    if (last) return *last + 1;
    if (FoldKey(key) == topKey_) return 0;
    if (!lines_.empty()) lines_.emplace_back();
    lines_.push_back(WriteKeyLine(key));
    return lines_.size();
}

void SettingsText::Put(const std::string& key, const std::string& name, const RegistryValue& value) {
    const auto line = WriteEntryLine({name, value});
    const auto places = LinesOf(key, name);
    if (!places.empty()) {
        lines_[places.front()] = line;
        return;
    }
    const auto place = static_cast<std::ptrdiff_t>(PlaceForNewLine(key));
    lines_.insert(lines_.begin() + place, line);
}

bool SettingsText::Remove(const std::string& key, const std::string& name) {
    const auto places = LinesOf(key, name);
    for (auto place = places.rbegin(); place != places.rend(); ++place)
        lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(*place));
    return !places.empty();
}

}  // namespace os
