// Conversation: what was logged, for a person to read: in a window, as plain text, as a web page.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "features/logs/LogLibrary.h"

// A conversation in UTF-8: a line for each message, the user's own set in; lines end with CR LF, and those of
// a message behind its first one stand below its text.
struct ConversationText {
    std::string text;
    // Where the first word stands that was asked for, in bytes; a length of 0: there is none.
    std::size_t markBegin = 0;
    std::size_t markLength = 0;
};

// With the place of a hit in these lines, or none. Of a conversation that is longer than a text box takes the
// end is there, or the part around the hit.
ConversationText TextOf(const std::vector<LogLine>& lines, const LogHit* hit = nullptr);

// A hit on one line in UTF-8, with the words that were asked for in brackets.
std::string TextOf(const LogHit& hit);

// All days of a name as one file, in UTF-8 and marked as such. Empty when the name is not known.
std::string HistoryAsText(const LogLibrary& library, const std::string& name);
std::string HistoryAsPage(const LogLibrary& library, const std::string& name);
