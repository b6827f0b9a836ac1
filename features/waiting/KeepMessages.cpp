#include "features/waiting/KeepMessages.h"

#include <algorithm>
#include <deque>
#include <map>
#include <set>

#include "app/services/Settings.h"
#include "base/Trap.h"
#include "features/RateLimit.h"
#include "features/SnacBytes.h"
#include "features/waiting/ImFrames.h"
#include "features/waiting/SentMessages.h"
#include "features/waiting/WaitingMessages.h"
#include "net/EventLoop.h"
#include "os/Clock.h"

namespace {

constexpr std::uint16_t kMessages = 0x0004;  // the family
constexpr std::uint16_t kSend = 0x0006;
constexpr std::uint16_t kReceiverIsOffLine = 0x0004;
// Requests of our own carry numbers that clients, who count from 0, do not reach.
constexpr std::uint32_t kFirstRequest = 0x57000000;
constexpr std::int64_t kPauseMs = 1000;
constexpr std::int64_t kSilenceMs = 30'000;

class Keeper;

// Who may send a waiting message; a connection more or less for each signed-on user.
std::vector<Keeper*>& Keepers() {
    static std::vector<Keeper*> keepers;
    return keepers;
}

class Keeper final : public SessionFeature {
 public:
    explicit Keeper(Session& session) : session_(session) {
        Keepers().push_back(this);
        pause_.Tick.Bind<&Keeper::pause_Tick>(*this);
        silence_.Tick.Bind<&Keeper::silence_Tick>(*this);
    }
    // What was not answered may have arrived or not; it is sent again when the buddy comes next.
    ~Keeper() override {
        std::erase(Keepers(), this);
        for (const auto& [request, offer] : offers_) TheWaitingMessages().Unclaim(offer.number);
        for (const auto number : due_) TheWaitingMessages().Unclaim(number);
        TheWaitingMessages().Settle();
    }
    Keeper(const Keeper&) = delete;
    Keeper& operator=(const Keeper&) = delete;

    Verdict Frame(FrameView& frame) override {
        const auto payload = frame.Payload();
        switch (SnacKindOf(payload)) {
            case SnacKind(kMessages, kSend):
                Remember(frame);
                return Verdict::Pass;
            case SnacKind(kMessages, 0x0001):
                return Refused(RequestIdOf(payload), SnacDataOf(payload));
            case SnacKind(kMessages, 0x0005):
                return AnswersProbe(RequestIdOf(payload)) ? Verdict::Drop : Verdict::Pass;
            case SnacKind(kMessages, 0x000C):
                return Acknowledged(frame);
            case SnacKind(0x0003, 0x000B):
                BuddiesCame(SnacDataOf(frame.Original()));
                return Verdict::Pass;
            case SnacKind(0x0001, 0x0007):
                limit_.Read(SnacDataOf(payload));
                return Verdict::Pass;
            case SnacKind(0x0001, 0x000A):
                limit_.ReadChange(SnacDataOf(payload));
                return Verdict::Pass;
            default:  // the user has signed on: from now on a message can be sent
                return Verdict::Pass;
        }
    }

    bool SendNow(const WaitingMessage& message) {
        if (NormalizeScreenName(message.from) != NormalizeScreenName(OwnName())) return false;
        Enqueue(message.number);
        return true;
    }

 private:
    // A message that has been offered to the server by us.
    struct Offer {
        std::uint32_t number;  // in the waiting messages
        bool toBeStored;
        bool clientWantsToKnow;
        std::uint32_t clientRequest;
        std::int64_t at;
    };
    using Offers = std::map<std::uint32_t, Offer>;  // by request

    const std::string& OwnName() const { return session_.Names(Direction::ToClient).original; }

    void Remember(const FrameView& frame) {
        const auto now = os::MonotonicMilliseconds();
        limit_.Count(now);
        sent_.Remember(RequestIdOf(frame.Payload()), SnacDataOf(frame.Payload()),
                       ReadOutgoingIm(SnacDataOf(frame.Original())).receiver, now);
    }

    Verdict Refused(std::uint32_t request, std::string_view data) {
        if (AnswersProbe(request)) return Verdict::Drop;
        if (const auto found = offers_.find(request); found != offers_.end()) {
            const auto offer = found->second;
            offers_.erase(found);
            TheWaitingMessages().Unclaim(offer.number);
            const auto* const message = TheWaitingMessages().Find(offer.number);
            if (offer.toBeStored && message != nullptr)
                Tell(*message, "Wrenlow will send your message when " + message->shownTo + " is back.");
            return Verdict::Drop;
        }
        const auto sent = sent_.Take(request, os::MonotonicMilliseconds());
        const bool isToKeep = sent && TakeWord(data) == kReceiverIsOffLine && CanWait(sent->data) &&
                              !OwnName().empty() && settings::IsOn("keepmessages");
        return isToKeep && OfferForStorage(*sent, request) ? Verdict::Drop : Verdict::Pass;
    }

    // Into the file first: from now on it is ours. Whether it is.
    bool OfferForStorage(const SentMessage& sent, std::uint32_t clientRequest) {
        auto& waiting = TheWaitingMessages();
        const std::string receiver(ReadOutgoingIm(sent.data).receiver);
        const auto number = waiting.Keep({.since = os::SecondsSince1970(),
                                          .tried = 1,
                                          .from = OwnName(),
                                          .to = receiver,
                                          .shownTo = sent.shownTo,
                                          .data = AskingForAcknowledgement(sent.data),
                                          .isClaimed = true});
        if (!number) return false;
        try {
            Send(AskingForStorage(sent.data),
                 {*number, true, AsksForAcknowledgement(sent.data), clientRequest, 0});
        } catch (...) {
            waiting.Unclaim(*number);
            throw;
        }
        return true;
    }

