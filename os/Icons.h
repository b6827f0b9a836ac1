// Icons: pictures that lie in the program file as resources.
#pragma once

#include <cstdint>

namespace os {

// An icon of the operating system; 0 is none. Nothing outside os/ looks into it.
using IconHandle = std::uintptr_t;

// Width and height, in pixels, that menus and the notification area use at the screen's resolution.
int SmallIconSize();

// Loads the icon resource of this number in the size that fits best (icons are square). The caller releases
// it. 0 when there is none.
IconHandle LoadIconResource(int resourceId, int pixels);
void ReleaseIcon(IconHandle icon);

}  // namespace os
