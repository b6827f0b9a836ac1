// Foreground: whose windows get the keyboard.
#pragma once

#include "os/desktop/WindowHandle.h"

namespace os {

// Brings a window of this program, visible or not, to the foreground. The system may refuse; then nothing
// happens.
void BringToForeground(WindowHandle window);

}  // namespace os
