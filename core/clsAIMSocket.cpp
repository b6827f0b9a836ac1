#include "core/clsAIMSocket.h"

#include <algorithm>
#include <utility>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "core/FlapFrame.h"
#include "core/Passthrough.h"
#include "core/Socks4.h"

namespace {

constexpr char kDataArrival[] = "clsAIMSocket:DataArrival";
constexpr std::int32_t kPeerClosed = -1;
// As many first bytes tell what a stream carries.
constexpr std::size_t kTellingBytes = 4;

}  // namespace

clsAIMSocket::clsAIMSocket() {
    socket_.Data.Bind<&clsAIMSocket::socket_Data>(*this);
    socket_.Connected.Bind<&clsAIMSocket::socket_Connected>(*this);
    socket_.Closed.Bind<&clsAIMSocket::socket_Closed>(*this);
    socket_.Silent.Bind<&clsAIMSocket::socket_Silent>(*this);
    socket_.Failed.Bind<&clsAIMSocket::socket_Failed>(*this);
    stream_.Frame.Bind<&clsAIMSocket::stream_Frame>(*this);
}

void clsAIMSocket::SetWinsock(bool isInc, std::int32_t requestID) {
    socket_.Close();
    if (requestID != 0) socket_.Accept(requestID);
    isIncoming_ = isInc;
    phase_ = isInc ? Phase::AwaitingRequest : Phase::FirstBytes;
    outSeq_ = kUnknownSequence;
}

void clsAIMSocket::UpdateFlap(clsHeaderFLAP& flap) {
    flap.SeqNum(NextSequence());
    flap.DataLen(static_cast<std::int32_t>(flap.Data().size()));
}

void clsAIMSocket::doConnect(const Place& place, const ByteString& con) {
    socks_ = con;
    socket_.Close();
    socket_.Connect(place.host, place.port);
}

void clsAIMSocket::SendRawData(std::string_view strData) {
    if (phase_ == Phase::AwaitingReply) phase_ = Phase::FirstBytes;
    socket_.Send(strData);
}

void clsAIMSocket::CloseConnection() {
    socket_.Close();
}

// What fails in the body has lost bytes of the stream, which must not go on with a hole: it ends the
// connection, and may destroy this object.
template <typename Body>
void clsAIMSocket::OrEnd(Body&& body) {
    const bool isWhole = Trap(kDataArrival, [&] {
        body();
        return true;
    });
    if (!isWhole) Refuse();
}

void clsAIMSocket::socket_Data(std::span<char> arrival) {
    OrEnd([&] { TakeArrival(arrival); });
}

void clsAIMSocket::TakeArrival(std::span<char> arrival) {
    switch (phase_) {
        case Phase::AwaitingRequest:
            return ReadRequest({arrival.data(), arrival.size()});
        case Phase::AwaitingReply:
            BehindUserName(arrival);  // nothing is relayed before the reply
            return;
        default:
            arrival = BehindUserName(arrival);
            if (arrival.empty()) return;
            received_.bytes += arrival.size();
            if (isIncoming_) owner_->ClientHasSpoken();
            if (phase_ == Phase::FirstBytes) return ReadFirstBytes(arrival);
            if (phase_ == Phase::Frames) return ReadFrames(arrival);
            PassOnData({arrival.data(), arrival.size()});
    }
}

// A request may come in pieces, and the user name behind the reply. It ends with its NUL, or where the first
// frame begins: clients have been seen that send none.
std::span<char> clsAIMSocket::BehindUserName(std::span<char> arrival) {
    if (!inUserName_ || arrival.empty()) return arrival;
    const auto end = std::find(arrival.begin(), arrival.end(), '\0');
    inUserName_ = arrival.front() != FlapFrame::kMarker && end == arrival.end();
    if (arrival.front() == FlapFrame::kMarker) return arrival;
    return {end == arrival.end() ? end : end + 1, arrival.end()};
}

void clsAIMSocket::ReadFirstBytes(std::span<char> arrival) {
    const bool isFirst = first_.empty();
    first_.append(arrival.data(), isFirst ? std::min(arrival.size(), kTellingBytes) : arrival.size());
    const auto contents = ContentsOf(first_);
    if (contents == Contents::Undecided) return;
    auto held = std::exchange(first_, {});
    const auto bytes = isFirst ? arrival : std::span(held);
    if (contents == Contents::Frames) {
        phase_ = Phase::Frames;
        return ReadFrames(bytes);
    }
    owner_->PassBytes();
    PassOnData({bytes.data(), bytes.size()});
}

void clsAIMSocket::ReadFrames(std::span<char> arrival) {
    stream_.Feed(arrival);
    socket_.TellSilence(stream_.AwaitsSilence() ? FlapStream::kGoodbyeSilenceMs : 0);
}

