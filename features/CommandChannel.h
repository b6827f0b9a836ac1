// CommandChannel: the features by lines of text, for the program that has no dialogs. One line is one
// command; the reply is lines for a person.
//
//   names                 the screen names signed on
//   away NAME text        sets the away message       back NAME   clears it
//   idle NAME minutes     sets the idle time, 0 removes it
//   profile NAME text     sets the profile, which may be empty
//   quit, help
//
// NAME is one word: a screen name without its blanks, or (all). Case does not matter in commands and names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class CommandChannel {
 public:
    // Carries out the command of a line (without its line end) and returns the reply. A command that goes
    // wrong within the session is reported as everywhere (base/Trap.h).
    std::vector<std::string> Execute(std::string_view line);

    // Whether "quit" has come; the program is to end then.
    bool QuitWanted() const { return quitWanted_; }

 private:
    bool quitWanted_ = false;
};
