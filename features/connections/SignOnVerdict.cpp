#include "features/connections/SignOnVerdict.h"

#include <algorithm>
#include <iterator>

namespace {

using State = SignOnState;

constexpr std::uint16_t kElsewhere = 1;
// A client that is sent somewhere goes there at once.
constexpr std::int64_t kAtOnceMs = 10'000;

struct Kind {
    State state;
    const char* anchor;
    const char* tip;
};
// The anchors are headings of docs/manual/why.md.
constexpr Kind kKinds[] = {
    {State::NoClient, "no-client", ""},
    {State::ClientNotRunning, "aim-is-not-running", ""},
    {State::ClientNotSetUp, "aim-is-not-set-up", ""},
    {State::ClientIdle, "aim-has-not-connected", ""},
    {State::SigningOn, "signing-on", ""},
    {State::SignedOn, "signed-on", ""},
    {State::Refused, "refused", "sign-on refused"},
    {State::NameUnknown, "name-unknown", "server's name unknown"},
    {State::ConnectionRefused, "connection-refused", "server unreachable"},
    {State::NoAnswer, "no-answer", "server unreachable"},
    {State::SentAstray, "sent-astray", "sent to an address that cannot be reached"},
    {State::SignedOnElsewhere, "signed-on-elsewhere", "signed on elsewhere"},
    {State::Slowed, "rate-limit", "slowed by the rate limit"},
    {State::CutByRateLimit, "rate-limit", "cut by the rate limit"},
    {State::EndedByServer, "ended-by-the-server", "ended by the server"},
    {State::EndedByClient, "ended-by-aim", ""},
    {State::SignedOff, "signed-off", ""},
};
static_assert(std::ranges::is_sorted(kKinds, {}, &Kind::state));
static_assert(std::size(kKinds) == static_cast<std::size_t>(State::SignedOff) + 1);

SignOnVerdict Say(State state, std::string text) {
    const auto& kind = kKinds[static_cast<std::size_t>(state)];
    return {state, std::move(text), kind.anchor, *kind.tip != '\0', kind.tip};
}

std::string Who(const Leg& leg) {
    return leg.name.empty() ? "AIM" : leg.name;
}

// A connection that a client made of its own accord to sign on, and not to another client: such ones go to
// addresses where nobody has signed on, while somebody is signed on.
bool BeginsSignOn(const std::deque<Leg>& legs, const Leg& leg) {
    if (leg.purpose == Leg::Purpose::Authorisation) return true;
    if (leg.isSent || leg.purpose != Leg::Purpose::Unknown) return false;
    if (!os::AddressFrom(leg.asked.host)) return true;
    const auto isSession = [&](const Leg& other) {
        return other.slot < leg.slot && other.isSignedOn && other.state == Leg::State::Connected;
    };
    const auto isSignOnThere = [&](const Leg& other) {
        return other.purpose == Leg::Purpose::Authorisation && other.asked.host == leg.asked.host;
    };
    return std::ranges::none_of(legs, isSession) || std::ranges::any_of(legs, isSignOnThere);
}

SignOnVerdict OfClient(const ClientFacts& client) {
    if (!client.isKnown) return Say(State::NoClient, "No client has connected yet.");
    if (!client.runs) return Say(State::ClientNotRunning, "No client has connected yet. AIM is not running.");
    if (client.isSetUp) {
        return Say(State::ClientIdle,
                   "No client has connected yet, although AIM runs and is set up to use Wrenlow.");
    }
    return Say(State::ClientNotSetUp,
               "No client has connected yet. AIM runs, but it is not set up to use Wrenlow.");
}

SignOnVerdict Astray(const Place& place) {
    return Say(State::SentAstray, "The server sent AIM to " + TextOf(place) +
                                      ", which cannot be reached from here. Its operator must change the "
                                      "address that it advertises.");
}

// Of a leg that has found no server.
SignOnVerdict Unreached(const Leg& leg) {
    if (leg.isSent) return Astray(leg.asked);
    if (leg.failed.empty() || leg.endedBy == EndedBy::Client)
        return Say(State::NoAnswer, "The server " + TextOf(leg.trying) + " does not answer; AIM gave up.");
    const auto& last = leg.failed.back();
    if (last.failure == ConnectFailure::NameUnknown)
        return Say(State::NameUnknown, "The server's name " + last.place.host + " is not known.");
    if (last.failure == ConnectFailure::Refused) {
        return Say(State::ConnectionRefused,
                   "The server " + TextOf(last.place) + " refuses the connection: nothing listens there.");
    }
    return Say(State::NoAnswer, "The server " + TextOf(last.place) + " does not answer.");
}

// Of a session that was ended, or slowed; nothing else has happened to it where the state is SignedOn.
SignOnVerdict OfSession(const Leg& leg) {
    const bool isOpen = leg.state == Leg::State::Connected;
    if (leg.goodbye && leg.goodbye->code == kElsewhere)
        return Say(State::SignedOnElsewhere,
                   Who(leg) + " was signed off because the same name has signed on elsewhere.");
    if (!isOpen && leg.endedBy == EndedBy::Server && leg.rates != Leg::Rates::Fine)
        return Say(State::CutByRateLimit,
                   "The server ended the session of " + Who(leg) + ", which had sent too much too fast.");
    if (isOpen && leg.rates == Leg::Rates::Limited)
        return Say(State::Slowed, Who(leg) +
                                      " is signed on, but has sent too much too fast: the server takes "
                                      "nothing more until that has been quiet for a while.");
    if (leg.isSignedOn && isOpen) return Say(State::SignedOn, Who(leg) + " is signed on.");
    if (leg.isSignedOn)
        return Say(State::SignedOff, Who(leg) + " was signed on; the session was " + EndText(leg) + ".");
    if (isOpen) return Say(State::SigningOn, Who(leg) + " is signing on.");
    if (leg.endedBy == EndedBy::Server)
        return Say(State::EndedByServer, "The server " + ReachedText(leg) + " ended the connection before " +
                                             Who(leg) + " was signed on, and gave no reason.");
    return Say(State::EndedByClient, "AIM ended the connection before " + Who(leg) + " was signed on.");
}

SignOnVerdict OfFirstLeg(const Leg& leg) {
    if (leg.loginError) {
        return Say(State::Refused, "The server refused to sign " + (leg.name.empty() ? "you" : leg.name) +
                                       " on: " + LoginErrorText(*leg.loginError) + " (error " +
                                       std::to_string(*leg.loginError) + ").");
    }
    if (leg.state == Leg::State::Connecting)
        return Say(State::SigningOn, "AIM is connecting to " + TextOf(leg.trying) + ".");
    if (!leg.reached) return Unreached(leg);
    if (!leg.sentTo) return OfSession(leg);
    if (os::MonotonicMilliseconds() - leg.beganMs < kAtOnceMs)
        return Say(State::SigningOn, Who(leg) + " is signing on.");
    return Say(State::SentAstray, "The server sent AIM to " + TextOf(*leg.sentTo) +
                                      ", and AIM has not gone there. Probably the name or the address is "
                                      "not known here: its operator must change what it advertises.");
}

}  // namespace

