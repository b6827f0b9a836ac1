#include "features/waiting/FetchMessages.h"

#include "app/services/Settings.h"
#include "base/Trap.h"
#include "features/SnacBytes.h"
#include "features/waiting/ImFrames.h"
#include "net/EventLoop.h"
#include "os/Clock.h"

namespace {

constexpr std::uint16_t kMessages = 0x0004;  // the family
constexpr std::uint32_t kOurRequest = 0x57FFFFFF;
constexpr std::int64_t kClientAsksItselfMs = 2000;
constexpr std::int64_t kOldSeconds = 120;

// "[Tue 21:14] "
std::string TimeInFront(std::int64_t seconds) {
    constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    const auto time = os::LocalTimeOf(seconds);
    const auto two = [](int number) { return std::to_string(number / 10) + std::to_string(number % 10); };
    return std::string("[") + kDays[time.weekday] + " " + two(time.hour) + ":" + two(time.minute) + "] ";
}

class Fetcher final : public SessionFeature {
 public:
    explicit Fetcher(Session& session) : session_(session) { wait_.Tick.Bind<&Fetcher::wait_Tick>(*this); }

    Verdict Frame(FrameView& frame) override {
        switch (SnacKindOf(frame.Payload())) {
            case SnacKind(0x0001, 0x0003):
                ReadFamilies(SnacDataOf(frame.Payload()));
                return Verdict::Pass;
            case SnacKind(0x0001, 0x0002):
                if (hasMessages_ && settings::IsOn("fetchmessages")) wait_.StartOnce(kClientAsksItselfMs);
                return Verdict::Pass;
            case SnacKind(kMessages, 0x0010):
                wait_.Stop();
                clientAsked_ = true;
                return Verdict::Pass;
            case SnacKind(kMessages, 0x0001):  // from a server that does not know what we ask
                return RequestIdOf(frame.Payload()) == kOurRequest ? Verdict::Drop : Verdict::Pass;
            case SnacKind(kMessages, 0x0017):
                return IsOurs(frame.Payload()) ? Verdict::Drop : Verdict::Pass;
            default:
                ShowTime(frame);
                return Verdict::Pass;
        }
    }

    void Ended(const SessionEnd&) override { wait_.Stop(); }

 private:
    // The families that the server of this connection offers, two bytes each.
    void ReadFamilies(std::string_view data) {
        while (data.size() >= 2) hasMessages_ |= TakeWord(data) == kMessages;
    }

    void wait_Tick() {
        Trap("FetchMessages:Ask", [&] {
            session_.Send(Direction::ToServer, SnacPayload(kMessages, 0x0010, kOurRequest));
            weAsked_ = true;
        });
    }

    // Not every server says which request it answers.
    bool IsOurs(std::string_view payload) const {
        return RequestIdOf(payload) == kOurRequest || (weAsked_ && !clientAsked_);
    }

    // Nearly every message comes at once; nothing else is asked for those.
    static void ShowTime(FrameView& frame) {
        const auto sent = SentAt(frame.Payload());
        if (!sent || os::SecondsSince1970() - std::int64_t{*sent} <= kOldSeconds) return;
        if (!settings::IsOn("fetchmessages")) return;
        frame.Replace(WithTextInFront(frame.Payload(), TimeInFront(*sent)));
    }

    Session& session_;
    net::Timer wait_;
    bool hasMessages_ = false;
    bool weAsked_ = false;
    bool clientAsked_ = false;
};

}  // namespace

FeatureEntry FetchMessages() {
    return FeatureOf<Fetcher>({{0x0001, 0x0003, Direction::ToClient},
                               {0x0001, 0x0002, Direction::ToServer},
                               {kMessages, 0x0001, Direction::ToClient},
                               {kMessages, 0x0010, Direction::ToServer},
                               {kMessages, 0x0017, Direction::ToClient},
                               {kMessages, 0x0007, Direction::ToClient}});
}
