#include "features/traffic/TrafficView.h"

#include <algorithm>

#include "base/Text.h"
#include "core/modTools.h"
#include "core/wire/Reader.h"

namespace {

bool Holds(std::string_view text, std::string_view wanted) {
    const auto found = std::search(text.begin(), text.end(), wanted.begin(), wanted.end(),
                                   [](char a, char b) { return LowerAscii(a) == LowerAscii(b); });
    return wanted.empty() || found != text.end();
}

std::optional<std::uint16_t> FamilyOf(const TrafficFrame& frame) {
    const auto payload = frame.fate == PassedFrame::Fate::Dropped ? frame.before : frame.after;
    if (frame.channel != Session::kSnacChannel || payload.size() < clsHeaderSNAC::kHeaderLength) return {};
    return static_cast<std::uint16_t>(wire::NumberAt(payload, 0, 2));
}

}  // namespace

void TrafficView::SetFilter(TrafficFilter filter) {
    filter_ = std::move(filter);
    filter_.name = NormalizeScreenName(filter_.name);
    rows_.clear();
    next_ = 0;
    isNew_ = true;
}

TrafficView::Change TrafficView::Update(std::size_t most) {
    if (generation_ != traffic_.Generation()) SetFilter(filter_);
    generation_ = traffic_.Generation();
    Change change;
    change.isNew = std::exchange(isNew_, false);
    for (; !rows_.empty() && rows_.front() < traffic_.First(); rows_.pop_front()) ++change.dropped;
    const auto end = traffic_.First() + traffic_.Count();
    for (next_ = std::max(next_, traffic_.First()); next_ < end && most > 0; ++next_, --most) {
        if (!Wants(traffic_.At(next_))) continue;
        rows_.push_back(next_);
        ++change.added;
    }
    change.isBehind = next_ < end;
    return change;
}

bool TrafficView::Wants(const TrafficFrame& frame) const {
    if (filter_.direction && *filter_.direction != frame.direction) return false;
    if (filter_.family && filter_.family != FamilyOf(frame)) return false;
    if (!filter_.name.empty() &&
        !Holds(NormalizeScreenName(ColumnText(frame, TrafficColumn::Name)), filter_.name))
        return false;
    return filter_.text.empty() || Holds(ColumnText(frame, TrafficColumn::Summary), filter_.text);
}
