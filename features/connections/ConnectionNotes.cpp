#include "features/connections/ConnectionNotes.h"

#include <algorithm>
#include <memory>

#include "core/wire/Reader.h"
#include "features/Overview.h"

namespace {

constexpr std::uint8_t kHello = 1;
constexpr std::uint8_t kEnd = 4;
constexpr std::size_t kEmptyHello = 4;  // the version of FLAP and nothing behind it

constexpr Interest kSignOnName{0x17, 0x06, Direction::ToServer};
constexpr Interest kSignOn{0x17, 0x02, Direction::ToServer};
constexpr Interest kSignOnAnswer{0x17, 0x03, Direction::ToClient};
constexpr Interest kFamilies{0x01, 0x03, Direction::ToClient};
constexpr Interest kService{0x01, 0x05, Direction::ToClient};
constexpr Interest kRates{0x01, 0x0A, Direction::ToClient};
constexpr Interest kOtherServer{0x01, 0x12, Direction::ToClient};

// TLVs of the sign-on, of a service and of a connection's end.
enum Tlv : std::uint16_t { kName = 1, kAddress = 5, kCookie = 6, kError = 8, kReason = 9 };

// What the server says of the user's sending, SNAC(1,0x0A).
enum RateWord : std::uint16_t { kWarned = 2, kLimited = 3, kCleared = 4 };

class Contents {
 public:
    explicit Contents(const FrameView& frame)
        : payload_(frame.Payload()), parts_(wire::Read(frame.Channel(), payload_)) {}

    const wire::Part* Find(std::uint16_t type) const {
        const auto isIt = [=](const wire::Part& part) {
            return part.field->type == type && part.lengthWidth == 2 && part.depth <= 1;
        };
        const auto found = std::ranges::find_if(parts_.parts, isIt);
        return found != parts_.parts.end() ? &*found : nullptr;
    }
    std::string_view Text(std::uint16_t type) const {
        const auto* const part = Find(type);
        return part != nullptr ? payload_.substr(part->offset, part->size) : std::string_view();
    }
    std::optional<std::uint16_t> Number(std::uint16_t type) const {
        const auto text = Text(type);
        if (text.size() != 2) return {};
        return static_cast<std::uint16_t>(wire::NumberAt(text, 0, 2));
    }

 private:
    std::string_view payload_;
    wire::Parts parts_;
};

// Most clients ask for addresses, and then the system need not be asked.
os::Endpoint ReachedBy(const Session& session, const Place& place) {
    const auto address = os::AddressFrom(place.host);
    return address ? os::Endpoint{*address, place.port} : session.EndsOf(Direction::ToClient).there;
}

Leg::Purpose PurposeOf(const std::vector<std::uint16_t>& families) {
    const auto has = [&](std::uint16_t family) {
        return std::ranges::find(families, family) != families.end();
    };
    if (has(0x04)) return Leg::Purpose::Bos;
    if (has(0x0E)) return Leg::Purpose::Chat;
    if (has(0x10)) return Leg::Purpose::Icons;
    if (has(0x17)) return Leg::Purpose::Authorisation;
    return Leg::Purpose::Other;
}

}  // namespace

class ConnectionNotes final : public SessionFeature {
 public:
    ConnectionNotes(Session& session, Overview& overview)
        : session_(session), connections_(overview.connections), router_(overview.router) {
        auto& leg = connections_.Begin(session);
        leg.isSent = router_.IsSentTo(leg.asked);
    }
    ~ConnectionNotes() override { connections_.End(session_); }

    void Trying(const Place& place) override {
        Note([&](Leg& leg) { leg.trying = place; });
    }
    void Failed(const Place& place, ConnectFailure why, std::int32_t errorNumber) override {
        Note([&](Leg& leg) { leg.failed.push_back({place, why, errorNumber}); });
    }
    void Connected() override {
        Note([&](Leg& leg) {
            leg.state = Leg::State::Connected;
            leg.reached = ReachedBy(session_, leg.trying);
        });
    }
    void SignedOn() override {
        Note([&](Leg& leg) {
            leg.isSignedOn = true;
            leg.name = session_.Names(Direction::ToClient).name;
            if (leg.purpose == Leg::Purpose::Unknown) leg.purpose = Leg::Purpose::Bos;
        });
    }
    void Ended(const SessionEnd& end) override {
        Note([&](Leg& leg) {
            leg.state = Leg::State::Ended;
            leg.endedBy = end.by;
            leg.errorNumber = end.errorNumber;
        });
    }

