// Acceptor: what a TcpListener holds while it listens.
#pragma once

#include "net/EventLoop.h"
#include "net/Tcp.h"
#include "os/Watched.h"

namespace net {

class Acceptor : public os::Watched {
 public:
    // Listens on 127.0.0.1; port 0 picks a free one. Throws RuntimeError.
    Acceptor(TcpListener& listener, std::uint16_t port);

    // The listener is closed; clients in the backlog are reset.
    void Stop();

    std::uint16_t Port() const { return port_; }

 private:
    void Ready(std::uint32_t events) override;
    void Raise(os::Socket accepted);
    void LookAnew();
    void Pause();
    void resume_Tick();

    TcpListener* listener_;  // null after Stop
    os::Socket handle_;
    std::uint16_t port_ = 0;
    Timer resume_;
};

// The socket that waits under the identifier while its ConnectionRequest is handled. Throws RuntimeError
// (InvalidArgument) when there is none.
os::Socket TakeRequest(std::int32_t requestId);

}  // namespace net
