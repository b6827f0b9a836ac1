#include "core/clsAIMSocket.h"

#include <charconv>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "core/FlapFrame.h"
#include "core/SessionHooks.h"
#include "core/Socks4.h"

namespace {

constexpr char kDataArrival[] = "clsAIMSocket:DataArrival";
constexpr std::int32_t kPeerClosed = -1;

// Family in the high word, subtype in the low one.
constexpr std::uint32_t SnacKind(std::uint32_t family, std::uint32_t subtype) {
    return family << 16 | subtype;
}
constexpr auto kSignOnRequest = SnacKind(0x0017, 0x0002);
constexpr auto kSelfInformation = SnacKind(0x0001, 0x000F);
constexpr auto kIncomingMessage = SnacKind(0x0004, 0x0007);
constexpr auto kOutgoingMessage = SnacKind(0x0004, 0x0006);
constexpr auto kUserInformation = SnacKind(0x0002, 0x0006);
constexpr auto kNoSnac = SnacKind(0, 0);

// A payload too short for the SNAC header is no SNAC, whatever its first bytes say.
std::uint32_t KindOf(std::string_view payload) {
    if (payload.size() < clsHeaderSNAC::kHeaderLength) return kNoSnac;
    const auto byte = [&](std::size_t i) { return std::uint32_t{static_cast<std::uint8_t>(payload[i])}; };
    return byte(0) << 24 | byte(1) << 16 | byte(2) << 8 | byte(3);
}

ByteString SnacData(std::string_view payload) {
    return ByteString(payload.substr(clsHeaderSNAC::kHeaderLength));
}

clsHeaderSNAC SnacOf(std::string_view payload) {
    clsHeaderSNAC snac;
    snac.ParseData(payload);
    return snac;
}

// Sign-on request: the data begin with a TLV whose value is the name. Read as clients have always been read:
// the low byte of the TLV's type leads to the low byte of its length.
std::string NameInSignOn(const ByteString& data) {
    const auto lengthPosition = 1 + static_cast<std::size_t>(GetByte(data, 2)) + 2;
    return data.substr(lengthPosition, static_cast<std::size_t>(GetByte(data, lengthPosition)));
}

// Self-information: the data begin with the name behind its length byte.
std::string NameInSelfInformation(const ByteString& data) {
    return data.substr(1, static_cast<std::size_t>(GetByte(data, 1)));
}

}  // namespace

clsAIMSocket::clsAIMSocket() {
    socket_.Data.Bind<&clsAIMSocket::socket_Data>(*this);
    socket_.Connected.Bind<&clsAIMSocket::socket_Connected>(*this);
    socket_.Closed.Bind<&clsAIMSocket::socket_Closed>(*this);
    socket_.Failed.Bind<&clsAIMSocket::socket_Failed>(*this);
    stream_.Frame.Bind<&clsAIMSocket::stream_Frame>(*this);
}

void clsAIMSocket::SetProfile(const std::string& strProfile) {
    Inject(CurrentSessionHooks().MakeProfileFlap(strProfile));
}

void clsAIMSocket::SetIdle(std::int32_t mins) {
    Inject(CurrentSessionHooks().MakeIdleFlap(mins));
}

void clsAIMSocket::SetAwayMessage(const std::string& strAway) {
    Inject(CurrentSessionHooks().MakeAwayFlap(strAway));
}

void clsAIMSocket::SetWinsock(bool isInc, std::int32_t requestID) {
    socket_.Close();
    if (requestID != 0) socket_.Accept(requestID);
    isIncoming_ = isInc;
    phase_ = isInc ? Phase::AwaitingRequest : Phase::Relaying;
    outSeq_ = kUnknownSequence;
}

void clsAIMSocket::UpdateFlap(clsHeaderFLAP& flap) {
    flap.SeqNum(NextSequence());
    flap.DataLen(static_cast<std::int32_t>(flap.Data().size()));
}

void clsAIMSocket::doConnect(const std::string& strPort, const std::string& strHost, const ByteString& con) {
    socks_ = con;
    std::uint16_t port = 0;
    const auto* const end = strPort.data() + strPort.size();
    if (std::from_chars(strPort.data(), end, port).ptr != end) ThrowInvalidArgument();
    socket_.Close();
    socket_.Connect(strHost, port);
}

void clsAIMSocket::SendRawData(std::string_view strData) {
    if (phase_ == Phase::AwaitingReply) phase_ = Phase::Relaying;
    socket_.Send(strData);
}

void clsAIMSocket::CloseConnection() {
    socket_.Close();
}

void clsAIMSocket::socket_Data(std::span<char> arrival) {
    Trap(kDataArrival, [&] {
        switch (phase_) {
            case Phase::AwaitingRequest:
                ReadRequest({arrival.data(), arrival.size()});
                break;
            case Phase::AwaitingReply:
                break;  // belongs to the request, such as a late user name
            case Phase::Relaying:
                if (isIncoming_) owner_->ClientHasSpoken();
                stream_.Feed(arrival);
                WatchForSilence();
                break;
        }
    });
}

void clsAIMSocket::ReadRequest(std::string_view bytes) {
    socks_ += bytes.substr(0, kMaxSocks4Request - socks_.size());
    const auto request = ParseSocks4Request(socks_);
    if (!request) {
        if (socks_.size() < kMaxSocks4Request) return;
        CloseConnection();
        WinsockClose(kPeerClosed);  // may destroy this object
        return;
    }
    ByteString().swap(socks_);
    phase_ = Phase::AwaitingReply;
    SOCKS4Connect(request->host, request->port, request->con);
    owner_->SetReplacements(CurrentSessionHooks().LoadReplacements());
}

