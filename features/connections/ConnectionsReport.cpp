#include "features/connections/ConnectionsReport.h"

#include "app/services/Settings.h"
#include "base/Text.h"
#include "base/Version.h"

namespace {

std::string Line(const std::string& what, const std::string& value) {
    return what + ": " + value + "\n";
}

std::string Counts(const TrafficCount& count) {
    return std::to_string(count.frames) + " frames, " + std::to_string(count.bytes) + " bytes";
}

std::string TextOfLeg(const Leg& leg) {
    auto text = WhenText(leg.began) + "  ";
    text += leg.name.empty() ? "(no name)" : leg.name;
    const auto purpose = PurposeText(leg);
    text += ", " + (purpose.empty() ? "purpose unknown" : purpose) + ", " + StateText(leg) + "\n";
    text += "    asked for " + TextOf(leg.asked) + (leg.isSent ? " (the server sent it there)" : "") +
            ", reached " + (leg.reached ? TextOf(leg.trying) + " = " + ReachedText(leg) : "nothing") + "\n";
    for (const auto& [place, failure, errorNumber] : leg.failed)
        text += "    in vain " + TextOf(place) + ", error " + std::to_string(errorNumber) + "\n";
    text += "    from the client " + Counts(leg.fromClient) + "; from the server " + Counts(leg.fromServer) +
            "\n";
    if (leg.sentTo) text += "    sent the client to " + TextOf(*leg.sentTo) + "\n";
    if (leg.loginError) text += "    login error " + std::to_string(*leg.loginError) + "\n";
    if (leg.state == Leg::State::Ended) text += "    " + EndText(leg) + "\n";
    return text;
}

}  // namespace

std::string ConnectionsReport(const std::string& program, Connections& connections,
                              const ClientFacts& client) {
    connections.Refresh();
    const auto verdict = JudgeSignOn(connections.Legs(), client);
    const auto server = std::string(Trim(settings::Text("server")));
    const auto onOff = [](bool on) { return on ? "on" : "off"; };
    auto text = Line("Program", program + " " WRENLOW_VERSION_TEXT);
    text += Line("Time", WhenText(os::SecondsSince1970()));
    text += Line("Server", server.empty() ? "(the client decides)" : server);
    text += Line("For every connection", onOff(settings::IsOn("server-always")));
    text += Line("Instead of unreachable addresses", onOff(settings::IsOn("server-fallback")));
    if (client.isKnown) {
        text += Line("AIM",
                     std::string(client.runs ? "runs" : "does not run") +
                         (client.isSetUp ? ", is set up to use Wrenlow" : ", is not set up to use Wrenlow"));
    }
    text += Line("Verdict", verdict.text);
    text += "\nConnections, the newest first:\n";
    for (auto leg = connections.Legs().rbegin(); leg != connections.Legs().rend(); ++leg)
        text += TextOfLeg(*leg);
    return text;
}
