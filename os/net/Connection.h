// Connection: what a TcpSocket holds while it is open, and what flushes on its own after TcpSocket::Close.
//
// Readiness is level-triggered: one read, of kReadBufferBytes at most, answers one report, so that a busy
// socket waits for the others after each arrival. What a handler of Data sends is gathered (ReadBuffer.h) and
// leaves when the handler returns; what the system does not take is queued and copied.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "os/EventLoop.h"
#include "os/Tcp.h"
#include "os/net/Resolver.h"
#include "os/net/SendQueue.h"
#include "os/net/Sockets.h"
#include "os/net/Watched.h"

namespace os::net {

class Connection : public Watched, private AddressReceiver {
 public:
    explicit Connection(TcpSocket& socket) : socket_(&socket) {}
    ~Connection() override;

    // For a fresh connection, or one that has failed: an accepted socket, or a host to connect to.
    void Adopt(Socket accepted);
    void Connect(const std::string& host, std::uint16_t port);

    void Send(std::string_view bytes);
    void ReadFor(Connection& partner);
    void HoldReading(bool hold);

    TcpSocket::State State() const;
    std::size_t QueuedBytes() const;

    // Parts the connection from its socket. It flushes and ends by itself, or is gone when nothing is open.
    static void Close(std::unique_ptr<Connection> connection);

    // How many closed connections still have bytes to send, and how many have ended with bytes unsent so far.
    static std::size_t CountFlushing();
    static std::size_t CountGivenUp();

    // Sends what the running handler of Data has gathered so far, and gathers no more for it.
    static void EndGathering();

 private:
    enum class Phase : std::uint8_t { Idle, Resolving, Connecting, Connected, Lingering };

    void Ready(std::uint32_t events) override;
    void AddressFound(std::int32_t number, Address address) override;

    void ConnectTo(Address address);
    void FinishConnecting(bool broken);
    void Receive(bool broken);
    void Deliver(std::span<char> bytes);
    void Fail(std::int32_t number);
    void FailLater(std::int32_t number);
    std::int32_t TakeError() const;
    void Release();

    bool MayRead() const { return !held_ && !paused_ && !ended_; }
    void UpdateWatch();

    void SendNow(std::span<const Part> parts);
    void SendQueued();
    void QueueRest(std::span<const Part> parts, std::size_t taken);
    void Enqueue(std::string_view bytes);
    void PaceReader();
    void Unlink();
    static void SendGathered();

    void StartLingering();
    void Linger();
    void EndOwnDirection();
    void limit_Tick();
    void Vanish();

    TcpSocket* socket_;              // null after Close
    Connection* partner_ = nullptr;  // what we read goes out there
    Connection* reader_ = nullptr;   // whose partner we are
    SendQueue queue_;
    std::unique_ptr<Timer> limit_;    // of the lingering
    std::size_t lingeringPlace_ = 0;  // in the list of lingering connections
    QuestionId question_ = 0;
    Socket handle_;
    std::int32_t failure_ = 0;  // happened within a call, to be reported from the loop
    std::uint16_t port_ = 0;
    Phase phase_ = Phase::Idle;
    bool held_ = false;
    bool paused_ = false;  // until the partner's queue is half empty
    bool ended_ = false;   // the peer has ended its direction
};

}  // namespace os::net
