#include "os/posix/SettingsLine.h"

#include <algorithm>
#include <charconv>

#include "os/posix/SystemText.h"

namespace os {
namespace {

using posix::TextFromUtf8;
using posix::Utf8FromText;

constexpr char kHexDigits[] = "0123456789ABCDEF";
constexpr std::size_t kDWordBytes = 4;

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

std::string_view Trim(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

template <typename Number>
std::optional<Number> ParseNumber(std::string_view text, int base) {
    Number number{};
    const auto end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    if (error != std::errc() || stop != end) return std::nullopt;
    return number;
}

std::optional<std::string> ParseHex(std::string_view digits) {
    std::string bytes;
    while (!(digits = Trim(digits)).empty()) {
        const auto byte = ParseNumber<std::uint8_t>(digits.substr(0, 2), 16);
        if (!byte || digits.size() < 2) return std::nullopt;
        bytes += static_cast<char>(*byte);
        digits.remove_prefix(2);
    }
    return bytes;
}

std::string WriteHex(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return {kHexDigits[byte >> 4], kHexDigits[byte & 0xF]};
}

// Takes a quoted text off the front; the quotes and escapes are gone from the result.
std::optional<std::string> TakeQuoted(std::string_view& rest) {
    std::string text;
    for (std::size_t i = 1; i < rest.size(); ++i) {
        if (rest[i] == '"') {
            rest.remove_prefix(i + 1);
            return text;
        }
        if (rest[i] != '\\') {
            text += rest[i];
            continue;
        }
        const auto escaped = rest.substr(i + 1, 1);
        if (escaped == "\\" || escaped == "\"") {
            text += escaped;
            ++i;
            continue;
        }
        const auto byte = ParseHex(rest.substr(std::min(i + 2, rest.size()), 2));
        if (escaped != "x" || !byte || byte->size() != 1) return std::nullopt;
        // The bytes that \x writes are those of the program's code page.
        text += Utf8FromText(*byte);
        i += 3;
    }
    return std::nullopt;
}

std::string Quote(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (IsControl(c)) {
            quoted += "\\x" + WriteHex(c);
        } else {
            if (c == '\\' || c == '"') quoted += '\\';
            quoted += c;
        }
    }
    return quoted + "\"";
}

bool NeedsQuotes(std::string_view text) {
    return text.empty() || text != Trim(text) || text.starts_with('"') ||
           std::any_of(text.begin(), text.end(), IsControl);
}

std::string WriteName(const std::string& name) {
    const bool special =
        name.starts_with('[') || name.starts_with('#') || name.find_first_of(":=") != std::string::npos;
    return Utf8FromText(special || NeedsQuotes(name) ? Quote(name) : name);
}

std::string WriteText(const std::string& text) {
    return Utf8FromText(NeedsQuotes(text) ? Quote(text) : text);
}

std::optional<std::string> ParseText(std::string_view field) {
    if (!field.starts_with('"')) return TextFromUtf8(field);
    const auto text = TakeQuoted(field);
    if (!text || !field.empty()) return std::nullopt;
    return TextFromUtf8(*text);
}

std::optional<std::string> ParseDWord(std::string_view field) {
    auto number = ParseNumber<std::uint32_t>(field, 10);
    if (!number) return std::nullopt;
    std::string bytes;
    for (std::size_t i = 0; i < kDWordBytes; ++i, *number >>= 8) bytes += static_cast<char>(*number & 0xFF);
    return bytes;
}

std::string WriteDWord(const std::string& bytes) {
    std::uint32_t number = 0;
    for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte)
        number = number << 8 | static_cast<unsigned char>(*byte);
    return std::to_string(number);
}

std::optional<RegistryValue> ParseValue(std::string_view type, std::string_view field) {
    auto number = RegistryType::String;
    std::optional<std::string> data;
    if (type.empty() || type == "expand") {
        number = type.empty() ? RegistryType::String : RegistryType::ExpandableString;
        data = ParseText(field);
    } else if (type == "dword") {
        number = RegistryType::DWord;
        data = ParseDWord(field);
    } else if (const auto other = ParseNumber<std::uint32_t>(type, 10)) {
        number = *other;
        data = ParseHex(field);
    }
    if (!data) return std::nullopt;
    return RegistryValue{number, std::move(*data)};
}

// Takes the name off the front of a line.
std::optional<std::string> TakeName(std::string_view& rest) {
    if (rest.starts_with('"')) return TakeQuoted(rest);
    const auto end = rest.find_first_of(":=");
    if (end == std::string_view::npos || end == 0) return std::nullopt;
    const std::string name(Trim(rest.substr(0, end)));
    rest.remove_prefix(end);
    return name;
}

}  // namespace

std::optional<std::string> ParseKeyLine(std::string_view line) {
    line = Trim(line);
    if (line.size() < 2 || !line.starts_with('[') || !line.ends_with(']')) return std::nullopt;
    return ParseText(Trim(line.substr(1, line.size() - 2)));
}

std::optional<SettingsEntry> ParseEntryLine(std::string_view line) {
    auto rest = Trim(line);
    if (rest.starts_with('#') || rest.starts_with('[')) return std::nullopt;
    if (std::any_of(rest.begin(), rest.end(), [](char c) { return IsControl(c) && c != '\t'; }))
        return std::nullopt;
    const auto utf8Name = TakeName(rest);
    if (!utf8Name) return std::nullopt;
    rest = Trim(rest);
    const auto equals = rest.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    auto type = Trim(rest.substr(0, equals));
    if (!type.empty() && !type.starts_with(':')) return std::nullopt;
    if (!type.empty()) type = Trim(type.substr(1));
    auto value = ParseValue(type, Trim(rest.substr(equals + 1)));
    if (!value) return std::nullopt;
    return SettingsEntry{TextFromUtf8(*utf8Name), std::move(*value)};
}

std::string WriteKeyLine(const std::string& key) {
    return "[" + WriteText(key) + "]";
}

std::string WriteEntryLine(const SettingsEntry& entry) {
    const auto& [name, value] = entry;
    const auto head = WriteName(name);
    if (value.type == RegistryType::String) return head + "=" + WriteText(value.data);
    if (value.type == RegistryType::ExpandableString) return head + ":expand=" + WriteText(value.data);
    if (value.type == RegistryType::DWord && value.data.size() == kDWordBytes)
        return head + ":dword=" + WriteDWord(value.data);
    std::string line = head + ":" + std::to_string(value.type) + "=";
    for (const char c : value.data) line += WriteHex(c) + " ";
    return std::string(Trim(line));
}

}  // namespace os
