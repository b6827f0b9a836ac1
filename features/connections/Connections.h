// Connections: the connections that clients have asked for, the last 500 of them, each kept up to date.
//
// A feature object (ConnectionNotes) stands in each session and writes into its leg. Frames and bytes are
// counted by the sockets; Refresh() fetches the counts of the open legs, so that no frame costs more than the
// adding.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <utility>

#include "core/SessionFeature.h"
#include "features/connections/Leg.h"

class Connections {
 public:
    static constexpr std::size_t kMaxLegs = 500;

    Connections() = default;
    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;

    // Newest last, so their slots rise. References are valid until the loop runs again.
    const std::deque<Leg>& Legs() const { return legs_; }
    // nullptr when it is no longer kept.
    const Leg* Find(std::size_t slot) const;

    // The server has sent the leg's client there.
    void NoteSentTo(std::size_t slot, const Place& place);

    // Fetches the counts of the open legs: for a window, each time that it draws them.
    void Refresh();

 private:
    friend class ConnectionNotes;

    Leg& Begin(const Session& session);
    Leg* Kept(std::size_t slot);
    void End(const Session& session);
    // Who comes with this cookie is that user.
    void RememberCookie(std::string_view cookie, const std::string& name);
    std::string NameByCookie(std::string_view cookie) const;

    std::deque<Leg> legs_;
    std::deque<std::pair<std::size_t, std::string>> cookies_;  // by their hashes
};
