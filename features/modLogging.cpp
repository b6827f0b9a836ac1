#include "features/modLogging.h"

#include <algorithm>
#include <array>

#include "app/services/SafeFileName.h"
#include "app/services/modRegistry.h"
#include "features/ImMessage.h"
#include "os/Clock.h"
#include "os/Files.h"

namespace modLogging {
namespace {

std::string Digits(int number, std::size_t width) {
    const auto digits = std::to_string(number);
    return std::string(width - std::min(width, digits.size()), '0') + digits;
}

std::string DateText(const os::LocalTime& time) {
    return Digits(time.year, 4) + "-" + Digits(time.month, 2) + "-" + Digits(time.day, 2);
}

std::string TimeText(const os::LocalTime& time) {
    return Digits(time.hour, 2) + ":" + Digits(time.minute, 2) + ":" + Digits(time.second, 2);
}

void EnsureFolder(const std::string& folder) {
    if (!os::FolderExists(folder)) os::MakeFolder(folder);
}

// The folder that the buddy's logs go to, made when it is missing, with a separator at its end.
std::string LogFolder(const std::string& safeBuddy) {
    auto folder = modRegistry::ReadSetting("logwhere");
    folder.erase(folder.find_last_not_of('\\') + 1);
    EnsureFolder(folder);
    if (modRegistry::ReadSetting("logfolder") == "1") {
        folder += "\\" + safeBuddy;
        EnsureFolder(folder);
    }
    return folder + "\\";
}

std::string TextLine(const std::string& speaker, const std::string& time, const std::string& html) {
    return speaker + " (" + time + "): " + StripHtml(html);
}

std::string HtmlLine(const std::string& speaker, const std::string& time, const std::string& html,
                     bool incoming) {
    const std::string colour = incoming ? "0000ff" : "ff0000";
    return "<b><font color=#" + colour + ">" + speaker + " </font><font color=#0000ff size=-1>(" + time +
           "):</font> </b>" + html + "<br>";
}

bool IsWanted() {
    return modRegistry::ReadSetting("logims") == "1";
}

void AppendLine(const std::string& buddy, const std::string& speaker, const std::string& html,
                bool incoming) {
    auto name = buddy;
    std::erase(name, ' ');
    if (name.empty()) return;

    const auto now = os::Now();
    const auto time = TimeText(now);
    // A buddy who speaks is shown as the file has him, without blanks; part of the format.
    const auto& shown = incoming ? name : speaker;
    const bool asHtml = modRegistry::ReadSetting("loghowhtm") == "True";
    const auto line = asHtml ? HtmlLine(shown, time, html, incoming) : TextLine(shown, time, html);

    const auto safeName = SafeFileName(name);
    const auto file = LogFolder(safeName) + safeName + " " + DateText(now) + (asHtml ? ".htm" : ".txt");
    os::AppendToFile(file, line + "\r\n");
}

struct Tag {
    enum class Action { DropTag, DropToBracket, BreakLine };

    std::string_view text;  // in lower case
    Action action;
};

constexpr std::array<Tag, 13> kTags = {{
    {"<html>", Tag::Action::DropTag},
    {"<body", Tag::Action::DropToBracket},
    {"<font", Tag::Action::DropToBracket},
    {"</body>", Tag::Action::DropTag},
    {"</html>", Tag::Action::DropTag},
    {"</font>", Tag::Action::DropTag},
    {"<b>", Tag::Action::DropTag},
    {"</b>", Tag::Action::DropTag},
    {"<u>", Tag::Action::DropTag},
    {"</u>", Tag::Action::DropTag},
    {"<i>", Tag::Action::DropTag},
    {"</i>", Tag::Action::DropTag},
    {"<br>", Tag::Action::BreakLine},
}};

const Tag* TagAt(std::string_view html) {
    if (!html.starts_with('<')) return nullptr;
    const auto begins = [html](const Tag& tag) {
        const auto front = html.substr(0, tag.text.size());
        return std::equal(front.begin(), front.end(), tag.text.begin(), tag.text.end(),
                          [](char a, char b) { return LowerAscii(a) == b; });
    };
    const auto* const found = std::find_if(kTags.begin(), kTags.end(), begins);
    return found != kTags.end() ? found : nullptr;
}

}  // namespace

void LogMessage(Direction direction, const clsHeaderSNAC& snac, const std::string& ownScreenName) {
    // First of all: who does not log is not told of messages that cannot be read.
    if (!IsWanted()) return;
    const bool incoming = direction == Direction::ToClient;
    const auto message = incoming ? ReadIncomingMessage(snac.Data()) : ReadOutgoingMessage(snac.Data());
    if (message.text.empty()) return;
    AppendLine(message.screenName, incoming ? message.screenName : ownScreenName, message.text, incoming);
}

void WriteLogLine(const std::string& buddy, const std::string& speaker, const std::string& html,
                  bool incoming) {
    if (IsWanted()) AppendLine(buddy, speaker, html, incoming);
}

std::string StripHtml(std::string_view html) {
    std::string text;
    text.reserve(html.size());
    const auto lastBracket = html.rfind('>');
    for (std::size_t at = 0; at < html.size();) {
        const auto* const tag = TagAt(html.substr(at));
        const bool open = tag != nullptr && tag->action == Tag::Action::DropToBracket;
        if (tag == nullptr || (open && (lastBracket == std::string_view::npos || at > lastBracket))) {
            text += html[at++];
            continue;
        }
        if (tag->action == Tag::Action::BreakLine) text += "\r\n";
        at = open ? html.find('>', at) + 1 : at + tag->text.size();
    }
    return text;
}

}  // namespace modLogging
