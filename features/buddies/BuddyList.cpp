#include "features/buddies/BuddyList.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "base/RuntimeError.h"
#include "features/SnacBytes.h"

namespace {

constexpr std::uint16_t kAlias = 0x0131;
constexpr std::uint16_t kMembers = 0x00C8;  // of a group: the numbers of its items, in their order
constexpr char kOnlyGroup[] = "Buddies";    // where a list has no groups

// By what items count as the same.
using Key = std::pair<std::uint16_t, std::string>;
Key KeyOf(const BuddyItem& item) {
    return {item.kind, item.IsRoot() ? "(root)" : NormalizeScreenName(item.name)};
}

// Lists come from servers and from files, so looking one item up must not cost a walk over all.
// A buddy may stand in several groups.
using Index = std::multimap<Key, const BuddyItem*>;
Index IndexOf(const BuddyList& list) {
    Index index;
    for (const auto& item : list) index.emplace(KeyOf(item), &item);
    return index;
}

using GroupNames = std::map<std::uint16_t, std::string>;
GroupNames GroupNamesOf(const BuddyList& list) {
    GroupNames names;
    for (const auto& item : list) {
        if (item.kind == BuddyItem::Group) names.try_emplace(item.group, item.name);
    }
    return names;
}

std::string NameIn(const GroupNames& groups, std::uint16_t number) {
    const auto found = groups.find(number);
    return found != groups.end() ? found->second : std::string();
}

std::string Described(const GroupNames& groups, const BuddyItem& item) {
    switch (item.kind) {
        case BuddyItem::Buddy:
            return item.name + " (" + NameIn(groups, item.group) + ")";
        case BuddyItem::Group:
            return "group " + item.name;
        case BuddyItem::Permit:
            return "permit " + item.name;
        case BuddyItem::Deny:
            return "deny " + item.name;
        default:
            return "item of kind " + std::to_string(item.kind) + " " + item.name;
    }
}

// Hands out the numbers that are not taken, from 1 on.
class FreeNumbers {
 public:
    void Take(std::uint16_t number) { used_.insert(number); }
    std::uint16_t Next() {
        while (used_.contains(next_)) {
            if (next_ == 0xFFFF) ThrowOverflow();
            ++next_;
        }
        used_.insert(next_);
        return next_;
    }

 private:
    std::set<std::uint16_t> used_{0};
    std::uint16_t next_ = 1;
};

// The group's attributes with the members that it has, and those that come to it.
ByteString WithMembers(const BuddyItem& group, const BuddyList& added) {
    ByteString rest, members;
    for (std::string_view tlvs = group.attributes; !tlvs.empty();) {
        const auto type = TakeWord(tlvs);
        const auto value = TakeBytes(tlvs, TakeWord(tlvs));
        if (type == kMembers) {
            members = value;
        } else {
            rest += TlvBytes(type, value);
        }
    }
    for (const auto& item : added) {
        const bool isMember = group.IsRoot() ? item.kind == BuddyItem::Group && !item.IsRoot()
                                             : item.kind == BuddyItem::Buddy && item.group == group.group;
        if (isMember) members += WordToStr(group.IsRoot() ? item.group : item.item);
    }
    return rest + TlvBytes(kMembers, members);
}

}  // namespace

std::string BuddyItem::Alias() const {
    return std::string(FindTlv(attributes, kAlias).value_or(""));
}

ByteString BuddyItem::ToBytes() const {
    return WordToStr(static_cast<std::int32_t>(name.size())) + name + WordToStr(group) + WordToStr(item) +
           WordToStr(kind) + WordToStr(static_cast<std::int32_t>(attributes.size())) + attributes;
}

// The data: version (1), count of the items (2), the items, time of the last change (4).
void AppendItems(BuddyList& list, std::string_view snacData) {
    TakeBytes(snacData, 1);
    BuddyList items;
    for (auto left = TakeWord(snacData); left > 0; --left) {
        BuddyItem item;
        item.name = TakeBytes(snacData, TakeWord(snacData));
        item.group = TakeWord(snacData);
        item.item = TakeWord(snacData);
        item.kind = TakeWord(snacData);
        item.attributes = TakeBytes(snacData, TakeWord(snacData));
        items.push_back(std::move(item));
    }
    if (list.size() + items.size() > kMaxBuddyItems) ThrowInvalidArgument();
    list.insert(list.end(), std::make_move_iterator(items.begin()), std::make_move_iterator(items.end()));
}

