#include "app/relay/CommandChannel.h"

#include <algorithm>
#include <optional>

#include "app/services/TimeText.h"
#include "base/RuntimeError.h"
#include "base/Text.h"
#include "core/modSocket.h"
#include "features/Overview.h"
#include "features/SignedOnNames.h"
#include "features/buddies/BuddyFiles.h"
#include "features/buddies/PutBack.h"
#include "features/modAwayIdleProf.h"
#include "features/waiting/WaitingMessages.h"
#include "os/Clock.h"
#include "os/CodePage.h"

namespace {

using Lines = std::vector<std::string>;

// The next word, in front of the blanks that end it; what follows them stays in `line`.
std::string TakeWord(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    return std::string(TakeUpTo(line, ' '));
}

Lines Help() {
    return {"away NAME text     set the away message",
            "back NAME          clear the away message",
            "idle NAME minutes  set the idle time; 0 removes it",
            "profile NAME text  set the profile; without a text, empty it",
            "connections        list the connections of the clients",
            "why                tell what became of the last sign-on",
            "traffic on|off     show a line for each frame that passes, or no longer",
            "names              list the screen names that are signed on",
            "waiting            list the messages that wait for buddies who are off line",
            "waiting drop N     delete the one of that number",
            "buddies            list the buddy lists that are kept",
            "buddies put-back NAME DATE [OTHER]",
            "                   add what is missing of one to NAME's list at the server, or OTHER's",
            "quit               end the program",
            "NAME is a screen name without its blanks, or (all)."};
}

// A line for each connection, the oldest first.
Lines ListConnections() {
    auto* const overview = Overview::Current();
    if (overview == nullptr || overview->connections.Legs().empty()) return {"No client has connected yet."};
    overview->connections.Refresh();
    Lines lines;
    for (const auto& leg : overview->connections.Legs()) {
        auto line = std::to_string(leg.slot) + "  " + WhenText(leg.began) + "  ";
        line += leg.name.empty() ? "-" : leg.name;
        const auto purpose = PurposeText(leg);
        line += "  " + (purpose.empty() ? "-" : purpose) + "  " + TextOf(leg.asked);
        line += "  " + (leg.reached ? ReachedText(leg) : "-") + "  ";
        line += leg.state == Leg::State::Ended ? EndText(leg) : StateText(leg);
        line += "  from client " + std::to_string(leg.fromClient.frames) + "/" +
                std::to_string(leg.fromClient.bytes);
        line += "  from server " + std::to_string(leg.fromServer.frames) + "/" +
                std::to_string(leg.fromServer.bytes);
        lines.push_back(std::move(line));
    }
    return lines;
}

Lines TellWhy() {
    const auto* const overview = Overview::Current();
    if (overview == nullptr) return {};
    const auto verdict = overview->Verdict();
    return {verdict.text, std::string("What to do: why.html#") + verdict.anchor + " in the manual."};
}

Lines ForNames(const std::string& name, const SessionCommand& command) {
    auto names = SignedOnNames();
    if (names.empty()) return {"Nobody is signed on."};
    if (NormalizeScreenName(name) != kAllNames) names = {name};
    Lines reply;
    for (const auto& sent : SendForEach(names, command)) reply.push_back("Sent for " + sent + ".");
    if (!reply.empty()) return reply;
    return {"\"" + name + "\" is not signed on. \"names\" lists who is; leave the blanks of a name out."};
}

std::optional<std::int32_t> ParseMinutes(const std::string& text) {
    const auto minutes = ParseNumber<std::int32_t>(text);
    if (!minutes || *minutes < 0 || *minutes > modAwayIdleProf::kMaxIdleMinutes) return {};
    return minutes;
}

Lines SetIdle(const std::string& name, std::string_view rest) {
    const auto minutes = ParseMinutes(TakeWord(rest));
    if (!minutes) {
        return {"Minutes are a whole number from 0 to " + std::to_string(modAwayIdleProf::kMaxIdleMinutes) +
                "."};
    }
    return ForNames(name, [&](const auto& each) { modSocket::SetIdle(each, *minutes); });
}

Lines ListWaiting() {
    auto& waiting = TheWaitingMessages();
    Lines reply;
    for (const auto& message : waiting.All()) {
        const auto since = os::LocalTimeOf(message.since);
        reply.push_back(std::to_string(message.number) + ": " + message.from + " to " + message.shownTo +
                        ", " + DateText(since) + " " + TimeText(since) + ", tried " +
                        std::to_string(message.tried) + ": " + TextOf(message));
    }
    if (!waiting.Trouble().empty()) reply.push_back(waiting.Trouble());
    return reply.empty() ? Lines{"No message waits."} : reply;
}

Lines Waiting(std::string_view rest) {
    const auto verb = NormalizeScreenName(TakeWord(rest));
    if (verb.empty()) return ListWaiting();
    const auto number = ParseNumber<std::uint32_t>(TakeWord(rest));
    if (verb != "drop" || !number) return {"\"waiting\" lists messages, \"waiting drop N\" deletes one."};
    if (!TheWaitingMessages().Drop(*number)) return {"No message of that number waits."};
    return {"Deleted."};
}

Lines ListBuddies() {
    Lines reply;
    for (const auto& kept : KeptLists()) reply.push_back(kept.name + " " + kept.date);
    return reply.empty() ? Lines{"No buddy list is kept."} : reply;
}

Lines Buddies(std::string_view rest) {
    const auto verb = NormalizeScreenName(TakeWord(rest));
    if (verb.empty()) return ListBuddies();
    const KeptList wanted{NormalizeScreenName(TakeWord(rest)), TakeWord(rest)};
    auto user = TakeWord(rest);
    if (user.empty()) user = wanted.name;
    if (verb != "put-back" || wanted.date.empty())
        return {"\"buddies\" lists them, \"buddies put-back NAME DATE\" puts one back."};
    try {
        if (!IsKept(wanted)) return {"No such list is kept; \"buddies\" tells which are."};
        if (!ThePutBack().Begin(user, ReadKeptList(wanted)))
            return {"\"" + user + "\" is not signed on where lists are kept, or another is being put back."};
    } catch (const RuntimeError& error) {
        return {error.what()};
    }
    return {ThePutBack().Sentence()};
}

}  // namespace

