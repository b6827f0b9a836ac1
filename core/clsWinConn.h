// clsWinConn: one proxied connection of the AIM client, the pair of sockets wsLocal (accepted from the
// client) and wsRemote (connected to the server). It wires the two together: what one passes on is sent on
// the other, the SOCKS4 request on wsLocal makes wsRemote connect, a close or error on either side closes the
// other.
//
// A pair keeps its slot in the registry to the end of the program. Once closed it keeps its names for the
// clean-up at the end and nothing else: sockets, buffers and aliases are released, and commands are refused.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/Event.h"
#include "core/clsAIMSocket.h"

class Relay;

class clsWinConn final : private clsAIMSocketOwner, private Session {
 public:
    // The relay that holds the pair, and is told what becomes of it.
    explicit clsWinConn(Relay& relay);
    ~clsWinConn() = default;
    clsWinConn(const clsWinConn&) = delete;
    clsWinConn& operator=(const clsWinConn&) = delete;

    // Closes both sockets, what is queued being flushed behind the scenes, and cleans up as if both had
    // closed.
    void CloseConnection();

    // Commands of the user, carried out by the features. Throw RuntimeError when the connection is closed
    // (ObjectNotSet) or a frame cannot be built or numbered; it is not sent then.
    void SetProfile(const std::string& strProfile);
    void SetIdle(std::int32_t mins);
    void SetAwayMessage(const std::string& strAway);

    // The name that the server gave the user; "" before sign-on and when closed.
    std::string hasScreenName() const;
    // The same as it stood in the frame before any alias; of a closed connection only with bForce.
    std::string hasScreenNameOrig(bool bForce) const;

    void SetIndex(std::size_t index) { index_ = index; }

    // Makes both sockets and takes the client's pending connection. Throws when that is gone.
    void SetWinsocks(std::int32_t requestID);

    bool IsClosed() const { return closed_; }

    // Of the connection with the client (ToServer) or the server (ToClient): its ends; all zeros when closed.
    os::Ends EndsOf(Direction direction) const override;

 private:
    void wsLocal_SOCKS4Connect(const std::string& strHost, const std::string& strPort, const ByteString& con);
    void wsLocal_PassOnData(std::string_view strData);
    void wsLocal_PassOnFLAP(const clsHeaderFLAP& msgFLAPHeader);
    void wsLocal_WinsockClose(std::int32_t errorNumber);
    void wsLocal_Dbug(std::string_view str);
    void wsRemote_PassOnData(std::string_view strData);
    void wsRemote_PassOnFLAP(const clsHeaderFLAP& msgFLAPHeader);
    void wsRemote_WinsockClose(std::int32_t errorNumber);
    void wsRemote_Dbug(std::string_view str);
    void patience_Tick();

    void ClientHasSpoken() override;
    void PassBytes() override;
    void FrameHandled(const PassedFrame& frame) override;

    std::size_t Slot() const override { return index_; }
    const Place& Asked() const override { return asked_; }
    TrafficCount Received(Direction direction) const override;
    bool IsIPv6Only() const override;
    const ScreenNames& Names(Direction direction) const override;
    void Learn(Direction direction, ScreenNames names, bool isServersWord) override;
    void Send(Direction direction, ByteString payload, std::uint8_t channel) override;

    // The places at which a server is looked for, one after the other; gone when one is reached.
    struct Search {
        std::vector<Place> left;  // the next one at the back
        Place place;
        ByteString con;
    };
    const clsAIMSocket* SideOf(Direction direction) const;
    void TryNextPlace();
    void TellFailure(std::int32_t errorNumber);
    bool GoesOnElsewhere(std::int32_t errorNumber);
    void HandleClose(EndedBy by, std::int32_t errorNumber);
    void Release();
    const FeatureChain& OpenFeatures() const;

    std::unique_ptr<clsAIMSocket> wsLocal_;
    std::unique_ptr<clsAIMSocket> wsRemote_;
    Place asked_;
    std::unique_ptr<Search> search_;
    // While the client has not spoken: runs while another place waits for this one to answer, and later while
    // the server's first bytes wait for the client.
    std::unique_ptr<net::Timer> patience_;
    FeatureChain features_;
    std::string closedOrigScreenName_;  // what hasScreenNameOrig(true) answers once wsRemote is gone
    std::size_t index_ = 0;
    enum class SignOn : std::uint8_t { Awaited, Seen, Told } signOn_ = SignOn::Awaited;
    bool closed_ = false;  // for good: the sockets are gone then
    Relay& relay_;
};
