#include "os/net/Acceptor.h"

#include <algorithm>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Trap.h"

namespace os::net {
namespace {

// Windows tells of each waiting client by itself, and a look in vain costs a call to the wineserver under
// Wine.
#ifdef _WIN32
constexpr int kAcceptsPerTurn = 1;
#else
constexpr int kAcceptsPerTurn = 16;
#endif
// When open files or memory have run out, accepting waits so long: the clients wait in the backlog meanwhile.
constexpr std::int64_t kPauseMs = 100;

struct Request {
    std::int32_t id;
    Socket accepted;
};

// The requests whose events are being handled: one, or more when a handler runs a loop of its own.
std::vector<Request> requests;
std::int32_t lastRequest = 0;

auto FindRequest(std::int32_t id) {
    return std::find_if(requests.begin(), requests.end(), [=](const Request& one) { return one.id == id; });
}

}  // namespace

Acceptor::Acceptor(TcpListener& listener, std::uint16_t port)
    : listener_(&listener), handle_(ListenOnLoopback(port)), port_(PortOf(handle_.Get())) {
    resume_.Tick.Bind<&Acceptor::resume_Tick>(*this);
    Watch(handle_.Get(), kAcceptable);
}

void Acceptor::Stop() {
    listener_ = nullptr;
    resume_.Stop();
    Forget();
    handle_.Close();
}

void Acceptor::Ready(std::uint32_t) {
    for (int count = 0; count < kAcceptsPerTurn && listener_ != nullptr; ++count) {
        Socket accepted;
        switch (AcceptClient(handle_.Get(), accepted)) {
            case AcceptOutcome::Accepted:
                Raise(std::move(accepted));
                break;
            case AcceptOutcome::NobodyWaits:
                if (count == 0) LookAnew();
                return;
            case AcceptOutcome::ClientIsGone:
                return LookAnew();
            case AcceptOutcome::OutOfResources:
                return Pause();
        }
    }
}

void Acceptor::Raise(Socket accepted) {
    const auto id = ++lastRequest;
    requests.push_back({id, std::move(accepted)});
    Trap("EventLoop:Dispatch", [&] { listener_->ConnectionRequest(id); });
    const auto left = FindRequest(id);
    if (left != requests.end()) requests.erase(left);
}

// Wine tells of waiting clients again only after an accept that gave one, and a message that was on its way
// when its client was taken already leads to an accept that gives none.
void Acceptor::LookAnew() {
    Unwatch(handle_.Get());
    resume_Tick();
}

void Acceptor::Pause() {
    Unwatch(handle_.Get());
    resume_.StartOnce(kPauseMs);
}

void Acceptor::resume_Tick() {
    try {
        Watch(handle_.Get(), kAcceptable);
    } catch (const RuntimeError&) {
        resume_.StartOnce(kPauseMs);
    }
}

Socket TakeRequest(std::int32_t requestId) {
    const auto found = FindRequest(requestId);
    if (found == requests.end()) ThrowInvalidArgument();
    auto accepted = std::move(found->accepted);
    requests.erase(found);
    return accepted;
}

}  // namespace os::net
