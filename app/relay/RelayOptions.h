// RelayOptions: the command line of wrenlow-relay.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct RelayOptions {
    enum class Action { Run, Help, Version, SetValue, GetValue, PrintLogs };

    Action action = Action::Run;
    std::string dataFolder;    // "" for the usual one
    std::string settingsFile;  // "" for the usual one
    std::optional<std::uint16_t> listenPort;
    std::string capture;  // the file for what passes; "-" for standard output, "" for none
    std::vector<std::pair<std::string, std::string>> overrides;  // name and value, for this run
    std::string name;   // of the setting to read or write; whose logs, "" for all
    std::string value;  // of the setting to write; what is searched in the logs, "" for nothing
};

// The arguments without the program's name, as the system has them. Throws RuntimeError (InvalidArgument)
// that says what is wrong.
RelayOptions ParseRelayOptions(const std::vector<std::string>& arguments);

// What --help shows.
extern const char* const kRelayUsage;
