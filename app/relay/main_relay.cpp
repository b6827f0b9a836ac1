// wrenlow-relay: the relay and its session features as a command-line program, without tray and dialogs.
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/relay/Capture.h"
#include "app/relay/CommandChannel.h"
#include "app/relay/ConsoleReports.h"
#include "app/relay/LogPrinter.h"
#include "app/relay/RelayOptions.h"
#include "app/services/Settings.h"
#include "app/services/modRegistry.h"
#include "app/services/modSystem.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "base/Version.h"
#include "core/modSocket.h"
#include "features/Overview.h"
#include "features/SessionFeatures.h"
#include "features/buddies/PutBack.h"
#include "features/traffic/TrafficView.h"
#include "net/EventLoop.h"
#include "net/Tcp.h"
#include "os/Console.h"
#include "os/Files.h"
#include "os/SettingsFile.h"
#include "os/Sockets.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

// Where lines go: not where a capture goes.
os::Output lineOutput = os::Output::Standard;

void PrintLine(std::string text) {
    os::Print(lineOutput, Printable(std::move(text)) + "\n");
}

void PrintError(const std::string& text) {
    os::Print(os::Output::Error, "wrenlow-relay: " + Printable(text) + "\n");
}

void ReportToConsole(const std::string& description, std::int32_t number, const std::string& where,
                     std::int16_t line) {
    static ConsoleReports reports;
    const auto lines = reports.LinesFor(description, number, where, line);
    os::Print(os::Output::Error, lines);
}

// Of the user's base directories (freedesktop.org) the one that the variable names, or the usual one.
std::string UserFolder(const char* variable, const char* usual) {
    const char* const named = std::getenv(variable);
    if (named != nullptr && *named == '/') return std::string(named) + "/wrenlow";
    const char* const home = std::getenv("HOME");
    return std::string(home != nullptr ? home : "") + usual + "/wrenlow";
}

os::Path DataFolderFrom(const RelayOptions& options) {
    return os::Path::FromSystem(options.dataFolder.empty() ? UserFolder("XDG_DATA_HOME", "/.local/share")
                                                           : options.dataFolder);
}

void MakeFolders(const os::Path& innermost) {
    const auto folder = innermost.System() + "/";
    for (auto end = folder.find('/', 1); end != std::string::npos; end = folder.find('/', end + 1))
        os::MakeFolder(os::Path::FromSystem(folder.substr(0, end)));
}

// A misspelt name or a value that means nothing would be taken without a word, and do nothing.
void CheckSetting(const std::string& name, const std::string& value) {
    const auto* const setting = settings::Find(name);
    const auto fault =
        setting == nullptr ? "there is no setting " + name : settings::FaultOf(*setting, value);
    if (!fault.empty()) throw RuntimeError(ErrorNumber::InvalidArgument, fault);
}

void UseSettings(const RelayOptions& options, const os::Path& dataFolder) {
    os::SetSettingsFile(options.settingsFile.empty() ? UserFolder("XDG_CONFIG_HOME", "/.config") + "/settings"
                                                     : options.settingsFile,
                        modRegistry::kSettingsKey);
    for (const auto& [name, value] : options.overrides) {
        CheckSetting(name, value);
        os::OverrideSetting(name, value);
    }
    for (const auto& setting : settings::kTable) os::SetSettingDefault(setting.name, setting.initial);
    os::SetSettingDefault("logwhere", (dataFolder / "logs").Shown());  // the table's is a folder of Windows
}

int WriteValue(const RelayOptions& options) {
    CheckSetting(options.name, options.value);
    if (modRegistry::WriteSetting(options.name, options.value)) return 0;
    PrintError("the setting cannot be written");
    return kFailed;
}

// What counts, be it the default. A name that is no setting's prints nothing and fails.
int PrintValue(const RelayOptions& options) {
    const auto value = modRegistry::ReadSetting(options.name);
    if (value.empty()) return kFailed;
    std::puts(value.c_str());
    return 0;
}

int PrintLogs(const RelayOptions& options, const os::Path& dataFolder) {
    LogLibrary library(os::Path::FromText(settings::Text("logwhere")), dataFolder / "logs.idx");
    const auto print = [](const std::string& line) { os::Print(os::Output::Standard, line); };
    return LogPrinter(library, print).Print(options.name, options.value) ? 0 : kFailed;
}

// "connection 9" and what became of it.
std::string LineOf(std::size_t slot, std::initializer_list<std::string_view> parts) {
    constexpr std::size_t kUsualBytes = 80;
    std::string line;
    line.reserve(kUsualBytes);
    line.append("connection ").append(std::to_string(slot));
    for (const auto part : parts) line.append(part);
    return line;
}