std::vector<std::string> CommandChannel::SwitchTraffic(std::string_view rest) {
    const auto wish = NormalizeScreenName(TakeWord(rest));
    if (wish != "on" && wish != "off") return {"Traffic on, or traffic off?"};
    trafficWanted_ = wish == "on";
    return {};
}

std::vector<std::string> CommandChannel::News() {
    auto& putBack = ThePutBack();
    if (putBack.At() == PutBack::Stage::Asking || putBack.At() == PutBack::Stage::Adding) return {};
    Lines news;
    if (putBack.At() == PutBack::Stage::Preview) news = putBack.Additions();
    news.push_back(putBack.Sentence());
    putBack.Go();
    return news;
}

std::vector<std::string> CommandChannel::Execute(std::string_view line) {
    if (line.ends_with('\r')) line.remove_suffix(1);
    const auto verb = NormalizeScreenName(TakeWord(line));
    if (verb.empty()) return {};
    if (verb == "quit") {
        quitWanted_ = true;
        return {};
    }
    if (verb == "names") {
        auto names = SignedOnNames();
        return names.empty() ? Lines{"Nobody is signed on."} : names;
    }
    if (verb == "help") return Help();
    if (verb == "waiting") return Waiting(line);
    if (verb == "connections") return ListConnections();
    if (verb == "why") return TellWhy();
    if (verb == "traffic") return SwitchTraffic(line);
    if (verb == "buddies") return Buddies(line);

    const auto name = TakeWord(line);
    const std::string text(line);
    if (verb != "away" && verb != "back" && verb != "idle" && verb != "profile") {
        return {"Unknown command \"" + verb + "\"; \"help\" lists them."};
    }
    if (name.empty()) return {"Whose? Give a screen name or (all)."};
    if (os::TextForWire(text).bytes.size() > modAwayIdleProf::kMaxText) return {"The text is too long."};
    if (verb == "idle") return SetIdle(name, line);
    if (verb == "profile") {
        return ForNames(name, [&](const auto& each) { modSocket::SetProfile(each, text); });
    }
    if (verb == "back") return ForNames(name, [](const auto& each) { modSocket::SetAwayMessage(each, ""); });
    // An empty away message is how "back" reads on the wire.
    if (text.empty()) return {"What does the away message say?"};
    return ForNames(name, [&](const auto& each) { modSocket::SetAwayMessage(each, text); });
}