    Verdict Frame(FrameView& frame) override {
        if (frame.Channel() == Session::kSnacChannel) {
            TakeSnac(frame);
        } else if (frame.Channel() == kHello && frame.Way() == Direction::ToServer &&
                   frame.Payload().size() > kEmptyHello) {
            TakeHello(Contents(frame));
        } else if (frame.Channel() == kEnd && frame.Way() == Direction::ToClient) {
            TakeEnd(frame);
        }
        return Verdict::Pass;
    }

 private:
    template <typename Function>
    void Note(Function&& function) {
        if (auto* const leg = connections_.Kept(session_.Slot())) function(*leg);
    }

    void TakeSnac(FrameView& frame) {
        const auto subtype = static_cast<std::uint16_t>(frame.Snac().SubId());
        const bool isSignOn = frame.Snac().FamID() == kSignOn.family;
        if (isSignOn && frame.Way() == Direction::ToServer) return TakeSignOn(Contents(frame));
        if (isSignOn) return TakeAnswer(frame);
        if (subtype == kFamilies.subtype) return TakeFamilies(frame.Snac().Data());
        if (subtype == kRates.subtype) return TakeRates(frame.Snac().Data());
        TakeAddress(frame, Contents(frame));
    }

    // The greeting of the oldest clients holds their sign-on, that of others the cookie that they were given.
    void TakeHello(const Contents& contents) {
        if (contents.Find(kName) != nullptr) return TakeSignOn(contents);
        const auto cookie = contents.Text(kCookie);
        if (cookie.empty()) return;
        Note([&](Leg& leg) { leg.name = connections_.NameByCookie(cookie); });
    }

    void TakeSignOn(const Contents& contents) {
        Note([&](Leg& leg) {
            leg.purpose = Leg::Purpose::Authorisation;
            leg.name = contents.Text(kName);
        });
    }

    void TakeAnswer(FrameView& frame) {
        const Contents contents(frame);
        Note([&](Leg& leg) {
            leg.purpose = Leg::Purpose::Authorisation;
            leg.loginError = contents.Number(kError);
        });
        TakeAddress(frame, contents);
    }

    // The oldest clients are answered by it, too.
    void TakeEnd(FrameView& frame) {
        const Contents contents(frame);
        Note([&](Leg& leg) {
            if (contents.Find(kError) != nullptr) leg.loginError = contents.Number(kError);
            leg.goodbye = Leg::Goodbye{contents.Number(kReason).value_or(0)};
        });
        TakeAddress(frame, contents);
    }

    void TakeFamilies(std::string_view data) {
        Note([&](Leg& leg) {
            leg.families.clear();
            for (std::size_t i = 0; i + 2 <= data.size(); i += 2)
                leg.families.push_back(static_cast<std::uint16_t>(wire::NumberAt(data, i, 2)));
            leg.purpose = PurposeOf(leg.families);
        });
    }

    void TakeRates(std::string_view data) {
        if (data.size() < 2) return;
        const auto word = wire::NumberAt(data, 0, 2);
        Note([&](Leg& leg) {
            if (word == kWarned) leg.rates = Leg::Rates::Warned;
            if (word == kLimited) leg.rates = Leg::Rates::Limited;
            if (word == kCleared) leg.rates = Leg::Rates::Fine;
        });
    }

    void TakeAddress(FrameView& frame, const Contents& contents) {
        const auto* const address = contents.Find(kAddress);
        if (address == nullptr || address->size == 0) return;
        const auto cookie = contents.Text(kCookie);
        if (const auto* const leg = connections_.Find(session_.Slot()); leg != nullptr && !cookie.empty())
            connections_.RememberCookie(cookie, leg->name);
        const auto instead =
            router_.Advertised(session_.Slot(), contents.Text(kAddress), session_.IsIPv6Only());
        if (instead.empty()) return;
        ByteString payload(frame.Payload());
        payload.replace(address->offset, address->size, instead);
        payload.replace(address->offset - 2, 2, WordToStr(static_cast<std::int32_t>(instead.size())));
        frame.Replace(std::move(payload));
    }

    Session& session_;
    Connections& connections_;
    ServerRouter& router_;
};

FeatureEntry NotesOfConnections() {
    const auto make = [](Session& session) -> std::unique_ptr<SessionFeature> {
        auto* const overview = Overview::Current();
        if (overview == nullptr) return nullptr;
        return std::make_unique<ConnectionNotes>(session, *overview);
    };
    return {{kSignOnName,
             kSignOn,
             kSignOnAnswer,
             kFamilies,
             kService,
             kRates,
             kOtherServer,
             {.family = kOtherChannels}},
            make,
            Made::AtOnce};
}
