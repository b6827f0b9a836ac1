#include "core/Relay.h"

#include <utility>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "core/modSocket.h"
#include "os/Files.h"

namespace {
Relay* current = nullptr;
}

Relay::Relay(std::vector<FeatureEntry> features, os::Path dataFolder, std::uint16_t port)
    : features_(std::move(features)),
      dataFolder_(dataFolder.IsEmpty() ? os::ProgramFolder() : std::move(dataFolder)),
      port_(port),
      pairs_(1),
      before_(std::exchange(current, this)) {
    listener_.ConnectionRequest.Bind<&Relay::listener_ConnectionRequest>(*this);
}

Relay::~Relay() {
    RemoveAllPairs();
    current = before_;
}

Relay* Relay::Current() {
    return current;
}

void Relay::Listen() {
    listener_.Listen(port_);
    port_ = listener_.Port();
}

std::vector<Place> Relay::PlacesFor(std::size_t slot, const Place& asked) const {
    std::vector<Place> places;
    if (router_ != nullptr) Trap("Relay:PlacesFor", [&] { places = router_->PlacesFor(slot, asked); });
    if (places.empty()) places.push_back(asked);
    return places;
}

void Relay::AddPair(std::int32_t requestID) {
    // What fails leaves no half of a pair, and its client's connection is closed.
    auto pair = std::make_unique<clsWinConn>(*this);
    pair->SetWinsocks(requestID);
    if (pairs_.front()) pairs_.emplace_back();
    pair->SetIndex(pairs_.size() - 1);
    pairs_.back() = std::move(pair);
}

void Relay::RemoveAllPairs() {
    pairs_.clear();
    pairs_.resize(1);
}

void Relay::listener_ConnectionRequest(std::int32_t requestID) {
    modSocket::NewLocalConnection(requestID);
    modSocket::WinsockStartListen();
}

void Relay::MakeDebugFile(Side side) const {
    try {
        os::AppendToFile(dataFolder_ / (side == Side::Local ? "localdata.txt" : "remotedata.txt"), "");
    } catch (const RuntimeError&) {
    }
}
