#include "app/shell/RelayOptions.h"

#include <charconv>

#include "base/RuntimeError.h"

const char* const kRelayUsage =
    R"(Usage: wrenlow-relay [OPTION]...
       wrenlow-relay [--settings FILE] set NAME VALUE
       wrenlow-relay [--settings FILE] get NAME
Relays the sessions of AIM clients that use 127.0.0.1, port 11080, as SOCKS4 proxy.

  --data DIR          keep the alias list, debug files and logs in DIR
                      ($XDG_DATA_HOME/wrenlow or ~/.local/share/wrenlow)
  --listen-port N     listen on port N; 0 picks a free one
  --settings FILE     keep the settings in FILE
                      ($XDG_CONFIG_HOME/wrenlow/settings or ~/.config/wrenlow/settings)
  --set NAME=VALUE    use this value of a setting for this run
  --help, --version   show this text, or the version, and end

set and get write and read one setting and end; a running relay takes a new value at once.
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
        if (argument == "--listen-port") return TakePort(argument);
        if (argument == "--set") return TakeOverride(argument);
        if (argument == "set" || argument == "get") return TakeSetting(argument);
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
        const auto& text = Next(option);
        std::uint16_t port = 0;
        const auto end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, port);
        if (error != std::errc() || stop != end) ThrowUsage(option + " needs a number from 0 to 65535");
        options_.listenPort = port;
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

    const std::vector<std::string>& arguments_;
    std::size_t next_ = 0;
    RelayOptions options_;
};

}  // namespace

RelayOptions ParseRelayOptions(const std::vector<std::string>& arguments) {
    return Parser(arguments).Parse();
}
