#include "ui/popupmenu/ImageList.h"

#include <utility>

ImageList::~ImageList() {
    for (const auto& [index, icon] : icons_) os::ReleaseIcon(icon);
}

void ImageList::Add(std::int32_t index, int resourceId) {
    const auto icon = os::LoadIconResource(resourceId, os::SmallIconSize());
    if (const auto before = std::exchange(icons_[index], icon)) os::ReleaseIcon(before);
}

os::IconHandle ImageList::Icon(std::int32_t index) const {
    const auto found = icons_.find(index);
    return found != icons_.end() ? found->second : 0;
}
