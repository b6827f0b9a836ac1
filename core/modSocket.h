// modSocket: the current relay's listener and table of connections, by function.
//
// Slots are numbered from 0 in the order of connecting and are never freed or reused while the program runs;
// closed connections stay in theirs. The commands address a screen name; "(all)" is the dialogs' business.
// Every function traps its failures and reports them under "modSocket:" and its name; without a relay each
// fails.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/Relay.h"

namespace modSocket {

inline constexpr std::uint16_t kListeningPort = Relay::kListeningPort;

std::uint16_t ListeningPort();

// Empties the table: one empty slot 0.
void InitWs();

// Listens on the listening port, on the loopback interface. A listener that already listens there is left as
// it is, so that clients in its backlog are never reset.
void WinsockStartListen();
// The same without a trap of its own: throws RuntimeError with the system's error number.
void Listen();

// Stores a connection for a client that the listener reported.
void NewLocalConnection(std::int32_t requestID);

// The screen names signed on, as a list control is to show them: each once by normal form; "(all)" first if
// wanted. With showOriginal the entries are told apart by the original name too, and a second connection of
// the same user is listed again.
std::vector<ScreenNames> ListScreenNames(bool includeAll, bool showOriginal);

// The first slot whose connection carries the screen name, compared by normal form.
std::optional<std::size_t> ConnIndex(const std::string& screenName);

// Send a command for one screen name, to each open session signed on under it. A name that no connection has
// addresses slot 0: with only one user signed on, the command still reaches that user's connection.
void SetAwayMessage(const std::string& screenName, const std::string& strAway);
void SetIdle(const std::string& screenName, std::int32_t minutes);
void SetProfile(const std::string& screenName, const std::string& strProfile);

// The slots of the table and what they hold; nullptr for an empty slot.
std::size_t SlotCount();
clsWinConn* Connection(std::size_t slot);

}  // namespace modSocket
