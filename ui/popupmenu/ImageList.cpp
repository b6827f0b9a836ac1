#include "ui/popupmenu/ImageList.h"

#include <utility>

void ImageList::Add(std::int32_t index, int resourceId) {
    pictures_[index] = {.resourceId = resourceId, .pixels = 0, .icon = {}};
}

os::IconHandle ImageList::Icon(std::int32_t index, int pixels) {
    const auto found = pictures_.find(index);
    if (found == pictures_.end()) return 0;
    auto& picture = found->second;
    if (std::exchange(picture.pixels, pixels) != pixels) picture.icon = os::Icon(picture.resourceId, pixels);
    return picture.icon.Handle();
}
