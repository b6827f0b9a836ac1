#include "net/Acceptor.h"

#include "base/RuntimeError.h"
#include "base/Trap.h"

namespace net {
namespace {

// When open files or memory have run out, accepting waits so long: the clients wait in the backlog meanwhile.
constexpr std::int64_t kPauseMs = 100;

// A request whose event is being handled. There are more of them when a handler runs a loop of its own: each
// lies behind the one that it interrupts.
struct Request {
    std::int32_t id;
    os::Socket accepted;
    Request* interrupted;
};
Request* newest = nullptr;
std::int32_t lastRequest = 0;

}  // namespace

Acceptor::Acceptor(TcpListener& listener, std::uint16_t port)
    : listener_(&listener), handle_(os::ListenOnLoopback(port)), port_(os::PortOf(handle_.Get())) {
    resume_.Tick.Bind<&Acceptor::resume_Tick>(*this);
    Watch(handle_.Get(), os::kAcceptable);
}

void Acceptor::Stop() {
    listener_ = nullptr;
    resume_.Stop();
    Forget();
    handle_.Close();
}

void Acceptor::Ready(std::uint32_t) {
    for (int count = 0; count < os::kAcceptsPerTurn && listener_ != nullptr; ++count) {
        os::Socket accepted;
        switch (os::AcceptClient(handle_.Get(), accepted)) {
            case os::AcceptOutcome::Accepted:
                Raise(std::move(accepted));
                break;
            case os::AcceptOutcome::NobodyWaits:
                if (count == 0) LookAnew();
                return;
            case os::AcceptOutcome::ClientIsGone:
                return LookAnew();
            case os::AcceptOutcome::OutOfResources:
                return Pause();
        }
    }
}

void Acceptor::Raise(os::Socket accepted) {
    Request request{++lastRequest, std::move(accepted), newest};
    newest = &request;
    Trap("EventLoop:Dispatch", [&] { listener_->ConnectionRequest(request.id); });
    newest = request.interrupted;
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
        Watch(handle_.Get(), os::kAcceptable);
    } catch (const std::exception&) {
        resume_.StartOnce(kPauseMs);
    }
}

os::Socket TakeRequest(std::int32_t requestId) {
    auto* request = newest;
    while (request != nullptr && request->id != requestId) request = request->interrupted;
    if (request == nullptr || !request->accepted) ThrowInvalidArgument();
    return std::move(request->accepted);
}

}  // namespace net
