#include "os/fake/FakeNetwork.h"
#include "os/fake/FakeRegistryStore.h"
#include "os/fake/FakeWorld.h"
#include "tests/contract/Implementation.h"

void PrepareContract() {
    os::fake::ResetWorld();
}

void BeginRegistryTest() {
    os::fake::ResetRegistry();
}
void EndRegistryTest() {
    os::fake::ResetRegistry();
}

struct RawPeer::Impl {
    os::fake::Peer& peer;
};

RawPeer::RawPeer(std::uint16_t port) : impl_(new Impl{os::fake::ConnectTo(port)}) {}
RawPeer::~RawPeer() = default;

void RawPeer::Send(std::string_view bytes) {
    impl_->peer.Send(bytes);
}

void RawPeer::EndDirection() {
    impl_->peer.Close();
}

void RawPeer::Abort() {
    impl_->peer.Reset();
}

std::string RawPeer::Receive(std::size_t) {
    return impl_->peer.TakeReceived();
}

bool CanAbort() {
    return true;
}
