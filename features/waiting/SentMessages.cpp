#include "features/waiting/SentMessages.h"

bool SentMessages::IsOpen(const Entry& entry, std::uint32_t request, std::int64_t now) const {
    return entry.isOpen && entry.request == request && now - entry.at < kRefusedWithinMs;
}

void SentMessages::Remember(std::uint32_t request, std::string_view data, std::string_view shownTo,
                            std::int64_t now) {
    if (data.size() > kMaxBytes) return;
    bool isAlone = true;
    for (auto& entry : entries_) {
        if (!IsOpen(entry, request, now)) continue;
        isAlone = entry.isAlone = false;
    }
    if (entries_.size() < kMaxEntries) entries_.emplace_back();
    auto& entry = entries_[next_ % kMaxEntries];
    next_ = (next_ + 1) % kMaxEntries;
    entry.message.data = data;
    entry.message.shownTo = shownTo;
    entry.request = request;
    entry.at = now;
    entry.isOpen = true;
    entry.isAlone = isAlone;
}

std::optional<SentMessage> SentMessages::Take(std::uint32_t request, std::int64_t now) {
    for (auto& entry : entries_) {
        if (!IsOpen(entry, request, now)) continue;
        if (!entry.isAlone) return {};
        entry.isOpen = false;
        return entry.message;
    }
    return {};
}

void SentMessages::Forget(std::uint32_t request) {
    for (auto& entry : entries_) {
        if (entry.request == request) entry.isOpen = false;
    }
}
