// TrafficView: the frames of a Traffic that a filter lets through, as rows of a list, and the texts of a row.
// It holds their numbers only.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "features/traffic/Traffic.h"

// All that is set must hold. Case does not matter (ASCII).
struct TrafficFilter {
    std::string name = {};  // part of the user's screen name, blanks aside
    std::optional<Direction> direction = {};
    std::optional<std::uint16_t> family = {};  // of a SNAC
    std::string text = {};                     // part of the summary

    bool operator==(const TrafficFilter&) const = default;
};

class TrafficView {
 public:
    explicit TrafficView(const Traffic& traffic) : traffic_(traffic) {}

    // Begins anew with this filter; Update() finds the rows.
    void SetFilter(TrafficFilter filter);
    const TrafficFilter& Filter() const { return filter_; }
    // Takes new frames up, `most` of them at the most, and lets rows go whose frames are no longer kept:
    // `dropped` at the top, `added` at the end. `isBehind`: there are more to take up.
    struct Change {
        std::size_t dropped = 0, added = 0;
        bool isBehind = false;
        bool isNew = false;  // all rows are new: after SetFilter or Traffic::Clear
    };
    Change Update(std::size_t most = 2'000);

    // Rows; the newest last. The number is for Traffic::At.
    std::size_t Count() const { return rows_.size(); }
    std::uint64_t NumberAt(std::size_t row) const { return rows_[row]; }

 private:
    bool Wants(const TrafficFrame& frame) const;

    const Traffic& traffic_;
    TrafficFilter filter_;
    std::deque<std::uint64_t> rows_;
    std::uint64_t next_ = 0;
    std::uint32_t generation_ = 0;
    bool isNew_ = true;
};

// The columns of a frame's line. Summary never holds a password, a hash or a cookie.
enum class TrafficColumn : std::uint8_t { Time, Name, Leg, Direction, Channel, Number, Mark, Kind, Summary };
inline constexpr std::size_t kTrafficColumns = 9;
// The user's screen name; "" while it is not known.
std::string NameOf(const TrafficFrame& frame);
const char* ColumnTitle(TrafficColumn column);
std::string ColumnText(const TrafficFrame& frame, TrafficColumn column);
// The whole line, as the relay prints it.
std::string TrafficLine(const TrafficFrame& frame);

// A line of the frame taken apart: FLAP, SNAC, fields and TLVs by name.
struct TrafficDetail {
    std::size_t depth;
    std::string name, value;
    std::string hex;  // of its bytes, kMaxHexBytes at the most
};
inline constexpr std::size_t kMaxHexBytes = 4'096;
// Of a rewritten frame: what it was before, then what it became. Secrets are shown as "(hidden)" unless
// `showSecrets`.
std::vector<TrafficDetail> TakeApart(const TrafficFrame& frame, bool showSecrets = false);