// What frmMain is to the tray program.
class Program {
 public:
    Program(os::Path dataFolder, std::uint16_t port, const std::string& capture)
        : relay_(SessionFeatures(), std::move(dataFolder), port) {
        if (!capture.empty()) capture_.emplace(capture);
        WatchTraffic();
        relay_.Opened.Bind<&Program::relay_Opened>(*this);
        relay_.Closed.Bind<&Program::relay_Closed>(*this);
        ThePutBack().Changed.Bind<&Program::putBack_Changed>(*this);
        console_.Line.Bind<&Program::console_Line>(*this);
        console_.LineTooLong.Bind<&Program::console_LineTooLong>(*this);
        console_.InputEnded.Bind<&Program::console_InputEnded>(*this);
        console_.Interrupted.Bind<&Program::console_Interrupted>(*this);
    }

    ~Program() { overview_.traffic.SetSink({}); }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    int Run() {
        modSocket::WinsockStartListen();
        if (!relay_.IsListening()) {
            PrintError("cannot listen on 127.0.0.1:" + std::to_string(relay_.Port()));
            return kFailed;
        }
        PrintLine("listening on 127.0.0.1:" + std::to_string(relay_.Port()) +
                  "; \"help\" lists the commands");
        console_.ReadLines();
        const int exitCode = net::RunEventLoop();

        relay_.StopListening();
        modSystem::CloseAllConnections();
        net::FlushClosedSockets(net::kFlushLimitMs);
        ThePutBack().Changed.Reset();
        return exitCode;
    }

 private:
    void relay_Opened(std::size_t slot, const std::string& host, const std::string& port) {
        PrintLine(LineOf(slot, {" opened to ", host, ":", port}));
    }
    void relay_Closed(std::size_t slot, std::int32_t errorNumber) {
        if (errorNumber <= 0) return PrintLine(LineOf(slot, {" closed"}));
        PrintLine(LineOf(slot, {" closed: ", os::SocketErrorText(errorNumber)}));
    }
    void console_Line(const std::string& line) {
        for (const auto& reply : commands_.Execute(line)) PrintLine(reply);
        if (commands_.QuitWanted()) net::QuitEventLoop(0);
        WatchTraffic();
    }
    // Nobody looks at frames that nobody wants.
    void WatchTraffic() {
        if (!capture_ && !commands_.TrafficWanted()) return overview_.traffic.SetSink({});
        overview_.traffic.SetSink([this](const TrafficLeg& leg, const TrafficFrame& frame) {
            if (capture_) capture_->Take(leg, frame);
            if (commands_.TrafficWanted()) PrintLine(TrafficLine(frame));
        });
    }
    void putBack_Changed() {
        for (const auto& line : CommandChannel::News()) PrintLine(line);
    }
    void console_LineTooLong() { PrintLine("A command of more than 65536 bytes was left out."); }
    // The relay goes on: without a terminal, standard input is often empty from the beginning.
    void console_InputEnded() {
        PrintLine("standard input has ended, and commands with it; Ctrl-C ends the program");
    }
    void console_Interrupted() { net::QuitEventLoop(0); }

    os::Console console_;
    Relay relay_;
    Overview overview_{relay_};
    CommandChannel commands_;
    std::optional<Capture> capture_;
};

int Main(const std::vector<std::string>& arguments) {
    const auto options = ParseRelayOptions(arguments);
    if (options.action == RelayOptions::Action::Help) return std::fputs(kRelayUsage, stdout), 0;
    if (options.action == RelayOptions::Action::Version) return std::puts("Wrenlow " WRENLOW_VERSION_TEXT), 0;
    SetErrorReporter(ReportToConsole);
    const auto dataFolder = DataFolderFrom(options);
    UseSettings(options, dataFolder);
    if (options.action == RelayOptions::Action::SetValue) return WriteValue(options);
    if (options.action == RelayOptions::Action::GetValue) return PrintValue(options);
    MakeFolders(dataFolder);
    if (options.action == RelayOptions::Action::PrintLogs) return PrintLogs(options, dataFolder);
    if (options.capture == "-") lineOutput = os::Output::Error;
    return Program(dataFolder, options.listenPort.value_or(Relay::kListeningPort), options.capture).Run();
}

}  // namespace

int main(int count, char** arguments) {
    os::OpenStandardStreams();
    try {
        return Main({arguments + 1, arguments + count});
    } catch (const RuntimeError& error) {
        PrintError(error.what());
        if (error.Number() != ErrorNumber::InvalidArgument) return kFailed;
        os::Print(os::Output::Error, "Try wrenlow-relay --help\n");
        return kWrongUsage;
    }
}
