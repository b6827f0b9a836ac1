// LogReader: a log file as the conversation that it holds. Both forms that modLogging writes are read, text
// and HTML; what else stands in a file is shown as it is.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

struct LogLine {
    std::string time;  // "13:05:09"; "" for a line that nobody is known to have said
    std::string speaker;
    std::string text;  // UTF-8, without tags: *bold*, /italic/, _underlined_; may hold line breaks ("\n")
    bool own = false;  // said by the user of this program
};

class LogReader {
 public:
    // `content` is the file in UTF-8, which must outlive the reader; `name` is whom the file is named after.
    // In the text form whoever has another name is the user; HTML tells by the colour.
    LogReader(std::string_view content, bool isHtml, std::string name);

    // Reads on; false at the end.
    bool Next(LogLine& line);

    // Passes over messages that cannot hold the word, which is as a Question has it; how many.
    std::size_t SkipWithout(std::string_view word);

 private:
    std::size_t MessageEnd() const;

    std::string_view rest_;
    bool isHtml_;
    std::string name_;
};

// A message without its tags and references ("&lt;", "&#128512;"), as LogLine::text has it.
std::string PlainText(std::string_view html);
