// FeatureTable: the features in their order, and for each kind of SNAC those that want it. Made once; a frame
// costs one look-up in it.
#pragma once

#include <array>
#include <cstddef>

#include "core/SessionFeature.h"

class FeatureTable {
 public:
    // One bit for each feature, the first one lowest.
    using Mask = std::uint32_t;

    // Throws RuntimeError (InvalidArgument) for more features than a mask has bits.
    explicit FeatureTable(std::vector<FeatureEntry> entries);

    const std::vector<FeatureEntry>& Entries() const { return entries_; }

    // Who wants such a frame.
    Mask Wanted(Direction direction, std::uint8_t channel, std::string_view payload) const {
        const auto mask = WantedByPayload(direction, payload);
        return channel == Session::kSnacChannel ? mask
                                                : mask | otherChannels_[static_cast<std::size_t>(direction)];
    }

 private:
    static constexpr std::size_t kFamilies = 256;

    using Masks = std::array<Mask, 2>;  // by direction
    struct Listed {
        std::uint16_t subtype;
        Masks masks;
    };
    // A family; the first row stands for those that nobody names, and for what is no SNAC.
    struct Row {
        std::uint16_t family;
        Masks others;  // subtypes that nobody names
        std::vector<Listed> listed;
    };

    Mask WantedByPayload(Direction direction, std::string_view payload) const {
        const auto word = [&](std::size_t at) {
            return static_cast<std::uint16_t>(static_cast<std::uint8_t>(payload[at]) << 8 |
                                              static_cast<std::uint8_t>(payload[at + 1]));
        };
        const bool isSnac = payload.size() >= clsHeaderSNAC::kHeaderLength;
        const auto family = isSnac ? word(0) : kFamilies;
        const auto& row = rows_[family < kFamilies ? rowOf_[family] : 0];
        const auto subtype = isSnac ? word(2) : kAny;
        const auto way = static_cast<std::size_t>(direction);
        for (const auto& listed : row.listed) {
            if (listed.subtype == subtype) return listed.masks[way];
        }
        return row.others[way];
    }

    Row& RowOf(std::uint16_t family);
    Masks WhoWants(std::uint16_t family, std::uint16_t subtype) const;

    std::vector<FeatureEntry> entries_;
    std::vector<Row> rows_;
    std::array<std::uint8_t, kFamilies> rowOf_{};
    Masks otherChannels_{};
};
