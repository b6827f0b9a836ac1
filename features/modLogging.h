// modLogging: instant messages in log files, one for each buddy and day, as plain text or as HTML. Settings
// are read for every message; nothing is cached and no file stays open.
#pragma once

#include <string>
#include <string_view>

#include "core/SessionHooks.h"

namespace modLogging {

// Logs the message of a SNAC (0x0004, 0x0007) toward the client or (0x0004, 0x0006) toward the server, when
// it has a text. Throws what ImMessage's readers and WriteLogLine throw.
void LogMessage(Direction direction, const clsHeaderSNAC& snac, const std::string& ownScreenName);

// Appends one line to the buddy's log of today, if logging is on. The buddy's name, without blanks, names the
// file; `speaker` is shown as it is. `html` is the message as sent. Throws RuntimeError when the folder
// cannot be made or the file not be written; then nothing of the line is in it.
void WriteLogLine(const std::string& buddy, const std::string& speaker, const std::string& html,
                  bool incoming);

// The text without the tags that AIM clients format messages with; <BR> becomes CR LF. Other tags and
// entities stay, and so does a tag that never ends.
std::string StripHtml(std::string_view html);

}  // namespace modLogging
