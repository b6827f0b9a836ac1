#include "os/desktop/Icons.h"

#include <windows.h>

#include "os/win32/Resolution.h"

namespace os {

int SmallIconSize(ScreenPoint place) {
    return ScaledFor(DpiAt(place), GetSystemMetrics(SM_CXSMICON));
}

Icon::Icon(int resourceId, int pixels)
    : handle_(reinterpret_cast<IconHandle>(LoadImageA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(resourceId),
                                                      IMAGE_ICON, pixels, pixels, LR_DEFAULTCOLOR))) {}

Icon::~Icon() {
    if (handle_ != 0) DestroyIcon(reinterpret_cast<HICON>(handle_));
}

}  // namespace os
