// What the suites need from the implementation that they run on, each in a source of its own; and RawPeer, on
// the sockets of any of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "os/Sockets.h"

// Every key of the registry's suite lies below this one.
inline constexpr char kContractKey[] = "software\\Wrenlow contract test";

// Before each test: a fresh world where the implementation has one, and no value below kContractKey.
void PrepareContract();

// A client that does what net::TcpSocket never does, such as aborting the connection.
class RawPeer {
 public:
    explicit RawPeer(std::uint16_t port);  // connects to 127.0.0.1

    void Send(std::string_view bytes);
    void EndDirection();  // FIN; receiving goes on
    void Abort();         // RST, where CanAbort

    // Runs the loop until as many bytes have come, five seconds at most; what has come.
    std::string Receive(std::size_t count);

 private:
    os::Socket socket_;
};

// Wine ends a connection properly whatever it is asked for, so nobody there sees a reset of its making.
bool CanAbort();
