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

class clsWinConn final : private clsAIMSocketOwner {
 public:
    // What a person at the console is told; program-wide, because a pair's owner is the table of all pairs.
    // Opened: the request has been read; slot, host and port asked for. Closed: once per pair; its slot.
    static inline Event<std::size_t, const std::string&, const std::string&> Opened;
    static inline Event<std::size_t> Closed;

    clsWinConn() = default;
    ~clsWinConn() = default;
    clsWinConn(const clsWinConn&) = delete;
    clsWinConn& operator=(const clsWinConn&) = delete;

    // Closes both sockets, what is queued being flushed behind the scenes, and cleans up as if both had
    // closed.
    void CloseConnection();

    // Forwarded to wsLocal, whose frames go to the server. Throw RuntimeError when the connection is closed
    // (ObjectNotSet) or the frame cannot be built or numbered; nothing is sent then.
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
    void wsRemote_GotScreenname(const std::string& strScreenName);
    void wsRemote_GotOrigScreenname(const std::string& strScreenName);
    void clientSilence_Tick();

    void SetReplacements(std::shared_ptr<const ReplacementList> list) override;
    const ReplacementList* Replacements() const override { return replacements_.get(); }
    void ClientHasSpoken() override;

    void HandleClose(clsAIMSocket* other);
    void Release();
    clsAIMSocket& OpenLocal() const;

    std::unique_ptr<clsAIMSocket> wsLocal_;
    std::unique_ptr<clsAIMSocket> wsRemote_;
    std::unique_ptr<os::Timer> clientSilence_;  // runs while the server's first bytes wait for the client
    std::shared_ptr<const ReplacementList> replacements_;
    std::string closedOrigScreenName_;  // what hasScreenNameOrig(true) answers once wsRemote is gone
    std::size_t index_ = 0;
    bool closed_ = false;
};
