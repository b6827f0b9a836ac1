// modLogging: messages in log files, one for each buddy or chat room and day, as plain text or as HTML.
// Settings are read for every message; nothing is cached and no file stays open.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "core/SessionFeature.h"
#include "features/LogFolder.h"
#include "features/modSNReplace.h"

namespace modLogging {

// Something that was said.
struct LogEntry {
    std::string file;                         // the buddy or the room, whose file it belongs to
    std::string speaker;                      //
    std::string html;                         // as it was sent
    bool isOwn = false;                       // said by the user
    std::optional<std::int64_t> sentAt = {};  // seconds since 1970; now, when it did not wait anywhere
};

class MessageLog {
 public:
    // Writes it in the form that the settings want. What has no text or no file is left out.
    void Write(const LogEntry& entry);

    // Logs the message of a SNAC (0x0004, 0x0007) toward the client or (0x0004, 0x0006) toward the server,
    // when logging is on and the message has a text. Throws what ImMessage's readers throw.
    // With a list the user's words to a buddy who has an alias are under that, whatever name he typed.
    void LogMessage(Direction direction, const clsHeaderSNAC& snac, const std::string& ownScreenName,
                    const ReplacementList* aliases = nullptr);

 private:
    LogFolder folder_;
};

// The feature, whose sessions share one log. `aliases` is what Aliases loads, in front of this feature.
FeatureEntry Logging(std::shared_ptr<MessageLog> log,
                     std::shared_ptr<const modSNReplace::SharedList> aliases);

// The text without the tags that AIM clients format messages with; <BR> becomes CR LF. Other tags and
// entities stay, and so does a tag that never ends.
std::string StripHtml(std::string_view html);

}  // namespace modLogging
