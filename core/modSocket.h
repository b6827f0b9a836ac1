// modSocket: the listener and the table of connections.
//
// Slots are numbered from 0 in the order of connecting and are never freed or reused while the program runs;
// closed connections stay in theirs. The commands address a screen name; "(all)" is the dialogs' business.
// Every function traps its failures and reports them under "modSocket:" and its name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "core/clsWinConn.h"
#include "os/Tcp.h"

// A list that screen names can be put into: the drop-down list of a dialog, or lines for a console.
class NameList {
 public:
    virtual void Clear() = 0;
    virtual void AddEntry(const std::string& entry) = 0;
    virtual std::size_t EntryCount() const = 0;
    virtual std::string EntryText(std::size_t index) const = 0;

 protected:
    ~NameList() = default;
};

namespace modSocket {

inline constexpr std::uint16_t kListeningPort = 11080;

// The listener that WinsockStartListen arms; its owner hands it over at start-up. nullptr takes it back.
void SetListener(os::TcpListener* listener);
void SetListeningPort(std::uint16_t port);
std::uint16_t ListeningPort();

// Empties the table: one empty slot 0.
void InitWs();

// Listens on the listening port, on the loopback interface. A listener that already listens there is left as
// it is, so that clients in its backlog are never reset.
void WinsockStartListen();

// Stores a connection for a client that the listener reported.
void NewLocalConnection(std::int32_t requestID);

// Fills the chooser with the screen names signed on, each once by normal form; "(all)" first if wanted. With
// showOriginal the entries read "name (original)". As an entry with its suffix never equals a bare name,
// a second connection of the same user is then listed again.
void ListScreenNames(NameList& chooser, bool includeAll, bool showOriginal);

// The first slot whose connection carries the screen name, compared by normal form.
std::optional<std::size_t> ConnIndex(const std::string& screenName);

// Send a command for one screen name. A name that no connection has addresses slot 0: with only one user
// signed on, the command still reaches that user's connection.
void SetAwayMessage(const std::string& screenName, const std::string& strAway);
void SetIdle(const std::string& screenName, std::int32_t minutes);
void SetProfile(const std::string& screenName, const std::string& strProfile);

// The slots of the table and what they hold; nullptr for an empty slot.
std::size_t SlotCount();
clsWinConn* Connection(std::size_t slot);

}  // namespace modSocket