void clsAIMSocket::PassBytes() {
    phase_ = Phase::Bytes;
    socket_.TellSilence(0);
    const auto waiting = std::exchange(first_, {}) + stream_.TakeHeld();
    if (!waiting.empty()) PassOnData(waiting);
}

void clsAIMSocket::ReadRequest(std::string_view bytes) {
    socks_ += bytes.substr(0, kMaxSocks4Request - socks_.size());
    if (IsNoSocks4Request(socks_)) return Refuse();
    const auto request = ParseSocks4Request(socks_);
    if (!request) {
        if (socks_.size() == kMaxSocks4Request) Refuse();
        return;
    }
    inUserName_ = !request->hasUserName;
    ByteString().swap(socks_);
    phase_ = Phase::AwaitingReply;
    SOCKS4Connect(request->host, request->port, request->con);
}

// May destroy this object.
void clsAIMSocket::Refuse() {
    CloseConnection();
    WinsockClose(kPeerClosed);
}

void clsAIMSocket::socket_Connected() {
    if (!isIncoming_) OrEnd([&] { PassOnData(MakeSocks4Reply(socks_)); });
}

void clsAIMSocket::socket_Closed() {
    Trap(kDataArrival, [&] { stream_.PeerClosed(); });
    WinsockClose(kPeerClosed);
}

void clsAIMSocket::socket_Failed(std::int32_t errorNumber) {
    Trap(kDataArrival, [&] { stream_.PeerClosed(); });
    WinsockClose(errorNumber);
}

void clsAIMSocket::socket_Silent() {
    OrEnd([&] { stream_.SilencePassed(); });
}

void clsAIMSocket::stream_Frame(std::span<char> bytes) {
    Dbug({bytes.data(), bytes.size()});
    ++received_.frames;
    FlapFrame frame(bytes);
    const auto numberBefore = frame.Sequence();
    if (outSeq_ == kUnknownSequence) outSeq_ = frame.Sequence();
    const auto direction = isIncoming_ ? Direction::ToServer : Direction::ToClient;
    if (const auto wanted = features_->Wanted(direction, frame.Channel(), frame.Payload())) {
        FrameView view(direction, frame.Channel(), frame.Payload());
        if (!features_->Filter(wanted, view))
            return Tell(PassedFrame::Fate::Dropped, view.Channel(), numberBefore, view.Original(), {});
        if (view.IsReplaced()) return PassOnReplaced(view, numberBefore);
    }
    frame.Stamp(NextSequence());
    if (*watch_ != nullptr) [[unlikely]]
        Tell(PassedFrame::Fate::Passed, frame.Channel(), numberBefore, frame.Payload(), frame.Payload());
    PassOnData({bytes.data(), bytes.size()});
}

void clsAIMSocket::PassOnReplaced(FrameView& frame, std::uint16_t numberBefore) {
    clsHeaderFLAP flap;
    flap.Create(frame.Channel(), std::move(*frame.replaced_));
    UpdateFlap(flap);
    Tell(PassedFrame::Fate::Rewritten, frame.Channel(), numberBefore, frame.Original(), flap.Data());
    PassOnData(flap.toString());
}

// Of the frame that was numbered last, unless it was dropped.
void clsAIMSocket::Tell(PassedFrame::Fate fate, std::uint8_t channel, std::uint16_t numberBefore,
                        std::string_view before, std::string_view after) const {
    if (*watch_ == nullptr) return;
    const bool isDropped = fate == PassedFrame::Fate::Dropped;
    const auto numberAfter = static_cast<std::uint16_t>(isDropped ? 0 : outSeq_ - 1);
    owner_->FrameHandled({isIncoming_ ? Direction::ToServer : Direction::ToClient, channel, fate,
                          numberBefore, numberAfter, before, after});
}

void clsAIMSocket::Inject(std::uint8_t channel, ByteString payload) {
    // Everything that can fail comes before the number is taken: a number without a frame would be a gap.
    if (payload.size() > FlapFrame::kMaxPayload) ThrowOverflow();
    if (outSeq_ == kUnknownSequence || phase_ == Phase::Bytes) ThrowInvalidArgument();
    clsHeaderFLAP flap;
    flap.Create(channel, std::move(payload));
    const auto number = outSeq_;
    UpdateFlap(flap);
    try {
        Tell(PassedFrame::Fate::Injected, channel, 0, {}, flap.Data());
        PassOnFLAP(flap);
    } catch (...) {  // no memory for its bytes
        outSeq_ = number;
        throw;
    }
}

std::uint16_t clsAIMSocket::NextSequence() {
    const auto number = static_cast<std::uint16_t>(outSeq_);
    outSeq_ = static_cast<std::uint16_t>(number + 1);
    return number;
}
