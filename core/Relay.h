// Relay: the one object of which a program is the relay: the listener, the table of pairs, the session
// features and the data folder. Whoever makes one has a whole relay, which listens once it is told to;
// modSocket's functions and DataFolder speak to it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/Event.h"
#include "core/FeatureTable.h"
#include "core/FrameWatch.h"
#include "core/Route.h"
#include "core/clsWinConn.h"
#include "net/Tcp.h"
#include "os/Path.h"

class Relay {
 public:
    static constexpr std::uint16_t kListeningPort = 11080;

    // What a person at the console is told. Opened: a request has been read; slot, host and port asked for.
    // Closed: once per pair; its slot, and the system's error number when a socket failed or was reset, else
    // a negative one.
    Event<std::size_t, const std::string&, const std::string&> Opened;
    Event<std::size_t, std::int32_t> Closed;

    // `dataFolder` is where the program's own files lie, without a separator at its end; an empty path for
    // the folder of the executable. The newest relay is the current one.
    explicit Relay(std::vector<FeatureEntry> features, os::Path dataFolder = {},
                   std::uint16_t port = kListeningPort);
    ~Relay();
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;

    // nullptr when there is none.
    static Relay* Current();

    const FeatureTable& Features() const { return features_; }
    const os::Path& DataFolder() const { return dataFolder_; }
    std::uint16_t Port() const { return port_; }
    bool IsListening() const { return listener_.Port() != 0; }

    // Listens on the port, on the loopback interface; port 0 becomes the one that the system picks. Throws
    // RuntimeError with the system's error number.
    void Listen();
    void StopListening() { listener_.Close(); }

    // Who looks at every frame from now on, and who says where connections go; nullptr for nobody.
    void SetWatch(FrameWatch* watch) { watch_ = watch; }
    FrameWatch* const& Watch() const { return watch_; }
    void SetRouter(Router* router) { router_ = router; }
    // At least one place: where the client asked when nobody says otherwise.
    std::vector<Place> PlacesFor(std::size_t slot, const Place& asked) const;

    // The pairs, by slot; nullptr for an empty slot. The table begins with one empty slot 0.
    using Pairs = std::vector<std::unique_ptr<clsWinConn>>;
    const Pairs& Connections() const { return pairs_; }
    bool IsOpen(std::size_t slot) const {
        return slot < pairs_.size() && pairs_[slot] && !pairs_[slot]->IsClosed();
    }
    // Takes a client's pending connection into the next slot.
    void AddPair(std::int32_t requestID);
    void RemoveAllPairs();

    // A frame has come from that side: its empty debug file is made at the first of the run. That the file
    // exists is all there is to it; whether that works does not matter.
    enum class Side : std::uint8_t { Local, Remote };
    void FrameFrom(Side side) {
        auto& seen = seen_[static_cast<std::size_t>(side)];
        if (!seen) MakeDebugFile(side);
        seen = true;
    }

 private:
    void listener_ConnectionRequest(std::int32_t requestID);
    void MakeDebugFile(Side side) const;

    const FeatureTable features_;
    const os::Path dataFolder_;
    std::uint16_t port_;
    std::array<bool, 2> seen_{};
    FrameWatch* watch_ = nullptr;
    Router* router_ = nullptr;
    net::TcpListener listener_;
    Pairs pairs_;
    Relay* const before_;
};
