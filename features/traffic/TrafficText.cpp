// What the lines of the traffic say.
#include <algorithm>
#include <iterator>

#include "app/services/TimeText.h"
#include "core/modTools.h"
#include "core/wire/Describe.h"
#include "core/wire/Reader.h"
#include "features/Overview.h"
#include "features/traffic/TrafficView.h"
#include "os/CodePage.h"

namespace {

constexpr const char* kTitles[] = {"Time",   "Name", "Leg",  "Direction", "Channel",
                                   "Number", "Mark", "Kind", "Summary"};
static_assert(std::size(kTitles) == kTrafficColumns);

constexpr char kHidden[] = "(hidden)";

// What is to be said of the frame: as it left, or as it came where it was dropped.
std::string_view Shown(const TrafficFrame& frame) {
    return frame.fate == PassedFrame::Fate::Dropped ? frame.before : frame.after;
}

// "13:05:09.123"
std::string MomentText(std::int64_t microseconds) {
    const auto thousandths = std::to_string(1000 + microseconds / 1000 % 1000);
    return TimeText(os::LocalTimeOf(microseconds / 1'000'000)) + "." + thousandths.substr(1);
}

const char* MarkText(PassedFrame::Fate fate) {
    constexpr const char* kMarks[] = {"", "rewritten", "dropped", "injected"};
    return kMarks[static_cast<std::size_t>(fate)];
}

bool IsIn(const wire::Range& range, std::size_t offset, std::size_t size) {
    return offset < range.offset + range.size && range.offset < offset + size;
}

void TakePayloadApart(std::uint8_t channel, std::string_view payload, bool showSecrets,
                      std::vector<TrafficDetail>& lines) {
    const auto parts = wire::Read(channel, payload);
    const auto secrets = showSecrets ? std::vector<wire::Range>() : wire::Secrets(channel, payload, parts);
    const auto add = [&](std::size_t depth, std::string name, std::string value, std::size_t offset,
                         std::size_t size) {
        const bool isHidden =
            std::ranges::any_of(secrets, [&](const auto& range) { return IsIn(range, offset, size); });
        const auto bytes = payload.substr(offset, std::min(size, kMaxHexBytes));
        lines.push_back({depth, std::move(name), isHidden ? kHidden : std::move(value),
                         isHidden ? kHidden : HexDump(bytes)});
    };
    lines.push_back(
        {0, channel == Session::kSnacChannel ? "SNAC" : "payload", wire::Title(channel, payload, parts), {}});
    for (std::size_t i = 0; i < parts.parts.size(); ++i) {
        const auto& part = parts.parts[i];
        add(part.depth + 1u, wire::NameOf(part), wire::ValueOf(payload, parts, i), part.offset, part.size);
    }
    if (parts.readTo < payload.size()) add(1, "the rest", "", parts.readTo, payload.size() - parts.readTo);
}

}  // namespace

const char* ColumnTitle(TrafficColumn column) {
    return kTitles[static_cast<std::size_t>(column)];
}

std::string NameOf(const TrafficFrame& frame) {
    auto* const overview = Overview::Current();
    const auto* const leg = overview != nullptr ? overview->connections.Find(frame.slot) : nullptr;
    return leg != nullptr ? os::Utf8FromText(leg->name) : std::string();
}

std::string ColumnText(const TrafficFrame& frame, TrafficColumn column) {
    switch (column) {
        case TrafficColumn::Time:
            return MomentText(frame.microseconds);
        case TrafficColumn::Name:
            return NameOf(frame);
        case TrafficColumn::Leg:
            return std::to_string(frame.slot);
        case TrafficColumn::Direction:
            return frame.direction == Direction::ToServer ? "to server" : "to client";
        case TrafficColumn::Channel:
            return std::to_string(frame.channel);
        case TrafficColumn::Number:
            return frame.fate == PassedFrame::Fate::Dropped ? "" : std::to_string(frame.numberAfter);
        case TrafficColumn::Mark:
            return MarkText(frame.fate);
        case TrafficColumn::Kind:
            return wire::Title(frame.channel, Shown(frame), wire::Read(frame.channel, Shown(frame)));
        default:
            return wire::Summary(frame.channel, Shown(frame), wire::Read(frame.channel, Shown(frame)));
    }
}

std::string TrafficLine(const TrafficFrame& frame) {
    std::string line;
    for (const auto column :
         {TrafficColumn::Time, TrafficColumn::Name, TrafficColumn::Leg, TrafficColumn::Direction,
          TrafficColumn::Number, TrafficColumn::Mark, TrafficColumn::Summary}) {
        const auto text = ColumnText(frame, column);
        if (!text.empty()) line += (line.empty() ? "" : " ") + text;
    }
    return line;
}

std::vector<TrafficDetail> TakeApart(const TrafficFrame& frame, bool showSecrets) {
    std::vector<TrafficDetail> lines;
    const auto number = [](std::uint16_t value) { return std::to_string(value); };
    const bool came = frame.fate != PassedFrame::Fate::Injected;
    const bool left = frame.fate != PassedFrame::Fate::Dropped;
    const bool isChanged = frame.fate == PassedFrame::Fate::Rewritten;
    lines.push_back({0, "FLAP", "channel " + number(frame.channel), {}});
    if (came) lines.push_back({1, "number at the sender", number(frame.numberBefore), {}});
    if (left) lines.push_back({1, "number at the receiver", number(frame.numberAfter), {}});
    if (isChanged) lines.push_back({0, "before", {}, {}});
    if (isChanged || !left) TakePayloadApart(frame.channel, frame.before, showSecrets, lines);
    if (isChanged) lines.push_back({0, "after", {}, {}});
    if (left) TakePayloadApart(frame.channel, frame.after, showSecrets, lines);
    return lines;
}
