// clsAIMSocket: one of the two sockets of a proxied connection, the client's (local) or the server's
// (remote).
//
// It turns the received bytes into whole FLAP frames, lets the session features work on the few that concern
// them, renumbers every frame in this socket's own sequence and hands it to its owner, who sends it on the
// other socket; it never sends what it received itself. Frames that the program injects take their numbers
// from the same sequence, so the receiving side never sees a gap. On the local socket the first bytes are the
// SOCKS4 request. (The window that once carried the socket control is gone: os::TcpSocket has taken its
// place.)
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "base/Event.h"
#include "core/FlapStream.h"
#include "core/clsHeaderFLAP.h"
#include "os/EventLoop.h"
#include "os/Tcp.h"

class FlapFrame;
class ReplacementList;

// What the socket needs of the connection that owns it.
class clsAIMSocketOwner {
 public:
    // The aliases of this connection, read when its request has arrived; nullptr when there are none.
    virtual void SetReplacements(std::shared_ptr<const ReplacementList> list) = 0;
    virtual const ReplacementList* Replacements() const = 0;
    // The client has sent something after it was given the SOCKS4 reply.
    virtual void ClientHasSpoken() = 0;

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
    // The server named the user: the name after the session features worked on the frame, then the name as
    // it stood in the frame.
    Event<const std::string&> GotScreenname;
    Event<const std::string&> GotOrigScreenname;

    clsAIMSocket();
    clsAIMSocket(const clsAIMSocket&) = delete;
    clsAIMSocket& operator=(const clsAIMSocket&) = delete;

    void SetScreenname(const std::string& strSn) { screenName_ = strSn; }
    void SetOrigScreenname(const std::string& strSn) { origScreenName_ = strSn; }

    // Build the frame, number it and raise PassOnFLAP. For the local socket, whose frames go to the server.
    // Throw RuntimeError, with the sequence untouched, when the frame cannot be built, is too long, or the
    // client has not sent a frame yet, so that no number is known.
    void SetProfile(const std::string& strProfile);
    void SetIdle(std::int32_t mins);
    void SetAwayMessage(const std::string& strAway);

    // Prepares the socket. A requestID other than 0 takes the pending connection that the listener reported.
    void SetWinsock(bool isInc, std::int32_t requestID);

    const std::string& hasScreenName() const { return screenName_; }
    const std::string& hasScreenNameOrig() const { return origScreenName_; }

    // Numbers the frame in this socket's sequence and sets its DataLen from its Data.
    void UpdateFlap(clsHeaderFLAP& flap);

    // Connects to the host on the port (decimal text) and keeps `con` for the SOCKS4 reply.
    void doConnect(const std::string& strPort, const std::string& strHost, const ByteString& con);

    // Sends the bytes if the socket is connected, drops them otherwise. The first bytes that a local socket
    // sends are the SOCKS4 reply: from then on what the client sends are frames.
    void SendRawData(std::string_view strData);

    void CloseConnection();

    void setSuper(clsAIMSocketOwner& supr) { owner_ = &supr; }

    // Back-pressure: what arrives here goes out on `other`.
    void ReadFor(clsAIMSocket& other) { socket_.ReadFor(other.socket_); }
    void HoldReading(bool hold) { socket_.HoldReading(hold); }

 private:
    enum class Phase : std::uint8_t { AwaitingRequest, AwaitingReply, Relaying };

    void socket_Data(std::span<char> arrival);
    void socket_Connected();
    void socket_Closed();
    void socket_Failed(std::int32_t errorNumber);
    void stream_Frame(std::span<char> bytes);
    void silence_Tick();

    void ReadRequest(std::string_view bytes);
    void WatchForSilence();
    std::optional<ByteString> ReplaceScreenNames(std::string_view payload);
    void DispatchSnac(std::uint8_t channel, std::string_view original, std::optional<ByteString>& rewritten);
    void LearnSignOnNames(std::string_view payload, std::string_view original);
    void LearnSelfInformationNames(std::string_view payload, std::string_view original);
    void Inject(std::optional<clsHeaderFLAP> flap);
    std::uint16_t NextSequence();

    static constexpr std::int32_t kUnknownSequence = -1;

    os::TcpSocket socket_;
    clsAIMSocketOwner* owner_ = nullptr;
    bool isIncoming_ = false;
    Phase phase_ = Phase::Relaying;
    std::int32_t outSeq_ = kUnknownSequence;  // number of the next frame passed on
    FlapStream stream_;
    std::unique_ptr<os::Timer> silence_;
    ByteString socks_;  // local: the request as far as it has arrived; remote: its `con` bytes for the reply
    std::string screenName_;
    std::string origScreenName_;
};
