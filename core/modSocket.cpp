#include "core/modSocket.h"

#include <algorithm>

#include "base/RuntimeError.h"
#include "base/Trap.h"

namespace modSocket {
namespace {

Relay& TheRelay() {
    auto* const relay = Relay::Current();
    if (relay == nullptr) ThrowObjectNotSet();
    return *relay;
}

bool IsListed(const std::vector<ScreenNames>& list, const std::string& name) {
    const auto wanted = NormalizeScreenName(name);
    return std::ranges::any_of(list,
                               [&](const auto& entry) { return NormalizeScreenName(entry.name) == wanted; });
}

bool IsSignedOn(const clsWinConn* connection, const std::string& normalName) {
    return connection != nullptr && !normalName.empty() &&
           NormalizeScreenName(connection->hasScreenName()) == normalName;
}

// To every session of the name, each in a trap of its own; to slot 0 when there is none, see the header.
template <typename Command>
void SendTo(const std::string& screenName, const char* where, Command&& command) {
    Trap(where, [&] {
        const auto wanted = NormalizeScreenName(screenName);
        bool hasName = false;
        for (std::size_t slot = 0; slot < SlotCount(); ++slot) {
            if (!IsSignedOn(Connection(slot), wanted)) continue;
            hasName = true;
            Trap(where, [&] { command(*Connection(slot)); });
        }
        if (hasName) return;
        auto* const first = Connection(0);
        if (first == nullptr) ThrowObjectNotSet();
        command(*first);
    });
}

}  // namespace

std::uint16_t ListeningPort() {
    return Relay::Current() != nullptr ? Relay::Current()->Port() : kListeningPort;
}

void InitWs() {
    Trap("modSocket:InitWs", [] { TheRelay().RemoveAllPairs(); });
}

void WinsockStartListen() {
    Trap("modSocket:WinsockStartListen", Listen);
}

void Listen() {
    TheRelay().Listen();
}

void NewLocalConnection(std::int32_t requestID) {
    Trap("modSocket:NewLocalConnection", [&] { TheRelay().AddPair(requestID); });
}

std::vector<ScreenNames> ListScreenNames(bool includeAll, bool showOriginal) {
    return Trap("modSocket:ListScreenNames", [&] {
        std::vector<ScreenNames> list;
        if (includeAll) list.push_back({"(all)", ""});
        for (const auto& connection : TheRelay().Connections()) {
            if (!connection) continue;
            auto name = connection->hasScreenName();
            if (name.empty() || (!showOriginal && IsListed(list, name))) continue;
            list.push_back({std::move(name), connection->hasScreenNameOrig(false)});
        }
        return list;
    });
}

std::optional<std::size_t> ConnIndex(const std::string& screenName) {
    return Trap("modSocket:ConnIndex", [&]() -> std::optional<std::size_t> {
        const auto wanted = NormalizeScreenName(screenName);
        const auto& table = TheRelay().Connections();
        for (std::size_t slot = 0; slot < table.size(); ++slot) {
            if (table[slot] && NormalizeScreenName(table[slot]->hasScreenName()) == wanted) return slot;
        }
        return {};
    });
}

void SetAwayMessage(const std::string& screenName, const std::string& strAway) {
    SendTo(screenName, "modSocket:SetAwayMessage", [&](auto& pair) { pair.SetAwayMessage(strAway); });
}

void SetIdle(const std::string& screenName, std::int32_t minutes) {
    SendTo(screenName, "modSocket:SetIdle", [&](auto& pair) { pair.SetIdle(minutes); });
}

void SetProfile(const std::string& screenName, const std::string& strProfile) {
    SendTo(screenName, "modSocket:SetProfile", [&](auto& pair) { pair.SetProfile(strProfile); });
}

std::size_t SlotCount() {
    return TheRelay().Connections().size();
}

clsWinConn* Connection(std::size_t slot) {
    const auto& table = TheRelay().Connections();
    return slot < table.size() ? table[slot].get() : nullptr;
}

}  // namespace modSocket
