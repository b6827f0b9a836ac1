// ImageList: the icons of a menu by index, loaded from the program's resources at the size that the menu has
// on the screen where it is shown. Indices may have gaps.
#pragma once

#include <cstdint>
#include <map>

#include "os/desktop/Icons.h"

class ImageList {
 public:
    // Puts the icon resource under the index, in place of what was there. A resource that is missing leaves
    // the index empty.
    void Add(std::int32_t index, int resourceId);

    // 0 for an index without an icon. Valid as long as the list and until the index is filled anew or asked
    // for in another size.
    os::IconHandle Icon(std::int32_t index, int pixels);

 private:
    struct Picture {
        int resourceId = 0;
        int pixels = 0;
        os::Icon icon;
    };
    std::map<std::int32_t, Picture> pictures_;
};
