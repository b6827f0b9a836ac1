#include "features/buddies/BuddyFiles.h"

#include <algorithm>

#include "app/services/SafeFileName.h"
#include "app/services/TimeText.h"
#include "base/RuntimeError.h"
#include "core/DataFolder.h"
#include "os/Files.h"

namespace {

constexpr std::string_view kEnd = ".txt";
constexpr std::string_view kDatePattern = "dddd-dd-dd-dddddd";

os::Path Folder() {
    return DataFolder() / "buddies";
}

bool IsDate(std::string_view text) {
    return std::equal(text.begin(), text.end(), kDatePattern.begin(), kDatePattern.end(),
                      [](char c, char wanted) { return wanted == 'd' ? c >= '0' && c <= '9' : c == wanted; });
}

std::string DateNow() {
    const auto now = os::Now();
    auto time = TimeText(now);
    std::erase(time, ':');
    return DateText(now) + "-" + time;
}

os::Path FileOf(const KeptList& kept) {
    return Folder() / (kept.name + " " + kept.date + std::string(kEnd));
}

BuddyList Sorted(BuddyList list) {
    std::sort(list.begin(), list.end());
    return list;
}

// The kept lists of a name, newest first.
std::vector<KeptList> KeptFor(const std::string& name) {
    auto kept = KeptLists();
    std::erase_if(kept, [&](const auto& list) { return list.name != name; });
    return kept;
}

// A list that was damaged meanwhile is none that another could be the same as.
bool IsLike(const KeptList& kept, const BuddyList& list) {
    try {
        return Sorted(ReadKeptList(kept)) == Sorted(list);
    } catch (const RuntimeError&) {
        return false;
    }
}

}  // namespace

std::vector<KeptList> KeptLists() {
    std::vector<KeptList> lists;
    os::FolderReader reader(Folder());
    while (const auto entry = reader.Next()) {
        std::string_view name = entry->name;
        if (entry->isFolder || !name.ends_with(kEnd)) continue;
        name.remove_suffix(kEnd.size());
        if (name.size() < kDatePattern.size() + 2) continue;
        const auto date = name.substr(name.size() - kDatePattern.size());
        name.remove_suffix(date.size());
        if (!IsDate(date) || name.back() != ' ') continue;
        lists.push_back({std::string(name.substr(0, name.size() - 1)), std::string(date)});
    }
    std::sort(lists.begin(), lists.end(), [](const auto& a, const auto& b) {
        return a.name != b.name ? a.name < b.name : a.date > b.date;
    });
    return lists;
}

bool IsKept(const KeptList& wanted) {
    const auto lists = KeptLists();
    return std::find(lists.begin(), lists.end(), wanted) != lists.end();
}

BuddyList ReadKeptList(const KeptList& kept) {
    const auto file = FileOf(kept);
    const auto text = os::ReadWholeFile(file, kMaxBuddyListBytes + 1);
    if (!text || text->size() > kMaxBuddyListBytes)
        throw RuntimeError(ErrorNumber::FileAccess, "Cannot be read: " + file.Shown());
    return ListFromText(*text);
}

bool KeepBuddyList(std::string_view screenName, const BuddyList& list) {
    const KeptList now{SafeFileName(NormalizeScreenName(screenName)), DateNow()};
    auto kept = KeptFor(now.name);
    if (!kept.empty() && IsLike(kept.front(), list)) return false;
    const auto text = TextOf(list, "Buddy list of " + std::string(screenName));
    if (text.size() > kMaxBuddyListBytes)
        throw RuntimeError(ErrorNumber::Overflow, "A buddy list too long to be kept");
    os::MakeFolder(Folder());
    os::ReplaceFileWith(FileOf(now), text);
    for (std::size_t i = kMaxKeptLists - 1; i < kept.size(); ++i) os::RemoveFile(FileOf(kept[i]));
    return true;
}
