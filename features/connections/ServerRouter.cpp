#include "features/connections/ServerRouter.h"

#include <algorithm>

#include "app/services/Settings.h"
#include "base/Text.h"
#include "features/connections/Connections.h"
#include "os/Clock.h"

namespace {

// A client goes at once where it is sent, and may try a few times.
constexpr std::int64_t kWordMs = 60'000;
constexpr std::size_t kMaxWords = 64;
constexpr std::size_t kMaxOwnHosts = 64;

// Addresses for clients: 127.0.0.101 to 127.0.0.254.
constexpr std::size_t kFirstPlaceholder = 101;
constexpr std::size_t kLastPlaceholder = 254;

enum class Reach : std::uint8_t { Own, Private, Public };

// RFC 1918, 3927, 4193, 4291 and 6598. Who advertises 0.0.0.0 means his own machine.
Reach ReachOf(const os::Address& address) {
    const auto& bytes = address.bytes;
    if (address.isIPv6) {
        const bool isFirst = std::all_of(bytes.begin(), bytes.end() - 1, [](auto byte) { return byte == 0; });
        if (isFirst && bytes[15] <= 1) return Reach::Own;
        const bool isLinkLocal = bytes[0] == 0xFE && (bytes[1] & 0xC0) == 0x80;
        return isLinkLocal || (bytes[0] & 0xFE) == 0xFC ? Reach::Private : Reach::Public;
    }
    const auto isIn = [&](std::uint8_t first, std::uint8_t from, std::uint8_t to) {
        return bytes[0] == first && bytes[1] >= from && bytes[1] <= to;
    };
    if (bytes[0] == 127 || bytes[0] == 0) return Reach::Own;
    return bytes[0] == 10 || isIn(172, 16, 31) || isIn(192, 168, 168) || isIn(169, 254, 254) ||
                   isIn(100, 64, 127)
               ? Reach::Private
               : Reach::Public;
}

Reach ReachOf(const std::string& host) {
    if (const auto address = os::AddressFrom(host)) return ReachOf(*address);
    return SameWithoutCase(host, "localhost") ? Reach::Own : Reach::Public;
}

struct Server {
    std::string host;
    std::optional<std::uint16_t> port;
};

// "host", "host:port", "[IPv6]:port", or an address of IPv6 alone. A port that is none is left out.
Server ServerFrom(std::string_view text) {
    text = Trim(text, " \t\r\n\0");
    if (text.starts_with('[')) {
        const auto end = text.find(']');
        if (end == std::string_view::npos) return {};
        const auto rest = text.substr(end + 1);
        return {std::string(text.substr(1, end - 1)),
                rest.starts_with(':') ? ParseNumber<std::uint16_t>(rest.substr(1)) : std::nullopt};
    }
    const auto colon = text.find(':');
    if (colon == std::string_view::npos || text.find(':', colon + 1) != std::string_view::npos)
        return {std::string(text), {}};
    return {std::string(text.substr(0, colon)), ParseNumber<std::uint16_t>(text.substr(colon + 1))};
}

void Add(std::vector<Place>& places, Place place) {
    if (std::ranges::find(places, place) == places.end()) places.push_back(std::move(place));
}

}  // namespace

std::vector<Place> ServerRouter::PlacesFor(std::size_t, const Place& asked) {
    const auto configured = ServerFrom(settings::Text("server"));
    const bool isConfigured = !configured.host.empty();
    const bool isAlways = isConfigured && settings::IsOn("server-always");
    const auto wanted = TrueOf(asked);
    const auto* const word = Find(wanted);
    if (word == nullptr) {
        const bool isOwn = IsOwnConnection(asked);
        if (isOwn && ownHosts_.size() < kMaxOwnHosts) ownHosts_.insert(asked.host);
        if (!isConfigured || (!isOwn && !isAlways)) return {wanted};
        return {{configured.host, configured.port.value_or(wanted.port)}};
    }

    const auto& host = isConfigured ? configured.host : word->server.host;
    const auto port = (isConfigured ? configured.port : std::nullopt).value_or(word->server.port);
    const auto reach = SameWithoutCase(host, word->server.host) ? ReachOf(word->reached) : ReachOf(host);
    std::vector<Place> places;
    // An address that means another machine here than there.
    const bool isAstray = ReachOf(wanted.host) < reach;
    const bool fallsBack = settings::IsOn("server-fallback");
    if (!isAlways && !(isAstray && fallsBack)) places.push_back(wanted);
    if (!isAlways && !fallsBack) return places;
    Add(places, {host, wanted.port});
    Add(places, {host, port});
    return places;
}

// A client's direct connections to other clients go to addresses that it has from them, while it is signed
// on.
bool ServerRouter::IsOwnConnection(const Place& asked) const {
    const auto isSession = [](const Leg& leg) {
        return leg.isSignedOn && leg.state == Leg::State::Connected;
    };
    return ownHosts_.contains(asked.host) || !os::AddressFrom(asked.host) ||
           std::ranges::none_of(connections_.Legs(), isSession);
}

std::string ServerRouter::Advertised(std::size_t slot, std::string_view address, bool isIPv6Only) {
    const auto server = ServerFrom(address);
    const auto* const leg = connections_.Find(slot);
    if (leg == nullptr || server.host.empty()) return {};
    const Place place{server.host, server.port.value_or(leg->asked.port)};
    const auto literal = os::AddressFrom(place.host);
    connections_.NoteSentTo(slot, place);
    std::erase_if(words_, [&](const Word& word) { return word.place == place; });
    if (words_.size() == kMaxWords) words_.pop_front();
    words_.push_back({place, leg->trying, leg->reached.value_or(os::Endpoint()).address,
                      os::MonotonicMilliseconds(), !literal});

    const bool isNameOfServer = isIPv6Only && SameWithoutCase(place.host, leg->trying.host);
    if (literal ? !literal->isIPv6 : !isNameOfServer) return {};
    auto found =
        std::ranges::find_if(placeholders_, [&](const auto& one) { return one.second == place.host; });
    if (found == placeholders_.end()) {
        const auto last = kFirstPlaceholder + placeholders_.size();
        if (last > kLastPlaceholder) return {};
        found = placeholders_.emplace("127.0.0." + std::to_string(last), place.host).first;
    }
    return TextOf(Place{found->first, place.port});
}

Place ServerRouter::TrueOf(const Place& asked) const {
    const auto found = placeholders_.find(asked.host);
    return found != placeholders_.end() ? Place{found->second, asked.port} : asked;
}

// Clients that have looked an advertised name up themselves ask for an address.
const ServerRouter::Word* ServerRouter::Find(const Place& asked) const {
    if (words_.empty()) return nullptr;
    const auto now = os::MonotonicMilliseconds();
    const bool isAddress = os::AddressFrom(asked.host).has_value();
    const Word* byName = nullptr;
    for (const auto& word : words_) {
        if (now - word.when > kWordMs || word.place.port != asked.port) continue;
        if (SameWithoutCase(word.place.host, asked.host)) return &word;
        if (word.hasName && isAddress && !ownHosts_.contains(asked.host)) byName = &word;
    }
    return byName;
}
