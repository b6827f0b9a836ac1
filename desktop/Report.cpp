#include "desktop/Report.h"

#include "app/windows/AimClient.h"
#include "features/Overview.h"
#include "features/connections/ConnectionsReport.h"

std::string ReportText() {
    auto* const overview = Overview::Current();
    if (overview == nullptr) return {};
    modSystem::LookAtClient(overview->client);
    std::string text;
    for (const char c : ConnectionsReport("wrenlow.exe", overview->connections, overview->client))
        text += c == '\n' ? "\r\n" : std::string(1, c);
    return text;
}
