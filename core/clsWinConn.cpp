#include "core/clsWinConn.h"

#include <utility>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "core/DataFolder.h"
#include "core/SessionHooks.h"
#include "os/Files.h"

namespace {

constexpr std::int32_t kClosedByUs = -1;

// Real clients lose what follows the SOCKS4 reply too closely, and send their own hello as soon as they have
// read it. So the server's first bytes wait for the client's, but never longer than this.
constexpr std::int64_t kClientSilenceMs = 50;

// An empty file that says: frames have come from this side. Made at the first frame of the run, because its
// existence is all there is to it; whether that works does not matter.
class DebugFile {
 public:
    explicit DebugFile(const char* name) : name_(name) {}

    void Touch() {
        if (std::exchange(touched_, true)) return;
        try {
            os::AppendToFile(DataFolder() + name_, "");
        } catch (const RuntimeError&) {
        }
    }

 private:
    const char* name_;
    bool touched_ = false;
};

DebugFile localDebugFile("\\localdata.txt");
DebugFile remoteDebugFile("\\remotedata.txt");

}  // namespace

void clsWinConn::SetWinsocks(std::int32_t requestID) {
    wsLocal_ = std::make_unique<clsAIMSocket>();
    wsRemote_ = std::make_unique<clsAIMSocket>();

    wsLocal_->SOCKS4Connect.Bind<&clsWinConn::wsLocal_SOCKS4Connect>(*this);
    wsLocal_->PassOnData.Bind<&clsWinConn::wsLocal_PassOnData>(*this);
    wsLocal_->PassOnFLAP.Bind<&clsWinConn::wsLocal_PassOnFLAP>(*this);
    wsLocal_->WinsockClose.Bind<&clsWinConn::wsLocal_WinsockClose>(*this);
    wsLocal_->Dbug.Bind<&clsWinConn::wsLocal_Dbug>(*this);
    wsRemote_->PassOnData.Bind<&clsWinConn::wsRemote_PassOnData>(*this);
    wsRemote_->PassOnFLAP.Bind<&clsWinConn::wsRemote_PassOnFLAP>(*this);
    wsRemote_->WinsockClose.Bind<&clsWinConn::wsRemote_WinsockClose>(*this);
    wsRemote_->Dbug.Bind<&clsWinConn::wsRemote_Dbug>(*this);
    wsRemote_->GotScreenname.Bind<&clsWinConn::wsRemote_GotScreenname>(*this);
    wsRemote_->GotOrigScreenname.Bind<&clsWinConn::wsRemote_GotOrigScreenname>(*this);

    wsLocal_->SetWinsock(true, requestID);
    wsLocal_->setSuper(*this);
    wsRemote_->SetWinsock(false, 0);
    wsRemote_->setSuper(*this);

    wsLocal_->ReadFor(*wsRemote_);
    wsRemote_->ReadFor(*wsLocal_);
}

void clsWinConn::CloseConnection() {
    if (wsLocal_) wsLocal_->CloseConnection();
    if (wsRemote_) wsRemote_->CloseConnection();
    wsLocal_WinsockClose(kClosedByUs);
    wsRemote_WinsockClose(kClosedByUs);
}

void clsWinConn::SetProfile(const std::string& strProfile) {
    OpenLocal().SetProfile(strProfile);
}
void clsWinConn::SetIdle(std::int32_t mins) {
    OpenLocal().SetIdle(mins);
}
void clsWinConn::SetAwayMessage(const std::string& strAway) {
    OpenLocal().SetAwayMessage(strAway);
}

clsAIMSocket& clsWinConn::OpenLocal() const {
    if (!wsLocal_) throw RuntimeError(ErrorNumber::ObjectNotSet, "The connection is closed");
    return *wsLocal_;
}

std::string clsWinConn::hasScreenName() const {
    return closed_ || !wsRemote_ ? std::string() : wsRemote_->hasScreenName();
}

std::string clsWinConn::hasScreenNameOrig(bool bForce) const {
    if (closed_ && !bForce) return {};
    return wsRemote_ ? wsRemote_->hasScreenNameOrig() : closedOrigScreenName_;
}

void clsWinConn::wsLocal_SOCKS4Connect(const std::string& strHost, const std::string& strPort,
                                       const ByteString& con) {
    Trap("clsWinConn:wsLocal_SOCKS4Connect", [&] {
        Opened(index_, strHost, strPort);
        wsRemote_->doConnect(strPort, strHost, con);
        wsRemote_->HoldReading(true);  // until ClientHasSpoken
        clientSilence_ = std::make_unique<os::Timer>();
        clientSilence_->Tick.Bind<&clsWinConn::clientSilence_Tick>(*this);
    });
}

void clsWinConn::wsLocal_PassOnData(std::string_view strData) {
    wsRemote_->SendRawData(strData);
    closed_ = false;
}

void clsWinConn::wsRemote_PassOnData(std::string_view strData) {
    wsLocal_->SendRawData(strData);
    // The first data from this side are the SOCKS4 reply; from now on the client's answer is awaited.
    if (clientSilence_) clientSilence_->StartOnce(kClientSilenceMs);
    closed_ = false;
}

void clsWinConn::wsLocal_PassOnFLAP(const clsHeaderFLAP& msgFLAPHeader) {
    wsRemote_->SendRawData(msgFLAPHeader.toString());
    closed_ = false;
}

void clsWinConn::wsRemote_PassOnFLAP(const clsHeaderFLAP& msgFLAPHeader) {
    wsLocal_->SendRawData(msgFLAPHeader.toString());
    closed_ = false;
}

void clsWinConn::wsLocal_Dbug(std::string_view) {
    localDebugFile.Touch();
}
void clsWinConn::wsRemote_Dbug(std::string_view) {
    remoteDebugFile.Touch();
}
void clsWinConn::wsRemote_GotScreenname(const std::string& strScreenName) {
    wsLocal_->SetScreenname(strScreenName);
}

void clsWinConn::wsRemote_GotOrigScreenname(const std::string& strScreenName) {
    wsLocal_->SetOrigScreenname(strScreenName);
}

void clsWinConn::SetReplacements(std::shared_ptr<const ReplacementList> list) {
    replacements_ = std::move(list);
}

void clsWinConn::ClientHasSpoken() {
    if (!clientSilence_) return;
    clientSilence_.reset();
    wsRemote_->HoldReading(false);
}

void clsWinConn::clientSilence_Tick() {
    ClientHasSpoken();
}

void clsWinConn::wsLocal_WinsockClose(std::int32_t) {
    HandleClose(wsRemote_.get());
}
void clsWinConn::wsRemote_WinsockClose(std::int32_t) {
    HandleClose(wsLocal_.get());
}

void clsWinConn::HandleClose(clsAIMSocket* other) {
    Trap("clsWinConn:WinsockClose", [&] {
        const auto name = hasScreenNameOrig(true);
        if (!name.empty()) CurrentSessionHooks().DeleteUserinfoBag(name);
    });
    if (other != nullptr) other->CloseConnection();
    if (std::exchange(closed_, true)) return;
    Release();
    Closed(index_);
}

// Destroys the socket whose event is being handled; its code after the event touches nothing of it.
void clsWinConn::Release() {
    if (wsRemote_) closedOrigScreenName_ = wsRemote_->hasScreenNameOrig();
    clientSilence_.reset();
    wsLocal_.reset();
    wsRemote_.reset();
    replacements_.reset();
}
