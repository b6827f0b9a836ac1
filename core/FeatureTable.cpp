#include "core/FeatureTable.h"

#include <algorithm>

#include "base/RuntimeError.h"

FeatureTable::FeatureTable(std::vector<FeatureEntry> entries) : entries_(std::move(entries)) {
    if (entries_.size() > 8 * sizeof(Mask)) ThrowInvalidArgument();
    rows_.push_back({kAny, {}, {}});
    for (const auto& entry : entries_) {
        for (const auto& [family, subtype, direction] : entry.interests) {
            if (family == kOtherChannels) continue;
            auto& row = RowOf(family);
            const auto isIt = [wanted = subtype](const Listed& listed) { return listed.subtype == wanted; };
            if (subtype != kAny && std::ranges::none_of(row.listed, isIt))
                row.listed.push_back({subtype, {}});
        }
    }
    for (auto& row : rows_) {
        row.others = WhoWants(row.family, kAny);
        for (auto& listed : row.listed) listed.masks = WhoWants(row.family, listed.subtype);
    }
    otherChannels_ = WhoWants(kOtherChannels, kAny);
}

FeatureTable::Row& FeatureTable::RowOf(std::uint16_t family) {
    if (family == kAny) return rows_.front();
    if (family >= kFamilies) ThrowInvalidArgument();
    auto& row = rowOf_[family];
    if (row == 0) {
        row = static_cast<std::uint8_t>(rows_.size());
        rows_.push_back({family, {}, {}});
    }
    return rows_[row];
}

FeatureTable::Masks FeatureTable::WhoWants(std::uint16_t family, std::uint16_t subtype) const {
    Masks masks{};
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        for (const auto& interest : entries_[i].interests) {
            if (interest.family != kAny && interest.family != family) continue;
            if (interest.subtype != kAny && interest.subtype != subtype) continue;
            for (const auto direction : {Direction::ToServer, Direction::ToClient}) {
                if (interest.direction.value_or(direction) != direction) continue;
                masks[static_cast<std::size_t>(direction)] |= Mask{1} << i;
            }
        }
    }
    return masks;
}
