#include "core/wire/Describe.h"

#include <algorithm>
#include <iterator>

#include "core/modTools.h"
#include "core/wire/Blocks.h"
#include "core/wire/Snacs.h"
#include "core/wire/Ucs2.h"
#include "os/CodePage.h"

namespace wire {
namespace {

constexpr std::uint8_t kSnacChannel = 2;
constexpr std::size_t kSnacHeaderSize = 10;
constexpr std::uint16_t kSignOnFamily = 0x17;
constexpr std::size_t kMaxValues = 4;
constexpr std::size_t kMaxTextInSummary = 60;  // bytes

std::string Hex(std::uint64_t number, std::size_t digits) {
    std::string text;
    for (std::size_t i = digits; i-- > 0;) text += "0123456789ABCDEF"[number >> (4 * i) & 0xF];
    return text;
}

// So that no value breaks a line or speaks to a terminal.
std::string WithoutControls(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, '.');
    return text;
}

std::string Dotted(std::string_view address) {
    std::string text;
    for (const char byte : address)
        text += (text.empty() ? "" : ".") + std::to_string(static_cast<unsigned char>(byte));
    return text;
}

// As much of a text as a summary takes, ending between two characters of UTF-8.
std::string Beginning(const std::string& text) {
    auto size = kMaxTextInSummary - 3;
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) --size;
    return text.substr(0, size);
}

bool IsUcs2(std::string_view payload, const Parts& parts, std::size_t index) {
    constexpr std::uint64_t kUcs2 = 2;
    // A message's text stands behind the numbers of its character set and subset.
    if (parts.parts[index].field != &std::end(kMessageText)[-1] || index < 2) return false;
    return NumberAt(payload, parts.parts[index - 2].offset, 2) == kUcs2;
}

bool MayHoldSecret(const Field& field) {
    return field.isSecret || std::ranges::any_of(field, MayHoldSecret);
}

std::string Values(std::string_view payload, const Parts& parts, bool texts) {
    std::string values;
    std::size_t count = 0;
    for (std::size_t i = 0; i < parts.parts.size() && count < kMaxValues; ++i) {
        const auto& part = parts.parts[i];
        const bool isOfSnac = part.field >= std::begin(kSnacHeader) && part.field < std::end(kSnacHeader);
        if (isOfSnac || part.field->isSecret || (part.shape == Shape::Text) != texts) continue;
        auto value = ValueOf(payload, parts, i);
        if (value.empty()) continue;
        if (value.size() > kMaxTextInSummary) value = Beginning(value) + "...";
        values += (count++ == 0 ? ": " : ", ") + std::string(part.field->name) + " " +
                  (texts ? "\"" + value + "\"" : value);
    }
    return values;
}

}  // namespace

std::string Title(std::uint8_t channel, std::string_view payload, const Parts& parts) {
    const std::string name = parts.snac != nullptr ? parts.snac->name : "";
    if (channel != kSnacChannel) return !name.empty() ? name : "channel " + std::to_string(channel);
    if (payload.size() < kSnacHeaderSize) return "no SNAC";
    const auto hex = [&](std::size_t position) {
        const auto number = NumberAt(payload, position, 2);
        return Hex(number, number > 0xFF ? 4 : 2);
    };
    const auto numbers = "SNAC(" + hex(0) + "," + hex(2) + ")";
    return !name.empty() ? numbers + " " + name : numbers;
}

std::string Summary(std::uint8_t channel, std::string_view payload, const Parts& parts) {
    auto summary = Title(channel, payload, parts);
    auto values = Values(payload, parts, true);
    if (values.empty()) values = Values(payload, parts, false);
    return summary + values;
}

std::string NameOf(const Part& part) {
    const auto type = part.field->type;
    return type != 0 ? Hex(type, type > 0xFF ? 4 : 2) + " " + part.field->name : part.field->name;
}

std::string ValueOf(std::string_view payload, const Parts& parts, std::size_t index) {
    const auto& part = parts.parts[index];
    const auto bytes = payload.substr(part.offset, part.size);
    switch (part.shape) {
        case Shape::Number:
            return std::to_string(part.field->isLittle
                                      ? NumberAt(std::string(bytes.rbegin(), bytes.rend()), 0, part.size)
                                      : NumberAt(payload, part.offset, part.size));
        case Shape::Address:
            return Dotted(bytes);
        case Shape::Text:
            return WithoutControls(IsUcs2(payload, parts, index) ? Utf8FromUcs2(bytes)
                                                                 : os::Utf8FromText(std::string(bytes)));
        default:
            return {};
    }
}

std::vector<Range> Secrets(std::uint8_t channel, std::string_view payload, const Parts& parts) {
    std::vector<Range> ranges;
    const bool fits = parts.fits;
    for (const auto& part : parts.parts) {
        const bool isRead = fits || part.offset + part.size <= parts.readTo;
        if (part.field->isSecret && isRead && part.size > 0) ranges.push_back({part.offset, part.size});
    }
    if (fits) return ranges;
    const bool isSignOn = channel == kSnacChannel && payload.size() >= kSnacHeaderSize &&
                          NumberAt(payload, 0, 2) == kSignOnFamily;
    const bool mayHold =
        parts.snac != nullptr ? std::ranges::any_of(parts.snac->fields, MayHoldSecret) : isSignOn;
    if (mayHold && parts.readTo < payload.size())
        ranges.push_back({parts.readTo, payload.size() - parts.readTo});
    return ranges;
}

}  // namespace wire
