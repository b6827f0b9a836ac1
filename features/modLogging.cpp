#include "features/modLogging.h"

#include <algorithm>
#include <array>

#include "app/services/SafeFileName.h"
#include "app/services/Settings.h"
#include "app/services/TimeText.h"
#include "base/Text.h"
#include "core/wire/Ucs2.h"
#include "features/ImMessage.h"
#include "features/SafeHtml.h"
#include "os/Clock.h"
#include "os/CodePage.h"

namespace modLogging {
namespace {

std::string TextLine(const LogEntry& entry, const std::string& time) {
    return entry.speaker + " (" + time + "): " + StripHtml(entry.html);
}

std::string HtmlLine(const LogEntry& entry, const std::string& time) {
    const std::string colour = entry.isOwn ? "ff0000" : "0000ff";
    return "<b><font color=#" + colour + ">" + SafeHtml(entry.speaker) +
           " </font><font color=#0000ff size=-1>(" + time + "):</font> </b>" + SafeHtml(entry.html) + "<br>";
}

bool IsWanted() {
    return settings::IsOn("logims");
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

constexpr Interest kOutgoingMessage{0x0004, 0x0006};
constexpr Interest kIncomingMessage{0x0004, 0x0007};

class MessageLogger final : public SessionFeature {
 public:
    MessageLogger(Session& session, std::shared_ptr<MessageLog> log,
                  std::shared_ptr<const ReplacementList> aliases)
        : session_(session), log_(std::move(log)), aliases_(std::move(aliases)) {}

    // By the kind of message, whichever way it goes. What the client sends is read as it wrote it, before the
    // aliases were taken off: so both halves of a conversation are under the name that the user sees.
    Verdict Frame(FrameView& frame) override {
        clsHeaderSNAC snac;
        snac.ParseData(frame.Way() == Direction::ToServer ? frame.Original() : frame.Payload());
        const bool incoming = snac.SubId() == kIncomingMessage.subtype;
        log_->LogMessage(incoming ? Direction::ToClient : Direction::ToServer, snac,
                         session_.Names(frame.Way()).name, aliases_.get());
        return Verdict::Pass;
    }

 private:
    Session& session_;
    const std::shared_ptr<MessageLog> log_;
    const std::shared_ptr<const ReplacementList> aliases_;
};

}  // namespace

FeatureEntry Logging(std::shared_ptr<MessageLog> log,
                     std::shared_ptr<const modSNReplace::SharedList> aliases) {
    return {{kOutgoingMessage, kIncomingMessage},
            [log = std::move(log), aliases = std::move(aliases)](Session& session) {
                return std::make_unique<MessageLogger>(session, log, aliases->Last());
            },
            Made::AtOnce};  // the aliases are those of this connection
}

void MessageLog::LogMessage(Direction direction, const clsHeaderSNAC& snac, const std::string& ownScreenName,
                            const ReplacementList* aliases) {
    // First of all: who does not log is not told of messages that cannot be read.
    if (!IsWanted()) return;
    const bool incoming = direction == Direction::ToClient;
    auto message = incoming ? ReadIncomingMessage(snac.Data()) : ReadOutgoingMessage(snac.Data());
    if (!incoming && aliases != nullptr) message.screenName = aliases->NameShown(message.screenName);
    // A buddy who speaks is shown as his file has him, without blanks; part of the format.
    auto name = std::move(message.screenName);
    std::erase(name, ' ');
    Write({name, incoming ? name : ownScreenName, std::move(message.text), !incoming, message.sentAt});
}

void MessageLog::Write(const LogEntry& entry) {
    if (entry.html.empty() || entry.file.empty()) return;
    const auto when = entry.sentAt ? os::LocalTimeOf(*entry.sentAt) : os::Now();
    const bool asHtml = settings::IsOn("loghowhtm");
    const auto line = (asHtml ? HtmlLine : TextLine)(entry, TimeText(when)) + "\r\n";
    // A browser shows entities as characters, a reader of plain text does not.
    const auto utf8 = asHtml ? std::string() : wire::Utf8OfText(line);
    const bool isMore = !asHtml && utf8 != os::Utf8FromText(line);
    const auto safeName = SafeFileName(entry.file);
    const auto file = safeName + " " + DateText(when) + (asHtml ? ".htm" : ".txt");
    folder_.Append(safeName, file, line, isMore ? utf8 : std::string());
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
