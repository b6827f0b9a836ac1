// wrenlow-relay: the relay and its session features as a command-line program, without tray and dialogs.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "app/services/modRegistry.h"
#include "app/services/modSystem.h"
#include "app/shell/ConsoleReports.h"
#include "app/shell/RelayOptions.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "base/Version.h"
#include "core/DataFolder.h"
#include "core/modSocket.h"
#include "features/CommandChannel.h"
#include "features/clsSessionFeatures.h"
#include "os/Console.h"
#include "os/EventLoop.h"
#include "os/Files.h"
#include "os/SettingsFile.h"
#include "os/Tcp.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

void PrintLine(const std::string& text) {
    os::Print(os::Output::Standard, os::SystemFromText(Printable(text)) + "\n");
}

void PrintError(const std::string& text) {
    os::Print(os::Output::Error, "wrenlow-relay: " + text + "\n");
}

void ReportToConsole(const std::string& description, std::int32_t number, const std::string& where,
                     std::int16_t line) {
    static ConsoleReports reports;
    const auto lines = reports.LinesFor(description, number, where, line);
    os::Print(os::Output::Error, os::SystemFromText(lines));
}

// Of the user's base directories (freedesktop.org) the one that the variable names, or the usual one.
std::string UserFolder(const char* variable, const char* usual) {
    const char* const named = std::getenv(variable);
    if (named != nullptr && *named == '/') return std::string(named) + "/wrenlow";
    const char* const home = std::getenv("HOME");
    return std::string(home != nullptr ? home : "") + usual + "/wrenlow";
}

void UseDataFolder(const RelayOptions& options) {
    const auto folder =
        options.dataFolder.empty() ? UserFolder("XDG_DATA_HOME", "/.local/share") : options.dataFolder;
    SetDataFolder(os::TextFromSystem(folder));
}

void MakeDataFolder() {
    const auto folder = DataFolder() + "/";
    for (auto end = folder.find('/', 1); end != std::string::npos; end = folder.find('/', end + 1)) {
        if (!os::FolderExists(folder.substr(0, end))) os::MakeFolder(folder.substr(0, end));
    }
}

void UseSettings(const RelayOptions& options) {
    os::SetSettingsFile(options.settingsFile.empty() ? UserFolder("XDG_CONFIG_HOME", "/.config") + "/settings"
                                                     : options.settingsFile,
                        modRegistry::kSettingsKey);
    for (const auto& [name, value] : options.overrides)
        os::OverrideSetting(os::TextFromSystem(name), os::TextFromSystem(value));
    os::SetSettingDefault("logwhere", DataFolder() + "/logs");
}

int WriteValue(const RelayOptions& options) {
    if (modRegistry::WriteSetting(os::TextFromSystem(options.name), os::TextFromSystem(options.value)))
        return 0;
    PrintError("the setting cannot be written");
    return kFailed;
}

// A setting that has no value prints nothing and fails.
int PrintValue(const RelayOptions& options) {
    const auto value = modRegistry::ReadSetting(os::TextFromSystem(options.name));
    if (value.empty()) return kFailed;
    std::puts(os::SystemFromText(value).c_str());
    return 0;
}

// What frmMain is to the tray program.
class Relay {
 public:
    Relay() {
        SetSessionHooks(&features_);
        wsWinsock_.ConnectionRequest.Bind<&Relay::wsWinsock_ConnectionRequest>(*this);
        clsWinConn::Opened.Bind<&Relay::clsWinConn_Opened>(*this);
        clsWinConn::Closed.Bind<&Relay::clsWinConn_Closed>(*this);
        console_.Line.Bind<&Relay::console_Line>(*this);
        console_.InputEnded.Bind<&Relay::console_InputEnded>(*this);
        console_.Interrupted.Bind<&Relay::console_Interrupted>(*this);
        modSocket::SetListener(&wsWinsock_);
    }
    ~Relay() {
        modSocket::InitWs();
        modSocket::SetListener(nullptr);
        SetSessionHooks(nullptr);
        clsWinConn::Opened.Reset();
        clsWinConn::Closed.Reset();
    }
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;

    int Run(std::uint16_t port) {
        modSocket::SetListeningPort(port);
        modSocket::InitWs();
        modSocket::WinsockStartListen();
        if (wsWinsock_.Port() == 0) {
            PrintError("cannot listen on 127.0.0.1:" + std::to_string(port));
            return kFailed;
        }
        modSocket::SetListeningPort(wsWinsock_.Port());  // the one that was picked, if the system picked one
        PrintLine("listening on 127.0.0.1:" + std::to_string(wsWinsock_.Port()) +
                  "; \"help\" lists the commands");
        console_.ReadLines();
        const int exitCode = os::RunEventLoop();

        wsWinsock_.Close();
        modSystem::CloseAllConnections();
        os::FlushClosedSockets(os::kFlushLimitMs);
        return exitCode;
    }

 private:
    void wsWinsock_ConnectionRequest(std::int32_t requestID) {
        modSocket::NewLocalConnection(requestID);
        modSocket::WinsockStartListen();
    }
    void clsWinConn_Opened(std::size_t slot, const std::string& host, const std::string& port) {
        PrintLine("connection " + std::to_string(slot) + " opened to " + host + ":" + port);
    }
    void clsWinConn_Closed(std::size_t slot) { PrintLine("connection " + std::to_string(slot) + " closed"); }
    void console_Line(const std::string& line) {
        for (const auto& reply : commands_.Execute(os::TextFromSystem(line))) PrintLine(reply);
        if (commands_.QuitWanted()) os::QuitEventLoop(0);
    }
    // The relay goes on: without a terminal, standard input is often empty from the beginning.
    void console_InputEnded() {
        PrintLine("standard input has ended, and commands with it; Ctrl-C ends the program");
    }
    void console_Interrupted() { os::QuitEventLoop(0); }

    os::Console console_;
    os::TcpListener wsWinsock_;
    clsSessionFeatures features_;
    CommandChannel commands_;
};

int Main(const std::vector<std::string>& arguments) {
    const auto options = ParseRelayOptions(arguments);
    if (options.action == RelayOptions::Action::Help) return std::fputs(kRelayUsage, stdout), 0;
    if (options.action == RelayOptions::Action::Version) return std::puts("Wrenlow " WRENLOW_VERSION_TEXT), 0;
    UseDataFolder(options);
    UseSettings(options);
    if (options.action == RelayOptions::Action::SetValue) return WriteValue(options);
    if (options.action == RelayOptions::Action::GetValue) return PrintValue(options);
    SetErrorReporter(ReportToConsole);
    MakeDataFolder();
    return Relay().Run(options.listenPort.value_or(modSocket::kListeningPort));
}

}  // namespace

int main(int count, char** arguments) {
    try {
        return Main({arguments + 1, arguments + count});
    } catch (const RuntimeError& error) {
        PrintError(error.what());
        if (error.Number() != ErrorNumber::InvalidArgument) return kFailed;
        os::Print(os::Output::Error, "Try wrenlow-relay --help\n");
        return kWrongUsage;
    }
}
