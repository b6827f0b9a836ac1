// ImageList: the icons of a menu by index, loaded from the program's resources at the size that menus have on
// this screen. Indices may have gaps.
#pragma once

#include <cstdint>
#include <map>

#include "os/Icons.h"

class ImageList {
 public:
    ImageList() = default;
    ~ImageList();
    ImageList(const ImageList&) = delete;
    ImageList& operator=(const ImageList&) = delete;

    // Puts the icon resource under the index, in place of what was there. A resource that is missing leaves
    // the index empty.
    void Add(std::int32_t index, int resourceId);

    // 0 for an index without an icon. Valid as long as the list and until the index is filled anew.
    os::IconHandle Icon(std::int32_t index) const;

 private:
    std::map<std::int32_t, os::IconHandle> icons_;
};
