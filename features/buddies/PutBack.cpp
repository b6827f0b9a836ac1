#include "features/buddies/PutBack.h"

#include <algorithm>

#include "base/Trap.h"
#include "features/SnacBytes.h"

namespace {

constexpr std::uint16_t kAskForList = 0x0004;
constexpr std::uint16_t kAddItems = 0x0008;
constexpr std::uint16_t kChangeItems = 0x0009;
constexpr std::uint16_t kBeginChange = 0x0011;
constexpr std::uint16_t kEndChange = 0x0012;

// A request of this size is answered at once by the servers of today, and so many a second bring no warning.
constexpr std::size_t kMaxItems = 20;
constexpr std::size_t kMaxBytes = 4000;
constexpr std::int64_t kPauseMs = 150;
constexpr std::int64_t kWhileLimitedMs = 1000;
constexpr std::int64_t kSilenceMs = 30'000;

bool IsAnswered(std::uint16_t subtype) {
    return subtype == kAddItems || subtype == kChangeItems;
}

}  // namespace

PutBack::PutBack() {
    pause_.Tick.Bind<&PutBack::pause_Tick>(*this);
    silence_.Tick.Bind<&PutBack::silence_Tick>(*this);
}

void PutBack::Become(Stage stage, std::string trouble) {
    stage_ = stage;
    trouble_ = std::move(trouble);
    if (stage != Stage::Asking && stage != Stage::Adding) silence_.Stop();
    if (stage == Stage::Idle || stage == Stage::Done || stage == Stage::Failed) {
        line_ = nullptr;
        pause_.Stop();
    }
    Changed();
}

bool PutBack::Begin(std::string_view screenName, BuddyList wanted) {
    const auto name = NormalizeScreenName(screenName);
    const auto found = std::find_if(lines_.begin(), lines_.end(), [&](const auto* line) {
        return NormalizeScreenName(line->User()) == name;
    });
    if (found == lines_.end() || line_ != nullptr) return false;
    wanted_ = std::move(wanted);
    additions_.clear();
    done_ = refused_ = 0;
    line_ = *found;
    Ask(kAskForList, {});
    if (line_ != nullptr) Become(Stage::Asking);
    return true;
}

// What cannot be sent ends the matter.
void PutBack::Ask(std::uint16_t subtype, std::string_view data) {
    const bool isSent = Trap("PutBack:Ask", [&] {
        line_->SendToList(subtype, ++request_, data);
        return true;
    });
    if (!isSent) return Become(Stage::Failed, "The connection has ended.");
    silence_.StartOnce(kSilenceMs);
}

bool PutBack::IsOurs(const ListLine& line, std::uint32_t request) const {
    return line_ == &line && request == request_;
}

void PutBack::ListCame(const BuddyList& present) {
    if (stage_ != Stage::Asking) return;
    const bool isPlanned = Trap("PutBack:Plan", [&] {
        added_ = Missing(wanted_, present);
        changed_ = Regrouped(present, added_);
        Plan();
        auto then = present;
        then.insert(then.end(), added_.begin(), added_.end());
        additions_ = Differences(present, then);
        return true;
    });
    if (!isPlanned) return Become(Stage::Failed, "The server's list cannot be understood.");
    Become(added_.empty() ? Stage::Done : Stage::Preview);
}

// All that is new, then the groups that get members, between a begin and an end, as clients do it.
void PutBack::Plan() {
    steps_ = {{kBeginChange, {}, 0}};
    next_ = 0;
    for (const auto& [subtype, items] : {std::pair(kAddItems, &added_), std::pair(kChangeItems, &changed_)}) {
        for (const auto& item : *items) {
            const auto bytes = item.ToBytes();
            auto& last = steps_.back();
            const bool fits = last.subtype == subtype && last.items < kMaxItems &&
                              last.data.size() + bytes.size() <= kMaxBytes;
            if (!fits) steps_.push_back({subtype, {}, 0});
            steps_.back().data += bytes;
            ++steps_.back().items;
        }
    }
    steps_.push_back({kEndChange, {}, 0});
}

void PutBack::Go() {
    if (stage_ != Stage::Preview) return;
    stage_ = Stage::Adding;
    pause_.StartOnce(1);
}

void PutBack::Cancel() {
    if (stage_ == Stage::Asking || stage_ == Stage::Preview) Become(Stage::Idle);
}

void PutBack::pause_Tick() {
    if (!line_->MaySend()) return pause_.StartOnce(kWhileLimitedMs);
    const auto& step = steps_[next_];
    Ask(step.subtype, step.data);
    if (line_ == nullptr || IsAnswered(step.subtype)) return;
    if (++next_ == steps_.size()) return Become(Stage::Done);
    pause_.StartOnce(kPauseMs);
}

// A code (2) for each item; 0: done.
void PutBack::Answered(std::string_view codes) {
    if (stage_ != Stage::Adding || !IsAnswered(steps_[next_].subtype)) return;
    const auto& step = steps_[next_++];
    std::size_t refused = 0;
    while (codes.size() >= 2) refused += TakeWord(codes) != 0;
    refused = std::min(refused, step.items);
    if (step.subtype == kAddItems) {
        refused_ += refused;
        done_ += step.items - refused;
    }
    silence_.Stop();
    pause_.StartOnce(kPauseMs);
    Changed();
}

void PutBack::Refused() {
    Become(Stage::Failed, "The server does not take buddy lists.");
}

void PutBack::silence_Tick() {
    Become(Stage::Failed, "The server does not answer.");
}

void PutBack::Remove(ListLine& line) {
    std::erase(lines_, &line);
    if (line_ == &line) Become(Stage::Failed, "The connection has ended.");
}

std::string PutBack::Sentence() const {
    const auto items = [](std::size_t count) {
        return std::to_string(count) + (count == 1 ? " item" : " items");
    };
    const auto taken =
        done_ + refused_ > 0 ? " " + items(done_) + " of " + items(added_.size()) + " are there." : "";
    switch (stage_) {
        case Stage::Asking:
            return "The server is asked for the list that it has.";
        case Stage::Preview:
            return items(added_.size()) + " will be added; nothing is deleted.";
        case Stage::Adding:
            return "Adding: " + items(done_) + " of " + std::to_string(added_.size()) + ".";
        case Stage::Done:
            if (added_.empty()) return "Nothing is missing.";
            return "Added " + items(done_) + (refused_ > 0 ? "; the server refused " + items(refused_) : "") +
                   ". Sign on again to see them.";
        case Stage::Failed:
            return trouble_ + taken;
        default:
            return {};
    }
}

PutBack& ThePutBack() {
    static PutBack putBack;
    return putBack;
}
