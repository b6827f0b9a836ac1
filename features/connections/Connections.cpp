#include "features/connections/Connections.h"

#include <algorithm>
#include <functional>

namespace {

constexpr std::size_t kMaxCookies = 64;

void TakeCounts(Leg& leg) {
    if (leg.session == nullptr) return;
    leg.fromClient = leg.session->Received(Direction::ToServer);
    leg.fromServer = leg.session->Received(Direction::ToClient);
}

}  // namespace

const Leg* Connections::Find(std::size_t slot) const {
    // Mostly one of the newest, and slots follow each other but for clients that never asked.
    if (legs_.empty() || legs_.back().slot < slot) return nullptr;
    const auto behind = legs_.back().slot - slot;
    if (behind < legs_.size() && legs_[legs_.size() - 1 - behind].slot == slot)
        return &legs_[legs_.size() - 1 - behind];
    const auto found = std::ranges::lower_bound(legs_, slot, {}, &Leg::slot);
    return found != legs_.end() && found->slot == slot ? &*found : nullptr;
}

Leg* Connections::Kept(std::size_t slot) {
    return const_cast<Leg*>(std::as_const(*this).Find(slot));
}

void Connections::NoteSentTo(std::size_t slot, const Place& place) {
    if (auto* const leg = Kept(slot)) leg->sentTo = place;
}

void Connections::Refresh() {
    for (auto& leg : legs_) TakeCounts(leg);
}

Leg& Connections::Begin(const Session& session) {
    if (legs_.size() == kMaxLegs) {
        // The oldest one that has ended, because a session may outlast many short connections.
        const auto ended = std::ranges::find(legs_, Leg::State::Ended, &Leg::state);
        legs_.erase(ended != legs_.end() ? ended : legs_.begin());
    }
    // Nearly always the end: a client may be slower to ask than the one who connected behind it.
    const bool isNewest = legs_.empty() || legs_.back().slot < session.Slot();
    auto& leg = isNewest ? legs_.emplace_back()
                         : *legs_.emplace(std::ranges::upper_bound(legs_, session.Slot(), {}, &Leg::slot));
    leg.slot = session.Slot();
    leg.session = &session;
    leg.began = os::SecondsSince1970();
    leg.beganMs = os::MonotonicMilliseconds();
    leg.asked = session.Asked();
    return leg;
}

void Connections::End(const Session& session) {
    if (auto* const leg = Kept(session.Slot())) {
        TakeCounts(*leg);
        leg->session = nullptr;
        leg->state = Leg::State::Ended;
    }
}

void Connections::RememberCookie(std::string_view cookie, const std::string& name) {
    if (cookies_.size() == kMaxCookies) cookies_.pop_front();
    cookies_.emplace_back(std::hash<std::string_view>()(cookie), name);
}

std::string Connections::NameByCookie(std::string_view cookie) const {
    const auto found = std::ranges::find(cookies_, std::hash<std::string_view>()(cookie),
                                         [](const auto& one) { return one.first; });
    return found != cookies_.end() ? found->second : std::string();
}
