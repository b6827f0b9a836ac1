// LogFolder: where log lines go, and what happens while that place fails or stands still.
//
// A folder on a share that does not answer must not hold every message up: after a write that took longer
// than a second nothing is written there for a minute, the next time for two, ten at most. That is told once,
// with the folder's name; so is a folder that cannot be written to. When writing works again, that is told
// with the number of messages that are missing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

class LogFolder {
 public:
    // Appends the line to the file of that name in the folder of the settings or, if these want it, in the
    // buddy's own below it; folders are made when missing. Failures are reported as told above, not thrown.
    // A line that the code page cannot hold comes in UTF-8, too: from then on the file is UTF-8, and marked
    // so.
    void Append(const std::string& buddy, const std::string& fileName, const std::string& line,
                const std::string& utf8Line = {});

 private:
    // Of a folder that is told to fail or to stand still. Nothing more is told before `until`, so that a
    // single file that cannot be written to does not fill the screen.
    struct Trouble {
        bool standsStill = false;  // and nothing is written before `until`
        std::int64_t until = 0;
        std::int64_t pauseMs = 0;
        std::size_t missing = 0;  // messages
    };
    std::map<std::string, Trouble> troubles_;  // by the folder as the setting has it
};