void clsAIMSocket::socket_Connected() {
    if (!isIncoming_) PassOnData(MakeSocks4Reply(socks_));
}

void clsAIMSocket::socket_Closed() {
    Trap(kDataArrival, [&] { stream_.PeerClosed(); });
    WinsockClose(kPeerClosed);
}

void clsAIMSocket::socket_Failed(std::int32_t errorNumber) {
    WinsockClose(errorNumber);
}

void clsAIMSocket::WatchForSilence() {
    if (!stream_.AwaitsSilence()) {
        silence_.reset();
        return;
    }
    silence_ = std::make_unique<os::Timer>();
    silence_->Tick.Bind<&clsAIMSocket::silence_Tick>(*this);
    silence_->StartOnce(FlapStream::kGoodbyeSilenceMs);
}

void clsAIMSocket::silence_Tick() {
    Trap(kDataArrival, [&] { stream_.SilencePassed(); });
}

// Each step that a feature takes part in has its own trap: when it fails the frame goes on as it was before
// it.
void clsAIMSocket::stream_Frame(std::span<char> bytes) {
    Dbug({bytes.data(), bytes.size()});
    FlapFrame frame(bytes);
    const auto payload = frame.Payload();
    auto rewritten = ReplaceScreenNames(payload);
    DispatchSnac(frame.Channel(), payload, rewritten);

    if (outSeq_ == kUnknownSequence) outSeq_ = frame.Sequence();
    if (!rewritten) {
        frame.Stamp(NextSequence());
        PassOnData({bytes.data(), bytes.size()});
        return;
    }
    clsHeaderFLAP flap;
    flap.Create(frame.Channel(), std::move(*rewritten));
    UpdateFlap(flap);
    PassOnData(flap.toString());
}

std::optional<ByteString> clsAIMSocket::ReplaceScreenNames(std::string_view payload) {
    const auto* const list = owner_->Replacements();
    if (list == nullptr) return {};
    return Trap(kDataArrival, [&]() -> std::optional<ByteString> {
        const auto direction = isIncoming_ ? Direction::ToServer : Direction::ToClient;
        ByteString rewritten;
        if (!CurrentSessionHooks().ReplaceScreenNames(*list, direction, payload, rewritten)) return {};
        // A payload that its length field cannot express stays as it was.
        if (rewritten.size() > FlapFrame::kMaxPayload) return {};
        return rewritten;
    });
}

void clsAIMSocket::DispatchSnac(std::uint8_t channel, std::string_view original,
                                std::optional<ByteString>& rewritten) {
    const std::string_view payload = rewritten ? std::string_view(*rewritten) : original;
    auto& hooks = CurrentSessionHooks();
    switch (KindOf(payload)) {
        case kSignOnRequest:
            Trap(kDataArrival, [&] { LearnSignOnNames(payload, original); });
            Trap(kDataArrival, [&] { hooks.DeleteUserinfoBag(origScreenName_); });
            break;
        case kSelfInformation:
            Trap(kDataArrival, [&] { LearnSelfInformationNames(payload, original); });
            break;
        case kIncomingMessage:
            Trap(kDataArrival, [&] { hooks.LogMessage(Direction::ToClient, SnacOf(payload), screenName_); });
            break;
        case kOutgoingMessage:
            Trap(kDataArrival, [&] { hooks.LogMessage(Direction::ToServer, SnacOf(payload), screenName_); });
            break;
        case kUserInformation:
            Trap(kDataArrival, [&] {
                if (!hooks.WantsProfileHtml()) return;
                clsHeaderFLAP flap;
                flap.Create(channel, ByteString(payload));
                hooks.SeeProfileHtml(flap);
                if (flap.Data().size() > FlapFrame::kMaxPayload) ThrowOverflow();
                rewritten = flap.Data();
            });
            break;
        default:
            break;
    }
}

void clsAIMSocket::LearnSignOnNames(std::string_view payload, std::string_view original) {
    const auto name = NameInSignOn(SnacData(payload));
    const auto origName = NameInSignOn(SnacData(original));
    SetScreenname(name);
    SetOrigScreenname(origName);
}

void clsAIMSocket::LearnSelfInformationNames(std::string_view payload, std::string_view original) {
    const auto name = NameInSelfInformation(SnacData(payload));
    const auto origName = NameInSelfInformation(SnacData(original));
    SetScreenname(name);
    SetOrigScreenname(origName);
    GotScreenname(screenName_);
    GotOrigScreenname(origScreenName_);
}

void clsAIMSocket::Inject(std::optional<clsHeaderFLAP> flap) {
    if (!flap) return;
    // Everything that can fail comes before the number is taken: a number without a frame would be a gap.
    if (flap->Data().size() > FlapFrame::kMaxPayload) ThrowOverflow();
    if (outSeq_ == kUnknownSequence) ThrowInvalidArgument();
    UpdateFlap(*flap);
    PassOnFLAP(*flap);
}

std::uint16_t clsAIMSocket::NextSequence() {
    const auto number = static_cast<std::uint16_t>(outSeq_);
    outSeq_ = static_cast<std::uint16_t>(number + 1);
    return number;
}
