// CommandChannel: the features by lines of text, for the program that has no dialogs. One line is one
// command; the reply is lines for a person.
//
//   names                 the screen names signed on
//   away NAME text        sets the away message       back NAME   clears it
//   idle NAME minutes     sets the idle time, 0 removes it
//   profile NAME text     sets the profile, which may be empty
//   connections           what clients have asked for, and what became of it
//   why                   what became of the last sign-on
//   traffic on|off        a line for each frame that passes
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
    // What is to be told of a list that is being put back, when that has come further (PutBack::Changed).
    // What would be added is added: whoever types commands has asked for it.
    static std::vector<std::string> News();

    bool QuitWanted() const { return quitWanted_; }
    // Whether a line is wanted for each frame.
    bool TrafficWanted() const { return trafficWanted_; }

 private:
    std::vector<std::string> SwitchTraffic(std::string_view rest);

    bool quitWanted_ = false;
    bool trafficWanted_ = false;
};
