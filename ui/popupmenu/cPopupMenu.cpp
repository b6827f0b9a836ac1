#include "ui/popupmenu/cPopupMenu.h"

#include <algorithm>
#include <set>
#include <utility>

#include "base/RuntimeError.h"
#include "ui/popupmenu/ImageList.h"

std::int32_t cPopupMenu::AddMenuItem(const std::string& sCaption, const std::string& sKey, bool bDefault,
                                     std::int32_t lItemData, std::int32_t lParentIndex,
                                     std::int32_t lIconIndex, bool bChecked, bool bEnabled) {
    if (lParentIndex != 0 && Kind(lParentIndex) != os::MenuEntryKind::Item) ThrowInvalidArgument();
    return Place(items_.end(), {.parent = lParentIndex,
                                .caption = sCaption,
                                .key = sKey,
                                .itemData = lItemData,
                                .icon = lIconIndex,
                                .checked = bChecked,
                                .enabled = bEnabled,
                                .isDefault = bDefault});
}

std::int32_t cPopupMenu::InsertMenuItem(std::int32_t lBeforeIndex, const std::string& sCaption,
                                        const std::string& sKey, bool bDefault, std::int32_t lItemData,
                                        std::int32_t lIconIndex, bool bChecked, bool bEnabled) {
    const auto before = Position(lBeforeIndex);
    return Place(before, {.parent = before->parent,
                          .caption = sCaption,
                          .key = sKey,
                          .itemData = lItemData,
                          .icon = lIconIndex,
                          .checked = bChecked,
                          .enabled = bEnabled,
                          .isDefault = bDefault});
}

std::int32_t cPopupMenu::Place(Items::const_iterator before, Item item) {
    if (item.caption == "-") item.kind = os::MenuEntryKind::Separator;
    item.index = lastIndex_ + 1;
    const bool isDefault = std::exchange(item.isDefault, false);
    items_.insert(before, std::move(item));
    ++lastIndex_;
    if (isDefault) Default(lastIndex_, true);
    return lastIndex_;
}

void cPopupMenu::RemoveMenuItem(std::int32_t lIndex) {
    Position(lIndex);
    // One pass finds the whole sub-menu, because parents stand before their entries.
    std::set<std::int32_t> gone{lIndex};
    for (const auto& item : items_) {
        if (gone.contains(item.parent)) gone.insert(item.index);
    }
    std::erase_if(items_, [&](const Item& item) { return gone.contains(item.index); });
}

void cPopupMenu::Clear() {
    items_.clear();
}

bool cPopupMenu::Contains(std::int32_t lIndex) const {
    return std::any_of(items_.begin(), items_.end(), [=](const Item& item) { return item.index == lIndex; });
}

std::int32_t cPopupMenu::IndexForKey(std::string_view sKey) const {
    const auto found =
        std::find_if(items_.begin(), items_.end(), [=](const Item& item) { return item.key == sKey; });
    return found != items_.end() ? found->index : 0;
}

std::vector<std::int32_t> cPopupMenu::Entries(std::int32_t lParentIndex) const {
    std::vector<std::int32_t> entries;
    for (const auto& item : items_) {
        if (item.parent == lParentIndex) entries.push_back(item.index);
    }
    return entries;
}

void cPopupMenu::Default(std::int32_t lIndex, bool bDefault) {
    const auto parent = Find(lIndex).parent;
    for (auto& item : items_) {
        if (item.parent != parent) continue;
        if (item.index == lIndex) {
            item.isDefault = bDefault;
        } else if (bDefault) {
            item.isDefault = false;
        }
    }
}

void cPopupMenu::MakeHeader(std::int32_t lIndex) {
    if (HasSubMenu(lIndex)) ThrowInvalidArgument();
    Find(lIndex).kind = os::MenuEntryKind::Header;
}

std::int32_t cPopupMenu::ShowPopupMenu(int x, int y) const {
    os::MenuRequest request{.owner = owner_, .entries = {}, .colours = colours_, .x = x, .y = y};
    const int iconSize = os::SmallIconSize({x, y});
    for (const auto& item : items_) {
        request.entries.push_back({.id = item.index,
                                   .parent = item.parent,
                                   .kind = item.kind,
                                   .caption = item.caption,
                                   .icon = images_ != nullptr ? images_->Icon(item.icon, iconSize) : 0,
                                   .checked = item.checked,
                                   .enabled = item.enabled,
                                   .isDefault = item.isDefault});
    }
    return os::PopUpMenu(request);
}

cPopupMenu::Items::const_iterator cPopupMenu::Position(std::int32_t lIndex) const {
    const auto found =
        std::find_if(items_.begin(), items_.end(), [=](const Item& item) { return item.index == lIndex; });
    if (found == items_.end()) throw RuntimeError(ErrorNumber::SubscriptOutOfRange, "Subscript out of range");
    return found;
}

bool cPopupMenu::HasSubMenu(std::int32_t lIndex) const {
    return std::any_of(items_.begin(), items_.end(), [=](const Item& item) { return item.parent == lIndex; });
}