    void Send(const ByteString& data, Offer offer) {
        const auto request = ++lastRequest_;
        session_.Send(Direction::ToServer, SnacPayload(kMessages, kSend, request, data));
        offer.at = os::MonotonicMilliseconds();
        limit_.Count(offer.at);
        offers_[request] = offer;
        if (!silence_.IsRunning()) silence_.StartOnce(kSilenceMs);
    }

    Verdict Acknowledged(FrameView& frame) {
        const auto request = RequestIdOf(frame.Payload());
        const auto found = offers_.find(request);
        if (found == offers_.end()) {
            sent_.Forget(request);
            return Verdict::Pass;
        }
        const auto offer = found->second;
        Took(found);
        if (!offer.clientWantsToKnow) return Verdict::Drop;
        frame.Replace(WithRequestId(frame.Payload(), offer.clientRequest));
        return Verdict::Pass;
    }

    // The server has the message.
    Offers::iterator Took(Offers::iterator found) {
        const auto offer = found->second;
        const auto next = offers_.erase(found);
        const auto* const waiting = TheWaitingMessages().Find(offer.number);
        if (waiting == nullptr) return next;  // its user has deleted it meanwhile
        const auto message = *waiting;
        TheWaitingMessages().Drop(offer.number);
        if (offer.toBeStored) Tell(message, "Your message waits at the server.");
        return next;
    }

    void Tell(const WaitingMessage& message, const std::string& text) {
        if (!told_.insert(NormalizeScreenName(message.to)).second) return;
        Trap("KeepMessages:Tell", [&] {
            session_.Send(
                Direction::ToClient,
                NoticeFrom(message.shownTo, "[Wrenlow] " + message.shownTo + " is off line. " + text,
                           static_cast<std::uint16_t>(told_.size())));
        });
    }

    // One user after the other.
    void BuddiesCame(std::string_view data) {
        TheWaitingMessages().Settle();
        if (TheWaitingMessages().All().empty()) return;
        const auto own = NormalizeScreenName(OwnName());
        while (!data.empty()) {
            const auto buddy = NormalizeScreenName(TakeUser(data));
            for (const auto& message : TheWaitingMessages().All()) {
                if (NormalizeScreenName(message.to) == buddy && NormalizeScreenName(message.from) == own)
                    Enqueue(message.number);
            }
        }
    }

    void Enqueue(std::uint32_t number) {
        if (!TheWaitingMessages().Claim(number)) return;
        due_.push_back(number);
        if (!pause_.IsRunning()) pause_.StartOnce(1);
    }

    void pause_Tick() {
        if (due_.empty()) return;
        pause_.StartOnce(kPauseMs);
        if (!limit_.Allows(os::MonotonicMilliseconds())) return;
        const auto number = due_.front();
        due_.pop_front();
        const auto* const message = TheWaitingMessages().Find(number);
        if (message == nullptr) return;
        const bool isSent = Trap("KeepMessages:Send", [&] {
            Send(message->data, {number, false, false, 0, 0});
            TheWaitingMessages().CountTry(number);
            return true;
        });
        if (!isSent) TheWaitingMessages().Unclaim(number);
    }

    // Not every server acknowledges, and silence alone proves nothing: the line may be dead. A server that
    // answers a later question has said all that it had to say to the offers before it, so it took them.
    void silence_Tick() {
        if (offers_.empty()) return;
        silence_.StartOnce(kSilenceMs);
        if (probe_ != 0 || os::MonotonicMilliseconds() - offers_.begin()->second.at < kSilenceMs) return;
        Trap("KeepMessages:Probe", [&] {
            const auto request = ++lastRequest_;
            session_.Send(Direction::ToServer, SnacPayload(kMessages, 0x0004, request));
            probe_ = request;
        });
    }

    bool AnswersProbe(std::uint32_t request) {
        if (probe_ == 0 || request != probe_) return false;
        for (auto offer = offers_.begin(); offer != offers_.end() && offer->first < probe_;)
            offer = Took(offer);
        probe_ = 0;
        return true;
    }

    Session& session_;
    SentMessages sent_;
    Offers offers_;
    std::uint32_t lastRequest_ = kFirstRequest;
    std::uint32_t probe_ = 0;  // request of the question that was asked into the silence
    std::deque<std::uint32_t> due_;
    std::set<std::string> told_;
    RateLimit limit_{kMessages, kSend};
    net::Timer pause_;
    net::Timer silence_;
};

}  // namespace

FeatureEntry KeepMessages() {
    return FeatureOf<Keeper>({{kMessages, kSend, Direction::ToServer},
                              {kMessages, 0x0001, Direction::ToClient},
                              {kMessages, 0x0005, Direction::ToClient},
                              {kMessages, 0x000C, Direction::ToClient},
                              {0x0003, 0x000B, Direction::ToClient},
                              {0x0001, 0x0007, Direction::ToClient},
                              {0x0001, 0x000A, Direction::ToClient},
                              {0x0001, 0x000F, Direction::ToClient}});
}

bool SendWaitingNow(std::uint32_t number) {
    const auto* const message = TheWaitingMessages().Find(number);
    return message != nullptr && std::any_of(Keepers().begin(), Keepers().end(),
                                             [&](auto* keeper) { return keeper->SendNow(*message); });
}
