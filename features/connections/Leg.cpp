#include "features/connections/Leg.h"

#include "app/services/TimeText.h"
#include "core/wire/Snacs.h"

namespace {

constexpr std::uint16_t kElsewhere = 1;

std::string FailureText(const Leg::Attempt& attempt) {
    switch (attempt.failure) {
        case ConnectFailure::NameUnknown:
            return "unknown name " + attempt.place.host;
        case ConnectFailure::Refused:
            return "refused by " + TextOf(attempt.place);
        default:
            return "no answer from " + TextOf(attempt.place);
    }
}

}  // namespace

std::string WhenText(std::int64_t seconds) {
    const auto time = os::LocalTimeOf(seconds);
    return DateText(time) + " " + TimeText(time);
}

std::string PurposeText(const Leg& leg) {
    switch (leg.purpose) {
        case Leg::Purpose::Unknown:
            return {};
        case Leg::Purpose::Authorisation:
            return "authorisation";
        case Leg::Purpose::Bos:
            return "BOS";
        case Leg::Purpose::Chat:
            return "chat";
        case Leg::Purpose::Icons:
            return "icons";
        default:
            break;
    }
    for (const auto family : leg.families) {
        if (family != 1) return wire::FamilyName(family);
    }
    return "service";
}

std::string ReachedText(const Leg& leg) {
    return leg.reached ? TextOf(Place{os::TextOf(leg.reached->address), leg.reached->port}) : std::string();
}

std::string StateText(const Leg& leg) {
    constexpr const char* kTexts[] = {"connecting", "connected", "ended"};
    return kTexts[static_cast<std::size_t>(leg.state)];
}

std::string EndText(const Leg& leg) {
    if (leg.state != Leg::State::Ended) return {};
    if (!leg.reached && leg.endedBy == EndedBy::Server && !leg.failed.empty())
        return FailureText(leg.failed.back());
    constexpr const char* kWho[] = {"the client", "the server", "Wrenlow"};
    std::string text = std::string("ended by ") + kWho[static_cast<std::size_t>(leg.endedBy)];
    if (leg.goodbye && leg.goodbye->code == kElsewhere) text += ": signed on elsewhere";
    if (leg.errorNumber != 0) text += ", error " + std::to_string(leg.errorNumber);
    return text;
}
