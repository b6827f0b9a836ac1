#include "core/modSocket.h"

#include <memory>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Trap.h"

namespace modSocket {
namespace {

using Table = std::vector<std::unique_ptr<clsWinConn>>;

Table& Connections() {
    static Table table(1);
    return table;
}

os::TcpListener* theListener = nullptr;
std::uint16_t listeningPort = kListeningPort;

bool IsListed(const NameList& chooser, const std::string& name) {
    const auto wanted = NormalizeScreenName(name);
    for (std::size_t i = 0; i < chooser.EntryCount(); ++i) {
        if (NormalizeScreenName(chooser.EntryText(i)) == wanted) return true;
    }
    return false;
}

// "No value" counts as slot 0; see the header.
clsWinConn& ConnectionFor(const std::string& screenName) {
    auto* const connection = Connection(ConnIndex(screenName).value_or(0));
    if (connection == nullptr) ThrowObjectNotSet();
    return *connection;
}

}  // namespace

void SetListener(os::TcpListener* listener) {
    theListener = listener;
}
void SetListeningPort(std::uint16_t port) {
    listeningPort = port;
}
std::uint16_t ListeningPort() {
    return listeningPort;
}

void InitWs() {
    Trap("modSocket:InitWs", [] {
        Connections().clear();
        Connections().resize(1);
    });
}

void WinsockStartListen() {
    Trap("modSocket:WinsockStartListen", [] {
        if (theListener == nullptr) ThrowObjectNotSet();
        theListener->Listen(listeningPort);
    });
}

void NewLocalConnection(std::int32_t requestID) {
    Trap("modSocket:NewLocalConnection", [&] {
        auto& table = Connections();
        if (table.front()) table.emplace_back();
        const auto slot = table.size() - 1;
        table[slot] = std::make_unique<clsWinConn>();
        // Through the slot's own pointer: the table may grow while a handler runs.
        auto& connection = *table[slot];
        connection.SetWinsocks(requestID);
        connection.SetIndex(slot);
    });
}

void ListScreenNames(NameList& chooser, bool includeAll, bool showOriginal) {
    Trap("modSocket:ListScreenNames", [&] {
        chooser.Clear();
        if (includeAll) chooser.AddEntry("(all)");
        for (const auto& connection : Connections()) {
            if (!connection) continue;
            const auto name = connection->hasScreenName();
            if (name.empty() || IsListed(chooser, name)) continue;
            chooser.AddEntry(showOriginal ? name + " (" + connection->hasScreenNameOrig(false) + ")" : name);
        }
    });
}

std::optional<std::size_t> ConnIndex(const std::string& screenName) {
    return Trap("modSocket:ConnIndex", [&]() -> std::optional<std::size_t> {
        const auto wanted = NormalizeScreenName(screenName);
        const auto& table = Connections();
        for (std::size_t slot = 0; slot < table.size(); ++slot) {
            if (table[slot] && NormalizeScreenName(table[slot]->hasScreenName()) == wanted) return slot;
        }
        return {};
    });
}

void SetAwayMessage(const std::string& screenName, const std::string& strAway) {
    Trap("modSocket:SetAwayMessage", [&] { ConnectionFor(screenName).SetAwayMessage(strAway); });
}

void SetIdle(const std::string& screenName, std::int32_t minutes) {
    Trap("modSocket:SetIdle", [&] { ConnectionFor(screenName).SetIdle(minutes); });
}

void SetProfile(const std::string& screenName, const std::string& strProfile) {
    Trap("modSocket:SetProfile", [&] { ConnectionFor(screenName).SetProfile(strProfile); });
}

std::size_t SlotCount() {
    return Connections().size();
}

clsWinConn* Connection(std::size_t slot) {
    return slot < Connections().size() ? Connections()[slot].get() : nullptr;
}

}  // namespace modSocket
