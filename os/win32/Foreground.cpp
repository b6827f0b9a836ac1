#include "os/desktop/Foreground.h"

#include <windows.h>

namespace os {

void BringToForeground(WindowHandle window) {
    SetForegroundWindow(reinterpret_cast<HWND>(window));
}

}  // namespace os