BuddyList ListOfNames(const std::vector<std::string>& names) {
    BuddyList list = {{"", 0, 0, BuddyItem::Group, TlvBytes(kMembers, WordToStr(1))},
                      {kOnlyGroup, 1, 0, BuddyItem::Group, {}}};
    for (const auto& name : names)
        list.push_back({name, 1, static_cast<std::uint16_t>(list.size() - 1), BuddyItem::Buddy, {}});
    list[1].attributes = WithMembers(list[1], list);
    return list;
}

std::vector<std::string> Differences(const BuddyList& before, const BuddyList& now) {
    std::vector<std::string> lines;
    const auto oldIndex = IndexOf(before), newIndex = IndexOf(now);
    const auto oldGroups = GroupNamesOf(before), newGroups = GroupNamesOf(now);
    // What a user sees of an item: the numbers and the order within a group are not it.
    const auto looksTheSame = [&](const BuddyItem& old, const BuddyItem& item) {
        if (old.name != item.name || item.kind == BuddyItem::Group) return old.name == item.name;
        return old.attributes == item.attributes &&
               (item.kind != BuddyItem::Buddy ||
                NameIn(oldGroups, old.group) == NameIn(newGroups, item.group));
    };
    for (const auto& item : now) {
        if (item.IsRoot()) continue;
        const auto [first, last] = oldIndex.equal_range(KeyOf(item));
        if (first == last) {
            lines.push_back("+ " + Described(newGroups, item));
        } else if (std::none_of(first, last,
                                [&](const auto& old) { return looksTheSame(*old.second, item); })) {
            lines.push_back("~ " + Described(newGroups, item));
        }
    }
    for (const auto& item : before) {
        if (!item.IsRoot() && !newIndex.contains(KeyOf(item)))
            lines.push_back("- " + Described(oldGroups, item));
    }
    return lines;
}

BuddyList Missing(const BuddyList& wanted, const BuddyList& present) {
    FreeNumbers groupNumbers, itemNumbers;
    std::map<Key, std::uint16_t> groups;  // by name: those that are there, and those that come
    std::set<Key> known;
    for (const auto& item : present) {
        groupNumbers.Take(item.group);
        itemNumbers.Take(item.item);
        known.insert(KeyOf(item));
        if (item.kind == BuddyItem::Group) groups.try_emplace(KeyOf(item), item.group);
    }
    BuddyList missing;
    const auto numberOf = [&](const std::string& name) {
        const BuddyItem group{name, 1, 0, BuddyItem::Group, {}};
        const auto [found, isNew] = groups.try_emplace(KeyOf(group), std::uint16_t{0});
        if (isNew) {
            found->second = groupNumbers.Next();
            missing.push_back({name, found->second, 0, BuddyItem::Group, {}});
        }
        return found->second;
    };
    // An account that has never had a list lacks the group of groups, too; it comes first.
    if (groups.empty()) missing.push_back({"", 0, 0, BuddyItem::Group, {}});
    for (const auto& item : wanted) {
        if (item.kind == BuddyItem::Group && !item.IsRoot()) numberOf(item.name);
    }
    const auto wantedGroups = GroupNamesOf(wanted);
    for (const auto& item : wanted) {
        if (item.kind == BuddyItem::Group || !known.insert(KeyOf(item)).second) continue;
        std::uint16_t group = 0;
        if (item.kind == BuddyItem::Buddy) {
            const auto name = NameIn(wantedGroups, item.group);
            group = numberOf(name.empty() ? kOnlyGroup : name);
        }
        missing.push_back({item.name, group, itemNumbers.Next(), item.kind, item.attributes});
    }
    // Groups stand before what is in them.
    std::stable_partition(missing.begin(), missing.end(),
                          [](const auto& item) { return item.kind == BuddyItem::Group; });
    const bool hasOnlyRoot = missing.size() == 1 && missing.front().IsRoot();
    return hasOnlyRoot ? BuddyList() : missing;
}

BuddyList Regrouped(const BuddyList& present, BuddyList& added) {
    BuddyList changed;
    for (const auto& group : present) {
        if (group.kind != BuddyItem::Group) continue;
        const auto concerns = [&](const BuddyItem& item) {
            return group.IsRoot() ? item.kind == BuddyItem::Group
                                  : item.kind == BuddyItem::Buddy && item.group == group.group;
        };
        if (std::none_of(added.begin(), added.end(), concerns)) continue;
        changed.push_back(group);
        changed.back().attributes = WithMembers(group, added);
    }
    for (auto& group : added) {
        if (group.kind == BuddyItem::Group) group.attributes = WithMembers(group, added);
    }
    return changed;
}
