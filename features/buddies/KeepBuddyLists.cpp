#include "features/buddies/KeepBuddyLists.h"

#include <algorithm>
#include <utility>

#include "base/Trap.h"
#include "features/RateLimit.h"
#include "features/SnacBytes.h"
#include "features/buddies/BuddyFiles.h"
#include "features/buddies/PutBack.h"
#include "net/EventLoop.h"
#include "os/Clock.h"

namespace {

constexpr std::uint16_t kLists = 0x0013;  // the family
constexpr std::uint16_t kBuddies = 0x0003;
// Older clients tell their lists in several frames.
constexpr std::int64_t kAllToldMs = 5000;
constexpr std::size_t kMaxNames = 1000;

class ListKeeper final : public SessionFeature, private ListLine {
 public:
    explicit ListKeeper(Session& session) : session_(session) {
        told_.Tick.Bind<&ListKeeper::told_Tick>(*this);
    }
    ~ListKeeper() {
        if (hasLists_) ThePutBack().Remove(*this);
    }
    ListKeeper(const ListKeeper&) = delete;
    ListKeeper& operator=(const ListKeeper&) = delete;

    Verdict Frame(FrameView& frame) override {
        const auto payload = frame.Payload();
        const auto data = SnacDataOf(frame.Original());
        switch (SnacKindOf(payload)) {
            case SnacKind(kLists, 0x0006):
                return ListCame(RequestIdOf(payload), data, HasMoreToCome(payload));
            case SnacKind(kLists, 0x000E):
                return Answered(RequestIdOf(payload), [&] { ThePutBack().Answered(data); });
            case SnacKind(kLists, 0x0001):
                return Answered(RequestIdOf(payload), [] { ThePutBack().Refused(); });
            case SnacKind(kBuddies, 0x0004):
            case SnacKind(kBuddies, 0x0005):
                NamesTold(SnacDataOf(payload), SnacKindOf(payload) == SnacKind(kBuddies, 0x0004));
                return Verdict::Pass;
            case SnacKind(0x0001, 0x0003):
                ReadFamilies(data);
                return Verdict::Pass;
            case SnacKind(0x0001, 0x0007):
                limit_.Read(data);
                return Verdict::Pass;
            case SnacKind(0x0001, 0x000A):
                limit_.ReadChange(data);
                return Verdict::Pass;
            default:  // the client uses the server's list
                usesLists_ = true;
                if (frame.Way() == Direction::ToServer) limit_.Count(os::MonotonicMilliseconds());
                return Verdict::Pass;
        }
    }

    void Ended(const SessionEnd& /*end*/) override { told_.Stop(); }

 private:
    const std::string& User() const override { return session_.Names(Direction::ToClient).original; }
    bool MaySend() const override { return limit_.Allows(os::MonotonicMilliseconds()); }
    void SendToList(std::uint16_t subtype, std::uint32_t request, std::string_view data) override {
        session_.Send(Direction::ToServer, SnacPayload(kLists, subtype, request, data));
        limit_.Count(os::MonotonicMilliseconds());
    }

    // The families that the server of this connection offers, two bytes each.
    void ReadFamilies(std::string_view data) {
        bool offersLists = false;
        while (data.size() >= 2) offersLists |= TakeWord(data) == kLists;
        if (!offersLists || hasLists_) return;
        ThePutBack().Add(*this);
        hasLists_ = true;
    }

    Verdict ListCame(std::uint32_t request, std::string_view data, bool hasMore) {
        const bool isOurs = ThePutBack().IsOurs(*this, request);
        usesLists_ = usesLists_ || !isOurs;
        if (request != arriving_.request) arriving_ = {.request = request};
        const bool isSound = Trap("KeepBuddyLists:Read", [&] {
            if (!arriving_.isBroken) AppendItems(arriving_.list, data);
            return true;
        });
        arriving_.isBroken |= !isSound;
        if (!hasMore) {
            const auto arrived = std::exchange(arriving_, {});
            if (!arrived.isBroken) Keep(arrived.list);
            if (isOurs) arrived.isBroken ? ThePutBack().Refused() : ThePutBack().ListCame(arrived.list);
        }
        return isOurs ? Verdict::Drop : Verdict::Pass;
    }

    template <typename Handler>
    Verdict Answered(std::uint32_t request, Handler handler) {
        if (!ThePutBack().IsOurs(*this, request)) return Verdict::Pass;
        handler();
        return Verdict::Drop;
    }

    void Keep(const BuddyList& list) const {
        if (!User().empty()) Trap("KeepBuddyLists:Keep", [&] { KeepBuddyList(User(), list); });
    }

    // Names behind their lengths.
    void NamesTold(std::string_view data, bool areAdded) {
        if (usesLists_) return;
        while (!data.empty()) {
            const std::string name(TakeBytes(data, TakeByte(data)));
            const auto same = [&](const auto& other) {
                return NormalizeScreenName(other) == NormalizeScreenName(name);
            };
            const auto known = std::find_if(names_.begin(), names_.end(), same);
            if (!areAdded && known != names_.end()) names_.erase(known);
            if (areAdded && known == names_.end() && names_.size() < kMaxNames) names_.push_back(name);
        }
        told_.StartOnce(kAllToldMs);
    }
    void told_Tick() {
        if (!usesLists_) Keep(ListOfNames(names_));
    }

    Session& session_;
    // A list that comes in several frames. Where one of them is damaged it is not kept: half a list looks as
    // if the other half had been deleted.
    struct Arriving {
        std::uint32_t request = 0;
        BuddyList list = {};
        bool isBroken = false;
    };
    Arriving arriving_;
    std::vector<std::string> names_;
    bool hasLists_ = false;
    bool usesLists_ = false;
    RateLimit limit_{kLists, 0x0008};
    net::Timer told_;
};

}  // namespace

FeatureEntry KeepBuddyLists() {
    return FeatureOf<ListKeeper>({{kLists},
                                  {kBuddies, 0x0004, Direction::ToServer},
                                  {kBuddies, 0x0005, Direction::ToServer},
                                  {0x0001, 0x0003, Direction::ToClient},
                                  {0x0001, 0x0007, Direction::ToClient},
                                  {0x0001, 0x000A, Direction::ToClient}});
}
