// What the suites need from the implementation that they run on, each in a source of its own: a fresh world,
// an empty registry, and RawPeer, a client that does what os::TcpSocket never does, such as aborting the
// connection, and that needs no loop.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

// Before each test: a fresh world where the implementation has one.
void PrepareContract();

// Every key of the registry's suite lies below this one.
inline constexpr char kContractKey[] = "software\\Wrenlow contract test";

// Before each test: no value below kContractKey. After it: the same again.
void BeginRegistryTest();
void EndRegistryTest();

class RawPeer {
 public:
    explicit RawPeer(std::uint16_t port);  // connects to 127.0.0.1
    ~RawPeer();

    void Send(std::string_view bytes);
    void EndDirection();  // FIN; receiving goes on
    void Abort();         // RST, where CanAbort

    // Waits for as many bytes, five seconds at most; what has come.
    std::string Receive(std::size_t count);

 private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// Wine ends a connection properly whatever it is asked for, so nobody there sees a reset of its making.
bool CanAbort();
