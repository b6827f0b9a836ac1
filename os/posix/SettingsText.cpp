#include "os/posix/SettingsText.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"

namespace os {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

std::string WriteHex(char c) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    return {kDigits[byte >> 4], kDigits[byte & 0xF]};
}

std::optional<char> ParseHex(std::string_view digits) {
    const auto byte = ParseNumber<std::uint8_t>(digits, 16);
    if (!byte || digits.size() != 2) return std::nullopt;
    return static_cast<char>(*byte);
}

// As it stands, or in quotes where blanks, control bytes or one of the `special` characters would be lost.
std::string Write(std::string_view text, std::string_view special) {
    const bool plain = !text.empty() && text == Trim(text) &&
                       std::none_of(text.begin(), text.end(), IsControl) &&
                       text.find_first_of(special) == text.npos && !text.starts_with('"') &&
                       !text.starts_with(kByteOrderMark);
    if (plain) return std::string(text);
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '\\' || c == '"') quoted += '\\';
        quoted += IsControl(c) ? "\\x" + WriteHex(c) : std::string(1, c);
    }
    return quoted + "\"";
}

// Takes a text off the front: in quotes, or up to one of the `ends`.
std::optional<std::string> Take(std::string_view& rest, std::string_view ends) {
    if (!rest.starts_with('"')) {
        const auto text = rest.substr(0, rest.find_first_of(ends));
        rest.remove_prefix(text.size());
        return std::string(Trim(text));
    }
    std::string text;
    for (std::size_t at = 1; at < rest.size(); ++at) {
        if (rest[at] == '"') {
            rest.remove_prefix(at + 1);
            return text;
        }
        if (rest[at] == '\\') {
            ++at;
            const auto escaped = rest.substr(at, 1);
            const auto byte = escaped == "x" ? ParseHex(rest.substr(at + 1, 2)) : std::nullopt;
            if (byte) {
                text += *byte;
                at += 2;
                continue;
            }
            if (escaped != "\\" && escaped != "\"") return std::nullopt;
        }
        text += rest[at];
    }
    return std::nullopt;
}

std::optional<std::string> ParseBytes(std::string_view field) {
    std::string bytes;
    while (!field.empty()) {
        const auto byte = ParseHex(TakeUpTo(field, ' '));
        if (!byte) return std::nullopt;
        bytes += *byte;
    }
    return bytes;
}

// What a line sets; nothing for lines of any other form.
std::optional<std::pair<std::string, RegistryValue>> ParseLine(std::string_view line) {
    auto rest = Trim(line);
    if (rest.starts_with('#') ||
        std::any_of(rest.begin(), rest.end(), [](char c) { return c != '\t' && IsControl(c); }))
        return std::nullopt;
    if (rest.find_first_of(":=") == 0) return std::nullopt;
    const auto name = Take(rest, ":=");
    if (!name || rest.find('=') == rest.npos) return std::nullopt;
    const auto type = Trim(TakeUpTo(rest, '='));
    rest = Trim(rest);
    if (type.empty()) {
        auto text = Take(rest, "");
        if (!text || !rest.empty()) return std::nullopt;
        return std::pair{*name, RegistryValue{RegistryType::String, std::move(*text)}};
    }
    const auto number =
        type.starts_with(':') ? ParseNumber<std::uint32_t>(Trim(type.substr(1))) : std::nullopt;
    auto bytes = ParseBytes(rest);
    if (!number || !bytes) return std::nullopt;
    return std::pair{*name, RegistryValue{*number, std::move(*bytes)}};
}

std::string WriteLine(const std::string& name, const RegistryValue& value) {
    const auto head = Write(name, ":=#[");
    if (value.type == RegistryType::String) return head + "=" + Write(value.data, "");
    auto line = head + ":" + std::to_string(value.type) + "=";
    for (const char c : value.data) line += WriteHex(c) + " ";
    return std::string(TrimEnd(line));
}

bool Sets(std::string_view line, std::string_view name) {
    const auto entry = ParseLine(line);
    return entry && SameWithoutCase(entry->first, name);
}

}  // namespace

SettingsText::SettingsText(std::string_view text) {
    while (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    while (!text.empty()) lines_.emplace_back(TrimEnd(TakeUpTo(text, '\n'), "\r"));
}

std::string SettingsText::Text() const {
    std::string text;
    for (const auto& line : lines_) text += line + "\n";
    return text;
}

std::optional<RegistryValue> SettingsText::Find(std::string_view name) const {
    for (const auto& line : lines_) {
        auto entry = ParseLine(line);
        if (entry && SameWithoutCase(entry->first, name)) return std::move(entry->second);
    }
    return std::nullopt;
}

void SettingsText::Put(const std::string& name, const RegistryValue& value) {
    const auto place =
        std::find_if(lines_.begin(), lines_.end(), [&](const auto& line) { return Sets(line, name); });
    if (place == lines_.end()) {
        lines_.push_back(WriteLine(name, value));
    } else {
        *place = WriteLine(name, value);
    }
}

bool SettingsText::Remove(std::string_view name) {
    return std::erase_if(lines_, [&](const auto& line) { return Sets(line, name); }) != 0;
}

}  // namespace os
