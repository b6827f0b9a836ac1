// Connection: what a TcpSocket holds while it is open, and what flushes on its own after TcpSocket::Close.
//
// Readiness is level-triggered: one read, of os::kReadBytes at most, answers one report, so that a busy
// socket waits for the others after each arrival. What a handler of Data sends is gathered (ReadBuffer.h) and
// leaves when the handler returns; what the system does not take is queued and copied.
#pragma once

#include <exception>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/RuntimeError.h"
#include "net/EventLoop.h"
#include "net/Resolver.h"
#include "net/SendQueue.h"
#include "net/Tcp.h"
#include "os/Sockets.h"
#include "os/Watched.h"

namespace net {

class Connection : public os::Watched, private AddressReceiver {
 public:
    explicit Connection(TcpSocket& socket) : socket_(&socket) {}
    ~Connection() override;

    // For a fresh connection, or one that has failed: an accepted socket, or a host to connect to.
    void Adopt(os::Socket accepted);
    void Connect(const std::string& host, std::uint16_t port);

    void Send(std::string_view bytes);
    void ReadFor(Connection& partner);
    void HoldReading(bool hold);
    void TellSilence(std::int64_t milliseconds);

    TcpSocket::State State() const;
    std::size_t QueuedBytes() const;
    os::Ends Ends() const { return phase_ == Phase::Connected ? os::EndsOf(handle_.Get()) : os::Ends{}; }

    // Parts the connection from its socket. It flushes and ends by itself, or is gone when nothing is open.
    static void Close(std::unique_ptr<Connection> connection);

    // How many closed connections still have bytes to send, and how many have ended with bytes unsent so far.
    static std::size_t CountFlushing();
    static std::size_t CountGivenUp();

    // Sends what the running handler of Data has gathered so far, and gathers no more for it.
    static void EndGathering();

 private:
    enum class Phase : std::uint8_t { Idle, Resolving, Connecting, Connected, Lingering };

    struct Silence {
        Timer timer;
        std::int64_t milliseconds = 0;
    };

    void Ready(std::uint32_t events) override;
    void AddressesFound(std::int32_t number, const std::vector<os::Address>& addresses) override;

    void TakeAddresses(const std::vector<os::Address>& addresses);
    void TryNextAddress(std::int32_t number);
    void FinishConnecting(bool broken);
    bool Receive(bool broken);
    void Deliver(std::span<char> bytes);
    // Runs what needs memory or the system's help; what it throws breaks the connection. Whether all went
    // well.
    template <typename Body>
    bool Try(Body&& body) {
        try {
            body();
            return true;
        } catch (const RuntimeError& error) {
            FailLater(error.Number());
        } catch (const std::exception&) {
            FailLater(os::kNoMemory);
        }
        return false;
    }
    void Fail(std::int32_t number);
    void FailLater(std::int32_t number);
    std::int32_t TakeError() const;
    void Release();

    bool MayRead() const { return !held_ && !paused_ && !ended_; }
    void UpdateWatch();

    void SendNow(std::span<const os::Part> parts);
    void SendQueued();
    void QueueRest(std::span<const os::Part> parts, std::size_t taken);
    void Enqueue(std::string_view bytes);
    void PaceReader();
    void Unlink();
    static void SendGathered();

    void TryAgainLater();
    void retry_Tick();
    void silence_Tick();

    void StartLingering();
    void Linger();
    void EndOwnDirection();
    void StartLimit(std::int64_t milliseconds);
    void limit_Tick();
    void GiveUp();
    void Vanish();

    TcpSocket* socket_;              // null after Close
    Connection* partner_ = nullptr;  // what we read goes out there
    Connection* reader_ = nullptr;   // whose partner we are
    SendQueue queue_;
    std::vector<os::Address> addresses_;  // still to be tried, the next one at the back
    std::unique_ptr<Timer> limit_;        // of the lingering, or of an attempt to connect
    std::unique_ptr<Timer> retry_;        // runs while the system has no buffers
    std::unique_ptr<Silence> silence_;
    // Lingering: its neighbours in the list, what the peer had not taken, and when it took something last.
    Connection* previousLingerer_ = nullptr;
    Connection* nextLingerer_ = nullptr;
    std::size_t left_ = 0;
    std::int64_t lastTaken_ = 0;
    std::int64_t lingersSince_ = 0;
    QuestionId question_ = 0;
    os::Socket handle_;
    std::int32_t failure_ = 0;  // happened within a call, to be reported from the loop
    std::uint16_t port_ = 0;
    Phase phase_ = Phase::Idle;
    bool held_ = false;
    bool paused_ = false;  // until the partner's queue is half empty
    bool ended_ = false;   // the peer has ended its direction
    bool broken_ = false;  // and there may be bytes to read before that is told
};

}  // namespace net
