#include "core/clsWinConn.h"

#include <algorithm>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "core/Relay.h"

namespace {

constexpr std::int32_t kClosedByUs = -1;
constexpr char kTell[] = "clsWinConn:wsRemote_PassOnData";

// Real clients lose what follows the SOCKS4 reply too closely, and send their own hello as soon as they have
// read it. So the server's first bytes wait for the client's, but never longer than this.
constexpr std::int64_t kClientSilenceMs = 50;

[[noreturn]] void ThrowClosed() {
    throw RuntimeError(ErrorNumber::ObjectNotSet, "The connection is closed");
}

}  // namespace

clsWinConn::clsWinConn(Relay& relay) : features_(relay.Features()), relay_(relay) {}

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

    wsLocal_->SetWinsock(true, requestID);
    wsLocal_->setSuper(*this, features_, relay_.Watch());
    wsRemote_->SetWinsock(false, 0);
    wsRemote_->setSuper(*this, features_, relay_.Watch());
}

void clsWinConn::CloseConnection() {
    if (wsLocal_) wsLocal_->CloseConnection();
    if (wsRemote_) wsRemote_->CloseConnection();
    HandleClose(EndedBy::Wrenlow, kClosedByUs);
}

void clsWinConn::SetProfile(const std::string& strProfile) {
    OpenFeatures().Command([&](auto& feature) { feature.SetProfile(strProfile); });
}
void clsWinConn::SetIdle(std::int32_t mins) {
    OpenFeatures().Command([&](auto& feature) { feature.SetIdle(mins); });
}
void clsWinConn::SetAwayMessage(const std::string& strAway) {
    OpenFeatures().Command([&](auto& feature) { feature.SetAwayMessage(strAway); });
}

const FeatureChain& clsWinConn::OpenFeatures() const {
    if (closed_) ThrowClosed();
    return features_;
}

std::string clsWinConn::hasScreenName() const {
    return wsRemote_ ? wsRemote_->Names().name : std::string();
}

std::string clsWinConn::hasScreenNameOrig(bool bForce) const {
    if (wsRemote_) return wsRemote_->Names().original;
    return bForce ? closedOrigScreenName_ : std::string();
}

void clsWinConn::wsLocal_SOCKS4Connect(const std::string& strHost, const std::string& strPort,
                                       const ByteString& con) {
    const bool isBegun = Trap("clsWinConn:wsLocal_SOCKS4Connect", [&] {
        relay_.Opened(index_, strHost, strPort);
        asked_ = {strHost, ParseNumber<std::uint16_t>(strPort).value_or(0)};
        if (!features_.Begin(*this)) return false;
        search_ = std::make_unique<Search>();
        search_->con = con;
        search_->left = relay_.PlacesFor(index_, asked_);
        std::ranges::reverse(search_->left);
        patience_ = std::make_unique<net::Timer>();
        patience_->Tick.Bind<&clsWinConn::patience_Tick>(*this);
        TryNextPlace();
        return true;
    });
    if (!isBegun) CloseConnection();
}

// There is one left.
void clsWinConn::TryNextPlace() {
    auto& search = *search_;
    search.place = std::move(search.left.back());
    search.left.pop_back();
    features_.Tell(kTell, [&](auto& feature) { feature.Trying(search.place); });
    wsRemote_->doConnect(search.place, search.con);
    wsLocal_->ReadFor(*wsRemote_);  // again for each place: a connection that failed has lost the link
    wsRemote_->ReadFor(*wsLocal_);
    wsRemote_->HoldReading(true);  // until ClientHasSpoken
    patience_->Stop();
    if (!search.left.empty()) patience_->StartOnce(Router::kPatienceMs);
}

// Whether there was one. What fails here costs the connection.
bool clsWinConn::GoesOnElsewhere(std::int32_t errorNumber) {
    return Trap("clsWinConn:GoesOnElsewhere", [&] {
        if (!search_) return false;
        TellFailure(errorNumber);
        if (search_->left.empty()) return false;
        TryNextPlace();
        return true;
    });
}

void clsWinConn::patience_Tick() {
    if (!search_)
        ClientHasSpoken();  // or so it is taken
    else if (!GoesOnElsewhere(os::kTimedOut))
        CloseConnection();
}

void clsWinConn::TellFailure(std::int32_t errorNumber) {
    const auto why = !wsRemote_->Socket().HostIsFound()      ? ConnectFailure::NameUnknown
                     : errorNumber == os::kConnectionRefused ? ConnectFailure::Refused
                                                             : ConnectFailure::NoAnswer;
    features_.Tell(kTell, [&](auto& feature) { feature.Failed(search_->place, why, errorNumber); });
}

