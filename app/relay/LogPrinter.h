// LogPrinter: the log folder on a terminal, for "wrenlow-relay logs".
#pragma once

#include <functional>
#include <string>

#include "features/logs/LogLibrary.h"

class LogPrinter {
 public:
    // Everything that is printed goes to `print` as whole lines, without control characters.
    LogPrinter(LogLibrary& library, std::function<void(const std::string& lines)> print)
        : library_(library), print_(std::move(print)) {}

    // Looks at the folder, then prints the messages that hold the words, the newest day first, or else the
    // conversations with that name, or else the names with the number of their days. Returns when all is
    // printed; false when there was nothing.
    bool Print(const std::string& name, const std::string& words);

 private:
    void WaitForLibrary() const;
    bool PrintNames() const;
    bool PrintConversations(const std::string& name) const;
    bool PrintHits(const std::string& words) const;
    void PrintLine(const std::string& text) const;
    void PrintMessage(const std::string& before, const LogLine& line) const;

    LogLibrary& library_;
    const std::function<void(const std::string&)> print_;
};
