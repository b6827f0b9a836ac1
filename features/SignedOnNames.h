// SignedOnNames: whom a command goes to, for the dialogs and for the command channel.
//
// A list can be older than the session: a name may sign off while its dialog is open. The registry would then
// send the name's command to its first connection, so the names are checked here, before each sending.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Stands first in a list where a command may go to every name that is signed on.
inline constexpr std::string_view kAllNames = "(all)";

// Sends a command for one screen name.
using SessionCommand = std::function<void(const std::string& screenName)>;

// The screen names signed on, each once, in the order of their connections.
std::vector<std::string> SignedOnNames();

// Sends the command once for each name that is still signed on, in order, however often the list has it;
// returns the names it went to.
std::vector<std::string> SendForEach(const std::vector<std::string>& names, const SessionCommand& command);