SignOnVerdict JudgeSignOn(const std::deque<Leg>& legs, const ClientFacts& client) {
    const auto begin =
        std::find_if(legs.rbegin(), legs.rend(), [&](const Leg& leg) { return BeginsSignOn(legs, leg); });
    if (begin == legs.rend()) {
        if (legs.empty()) return OfClient(client);
        // Its first connection is no longer kept.
        const auto last = std::ranges::find(legs.rbegin(), legs.rend(), Leg::Purpose::Bos, &Leg::purpose);
        return OfSession(last != legs.rend() ? *last : legs.back());
    }
    const auto& first = *begin;
    // The session is the first connection to which the server has sent the client then.
    const auto session = std::find_if(begin.base(), legs.end(), [&](const Leg& leg) {
        return leg.purpose == Leg::Purpose::Bos || (leg.isSent && leg.purpose == Leg::Purpose::Unknown);
    });
    if (first.isSignedOn) return OfSession(first);
    if (session == legs.end() || first.loginError) return OfFirstLeg(first);
    if (session->state == Leg::State::Connecting)
        return Say(State::SigningOn, "AIM is connecting to " + TextOf(session->trying) + ".");
    if (!session->reached) return Unreached(*session);
    auto verdict = OfSession(*session);
    // What the client asked for may stand for an address of IPv6.
    const auto sentTo = first.sentTo.value_or(session->asked);
    if (session->isSent && session->trying != session->asked && session->trying != sentTo &&
        verdict.state == State::SignedOn)
        verdict.text += " The server had sent AIM to " + TextOf(sentTo) +
                        ", which cannot be reached from here; Wrenlow used " + TextOf(session->trying) + ".";
    return verdict;
}
