#include "app/relay/RelayOptions.h"

#include "base/RuntimeError.h"
#include "base/Text.h"

const char* const kRelayUsage =
    R"(Usage: wrenlow-relay [OPTION]...
       wrenlow-relay [--settings FILE] set NAME VALUE
       wrenlow-relay [--settings FILE] get NAME
       wrenlow-relay [OPTION]... logs [NAME | --search WORDS]
Relays the sessions of AIM clients that use 127.0.0.1, port 11080, as SOCKS4 proxy.

  --data DIR          keep the alias list, debug files and logs in DIR
                      ($XDG_DATA_HOME/wrenlow or ~/.local/share/wrenlow)
  --listen-port N     listen on port N; 0 picks a free one
  --pcapng FILE       write what passes to FILE, a capture for Wireshark; - for standard output,
                      whose lines then go to standard error
  --settings FILE     keep the settings in FILE
                      ($XDG_CONFIG_HOME/wrenlow/settings or ~/.config/wrenlow/settings)
  --set NAME=VALUE    use this value of a setting for this run
  --help, --version   show this text, or the version, and end

set and get write and read one setting and end; a running relay takes a new value at once.
logs prints the logged conversations with NAME, or lists the names; with --search, the messages in
which each of WORDS begins a word. No relay needs to run.
While it runs, the relay takes commands from standard input: "help" lists them.
)";

namespace {

[[noreturn]] void ThrowUsage(const std::string& what) {
    throw RuntimeError(ErrorNumber::InvalidArgument, what);
}

class Parser {
 public:
    explicit Parser(const std::vector<std::string>& arguments) : arguments_(arguments) {}

    RelayOptions Parse() {
        while (next_ < arguments_.size()) TakeArgument(arguments_[next_++]);
        return std::move(options_);
    }

 private:
    void TakeArgument(const std::string& argument) {
        if (argument == "--help") return Choose(RelayOptions::Action::Help);
        if (argument == "--version") return Choose(RelayOptions::Action::Version);
        if (argument == "--data") return Take(argument, options_.dataFolder);
        if (argument == "--settings") return Take(argument, options_.settingsFile);
        if (argument == "--pcapng") return Take(argument, options_.capture);
        if (argument == "--listen-port") return TakePort(argument);
        if (argument == "--set") return TakeOverride(argument);
        if (argument == "set" || argument == "get") return TakeSetting(argument);
        if (argument == "logs") return TakeLogs();
        ThrowUsage((argument.starts_with('-') ? "unknown option " : "unexpected argument ") + argument);
    }

    // Help wins over whatever else was asked for.
    void Choose(RelayOptions::Action action) {
        if (options_.action != RelayOptions::Action::Help) options_.action = action;
    }

    const std::string& Next(const std::string& option) {
        if (next_ == arguments_.size()) ThrowUsage(option + " needs a value");
        return arguments_[next_++];
    }

    void Take(const std::string& option, std::string& text) {
        text = Next(option);
        if (text.empty()) ThrowUsage(option + " needs a value");
    }

    void TakePort(const std::string& option) {
        options_.listenPort = ParseNumber<std::uint16_t>(Next(option));
        if (!options_.listenPort) ThrowUsage(option + " needs a number from 0 to 65535");
    }

    void TakeOverride(const std::string& option) {
        const auto& text = Next(option);
        const auto equals = text.find('=');
        if (equals == std::string::npos || equals == 0) ThrowUsage(option + " needs NAME=VALUE");
        options_.overrides.emplace_back(text.substr(0, equals), text.substr(equals + 1));
    }

    void TakeSetting(const std::string& command) {
        const bool writes = command == "set";
        Choose(writes ? RelayOptions::Action::SetValue : RelayOptions::Action::GetValue);
        Take(command, options_.name);
        if (writes) options_.value = Next(command);
        if (next_ < arguments_.size()) ThrowUsage("unexpected argument " + arguments_[next_]);
    }

    // What stands behind the word is a name or words, each an argument or not.
    void TakeLogs() {
        Choose(RelayOptions::Action::PrintLogs);
        const bool searches = next_ < arguments_.size() && arguments_[next_] == "--search";
        if (searches) ++next_;
        auto& text = searches ? options_.value : options_.name;
        for (; next_ < arguments_.size(); ++next_) text += (text.empty() ? "" : " ") + arguments_[next_];
        if (searches && text.empty()) ThrowUsage("--search needs a value");
    }

    const std::vector<std::string>& arguments_;
    std::size_t next_ = 0;
    RelayOptions options_;
};

}  // namespace

RelayOptions ParseRelayOptions(const std::vector<std::string>& arguments) {
    return Parser(arguments).Parse();
}