void clsWinConn::wsLocal_PassOnData(std::string_view strData) {
    wsRemote_->SendRawData(strData);
}

void clsWinConn::wsRemote_PassOnData(std::string_view strData) {
    wsLocal_->SendRawData(strData);
    // The first data from this side are the SOCKS4 reply; from now on the client's answer is awaited.
    if (search_) {
        search_.reset();
        patience_->StartOnce(kClientSilenceMs);
        features_.Tell(kTell, [](auto& feature) { feature.Connected(); });
    }
    if (signOn_ == SignOn::Seen) {
        signOn_ = SignOn::Told;
        features_.Tell(kTell, [](auto& feature) { feature.SignedOn(); });
    }
}

void clsWinConn::wsLocal_PassOnFLAP(const clsHeaderFLAP& msgFLAPHeader) {
    wsRemote_->SendRawData(msgFLAPHeader.toString());
}

void clsWinConn::wsRemote_PassOnFLAP(const clsHeaderFLAP& msgFLAPHeader) {
    wsLocal_->SendRawData(msgFLAPHeader.toString());
}

void clsWinConn::wsLocal_Dbug(std::string_view) {
    relay_.FrameFrom(Relay::Side::Local);
}
void clsWinConn::wsRemote_Dbug(std::string_view) {
    relay_.FrameFrom(Relay::Side::Remote);
}

const ScreenNames& clsWinConn::Names(Direction direction) const {
    return (direction == Direction::ToServer ? wsLocal_ : wsRemote_)->Names();
}

void clsWinConn::Learn(Direction direction, ScreenNames names, bool isServersWord) {
    if (direction == Direction::ToServer) return wsLocal_->SetNames(std::move(names));
    if (isServersWord) {
        wsLocal_->SetNames(names);
        if (signOn_ == SignOn::Awaited) signOn_ = SignOn::Seen;
    }
    wsRemote_->SetNames(std::move(names));
}

void clsWinConn::Send(Direction direction, ByteString payload, std::uint8_t channel) {
    if (closed_) ThrowClosed();
    (direction == Direction::ToServer ? wsLocal_ : wsRemote_)->Inject(channel, std::move(payload));
}

const clsAIMSocket* clsWinConn::SideOf(Direction direction) const {
    return (direction == Direction::ToServer ? wsLocal_ : wsRemote_).get();
}

TrafficCount clsWinConn::Received(Direction direction) const {
    const auto* const side = SideOf(direction);
    return side != nullptr ? side->Received() : TrafficCount{};
}

os::Ends clsWinConn::EndsOf(Direction direction) const {
    const auto* const side = SideOf(direction);
    return side != nullptr ? side->Socket().Ends() : os::Ends{};
}

bool clsWinConn::IsIPv6Only() const {
    return wsRemote_ && wsRemote_->Socket().HostIsFound() && !wsRemote_->Socket().HostHasIPv4();
}

void clsWinConn::FrameHandled(const PassedFrame& frame) {
    relay_.Watch()->Frame(index_, frame);
}

void clsWinConn::PassBytes() {
    wsLocal_->PassBytes();
    wsRemote_->PassBytes();
}

void clsWinConn::ClientHasSpoken() {
    if (!patience_) return;
    patience_.reset();
    wsRemote_->HoldReading(false);
}

void clsWinConn::wsLocal_WinsockClose(std::int32_t errorNumber) {
    HandleClose(EndedBy::Client, errorNumber);
}
void clsWinConn::wsRemote_WinsockClose(std::int32_t errorNumber) {
    if (!GoesOnElsewhere(errorNumber)) HandleClose(EndedBy::Server, errorNumber);
}

void clsWinConn::HandleClose(EndedBy by, std::int32_t errorNumber) {
    if (std::exchange(closed_, true)) return;
    const SessionEnd end{by, std::max(errorNumber, 0)};
    features_.Tell("clsWinConn:WinsockClose", [&](auto& feature) { feature.Ended(end); });
    auto* const other = by == EndedBy::Client ? wsRemote_.get() : wsLocal_.get();
    if (other != nullptr) other->CloseConnection();
    Release();
    Trap("clsWinConn:WinsockClose", [&] { relay_.Closed(index_, errorNumber); });
}

// Destroys the socket whose event is being handled; its code after the event touches nothing of it. Nothing
// here may fail: a connection that finds no memory ends this way.
void clsWinConn::Release() {
    if (wsRemote_) closedOrigScreenName_ = wsRemote_->TakeNames().original;
    features_.Clear();
    patience_.reset();
    search_.reset();
    wsLocal_.reset();
    wsRemote_.reset();
}
