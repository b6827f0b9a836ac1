// clsAIMSocket: one of the two sockets of a proxied connection, the client's (local) or the server's
// (remote).
//
// It turns the received bytes into whole FLAP frames, lets the session features work on the few that they
// want, renumbers every frame in this socket's own sequence and hands it to its owner, who sends it on the
// other socket; it never sends what it received itself. Frames that the program injects take their numbers
// from the same sequence, so the receiving side never sees a gap. On the local socket the first bytes are the
// SOCKS4 request.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "base/Event.h"
#include "core/FeatureChain.h"
#include "core/FlapStream.h"
#include "core/FrameWatch.h"
#include "core/clsHeaderFLAP.h"
#include "net/EventLoop.h"
#include "net/Tcp.h"

// What the socket needs of the connection that owns it.
class clsAIMSocketOwner {
 public:
    // This side's first bytes tell that the connection carries no frames: neither does the other side.
    virtual void PassBytes() = 0;
    // The client has sent something after it was given the SOCKS4 reply.
    virtual void ClientHasSpoken() = 0;
    // Somebody watches the frames, and this one has been handled.
    virtual void FrameHandled(const PassedFrame& frame) = 0;

 protected:
    ~clsAIMSocketOwner() = default;
};

class clsAIMSocket {
 public:
    // The SOCKS4 request has been read: host (dotted IPv4 text or a name), port (decimal text) and the six
    // bytes of port and address for the reply.
    Event<const std::string&, const std::string&, const ByteString&> SOCKS4Connect;
    // A received frame, or the SOCKS4 reply, is to be sent on the other socket. Valid until the arrival has
    // been handled; must not be changed.
    Event<std::string_view> PassOnData;
    // A frame built by the program is to be sent on the other socket.
    Event<const clsHeaderFLAP&> PassOnFLAP;
    // The peer has closed (-1) or the socket has failed (the system's error number). The owner may destroy
    // this object.
    Event<std::int32_t> WinsockClose;
    // Once for each complete frame, as received.
    Event<std::string_view> Dbug;

    clsAIMSocket();
    clsAIMSocket(const clsAIMSocket&) = delete;
    clsAIMSocket& operator=(const clsAIMSocket&) = delete;

    void SetNames(ScreenNames names) { names_ = std::move(names); }
    const ScreenNames& Names() const { return names_; }
    ScreenNames TakeNames() { return std::exchange(names_, {}); }

    // Prepares the socket. A requestID other than 0 takes the pending connection that the listener reported.
    void SetWinsock(bool isInc, std::int32_t requestID);

    // Numbers the frame in this socket's sequence and sets its DataLen from its Data.
    void UpdateFlap(clsHeaderFLAP& flap);

    // Numbers a frame of the program's own and raises PassOnFLAP. Throws RuntimeError, with the sequence
    // untouched, when the payload is too long (Overflow), or no frame has been received yet, so that no
    // number is known (InvalidArgument).
    void Inject(std::uint8_t channel, ByteString payload);

    // Connects to the place and keeps `con` for the SOCKS4 reply.
    void doConnect(const Place& place, const ByteString& con);

    // Sends the bytes if the socket is connected, drops them otherwise. The first bytes that a local socket
    // sends are the SOCKS4 reply: from then on what the client sends are frames.
    void SendRawData(std::string_view strData);

    void CloseConnection();

    // `features` work on what is received here. The owner is told of each frame while `watch` is not null.
    void setSuper(clsAIMSocketOwner& supr, FeatureChain& features, FrameWatch* const& watch) {
        owner_ = &supr;
        features_ = &features;
        watch_ = &watch;
    }

    // From now on what arrives passes as it is, what waits here to become a frame first.
    void PassBytes();

    // Back-pressure: what arrives here goes out on `other`.
    void ReadFor(clsAIMSocket& other) { socket_.ReadFor(other.socket_); }
    void HoldReading(bool hold) { socket_.HoldReading(hold); }

    const TrafficCount& Received() const { return received_; }
    const net::TcpSocket& Socket() const { return socket_; }

 private:
    enum class Phase : std::uint8_t { AwaitingRequest, AwaitingReply, FirstBytes, Frames, Bytes };

    void socket_Data(std::span<char> arrival);
    void socket_Connected();
    void socket_Closed();
    void socket_Failed(std::int32_t errorNumber);
    void stream_Frame(std::span<char> bytes);
    void socket_Silent();

    template <typename Body>
    void OrEnd(Body&& body);
    void TakeArrival(std::span<char> arrival);
    void ReadRequest(std::string_view bytes);
    std::span<char> BehindUserName(std::span<char> arrival);
    void ReadFirstBytes(std::span<char> arrival);
    void ReadFrames(std::span<char> arrival);
    void Refuse();
    void PassOnReplaced(FrameView& frame, std::uint16_t numberBefore);
    void Tell(PassedFrame::Fate fate, std::uint8_t channel, std::uint16_t numberBefore,
              std::string_view before, std::string_view after) const;
    std::uint16_t NextSequence();

    static constexpr std::int32_t kUnknownSequence = -1;

    net::TcpSocket socket_;
    clsAIMSocketOwner* owner_ = nullptr;
    FeatureChain* features_ = nullptr;
    FrameWatch* const* watch_ = nullptr;
    TrafficCount received_;
    bool isIncoming_ = false;
    Phase phase_ = Phase::FirstBytes;
    bool inUserName_ = false;                 // the request's user name has not ended yet
    std::int32_t outSeq_ = kUnknownSequence;  // number of the next frame passed on
    FlapStream stream_;
    ByteString first_;  // fewer bytes than tell what the stream carries
    ByteString socks_;  // local: the request as far as it has arrived; remote: its `con` bytes for the reply
    ScreenNames names_;
};
