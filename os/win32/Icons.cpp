#include "os/Icons.h"

#include <windows.h>

namespace os {

int SmallIconSize() {
    return GetSystemMetrics(SM_CXSMICON);
}

IconHandle LoadIconResource(int resourceId, int pixels) {
    const auto icon = LoadImageA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(resourceId), IMAGE_ICON, pixels,
                                 pixels, LR_DEFAULTCOLOR);
    return reinterpret_cast<IconHandle>(icon);
}

void ReleaseIcon(IconHandle icon) {
    if (icon != 0) DestroyIcon(reinterpret_cast<HICON>(icon));
}

}  // namespace os
