// BuddyList: the buddy list that a server keeps for a user ("feedbag"), as the items that SNAC (0x0013,
// 0x0006) carries and as a text that people can read, keep and put back. An item on the wire (big-endian):
//
//   offset  width  field
//   0       2      length n of the name
//   2       n      name
//   2+n     2      group
//   4+n     2      item within the group; 0 for the group itself
//   6+n     2      kind
//   8+n     2      length m of the attributes
//   10+n    m      attributes: TLVs
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/modTools.h"

struct BuddyItem {
    enum Kind : std::uint16_t { Buddy = 0, Group = 1, Permit = 2, Deny = 3 };

    std::string name;
    std::uint16_t group = 0;
    std::uint16_t item = 0;
    std::uint16_t kind = Buddy;
    ByteString attributes;

    bool operator==(const BuddyItem&) const = default;
    auto operator<=>(const BuddyItem&) const = default;

    // The group of all groups, which has no name.
    bool IsRoot() const { return kind == Group && group == 0; }
    // The name that the user gave the buddy (TLV 0x0131); "" without one.
    std::string Alias() const;
    ByteString ToBytes() const;
};

using BuddyList = std::vector<BuddyItem>;

// More than any server keeps for a user.
inline constexpr std::size_t kMaxBuddyItems = 10'000;
inline constexpr std::size_t kMaxBuddyListBytes = std::size_t{1024} * 1024;

// Appends the items of the data of one SNAC (0x0013, 0x0006); a list may come in several. Throws RuntimeError
// (InvalidArgument), the list unchanged, for data that end inside an item, and for more items than are kept.
void AppendItems(BuddyList& list, std::string_view snacData);

// The list of a client without server lists, which tells only the names: in one group.
BuddyList ListOfNames(const std::vector<std::string>& names);

// The list as text: lines end with LF, one for each item, with all that it takes to put it back; `heading`
// stands in front as a remark.
std::string TextOf(const BuddyList& list, std::string_view heading);
// Reads such a text. Throws RuntimeError (InvalidArgument) with the number of the first line that is none.
BuddyList ListFromText(std::string_view text);

// What `now` has and `before` had not, and the reverse, for a person: "+ fred (Friends)", "- tom (Work)", "~
// ada" where the name stayed and something else changed.
std::vector<std::string> Differences(const BuddyList& before, const BuddyList& now);

// What of `wanted` is missing in `present`, with groups and items numbered as `present` leaves free. An item
// counts as present when one of its kind has its name by normal form, in whatever group. Throws RuntimeError
// (Overflow) when there are no numbers left.
BuddyList Missing(const BuddyList& wanted, const BuddyList& present);

// The items of `present` that have to change so that the groups name what `added` brings (TLV 0x00C8), as
// they are then. Groups among `added` get theirs at once.
BuddyList Regrouped(const BuddyList& present, BuddyList& added);

// For other programs: one line for each buddy (group, name, alias), or a page with a list for each group.
std::string CsvOf(const BuddyList& list);
std::string HtmlOf(const BuddyList& list, std::string_view title);
