// BuddyFiles: the buddy lists that are kept: in the folder "buddies" of the data folder, each in a file "NAME
// DATE.txt", NAME being the screen name in its normal form and DATE the moment, as in "2026-05-06-211459".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "features/buddies/BuddyList.h"

struct KeptList {
    std::string name;
    std::string date;

    bool operator==(const KeptList&) const = default;
};

// As many are kept for a name; the oldest goes.
inline constexpr std::size_t kMaxKeptLists = 50;

// Keeps the list when it differs from the last of that name, in whatever order its items stand. Whether it
// did. Throws RuntimeError when the file cannot be written.
bool KeepBuddyList(std::string_view screenName, const BuddyList& list);

// All that are kept, by name, the newest of each first.
std::vector<KeptList> KeptLists();

bool IsKept(const KeptList& wanted);

// Throws RuntimeError when the list cannot be read.
BuddyList ReadKeptList(const KeptList& kept);
