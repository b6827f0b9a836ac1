#include "features/CommandChannel.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "core/modSocket.h"
#include "features/SessionText.h"
#include "features/SignedOnNames.h"
#include "features/modAwayIdleProf.h"

namespace {

using Lines = std::vector<std::string>;

// The next word, in front of the blanks that end it; what follows them stays in `line`.
std::string TakeWord(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    std::string word(line.substr(0, line.find(' ')));
    line.remove_prefix(word.size());
    line.remove_prefix(std::min<std::size_t>(1, line.size()));
    return word;
}

Lines Help() {
    return {"away NAME text     set the away message",
            "back NAME          clear the away message",
            "idle NAME minutes  set the idle time; 0 removes it",
            "profile NAME text  set the profile; without a text, empty it",
            "names              list the screen names that are signed on",
            "quit               end the program",
            "NAME is a screen name without its blanks, or (all)."};
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
    std::int32_t minutes = 0;
    const auto* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, minutes);
    const bool whole = error == std::errc() && stop == end;
    if (!whole || minutes < 0 || minutes > modAwayIdleProf::kMostIdleMinutes) return {};
    return minutes;
}

Lines SetIdle(const std::string& name, std::string_view rest) {
    const auto minutes = ParseMinutes(TakeWord(rest));
    if (!minutes) {
        return {"Minutes are a whole number from 0 to " + std::to_string(modAwayIdleProf::kMostIdleMinutes) +
                "."};
    }
    return ForNames(name, [&](const auto& each) { modSocket::SetIdle(each, *minutes); });
}

}  // namespace

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

    const auto name = TakeWord(line);
    const std::string text(line);
    if (verb != "away" && verb != "back" && verb != "idle" && verb != "profile") {
        return {"Unknown command \"" + verb + "\"; \"help\" lists them."};
    }
    if (name.empty()) return {"Whose? Give a screen name or (all)."};
    if (text.size() > kLongestText) return {"The text is too long."};
    if (verb == "idle") return SetIdle(name, line);
    if (verb == "profile") {
        return ForNames(name, [&](const auto& each) { modSocket::SetProfile(each, text); });
    }
    if (verb == "back") return ForNames(name, [](const auto& each) { modSocket::SetAwayMessage(each, ""); });
    // An empty away message is how "back" reads on the wire.
    if (text.empty()) return {"What does the away message say?"};
    return ForNames(name, [&](const auto& each) { modSocket::SetAwayMessage(each, text); });
}
