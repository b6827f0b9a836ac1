#include "features/traffic/PcapngWriter.h"

#include "base/Version.h"
#include "core/FlapFrame.h"
#include "core/modTools.h"
#include "core/wire/Describe.h"

namespace {

constexpr std::uint32_t kClientSide = 0;
constexpr std::uint32_t kServerSide = 1;

pcapng::Endpoint EndOf(const os::Endpoint& end) {
    return {end.address.isIPv6, end.address.bytes, end.port};
}

std::string FlapOf(std::uint8_t channel, std::uint16_t number, std::string_view payload) {
    return FlapFrame::kMarker + ByteToStr(channel) + WordToStr(number) +
           WordToStr(static_cast<std::int32_t>(payload.size())) + std::string(payload);
}

std::string WithoutSecrets(std::uint8_t channel, std::string_view payload) {
    std::string blotted(payload);
    for (const auto& [offset, size] : wire::Secrets(channel, payload, wire::Read(channel, payload)))
        blotted.replace(offset, size, size, '*');
    return blotted;
}

}  // namespace

std::string PcapngWriter::Head() {
    return pcapng::FileHead("Wrenlow " WRENLOW_VERSION_TEXT);
}

std::string PcapngWriter::Append(const TrafficLeg& leg, const TrafficFrame& frame) {
    const auto time = static_cast<std::uint64_t>(frame.microseconds);
    std::string blocks;
    auto found = streams_.find(leg.slot);
    if (found == streams_.end()) {
        // The client calls Wrenlow, and Wrenlow the server.
        found =
            streams_
                .emplace(leg.slot, Streams{{kClientSide, EndOf(leg.client.there), EndOf(leg.client.here)},
                                           {kServerSide, EndOf(leg.server.here), EndOf(leg.server.there)}})
                .first;
        blocks += found->second.client.Began(time) + found->second.server.Began(time);
    }
    auto& [client, server] = found->second;
    const bool isToServer = frame.direction == Direction::ToServer;
    const auto payload = [&](std::string_view bytes) {
        return showSecrets_ ? std::string(bytes) : WithoutSecrets(frame.channel, bytes);
    };
    if (frame.fate != PassedFrame::Fate::Injected) {
        const auto bytes = FlapOf(frame.channel, frame.numberBefore, payload(frame.before));
        blocks += isToServer ? client.Sent(true, bytes, time) : server.Sent(false, bytes, time);
    }
    if (frame.fate != PassedFrame::Fate::Dropped) {
        const auto bytes = FlapOf(frame.channel, frame.numberAfter, payload(frame.after));
        blocks += isToServer ? server.Sent(true, bytes, time) : client.Sent(false, bytes, time);
    }
    return blocks;
}

std::string PcapngOf(const Traffic& traffic, bool showSecrets) {
    PcapngWriter writer(showSecrets);
    auto file = PcapngWriter::Head();
    for (auto number = traffic.First(); number < traffic.First() + traffic.Count(); ++number) {
        const auto frame = traffic.At(number);
        file += writer.Append(traffic.LegOf(frame.slot), frame);
    }
    return file;
}
